// The store's operations on the sidebar's lists: folders, shortcuts, smart groups and tags. Like
// the snippet operations beside them, each checks first, then changes, then announces.

#include "ZDDataCenter.h"
#include "ZDDataCenterPrivate.h"

#include "ZDCategoryNode.h"
#include "ZDLanguage.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDOperationChecks.h"
#include "ZDOperationErrors.h"
#include "ZDPredicate.h"
#include "ZDSnippet.h"
#include "ZDSnippetPart.h"
#include "ZDStoreErrors.h"
#include "ZDTag.h"

#include <QSet>

#include <algorithm>
#include <optional>

using namespace ZDOperationChecks;
namespace Errors = ZDOperationErrors;

// Folders -----------------------------------------------------------------------------------------

ZDCategoryNodePtr ZDDataCenter::createFolder(const QString &title, const QString &parentUUID, int index,
                                             QObject *sender, ZDError *error)
{
    const char *operation = "createFolder";
    if (refuseWithoutTree(ZDStoreErrors::SetFoldersCode, error))
        return nullptr;
    ZDCategoryNodePtr parent;
    if (!parentUUID.isEmpty()) {
        const std::optional<Nodes> found = findFolders(*this, {parentUUID}, operation, error);
        if (!found)
            return nullptr;
        parent = found->first();
    }
    if (!checkTitle(title, operation, error))
        return nullptr;
    const ZDCategoryNodePtr folder = ZDCategoryNode::folderNodeWithTitle(title);
    Nodes roots = d->rootFolderNodes;
    qsizetype at;
    if (parent) {
        at = insertionIndex(index, parent->children().size());
        parent->insertChild(at, folder);
    } else {
        at = insertionIndex(index, roots.size());
        roots.insert(at, folder);
    }
    setRootFolderNodes(roots);
    d->notifier->noteFolderAdded(folder, parent, int(at), sender);
    return folder;
}

bool ZDDataCenter::renameFolder(const QString &folderUUID, const QString &title, QObject *sender,
                                ZDError *error)
{
    const char *operation = "renameFolder";
    if (refuseWithoutTree(ZDStoreErrors::SetFoldersCode, error))
        return false;
    const std::optional<Nodes> folder = findFolders(*this, {folderUUID}, operation, error);
    if (!folder || !checkTitle(title, operation, error))
        return false;
    if (folder->first()->title() == title)
        return true;
    folder->first()->setTitle(title);
    rewriteList(StoredList::Folders);
    d->notifier->noteFolderRenamed(folder->first(), sender);
    return true;
}

bool ZDDataCenter::moveFolders(const QStringList &folderUUIDs, const QString &parentUUID, int index,
                               QObject *sender, ZDError *error)
{
    const char *operation = "moveFolders";
    if (refuseWithoutTree(ZDStoreErrors::SetFoldersCode, error))
        return false;
    const std::optional<Nodes> folders = findFolders(*this, folderUUIDs, operation, error);
    if (!folders)
        return false;
    ZDCategoryNodePtr parent;
    if (!parentUUID.isEmpty()) {
        const std::optional<Nodes> found = findFolders(*this, {parentUUID}, operation, error);
        if (!found)
            return false;
        parent = found->first();
        for (const ZDCategoryNodePtr &folder : *folders) {
            if (folder == parent || parent->isDescendantOfNode(folder))
                return ZDError::fail(error,
                                     Errors::folderIntoItself(QLatin1String(operation), folder->title()));
        }
    }
    if (folders->isEmpty())
        return true;
    Nodes roots = d->rootFolderNodes;
    for (const ZDCategoryNodePtr &folder : *folders)
        detach(folder, roots);
    qsizetype at = insertionIndex(index, parent ? parent->children().size() : roots.size());
    for (const ZDCategoryNodePtr &folder : *folders) {
        if (parent)
            parent->insertChild(at++, folder);
        else
            roots.insert(at++, folder);
    }
    setRootFolderNodes(roots);
    d->notifier->noteFoldersReordered(*folders, sender);
    return true;
}

