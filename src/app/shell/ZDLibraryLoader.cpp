#include "ZDLibraryLoader.h"

#include "ZDDataCenter.h"
#include "ZDHighlighter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaObject>
#include <QThreadPool>

ZDLibraryLoader::ZDLibraryLoader(QObject *parent) : QObject(parent)
{
    m_thread.setObjectName(QStringLiteral("com.varnok.Zandrio.LibraryLoader"));
    m_worker = new QObject;
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
}

ZDLibraryLoader::~ZDLibraryLoader()
{
    stop();
}

void ZDLibraryLoader::stop()
{
    m_thread.quit();
    m_thread.wait();
}

void ZDLibraryLoader::loadLibrary(std::function<ZDDataCenter *()> makeCenter)
{
    QThread *main = QCoreApplication::instance()->thread();
    QMetaObject::invokeMethod(
        m_worker,
        [this, main, makeCenter = std::move(makeCenter)] {
            QElapsedTimer timer;
            timer.start();
            ZDDataCenter *center = makeCenter();
            // The store belongs to the main thread from now on; its own objects go with it.
            center->moveToThread(main);
            const qint64 elapsed = timer.elapsed();
            QMetaObject::invokeMethod(this, [this, center, elapsed] { Q_EMIT libraryLoaded(center, elapsed); },
                                      Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
}

void ZDLibraryLoader::startHighlighter(std::function<ZDHighlighter *()> makeHighlighter)
{
    QThreadPool::globalInstance()->start([this, makeHighlighter = std::move(makeHighlighter)] {
            QElapsedTimer timer;
            timer.start();
            ZDHighlighter *highlighter = makeHighlighter();
            const qint64 elapsed = timer.elapsed();
            QMetaObject::invokeMethod(this, [this, highlighter, elapsed] { Q_EMIT highlighterReady(highlighter, elapsed); },
                                      Qt::QueuedConnection);
    });
}
