#pragma once

#include <QObject>
#include <QThread>

#include <functional>
#include <memory>

class ZDDataCenter;
class ZDHighlighter;

/// Opens the library and starts the highlighter away from the main thread, so the window
/// shows and answers while a large library is read. Each result is handed over on the main
/// thread, and the store moves there with everything it owns (its package watcher included).
class ZDLibraryLoader : public QObject
{
    Q_OBJECT
public:
    explicit ZDLibraryLoader(QObject *parent = nullptr);
    /// Stops the thread; the objects handed over are the receiver's to delete.
    ~ZDLibraryLoader() override;

    /// Runs `makeCenter` on the loader's thread; the store it makes moves to the main thread
    /// and arrives with libraryLoaded.
    void loadLibrary(std::function<ZDDataCenter *()> makeCenter);
    /// Makes the highlighter on a pool thread, beside the library; it arrives with highlighterReady.
    void startHighlighter(std::function<ZDHighlighter *()> makeHighlighter);
    /// Stops the loader's thread (after the store was deleted, or at quit).
    void stop();

Q_SIGNALS:
    void libraryLoaded(ZDDataCenter *center, qint64 milliseconds);
    void highlighterReady(ZDHighlighter *highlighter, qint64 milliseconds);

private:
    QThread m_thread;
    QObject *m_worker = nullptr; // lives on m_thread

};
