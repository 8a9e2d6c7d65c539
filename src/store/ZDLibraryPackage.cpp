#include "ZDLibraryPackage.h"

#include "ZDLibraryContents.h"
#include "ZDLogger.h"
#include "ZDOutdatedVersionResponder.h"
#include "ZDPackageFormat.h"
#include "ZDPackageWatcher.h"
#include "ZDRecordCache.h"
#include "ZDResources.h"
#include "ZDStoreErrors.h"
#include "ZDWriteScheduler.h"

#include <QFile>
#include <QFileInfo>

#include <optional>

namespace {

// Puts our unwritten edits on top of `onDisk` and makes it the tree.
void mergeUnwrittenEdits(ZDPackageTree &tree, ZDPackageTree &&onDisk, const QSet<QString> &dirtyPaths)
{
    for (const QString &path : dirtyPaths) {
        if (tree.isFile(path))
            onDisk.setFile(path, tree.fileContents(path));
        else if (tree.isDirectory(path))
            onDisk.makeDirectory(path);
        else
            onDisk.remove(path);
    }
    tree = std::move(onDisk);
}

} // namespace

ZDLibraryPackage::ZDLibraryPackage(Options options, QObject *parent)
    : QObject(parent), m_options(std::move(options))
{
    m_packageOnDisk = QFileInfo(m_options.packagePath).isDir();
    m_scheduler = std::make_unique<ZDWriteScheduler>([this] { return writeOnQueue(); },
                                                     std::move(m_options.writeTimer), this);
}

ZDLibraryPackage::~ZDLibraryPackage()
{
    m_watcher.reset();
    m_scheduler.reset(); // runs what is queued, writes included
}

// Reading.

QString ZDLibraryPackage::recordCachePath() const
{
    if (m_options.recordCacheMinimumSnippets < 0 || m_options.packagePath.isEmpty())
        return {};
    return ZDRecordCache::pathForPackage(m_options.packagePath);
}

ZDLibraryContents ZDLibraryPackage::readContents(const ZDPackageTree &tree, ZDRecordCache::Preload *preload)
{
    const QString cachePath = recordCachePath();
    if (cachePath.isEmpty())
        return ZDLibraryContents::read(tree);
    ZDLibraryContents contents =
        ZDLibraryContents::read(tree, cachePath, m_options.recordCacheMinimumSnippets, preload);
    // The cache is written behind the load, not during it.
    if (contents.cacheUpdate)
        m_scheduler->queue().async(std::move(contents.cacheUpdate));
    return contents;
}

bool ZDLibraryPackage::load(ZDLibraryContents *contents, ZDError *error)
{
    // The snippet cache is decoded while the package is listed.
    std::optional<ZDRecordCache::Preload> preload;
    if (const QString cachePath = recordCachePath(); !cachePath.isEmpty() && QFileInfo::exists(cachePath))
        preload.emplace(cachePath);
    auto tree = std::make_unique<ZDPackageTree>();
    QString stamp;
    if (!ZDPackageStorage::readPackage(m_options.packagePath, tree.get(), m_options.outdatedVersionResponder,
                                       &m_outdatedVersionPrompted, &stamp, error,
                                       ZDPackageTree::Contents::OnDemand))
        return false;
    m_stamps.setStamp(stamp);
    *contents = readContents(*tree, preload ? &*preload : nullptr);
    // Nothing queued can reach the tree yet: no edit is queued before the first read.
    m_tree = std::move(tree);
    m_hasTree = true;
    return true;
}

bool ZDLibraryPackage::reload(ZDLibraryContents *contents, ZDError *error)
{
    m_scheduler->waitUntilAllOperationsAreFinished();
    auto fresh = std::make_unique<ZDPackageTree>();
    QString stamp;
    ZDError readError;
    const bool read = ZDPackageStorage::readPackage(
        m_options.packagePath, fresh.get(), m_options.outdatedVersionResponder, &m_outdatedVersionPrompted,
        &stamp, &readError, ZDPackageTree::Contents::OnDemand);
    *contents = read ? readContents(*fresh) : ZDLibraryContents();
    m_scheduler->queue().sync([&] {
        m_tree = read ? std::move(fresh) : nullptr;
        m_dirtyPaths.clear();
    });
    m_hasTree = read;
    if (!read)
        return ZDError::fail(error, readError);
    m_stamps.setStamp(stamp);
    return true;
}

