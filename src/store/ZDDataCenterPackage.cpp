// The store's side of its package: taking in the records the package read, the writing and
// reloading it forwards to the package, and the repair pass after loading.

#include "ZDDataCenter.h"
#include "ZDDataCenterPrivate.h"

#include "ZDCategoryNode.h"
#include "ZDLibraryContents.h"
#include "ZDLogger.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippet.h"
#include "ZDStoreErrors.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"
#include "ZDWriteScheduler.h"

namespace {
const QString kDisableRepairKey = QStringLiteral("ZDDisableRepairInternalInconsistencyIfNeeded");
}

void ZDDataCenter::presentError(const ZDError &error)
{
    zdLog(ZDLogLevel::Error, ZDLogDomain::Library, error.toString());
    if (d->options.errorPresenter)
        d->options.errorPresenter(error);
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
    writeScheduler().noteFilePackageContentChanged();
}

bool ZDDataCenter::needsWrite() const
{
    return d->package->writeScheduler().needsWrite();
}

bool ZDDataCenter::hasPendingChanges() const
{
    return d->package->writeScheduler().hasPendingChanges();
}

void ZDDataCenter::enqueueWriteOperationIfNeeded()
{
    writeScheduler().enqueueWriteOperationIfNeeded();
}

void ZDDataCenter::enqueueWriteOperationRegardless()
{
    writeScheduler().enqueueWriteOperationRegardless();
}

void ZDDataCenter::waitUntilAllOperationsAreFinished()
{
    writeScheduler().waitUntilAllOperationsAreFinished();
}

ZDError ZDDataCenter::lastWriteError() const
{
    return d->package->lastWriteError();
}

QString ZDDataCenter::lastWriteUUID() const
{
    return d->package->lastWriteUUID();
}

bool ZDDataCenter::save(ZDError *error)
{
    return d->package->save(error);
}

// Reloading.

void ZDDataCenter::reloadFromTree()
{
    ZDLibraryContents contents;
    if (!d->package->readCurrentContents(&contents))
        return;
    takeContents(std::move(contents));
    d->notifier->noteApplicationLibraryChanged(this);
}

void ZDDataCenter::updateDataWithLatestPackageWrapper()
{
    if (!d->package->takeInLatest())
        return;
    d->loadError = ZDError();
    reloadFromTree();
}

bool ZDDataCenter::forceReloadFromDisk(ZDError *error)
{
    ZDLibraryContents contents;
    ZDError readError;
    const bool read = d->package->reload(&contents, &readError);
    takeContents(std::move(contents));
    if (!read) {
        d->loadError = ZDStoreErrors::reloadFailed(readError);
        return ZDError::fail(error, d->loadError);
    }
    d->loadError = ZDError();
    if (d->options.repairOnLoad)
        repairInternalInconsistencyIfNeeded();
    return true;
}

// Repair.

ZDLibraryRepair::Report ZDDataCenter::inspectInternalInconsistency() const
{
    return ZDLibraryRepair::inspect(*this);
}

ZDLibraryRepair::Report ZDDataCenter::repairInternalInconsistencyIfNeeded()
{
    if (d->defaults && d->defaults->objectForKey(kDisableRepairKey).toBool())
        return {};
    return repairInternalInconsistency();
}

ZDLibraryRepair::Report ZDDataCenter::repairInternalInconsistency()
{
    if (!d->package->hasTree())
        return {};
    return ZDLibraryRepair::repair(*this);
}
