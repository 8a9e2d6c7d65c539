#pragma once

#include "ZDPackageTree.h"
#include "ZDRecordTypes.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <functional>

namespace ZDRecordCache {
class Preload;
}

/// The records of a package tree, and their encodings back into the tree's files.
///
/// Reading never fails as a whole: a snippet file or list element that does not unarchive is
/// skipped and counted, so that one damaged record costs only itself.
struct ZDLibraryContents
{
    ZDSnippetList snippets;
    QList<ZDCategoryNodePtr> rootFolderNodes;
    QList<ZDCategoryNodePtr> shortcutNodes;
    QList<ZDCategoryNodePtr> smartGroupNodes;
    ZDTagList tags;
    /// Read from the top-level "deletion.data" (which the store never writes; see
    /// ZDPackageLayout), so usually empty.
    QStringList deletedUUIDs;

    /// Records that could not be read, by file ("Database/tags.data", or a snippet's file).
    QStringList unreadableRecords;
    /// List files that are not lists at all.
    QStringList unreadableFiles;

    /// Set by read() when the snippet cache is missing or out of date: writes it anew. It holds
    /// bytes, not records, so it may run later on any thread (the store runs it on its
    /// file-system queue); the cache stays as it was until it runs.
    std::function<void()> cacheUpdate;

    /// Reads every record of `tree`. Snippet files are read and unarchived on all cores. With a
    /// `cachePath` (ZDRecordCache), when the library has at least `cacheMinimum` snippets,
    /// snippets whose files are unchanged come from the cache, and cacheUpdate is set when the
    /// cache needs writing. A `preload` of that cache, started before the tree was read, saves
    /// waiting for the decoding.
    static ZDLibraryContents read(const ZDPackageTree &tree, const QString &cachePath = {}, int cacheMinimum = 1000,
                                  ZDRecordCache::Preload *preload = nullptr);

    /// A list file holding the nodes' archives.
    static QByteArray encodeNodes(const QList<ZDCategoryNodePtr> &nodes);
    static QByteArray encodeTags(const ZDTagList &tags);
};
