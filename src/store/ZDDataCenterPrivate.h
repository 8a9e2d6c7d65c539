#pragma once

// The store's state, shared by its implementation files.

#include "ZDDataCenter.h"
#include "ZDPackageStorage.h"
#include "ZDPackageWatcher.h"
#include "ZDWriteScheduler.h"

#include <QSet>

#include <atomic>

struct ZDDataCenter::Private
{
    Options options;
    ZDUserDefaults *defaults = nullptr;
    ZDMulticastDelegateHandler *notifier = nullptr;

    // Main thread.
    bool hasTree = false;
    std::atomic<bool> packageOnDisk{false};
    bool outdatedVersionPrompted = false;
    ZDError loadError;
    ZDSnippetList snippets;
    QHash<QString, ZDSnippetPtr> snippetsByUUID;
    QList<ZDCategoryNodePtr> rootFolderNodes;
    QList<ZDCategoryNodePtr> shortcutNodes;
    QStringList deletedUUIDs;

    // Read by records on any thread.
    mutable std::mutex directoryMutex;
    ZDTagList tags;
    QList<ZDCategoryNodePtr> smartGroupNodes;
    QHash<QString, QString> folderTitles;
    QHash<QString, QString> folderDefaultLanguageIdentifiers;

    // The file-system queue's.
    std::unique_ptr<ZDPackageTree> tree;
    /// Paths edited since the last successful write: what a merge with the disk must keep.
    QSet<QString> dirtyPaths;
    bool mergedWithDisk = false;

    ZDWriteStampRegister stamps;
    mutable std::mutex writeErrorMutex;
    ZDError lastWriteError;

    std::unique_ptr<ZDWriteScheduler> scheduler;
    std::unique_ptr<ZDPackageWatcher> watcher;
};

/// Puts the unwritten edits (`dirtyPaths` of `tree`) on top of `onDisk` and makes that the tree.
void zdMergeUnwrittenEdits(ZDPackageTree &tree, ZDPackageTree &&onDisk, const QSet<QString> &dirtyPaths);
