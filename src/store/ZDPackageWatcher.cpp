#include "ZDPackageWatcher.h"

#include "ZDLogger.h"
#include "ZDPackageFormat.h"
#include "ZDPackageLock.h"
#include "ZDPackageStorage.h"

#include <QFileInfo>

ZDPackageWatcher::ZDPackageWatcher(const QString &packagePath, const ZDWriteStampRegister &stamps,
                                   int settleDelayMs, QObject *parent)
    : QObject(parent), m_packagePath(packagePath), m_stamps(stamps), m_watcher(this), m_settle(this)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleDelayMs);
    connect(&m_settle, &QTimer::timeout, this, &ZDPackageWatcher::check);
    // Every event restarts the delay, so a burst of events is one check.
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_settle, qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_settle, qOverload<>(&QTimer::start));
    watchWhatExists();
}

void ZDPackageWatcher::watchWhatExists()
{
    // A replaced file is a new inode: the watch on the old one is gone, so paths are re-added
    // after every check. A package that does not exist yet is awaited in its parent.
    QStringList paths{m_packagePath, m_packagePath + QLatin1Char('/') + ZDPackageLayout::identifierFile,
                      m_packagePath + QLatin1Char('/') + ZDPackageLayout::databaseDirectory,
                      m_packagePath + QLatin1Char('/') + ZDPackageLayout::snippetsDirectory};
    if (!QFileInfo::exists(m_packagePath))
        paths = {QFileInfo(m_packagePath).absolutePath()};
    QStringList missing;
    for (const QString &path : paths) {
        if (QFileInfo::exists(path) && !m_watcher.files().contains(path) &&
            !m_watcher.directories().contains(path))
            missing << path;
    }
    if (!missing.isEmpty())
        m_watcher.addPaths(missing);
}

void ZDPackageWatcher::check()
{
    watchWhatExists();
    if (!QFileInfo::exists(m_packagePath))
        return;
    ZDPackageLock lock(m_packagePath, ZDPackageLock::Mode::Shared, ZDPackageLock::Wait::DontBlock);
    if (lock.isBusy()) { // a write is under way; its end is another change
        m_settle.start();
        return;
    }
    const QString stamp = ZDPackageFormat::readWriteStamp(m_packagePath);
    lock.unlock();
    if (m_stamps.isOwn(stamp)) {
        zdLog(ZDLogLevel::Debug, ZDLogDomain::Library,
              QStringLiteral("Discarded a package change notice due to same library identifier."));
        return;
    }
    if (stamp == m_lastReported)
        return;
    m_lastReported = stamp;
    zdLog(ZDLogLevel::Info, ZDLogDomain::Library, QStringLiteral("Received valid library content update."));
    Q_EMIT changedBySomeoneElse(stamp);
}