ZDSnippetList ZDDataCenter::snippetsInFolders(const QStringList &folderUUIDs) const
{
    Nodes folders;
    for (const QString &UUID : folderUUIDs) {
        if (const ZDCategoryNodePtr folder = folderNodeWithUUID(UUID))
            folders << folder;
    }
    const QSet<QString> within = UUIDsWithin(folders);
    ZDSnippetList filed;
    for (const ZDSnippetPtr &snippet : d->snippets) {
        if (within.contains(snippet->folderUUID()))
            filed << snippet;
    }
    return filed;
}

bool ZDDataCenter::deleteFolders(const QStringList &folderUUIDs, QObject *sender, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetFoldersCode, error))
        return false;
    const std::optional<Nodes> folders = findFolders(*this, folderUUIDs, "deleteFolders", error);
    if (!folders)
        return false;
    if (folders->isEmpty())
        return true;
    const QSet<QString> removed = UUIDsWithin(*folders);
    const ZDSnippetList snippets = snippetsInFolders(folderUUIDs);
    Nodes roots = d->rootFolderNodes;
    for (const ZDCategoryNodePtr &folder : *folders)
        detach(folder, roots);
    setRootFolderNodes(roots);
    Nodes shortcuts = d->shortcutNodes;
    if (shortcuts.removeIf(
            [&](const ZDCategoryNodePtr &shortcut) { return removed.contains(shortcut->UUID()); }) > 0)
        setShortcutNodes(shortcuts);
    if (!snippets.isEmpty()) {
        removeSnippetsFromArray(snippets);
        d->notifier->noteSnippetsRemoved(snippets, sender);
    }
    d->notifier->noteFoldersRemoved(*folders, sender);
    return true;
}

// Shortcuts ---------------------------------------------------------------------------------------

bool ZDDataCenter::addShortcuts(const QStringList &folderUUIDs, int index, QObject *sender, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetShortcutsCode, error))
        return false;
    const std::optional<Nodes> folders = findFolders(*this, folderUUIDs, "addShortcuts", error);
    if (!folders)
        return false;
    Nodes added;
    for (const ZDCategoryNodePtr &folder : *folders) {
        const bool hasOne = std::any_of(
            d->shortcutNodes.cbegin(), d->shortcutNodes.cend(),
            [&](const ZDCategoryNodePtr &shortcut) { return shortcut->UUID() == folder->UUID(); });
        if (!hasOne)
            added << ZDCategoryNode::shortcutNodeWithTargetUUID(folder->UUID());
    }
    if (added.isEmpty())
        return true;
    setShortcutNodes(movedWithin(d->shortcutNodes, added, index));
    d->notifier->noteFoldersReordered(added, sender);
    return true;
}

bool ZDDataCenter::moveShortcuts(const QStringList &folderUUIDs, int index, QObject *sender, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetShortcutsCode, error))
        return false;
    const std::optional<Nodes> moved =
        findNodes(d->shortcutNodes, folderUUIDs, QStringLiteral("shortcut"), "moveShortcuts", error);
    if (!moved)
        return false;
    if (moved->isEmpty())
        return true;
    setShortcutNodes(movedWithin(d->shortcutNodes, *moved, index));
    d->notifier->noteFoldersReordered(*moved, sender);
    return true;
}

bool ZDDataCenter::deleteShortcuts(const QStringList &folderUUIDs, QObject *sender, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetShortcutsCode, error))
        return false;
    const std::optional<Nodes> removed =
        findNodes(d->shortcutNodes, folderUUIDs, QStringLiteral("shortcut"), "deleteShortcuts", error);
    if (!removed)
        return false;
    if (removed->isEmpty())
        return true;
    Nodes remaining = d->shortcutNodes;
    remaining.removeIf([&](const ZDCategoryNodePtr &shortcut) { return removed->contains(shortcut); });
    setShortcutNodes(remaining);
    // Not noteFoldersRemoved: the folders themselves stay.
    d->notifier->noteFoldersReordered(*removed, sender);
    return true;
}

// Smart groups ------------------------------------------------------------------------------------