bool ZDLibraryPackage::takeInLatest()
{
    const QString path = m_options.packagePath;
    // The newer-version warning is the window's to show, so it is asked here, before the read.
    if (!m_outdatedVersionPrompted) {
        QFile file(path + QLatin1Char('/') + ZDPackageLayout::versionFile);
        QString version;
        if (file.open(QIODevice::ReadOnly) && ZDPackageFormat::decodeVersion(file.readAll(), &version) &&
            ZDDatabaseVersion::isNewerThanCurrent(version)) {
            m_outdatedVersionPrompted = true;
            ZDOutdatedVersionResponder *responder = m_options.outdatedVersionResponder;
            if (!responder ||
                !responder->continueWithNewerLibrary(version, ZDResources::applicationVersion())) {
                zdLog(
                    ZDLogLevel::Warning, ZDLogDomain::Library,
                    QStringLiteral("Not reloading a library written by a newer version (%1).").arg(version));
                return false;
            }
        }
    }

    bool read = false;
    ZDError error;
    m_scheduler->queue().sync([&] {
        ZDPackageTree fresh;
        bool warned = true;
        QString stamp;
        if (!ZDPackageStorage::readPackage(path, &fresh, nullptr, &warned, &stamp, &error,
                                           ZDPackageTree::Contents::OnDemand))
            return;
        if (m_tree)
            mergeUnwrittenEdits(*m_tree, std::move(fresh), m_dirtyPaths);
        else
            m_tree = std::make_unique<ZDPackageTree>(std::move(fresh));
        m_stamps.setStamp(stamp);
        read = true;
    });
    if (!read) {
        zdLog(ZDLogLevel::Error, ZDLogDomain::Library,
              QStringLiteral("Cannot reload the library: %1").arg(error.toString()));
        return false;
    }
    m_hasTree = true;
    return true;
}

bool ZDLibraryPackage::readCurrentContents(ZDLibraryContents *contents)
{
    ZDPackageTree snapshot;
    bool hasTree = false;
    // The queue holds every edit made so far, so the snapshot agrees with the records in memory
    // apart from what came from disk.
    m_scheduler->queue().sync([&] {
        if (m_tree) {
            snapshot = *m_tree;
            hasTree = true;
        }
    });
    if (!hasTree)
        return false;
    *contents = readContents(snapshot);
    return true;
}

void ZDLibraryPackage::watchForExternalChanges(int settleDelayMs)
{
    if (m_options.packagePath.isEmpty() || m_watcher)
        return;
    m_watcher = std::make_unique<ZDPackageWatcher>(m_options.packagePath, m_stamps, settleDelayMs, this);
    connect(m_watcher.get(), &ZDPackageWatcher::changedBySomeoneElse, this,
            &ZDLibraryPackage::changedBySomeoneElse);
}

// Editing and writing.

void ZDLibraryPackage::enqueueEdit(const QStringList &paths, std::function<void(ZDPackageTree &)> edit)
{
    m_scheduler->enqueuePackageEdit([this, paths, edit = std::move(edit)] {
        if (!m_tree)
            return;
        edit(*m_tree);
        for (const QString &path : paths)
            m_dirtyPaths.insert(path);
    });
}

bool ZDLibraryPackage::save(ZDError *error)
{
    if (!m_hasTree)
        return ZDError::fail(error, ZDStoreErrors::nothingToSave());
    if (m_packageOnDisk)
        m_scheduler->enqueueWriteOperationIfNeeded();
    else
        m_scheduler->enqueueWriteOperationRegardless();
    m_scheduler->waitUntilAllOperationsAreFinished();
    const ZDError failure = lastWriteError();
    if (!failure.isNull())
        return ZDError::fail(error, failure);
    return true;
}

ZDError ZDLibraryPackage::lastWriteError() const
{
    std::lock_guard lock(m_writeErrorMutex);
    return m_lastWriteError;
}

QString ZDLibraryPackage::lastWriteUUID() const
{
    return m_stamps.stamp();
}

// On the file-system queue.
bool ZDLibraryPackage::writeOnQueue()
{
    bool merged = false;
    const ZDPackageStorage::ZDReconcile reconcile =
        [this, &merged](ZDPackageTree &tree, ZDPackageTree &&onDisk, const QString &diskStamp, ZDError *) {
            zdLog(ZDLogLevel::Info, ZDLogDomain::Library,
                  QStringLiteral("The library was written elsewhere (%1); taking that in before writing.")
                      .arg(diskStamp));
            mergeUnwrittenEdits(tree, std::move(onDisk), m_dirtyPaths);
            merged = true;
            return true;
        };
    ZDError error;
    const bool written =
        ZDPackageStorage::writePackage(m_tree.get(), m_options.packagePath, m_stamps, reconcile, &error);
    if (written) {
        m_dirtyPaths.clear();
        m_packageOnDisk = true;
    }
    {
        std::lock_guard lock(m_writeErrorMutex);
        m_lastWriteError = written ? ZDError() : error;
    }
    QMetaObject::invokeMethod(
        this, [this, written, error, merged] { Q_EMIT writeFinished(written, error, merged); },
        Qt::QueuedConnection);
    return written;
}
