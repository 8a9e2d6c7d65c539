// Writing, reloading and repairing the store's library.

#include "ZDDataCenter.h"
#include "ZDDataCenterPrivate.h"

#include "ZDAnalytics.h"
#include "ZDCategoryNode.h"
#include "ZDLibraryContents.h"
#include "ZDLogger.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDOutdatedVersionResponder.h"
#include "ZDPackageFormat.h"
#include "ZDRecordCache.h"
#include "ZDResources.h"
#include "ZDSnippet.h"
#include "ZDStoreErrors.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"

#include <QFile>

namespace {
const QString kDisableRepairKey = QStringLiteral("ZDDisableRepairInternalInconsistencyIfNeeded");
}

void ZDDataCenter::presentError(const ZDError &error)
{
    zdLog(ZDLogLevel::Error, ZDLogDomain::Library, error.toString());
    if (d->options.errorPresenter)
        d->options.errorPresenter(error);
}

QString ZDDataCenter::recordCachePath() const
{
    if (d->options.recordCacheMinimumSnippets < 0 || d->options.packagePath.isEmpty())
        return {};
    return ZDRecordCache::pathForPackage(d->options.packagePath);
}

ZDLibraryContents ZDDataCenter::readContents(const ZDPackageTree &tree, ZDRecordCache::Preload *preload) const
{
    const QString cachePath = recordCachePath();
    if (cachePath.isEmpty())
        return ZDLibraryContents::read(tree);
    ZDLibraryContents contents =
        ZDLibraryContents::read(tree, cachePath, d->options.recordCacheMinimumSnippets, preload);
    // The cache is written behind the load, not during it.
    if (contents.cacheUpdate)
        d->scheduler->queue().async(std::move(contents.cacheUpdate));
    return contents;
}

void ZDDataCenter::takeContents(ZDLibraryContents &&contents)
{
    d->snippets = std::move(contents.snippets);
    d->snippetsByUUID.clear();
    d->snippetsByUUID.reserve(d->snippets.size());
    for (const ZDSnippetPtr &snippet : std::as_const(d->snippets))
        d->snippetsByUUID.insert(snippet->UUID(), snippet);
    d->rootFolderNodes = std::move(contents.rootFolderNodes);
    d->shortcutNodes = std::move(contents.shortcutNodes);
    d->deletedUUIDs = std::move(contents.deletedUUIDs);
    {
        std::lock_guard lock(d->directoryMutex);
        d->tags = std::move(contents.tags);
        d->smartGroupNodes = std::move(contents.smartGroupNodes);
    }
    updateFolderTables();
}

void ZDDataCenter::updateFolderTables()
{
    QHash<QString, QString> titles;
    QHash<QString, QString> languages;
    const auto take = [&](const ZDCategoryNodePtr &node) {
        titles.insert(node->UUID(), node->title());
        languages.insert(node->UUID(), node->defaultLanguageIdentifier());
    };
    take(ZDCategoryNode::uncategorizedNode());
    take(ZDCategoryNode::allSnippetsNode());
    for (const ZDCategoryNodePtr &root : std::as_const(d->rootFolderNodes)) {
        take(root);
        root->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &node, int) { take(node); });
    }
    std::lock_guard lock(d->directoryMutex);
    d->folderTitles = std::move(titles);
    d->folderDefaultLanguageIdentifiers = std::move(languages);
}

// Writing.

void ZDDataCenter::noteFilePackageContentChanged()
{
    d->scheduler->noteFilePackageContentChanged();
}

bool ZDDataCenter::needsWrite() const
{
    return d->scheduler->needsWrite();
}

bool ZDDataCenter::hasPendingChanges() const
{
    return d->scheduler->hasPendingChanges();
}

void ZDDataCenter::enqueueWriteOperationIfNeeded()
{
    d->scheduler->enqueueWriteOperationIfNeeded();
}

void ZDDataCenter::enqueueWriteOperationRegardless()
{
    d->scheduler->enqueueWriteOperationRegardless();
}

void ZDDataCenter::waitUntilAllOperationsAreFinished()
{
    d->scheduler->waitUntilAllOperationsAreFinished();
}

ZDError ZDDataCenter::lastWriteError() const
{
    std::lock_guard lock(d->writeErrorMutex);
    return d->lastWriteError;
}

QString ZDDataCenter::lastWriteUUID() const
{
    return d->stamps.stamp();
}

bool ZDDataCenter::save(ZDError *error)
{
    if (!d->hasTree)
        return ZDError::fail(error, ZDStoreErrors::nothingToSave());
    // A library that is not on disk yet is written even without changes: that creates it.
    if (d->packageOnDisk)
        enqueueWriteOperationIfNeeded();
    else
        enqueueWriteOperationRegardless();
    waitUntilAllOperationsAreFinished();
    const ZDError failure = lastWriteError();
    if (!failure.isNull())
        return ZDError::fail(error, failure);
    return true;
}

// On the file-system queue.
bool ZDDataCenter::writeOnQueue()
{
    bool merged = false;
    const ZDPackageStorage::ZDReconcile reconcile = [this, &merged](ZDPackageTree &tree, ZDPackageTree &&onDisk,
                                                                   const QString &diskStamp, ZDError *) {
        zdLog(ZDLogLevel::Info, ZDLogDomain::Library,
              QStringLiteral("The library was written elsewhere (%1); taking that in before writing.").arg(diskStamp));
        zdMergeUnwrittenEdits(tree, std::move(onDisk), d->dirtyPaths);
        merged = true;
        return true;
    };
    ZDError error;
    const bool written =
        ZDPackageStorage::writePackage(d->tree.get(), d->options.packagePath, d->stamps, reconcile, &error);
    if (written) {
        d->dirtyPaths.clear();
        d->packageOnDisk = true;
    }
    {
        std::lock_guard lock(d->writeErrorMutex);
        d->lastWriteError = written ? ZDError() : error;
    }
    QMetaObject::invokeMethod(
        this,
        [this, written, error, merged] {
            if (!written)
                presentError(error);
            if (merged)
                reloadFromTree();
            Q_EMIT libraryWritten(written);
        },
        Qt::QueuedConnection);
    return written;
}