ZDCategoryNodePtr ZDDataCenter::addSmartGroup(const QString &title, const QString &predicateString,
                                              QObject *sender, ZDError *error)
{
    const char *operation = "addSmartGroup";
    if (refuseWithoutTree(ZDStoreErrors::SetSmartGroupsCode, error))
        return nullptr;
    if (!checkTitle(title, operation, error) || !checkPredicate(predicateString, operation, error))
        return nullptr;
    const ZDCategoryNodePtr group = ZDCategoryNode::smartGroupNodeWithTitle(title, {}, predicateString);
    setSmartGroupNodes(smartGroupNodes() << group);
    d->notifier->noteFoldersReordered({group}, sender);
    return group;
}

bool ZDDataCenter::moveSmartGroups(const QStringList &UUIDs, int index, QObject *sender, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetSmartGroupsCode, error))
        return false;
    const Nodes groups = smartGroupNodes();
    const std::optional<Nodes> moved =
        findNodes(groups, UUIDs, QStringLiteral("smart group"), "moveSmartGroups", error);
    if (!moved)
        return false;
    if (moved->isEmpty())
        return true;
    setSmartGroupNodes(movedWithin(groups, *moved, index));
    d->notifier->noteFoldersReordered(*moved, sender);
    return true;
}

bool ZDDataCenter::renameSmartGroup(const QString &UUID, const QString &title, QObject *sender,
                                    ZDError *error)
{
    const char *operation = "renameSmartGroup";
    if (refuseWithoutTree(ZDStoreErrors::SetSmartGroupsCode, error))
        return false;
    const std::optional<Nodes> group =
        findNodes(smartGroupNodes(), {UUID}, QStringLiteral("smart group"), operation, error);
    if (!group || !checkTitle(title, operation, error))
        return false;
    if (group->first()->title() == title)
        return true;
    group->first()->setTitle(title);
    rewriteList(StoredList::SmartGroups);
    d->notifier->noteSmartGroupRenamed(group->first(), sender);
    return true;
}

bool ZDDataCenter::setSmartGroupPredicate(const QString &UUID, const QString &predicateString,
                                          QObject *sender, ZDError *error)
{
    const char *operation = "setSmartGroupPredicate";
    if (refuseWithoutTree(ZDStoreErrors::SetSmartGroupsCode, error))
        return false;
    const std::optional<Nodes> group =
        findNodes(smartGroupNodes(), {UUID}, QStringLiteral("smart group"), operation, error);
    if (!group || !checkPredicate(predicateString, operation, error))
        return false;
    if (group->first()->predicateString() == predicateString)
        return true;
    group->first()->setPredicateString(predicateString);
    rewriteList(StoredList::SmartGroups);
    d->notifier->noteSmartGroupRenamed(group->first(), sender);
    return true;
}

bool ZDDataCenter::deleteSmartGroups(const QStringList &UUIDs, QObject *sender, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetSmartGroupsCode, error))
        return false;
    Nodes groups = smartGroupNodes();
    const std::optional<Nodes> removed =
        findNodes(groups, UUIDs, QStringLiteral("smart group"), "deleteSmartGroups", error);
    if (!removed)
        return false;
    if (removed->isEmpty())
        return true;
    groups.removeIf([&](const ZDCategoryNodePtr &group) { return removed->contains(group); });
    setSmartGroupNodes(groups);
    d->notifier->noteFoldersRemoved(*removed, sender);
    return true;
}

// Tags --------------------------------------------------------------------------------------------

ZDTagPtr ZDDataCenter::addTag(const QString &title, QObject *sender, ZDError *error)
{
    const char *operation = "addTag";
    if (refuseWithoutTree(ZDStoreErrors::SetTagsCode, error))
        return nullptr;
    if (!checkTitle(title, operation, error))
        return nullptr;
    if (const ZDTagPtr existing = tagWithName(title)) {
        ZDError::fail(error,
                      Errors::alreadyExists(QLatin1String(operation),
                                            tr("There is a tag “%1” already.").arg(existing->title())));
        return nullptr;
    }
    const ZDTagPtr tag = ZDTag::create(title);
    setTags(tags() << tag);
    d->notifier->noteTagRenamed(tag, sender);
    return tag;
}

