// The store's mutations: each changes the in-memory lists at once and queues the matching edit
// of the package tree. Archives are made here, on the main thread, where the records live; the
// queued edit only swaps bytes in the tree.

#include "ZDDataCenter.h"
#include "ZDDataCenterPrivate.h"

#include "ZDCategoryNode.h"
#include "ZDLibraryContents.h"
#include "ZDLogger.h"
#include "ZDPackageFormat.h"
#include "ZDRecordArchive.h"
#include "ZDSnippet.h"
#include "ZDStoreErrors.h"
#include "ZDTag.h"

#include <QSet>

namespace {
struct SnippetFile
{
    QString path;
    QByteArray bytes;
};

QList<SnippetFile> archivedSnippets(const ZDSnippetList &snippets)
{
    QList<SnippetFile> files;
    files.reserve(snippets.size());
    for (const ZDSnippetPtr &snippet : snippets)
        files.append({ZDPackageLayout::snippetFilePath(snippet->UUID()), ZDRecordArchive::archivedSnippet(*snippet)});
    return files;
}

QStringList pathsOf(const QList<SnippetFile> &files)
{
    QStringList paths;
    for (const SnippetFile &file : files)
        paths << file.path;
    return paths;
}
} // namespace

bool ZDDataCenter::refuseWithoutTree(int code, ZDError *error)
{
    if (d->package->hasTree())
        return false;
    const ZDError refusal = ZDStoreErrors::mutationWithoutLibrary(code);
    presentError(refusal);
    ZDError::fail(error, refusal);
    return true;
}

void ZDDataCenter::enqueueEdit(const QStringList &paths, std::function<void(ZDPackageTree &)> edit)
{
    d->package->enqueueEdit(paths, std::move(edit));
}

bool ZDDataCenter::addSnippet(const ZDSnippetPtr &snippet, ZDError *error)
{
    return addSnippetsFromArray({snippet}, error);
}

bool ZDDataCenter::addSnippetsFromArray(const ZDSnippetList &snippets, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::AddSnippetsCode, error))
        return false;
    QSet<QString> added;
    for (const ZDSnippetPtr &snippet : snippets)
        added.insert(snippet->UUID());
    d->snippets.removeIf([&added](const ZDSnippetPtr &snippet) { return added.contains(snippet->UUID()); });
    // A list naming one snippet twice keeps its last occurrence, so the list never holds two.
    QHash<QString, qsizetype> lastIndex;
    for (qsizetype index = 0; index < snippets.size(); ++index)
        lastIndex.insert(snippets.at(index)->UUID(), index);
    for (qsizetype index = 0; index < snippets.size(); ++index) {
        const ZDSnippetPtr &snippet = snippets.at(index);
        if (lastIndex.value(snippet->UUID()) != index)
            continue;
        d->snippets << snippet;
        d->snippetsByUUID.insert(snippet->UUID(), snippet);
    }

    const QList<SnippetFile> files = archivedSnippets(snippets);
    enqueueEdit(pathsOf(files), [files](ZDPackageTree &tree) {
        for (const SnippetFile &file : files)
            tree.setFile(file.path, file.bytes);
    });
    return true;
}

bool ZDDataCenter::removeSnippetsFromArray(const ZDSnippetList &snippets, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::RemoveSnippetsCode, error))
        return false;
    QSet<QString> removed;
    QStringList paths;
    for (const ZDSnippetPtr &snippet : snippets) {
        if (removed.contains(snippet->UUID()))
            continue;
        removed.insert(snippet->UUID());
        d->snippetsByUUID.remove(snippet->UUID());
        d->deletedUUIDs << snippet->UUID();
        paths << ZDPackageLayout::snippetFilePath(snippet->UUID());
    }
    d->snippets.removeIf([&removed](const ZDSnippetPtr &snippet) { return removed.contains(snippet->UUID()); });

    const QByteArray deletionList = ZDPackageFormat::encodeDeletionList(d->deletedUUIDs);
    QStringList touched = paths;
    touched << ZDPackageLayout::deletionListWritePath;
    enqueueEdit(touched, [paths, deletionList](ZDPackageTree &tree) {
        for (const QString &path : paths)
            tree.remove(path);
        tree.setFile(ZDPackageLayout::deletionListWritePath, deletionList);
    });
    return true;
}

bool ZDDataCenter::setSnippetsUpdated(const ZDSnippetList &snippets, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    const QList<SnippetFile> files = archivedSnippets(snippets);
    enqueueEdit(pathsOf(files), [files](ZDPackageTree &tree) {
        for (const SnippetFile &file : files)
            tree.setFile(file.path, file.bytes);
    });
    return true;
}

bool ZDDataCenter::setRootFolderNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetFoldersCode, error))
        return false;
    d->rootFolderNodes = nodes;
    updateFolderTables();
    const QByteArray bytes = ZDLibraryContents::encodeNodes(nodes);
    enqueueEdit({ZDPackageLayout::foldersFile},
                [bytes](ZDPackageTree &tree) { tree.setFile(ZDPackageLayout::foldersFile, bytes); });
    return true;
}

bool ZDDataCenter::setShortcutNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetShortcutsCode, error))
        return false;
    d->shortcutNodes = nodes;
    const QByteArray bytes = ZDLibraryContents::encodeNodes(nodes);
    enqueueEdit({ZDPackageLayout::shortcutsFile},
                [bytes](ZDPackageTree &tree) { tree.setFile(ZDPackageLayout::shortcutsFile, bytes); });
    return true;
}

bool ZDDataCenter::setSmartGroupNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetSmartGroupsCode, error))
        return false;
    {
        std::lock_guard lock(d->directoryMutex);
        d->smartGroupNodes = nodes;
    }
    const QByteArray bytes = ZDLibraryContents::encodeNodes(nodes);
    enqueueEdit({ZDPackageLayout::smartGroupsFile},
                [bytes](ZDPackageTree &tree) { tree.setFile(ZDPackageLayout::smartGroupsFile, bytes); });
    return true;
}

bool ZDDataCenter::setTags(const ZDTagList &tags, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetTagsCode, error))
        return false;
    {
        std::lock_guard lock(d->directoryMutex);
        d->tags = tags;
    }
    const QByteArray bytes = ZDLibraryContents::encodeTags(tags);
    enqueueEdit({ZDPackageLayout::tagsFile},
                [bytes](ZDPackageTree &tree) { tree.setFile(ZDPackageLayout::tagsFile, bytes); });
    return true;
}

bool ZDDataCenter::setTagNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error)
{
    ZDTagList tags;
    for (const ZDCategoryNodePtr &node : nodes)
        tags << std::make_shared<ZDTag>(node->title(), node->UUID());
    return setTags(tags, error);
}
