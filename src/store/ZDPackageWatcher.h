#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

class ZDWriteStampRegister;

/// Watches a package on disk ("identifier", the package directory, "Database" and its
/// "Snippets") for changes made by other processes or a file-sync service.
///
/// Changes are gathered until the package has been quiet for the settle delay and no writer
/// holds its lock; then the "identifier" stamp decides: equal to this process's stamp
/// (`stamps`), the change was our own write and is ignored; otherwise changedBySomeoneElse()
/// is emitted, once per foreign stamp. Its timer and file watcher are its children, so it can be
/// moved to another thread as a whole.
class ZDPackageWatcher : public QObject
{
    Q_OBJECT
public:
    static constexpr int kDefaultSettleDelayMs = 500;

    ZDPackageWatcher(const QString &packagePath, const ZDWriteStampRegister &stamps,
                     int settleDelayMs = kDefaultSettleDelayMs, QObject *parent = nullptr);

    QString packagePath() const { return m_packagePath; }

Q_SIGNALS:
    /// The package holds a write that is not ours: reload it. `stamp` is its "identifier".
    void changedBySomeoneElse(const QString &stamp);

private:
    void watchWhatExists();
    void check();

    QString m_packagePath;
    const ZDWriteStampRegister &m_stamps;
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
    QString m_lastReported;
};