bool ZDDataCenter::renameTag(const QString &tagUUID, const QString &title, QObject *sender, ZDError *error)
{
    const char *operation = "renameTag";
    if (refuseWithoutTree(ZDStoreErrors::SetTagsCode, error))
        return false;
    const ZDTagList library = tags();
    const ZDTagPtr tag = findTag(library, tagUUID, operation, error);
    if (!tag || !checkTitle(title, operation, error))
        return false;
    const auto other = std::find_if(library.cbegin(), library.cend(), [&](const ZDTagPtr &t) {
        return t != tag && ZDTag::isTagNameEquivalentToName(t->title(), title);
    });
    if (other == library.cend()) {
        if (tag->title() == title)
            return true;
        tag->setTitle(title);
        rewriteList(StoredList::Tags);
        d->notifier->noteTagRenamed(tag, sender);
        return true;
    }
    // The name is another tag's: the two become one, under that tag's identity and the new name.
    const ZDTagPtr survivor = *other;
    const bool retitled = survivor->title() != title;
    survivor->setTitle(title);
    mergeTags({tagUUID}, survivor->UUID(), sender); // cannot fail: both tags were found above
    if (retitled)
        d->notifier->noteTagRenamed(survivor, sender);
    return true;
}

bool ZDDataCenter::mergeTags(const QStringList &tagUUIDs, const QString &intoTagUUID, QObject *sender,
                             ZDError *error)
{
    const char *operation = "mergeTags";
    if (refuseWithoutTree(ZDStoreErrors::SetTagsCode, error))
        return false;
    const ZDTagList library = tags();
    if (!findTag(library, intoTagUUID, operation, error))
        return false;
    ZDTagList merged;
    QSet<QString> mergedUUIDs;
    for (const QString &UUID : tagUUIDs) {
        const ZDTagPtr tag = findTag(library, UUID, operation, error);
        if (!tag)
            return false;
        if (UUID != intoTagUUID && !mergedUUIDs.contains(UUID)) {
            mergedUUIDs.insert(UUID);
            merged << tag;
        }
    }
    if (merged.isEmpty())
        return true;
    ZDSnippetList retagged;
    for (const ZDSnippetPtr &snippet : d->snippets) {
        const QStringList UUIDs = replacedTags(snippet->tagUUIDs(), mergedUUIDs, intoTagUUID);
        if (UUIDs != snippet->tagUUIDs()) {
            snippet->setTagUUIDs(UUIDs);
            retagged << snippet;
        }
    }
    ZDTagList remaining = library;
    remaining.removeIf([&](const ZDTagPtr &tag) { return mergedUUIDs.contains(tag->UUID()); });
    setTags(remaining);
    if (!retagged.isEmpty()) {
        setSnippetsUpdated(retagged);
        d->notifier->noteSnippetsTagsChanged(retagged, sender);
    }
    d->notifier->noteTagsRemoved(merged, sender);
    return true;
}

bool ZDDataCenter::deleteTags(const QStringList &tagUUIDs, QObject *sender, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetTagsCode, error))
        return false;
    const ZDTagList library = tags();
    ZDTagList removed;
    QSet<QString> removedUUIDs;
    for (const QString &UUID : tagUUIDs) {
        const ZDTagPtr tag = findTag(library, UUID, "deleteTags", error);
        if (!tag)
            return false;
        if (!removedUUIDs.contains(UUID)) {
            removedUUIDs.insert(UUID);
            removed << tag;
        }
    }
    if (removed.isEmpty())
        return true;
    ZDSnippetList retagged;
    for (const ZDSnippetPtr &snippet : d->snippets) {
        const QStringList UUIDs = replacedTags(snippet->tagUUIDs(), removedUUIDs, QString());
        if (UUIDs != snippet->tagUUIDs()) {
            snippet->setTagUUIDs(UUIDs);
            retagged << snippet;
        }
    }
    ZDTagList remaining = library;
    remaining.removeIf([&](const ZDTagPtr &tag) { return removedUUIDs.contains(tag->UUID()); });
    setTags(remaining);
    if (!retagged.isEmpty()) {
        setSnippetsUpdated(retagged);
        d->notifier->noteSnippetsTagsChanged(retagged, sender);
    }
    d->notifier->noteTagsRemoved(removed, sender);
    return true;
}
