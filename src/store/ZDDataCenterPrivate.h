#pragma once

// The store's state, shared by its implementation files.

#include "ZDDataCenter.h"
#include "ZDLibraryPackage.h"

struct ZDDataCenter::Private
{
    Options options;
    ZDUserDefaults *defaults = nullptr;
    ZDMulticastDelegateHandler *notifier = nullptr;

    // Main thread.
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

    /// The package tree, its queued edits and writes, and the watch for other writers.
    std::unique_ptr<ZDLibraryPackage> package;
};