// Reloading.

void ZDDataCenter::reloadFromTree()
{
    ZDPackageTree snapshot;
    bool hasTree = false;
    // The queue holds every edit made so far, so the snapshot agrees with the lists in memory
    // apart from what came from disk.
    d->scheduler->queue().sync([&] {
        if (d->tree) {
            snapshot = *d->tree;
            hasTree = true;
        }
    });
    if (!hasTree)
        return;
    takeContents(readContents(snapshot));
    d->notifier->noteApplicationLibraryChanged(this);
}

void ZDDataCenter::updateDataWithLatestPackageWrapper()
{
    const QString path = d->options.packagePath;
    // The newer-version warning is the window's to show, so it is asked here, before the read.
    if (!d->outdatedVersionPrompted) {
        QFile file(path + QLatin1Char('/') + ZDPackageLayout::versionFile);
        QString version;
        if (file.open(QIODevice::ReadOnly) && ZDPackageFormat::decodeVersion(file.readAll(), &version) &&
            ZDDatabaseVersion::isNewerThanCurrent(version)) {
            d->outdatedVersionPrompted = true;
            ZDOutdatedVersionResponder *responder = d->options.outdatedVersionResponder;
            if (!responder || !responder->continueWithNewerLibrary(version, ZDResources::applicationVersion())) {
                zdLog(ZDLogLevel::Warning, ZDLogDomain::Library,
                      QStringLiteral("Not reloading a library written by a newer version (%1).").arg(version));
                return;
            }
        }
    }

    bool read = false;
    ZDError error;
    d->scheduler->queue().sync([&] {
        ZDPackageTree fresh;
        bool warned = true;
        QString stamp;
        if (!ZDPackageStorage::readPackage(path, &fresh, nullptr, &warned, &stamp, &error,
                                           ZDPackageTree::Contents::OnDemand))
            return;
        if (d->tree)
            zdMergeUnwrittenEdits(*d->tree, std::move(fresh), d->dirtyPaths);
        else
            d->tree = std::make_unique<ZDPackageTree>(std::move(fresh));
        d->stamps.setStamp(stamp);
        read = true;
    });
    if (!read) {
        zdLog(ZDLogLevel::Error, ZDLogDomain::Library,
              QStringLiteral("Cannot reload the library: %1").arg(error.toString()));
        return;
    }
    d->hasTree = true;
    d->loadError = ZDError();
    reloadFromTree();
}

bool ZDDataCenter::forceReloadFromDisk(ZDError *error)
{
    waitUntilAllOperationsAreFinished();
    auto fresh = std::make_unique<ZDPackageTree>();
    QString stamp;
    ZDError readError;
    const bool read = ZDPackageStorage::readPackage(d->options.packagePath, fresh.get(),
                                                    d->options.outdatedVersionResponder,
                                                    &d->outdatedVersionPrompted, &stamp, &readError,
                                                    ZDPackageTree::Contents::OnDemand);
    ZDLibraryContents contents = read ? readContents(*fresh) : ZDLibraryContents();
    d->scheduler->queue().sync([&] {
        d->tree = read ? std::move(fresh) : nullptr;
        d->dirtyPaths.clear();
    });
    d->hasTree = read;
    takeContents(std::move(contents));
    if (!read) {
        d->loadError = ZDStoreErrors::reloadFailed(readError);
        return ZDError::fail(error, d->loadError);
    }
    d->stamps.setStamp(stamp);
    d->loadError = ZDError();
    if (d->options.repairOnLoad)
        repairInternalInconsistencyIfNeeded();
    return true;
}

// Repair.

ZDLibraryRepair::Report ZDDataCenter::inspectInternalInconsistency() const
{
    return ZDLibraryRepair::inspect(d->snippets, tags(), folderTitles(), d->shortcutNodes);
}

ZDLibraryRepair::Report ZDDataCenter::repairInternalInconsistencyIfNeeded()
{
    if (d->defaults && d->defaults->objectForKey(kDisableRepairKey).toBool())
        return {};
    return repairInternalInconsistency();
}

ZDLibraryRepair::Report ZDDataCenter::repairInternalInconsistency()
{
    if (!d->hasTree)
        return {};
    const ZDLibraryRepair::Report report = inspectInternalInconsistency();
    if (report.isEmpty())
        return report;
    const ZDSnippetList changed = ZDLibraryRepair::applyToSnippets(report, d->snippets);
    if (!changed.isEmpty())
        setSnippetsUpdated(changed);
    if (report.removedShortcutCount() > 0)
        setShortcutNodes(ZDLibraryRepair::remainingShortcuts(report, d->shortcutNodes));

    const QVariantMap properties = report.analyticsProperties();
    zdReportEvent(QStringLiteral("LibraryRepair"), properties);
    QStringList description;
    for (auto it = properties.cbegin(); it != properties.cend(); ++it)
        description << QStringLiteral("%1 = %2;").arg(it.key(), it.value().toString());
    zdLog(ZDLogLevel::Warning, ZDLogDomain::Library,
          QStringLiteral("Library repaired. {%1}").arg(description.join(QLatin1Char(' '))));
    return report;
}
