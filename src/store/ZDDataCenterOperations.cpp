// The store's operations: each checks everything it needs before it touches a record, so that a
// refusal leaves the library as it was, then goes through the list mutations (which cannot fail
// once the tree is known to be there), then posts its notice. Records are shared objects: a
// check that came after the first in-place change could not be undone, hence the order.

#include "ZDDataCenter.h"
#include "ZDDataCenterPrivate.h"

#include "ZDCategoryNode.h"
#include "ZDLanguage.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDOperationErrors.h"
#include "ZDPredicate.h"
#include "ZDSnippet.h"
#include "ZDSnippetPart.h"
#include "ZDStoreErrors.h"
#include "ZDTag.h"

#include <QSet>

#include <algorithm>
#include <optional>

namespace {
using Nodes = QList<ZDCategoryNodePtr>;
namespace Errors = ZDOperationErrors;

QString uncategorizedUUID()
{
    return QLatin1String(ZDUncategorizedUUID);
}

/// The library's snippets with these UUIDs, in that order, each once; null when one is unknown.
std::optional<ZDSnippetList> findSnippets(const ZDDataCenter &center, const QStringList &UUIDs,
                                          const char *operation, ZDError *error)
{
    ZDSnippetList snippets;
    QSet<QString> seen;
    for (const QString &UUID : UUIDs) {
        const ZDSnippetPtr snippet = center.snippetWithUUID(UUID);
        if (!snippet) {
            ZDError::fail(error,
                          Errors::unknownRecord(QLatin1String(operation), QStringLiteral("snippet"), UUID));
            return std::nullopt;
        }
        if (!seen.contains(UUID)) {
            seen.insert(UUID);
            snippets << snippet;
        }
    }
    return snippets;
}

ZDSnippetPtr findSnippet(const ZDDataCenter &center, const QString &UUID, const char *operation,
                         ZDError *error)
{
    const std::optional<ZDSnippetList> found = findSnippets(center, {UUID}, operation, error);
    return found ? found->first() : nullptr;
}

ZDSnippetPartPtr findPart(const ZDSnippet &snippet, const QString &partUUID, const char *operation,
                          ZDError *error)
{
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        if (part->UUID() == partUUID)
            return part;
    }
    ZDError::fail(error,
                  Errors::unknownRecord(QLatin1String(operation), QStringLiteral("fragment"), partUUID));
    return nullptr;
}

/// The nodes of `list` with these UUIDs, in the order given, each once; null when one is unknown.
std::optional<Nodes> findNodes(const Nodes &list, const QStringList &UUIDs, const QString &kind,
                               const char *operation, ZDError *error)
{
    Nodes found;
    for (const QString &UUID : UUIDs) {
        const auto it = std::find_if(list.cbegin(), list.cend(),
                                     [&](const ZDCategoryNodePtr &n) { return n->UUID() == UUID; });
        if (it == list.cend()) {
            ZDError::fail(error, Errors::unknownRecord(QLatin1String(operation), kind, UUID));
            return std::nullopt;
        }
        if (!found.contains(*it))
            found << *it;
    }
    return found;
}

std::optional<Nodes> findFolders(const ZDDataCenter &center, const QStringList &UUIDs, const char *operation,
                                 ZDError *error)
{
    Nodes folders;
    for (const QString &UUID : UUIDs) {
        const ZDCategoryNodePtr folder = center.folderNodeWithUUID(UUID);
        if (!folder) {
            ZDError::fail(error,
                          Errors::unknownRecord(QLatin1String(operation), QStringLiteral("folder"), UUID));
            return std::nullopt;
        }
        if (!folders.contains(folder))
            folders << folder;
    }
    return folders;
}

ZDTagPtr findTag(const ZDTagList &tags, const QString &UUID, const char *operation, ZDError *error)
{
    for (const ZDTagPtr &tag : tags) {
        if (tag->UUID() == UUID)
            return tag;
    }
    ZDError::fail(error, Errors::unknownRecord(QLatin1String(operation), QStringLiteral("tag"), UUID));
    return nullptr;
}

/// A title must say something; it is kept as typed.
bool checkTitle(const QString &title, const char *operation, ZDError *error)
{
    if (!title.trimmed().isEmpty())
        return true;
    return ZDError::fail(
        error, Errors::invalidArgument(QLatin1String(operation), QObject::tr("A title can’t be empty.")));
}

bool checkPredicate(const QString &predicateString, const char *operation, ZDError *error)
{
    ZDError parseError;
    if (ZDPredicate::fromFormat(predicateString, &parseError).isValid())
        return true;
    ZDError refusal = Errors::invalidArgument(
        QLatin1String(operation), QObject::tr("The query “%1” can’t be read.").arg(predicateString));
    refusal.withInformation(QStringLiteral("UnderlyingError"), parseError.toString());
    return ZDError::fail(error, refusal);
}

qsizetype insertionIndex(int index, qsizetype count)
{
    return index < 0 || index > count ? count : index;
}

/// `list` with `moved` taken out and put back together at `index`.
Nodes movedWithin(Nodes list, const Nodes &moved, int index)
{
    list.removeIf([&](const ZDCategoryNodePtr &node) { return moved.contains(node); });
    qsizetype at = insertionIndex(index, list.size());
    for (const ZDCategoryNodePtr &node : moved)
        list.insert(at++, node);
    return list;
}

/// Takes `node` out of its parent or out of the top-level list.
void detach(const ZDCategoryNodePtr &node, Nodes &roots)
{
    if (const ZDCategoryNodePtr parent = node->parentCategoryNode())
        parent->removeChild(node);
    else
        roots.removeIf([&](const ZDCategoryNodePtr &n) { return n.get() == node.get(); });
}

QSet<QString> UUIDsWithin(const Nodes &folders)
{
    QSet<QString> UUIDs;
    for (const ZDCategoryNodePtr &folder : folders) {
        UUIDs.insert(folder->UUID());
        folder->traverseSubNodesWithBlock(
            [&](const ZDCategoryNodePtr &child, int) { UUIDs.insert(child->UUID()); });
    }
    return UUIDs;
}

/// `tagUUIDs` with every one of `replaced` turned into `replacement` (or dropped when it is
/// empty), each UUID kept once, where it first appears.
QStringList replacedTags(const QStringList &tagUUIDs, const QSet<QString> &replaced,
                         const QString &replacement)
{
    QStringList result;
    for (const QString &UUID : tagUUIDs) {
        const QString kept = replaced.contains(UUID) ? replacement : UUID;
        if (!kept.isEmpty() && !result.contains(kept))
            result << kept;
    }
    return result;
}
} // namespace

void ZDDataCenter::rewriteList(StoredList list)
{
    switch (list) {
    case StoredList::Folders:
        setRootFolderNodes(d->rootFolderNodes);
        break;
    case StoredList::Shortcuts:
        setShortcutNodes(d->shortcutNodes);
        break;
    case StoredList::SmartGroups:
        setSmartGroupNodes(smartGroupNodes());
        break;
    case StoredList::Tags:
        setTags(tags());
        break;
    }
}

// Snippets ----------------------------------------------------------------------------------------

bool ZDDataCenter::addSnippets(const ZDSnippetList &snippets, QObject *sender, ZDError *error)
{
    const char *operation = "addSnippets";
    if (refuseWithoutTree(ZDStoreErrors::AddSnippetsCode, error))
        return false;
    QSet<QString> knownTags;
    for (const ZDTagPtr &tag : tags())
        knownTags.insert(tag->UUID());
    QSet<QString> added;
    for (const ZDSnippetPtr &snippet : snippets) {
        if (!snippet)
            return ZDError::fail(
                error, Errors::invalidArgument(QLatin1String(operation), tr("A snippet is missing.")));
        if (d->snippetsByUUID.contains(snippet->UUID()) || added.contains(snippet->UUID()))
            return ZDError::fail(error,
                                 Errors::alreadyExists(
                                     QLatin1String(operation),
                                     tr("The snippet “%1” is in the library already.").arg(snippet->UUID())));
        added.insert(snippet->UUID());
        if (snippet->folderUUID() != uncategorizedUUID() && !folderNodeWithUUID(snippet->folderUUID()))
            return ZDError::fail(error,
                                 Errors::unknownRecord(QLatin1String(operation), QStringLiteral("folder"),
                                                       snippet->folderUUID()));
        for (const QString &tagUUID : snippet->tagUUIDs()) {
            if (!knownTags.contains(tagUUID))
                return ZDError::fail(
                    error, Errors::unknownRecord(QLatin1String(operation), QStringLiteral("tag"), tagUUID));
        }
    }
    if (snippets.isEmpty())
        return true;
    addSnippetsFromArray(snippets);
    for (const ZDSnippetPtr &snippet : snippets)
        d->notifier->noteSnippetAdded(snippet, sender);
    return true;
}

bool ZDDataCenter::removeSnippets(const QStringList &snippetUUIDs, QObject *sender, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::RemoveSnippetsCode, error))
        return false;
    const std::optional<ZDSnippetList> snippets = findSnippets(*this, snippetUUIDs, "removeSnippets", error);
    if (!snippets)
        return false;
    if (snippets->isEmpty())
        return true;
    removeSnippetsFromArray(*snippets);
    d->notifier->noteSnippetsRemoved(*snippets, sender);
    return true;
}

bool ZDDataCenter::moveSnippetsToFolder(const QStringList &snippetUUIDs, const QString &folderUUID,
                                        QObject *sender, ZDError *error)
{
    const char *operation = "moveSnippetsToFolder";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    if (folderUUID != uncategorizedUUID() && !findFolders(*this, {folderUUID}, operation, error))
        return false;
    const std::optional<ZDSnippetList> snippets = findSnippets(*this, snippetUUIDs, operation, error);
    if (!snippets)
        return false;
    ZDSnippetList moved;
    for (const ZDSnippetPtr &snippet : *snippets) {
        if (snippet->folderUUID() != folderUUID)
            moved << snippet;
    }
    if (moved.isEmpty())
        return true;
    for (const ZDSnippetPtr &snippet : std::as_const(moved))
        snippet->setFolderUUID(folderUUID);
    setSnippetsUpdated(moved);
    d->notifier->noteSnippetsCategoryChanged(moved, sender);
    return true;
}

bool ZDDataCenter::setSnippetTitle(const QString &snippetUUID, const QString &title, QObject *sender,
                                   ZDError *error)
{
    const char *operation = "setSnippetTitle";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, operation, error);
    if (!snippet || !checkTitle(title, operation, error))
        return false;
    if (snippet->title() == title)
        return true;
    snippet->setTitle(title);
    setSnippetsUpdated({snippet});
    d->notifier->noteSnippetTitleChanged(snippet, sender);
    return true;
}

ZDTagPtr ZDDataCenter::tagWithName(const QString &name) const
{
    for (const ZDTagPtr &tag : tags()) {
        if (ZDTag::isTagNameEquivalentToName(tag->title(), name))
            return tag;
    }
    return nullptr;
}

bool ZDDataCenter::setSnippetTagNames(const QString &snippetUUID, const QStringList &names, QObject *sender,
                                      ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, "setSnippetTagNames", error);
    if (!snippet)
        return false;
    ZDTagList library = tags();
    const qsizetype known = library.size();
    QStringList UUIDs;
    for (const QString &rawName : names) {
        const QString name = rawName.simplified();
        if (name.isEmpty())
            continue;
        const auto it = std::find_if(library.cbegin(), library.cend(), [&](const ZDTagPtr &tag) {
            return ZDTag::isTagNameEquivalentToName(tag->title(), name);
        });
        const ZDTagPtr tag = it != library.cend() ? *it : library.emplaceBack(ZDTag::create(name));
        if (!UUIDs.contains(tag->UUID()))
            UUIDs << tag->UUID();
    }
    if (UUIDs == snippet->tagUUIDs())
        return true;
    if (library.size() > known)
        setTags(library);
    snippet->setTagUUIDs(UUIDs);
    setSnippetsUpdated({snippet});
    d->notifier->noteSnippetsTagsChanged({snippet}, sender);
    return true;
}

bool ZDDataCenter::addTagToSnippets(const QStringList &snippetUUIDs, const QString &tagUUID, QObject *sender,
                                    ZDError *error)
{
    const char *operation = "addTagToSnippets";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    if (!findTag(tags(), tagUUID, operation, error))
        return false;
    const std::optional<ZDSnippetList> snippets = findSnippets(*this, snippetUUIDs, operation, error);
    if (!snippets)
        return false;
    ZDSnippetList tagged;
    for (const ZDSnippetPtr &snippet : *snippets) {
        if (!snippet->tagUUIDs().contains(tagUUID))
            tagged << snippet;
    }
    if (tagged.isEmpty())
        return true;
    for (const ZDSnippetPtr &snippet : std::as_const(tagged))
        snippet->setTagUUIDs(snippet->tagUUIDs() << tagUUID);
    setSnippetsUpdated(tagged);
    d->notifier->noteSnippetsTagsChanged(tagged, sender);
    return true;
}

// Parts -------------------------------------------------------------------------------------------

ZDSnippetPartPtr ZDDataCenter::addPart(const QString &snippetUUID, int index, const QString &title,
                                       const ZDLanguage &language, QObject *sender, ZDError *error)
{
    const char *operation = "addPart";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return nullptr;
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, operation, error);
    if (!snippet || !checkTitle(title, operation, error))
        return nullptr;
    const ZDSnippetPartPtr part = ZDSnippetPart::create(title, snippet->UUID());
    if (language.isValid())
        part->setLanguage(language);
    QList<ZDSnippetPartPtr> parts = snippet->parts();
    parts.insert(std::clamp<qsizetype>(index, 0, parts.size()), part);
    snippet->setParts(parts);
    setSnippetsUpdated({snippet});
    d->notifier->noteSnippetContentChanged(snippet, sender);
    return part;
}

bool ZDDataCenter::removePart(const QString &snippetUUID, const QString &partUUID, QObject *sender,
                              ZDError *error)
{
    const char *operation = "removePart";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, operation, error);
    if (!snippet || !findPart(*snippet, partUUID, operation, error))
        return false;
    if (snippet->partsCount() < 2)
        return ZDError::fail(error, Errors::invalidArgument(QLatin1String(operation),
                                                            tr("A snippet keeps at least one fragment.")));
    QList<ZDSnippetPartPtr> parts = snippet->parts();
    parts.removeIf([&](const ZDSnippetPartPtr &part) { return part->UUID() == partUUID; });
    snippet->setParts(parts);
    setSnippetsUpdated({snippet});
    d->notifier->noteSnippetContentChanged(snippet, sender);
    return true;
}

bool ZDDataCenter::movePart(const QString &snippetUUID, int from, int to, QObject *sender, ZDError *error)
{
    const char *operation = "movePart";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, operation, error);
    if (!snippet)
        return false;
    QList<ZDSnippetPartPtr> parts = snippet->parts();
    if (from < 0 || to < 0 || from >= parts.size() || to >= parts.size())
        return ZDError::fail(
            error, Errors::invalidArgument(QLatin1String(operation),
                                           tr("No fragment at position %1 or %2.").arg(from).arg(to)));
    if (from == to)
        return true;
    parts.move(from, to);
    snippet->setParts(parts);
    setSnippetsUpdated({snippet});
    d->notifier->noteSnippetContentChanged(snippet, sender);
    return true;
}

bool ZDDataCenter::setPartTitle(const QString &snippetUUID, const QString &partUUID, const QString &title,
                                QObject *sender, ZDError *error)
{
    const char *operation = "setPartTitle";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, operation, error);
    const ZDSnippetPartPtr part = snippet ? findPart(*snippet, partUUID, operation, error) : nullptr;
    if (!part || !checkTitle(title, operation, error))
        return false;
    if (part->title() == title)
        return true;
    part->setTitle(title);
    setSnippetsUpdated({snippet});
    d->notifier->noteSnippetContentChanged(snippet, sender);
    return true;
}

bool ZDDataCenter::setPartText(const QString &snippetUUID, const QString &partUUID, const QString &content,
                               const QString &note, QObject *sender, ZDError *error)
{
    return setPartTexts(snippetUUID, {{partUUID, content, note}}, sender, error);
}

bool ZDDataCenter::setPartTexts(const QString &snippetUUID, const QList<PartText> &texts, QObject *sender,
                                ZDError *error)
{
    const char *operation = "setPartText";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, operation, error);
    if (!snippet)
        return false;
    QList<ZDSnippetPartPtr> parts;
    for (const PartText &text : texts) {
        const ZDSnippetPartPtr part = findPart(*snippet, text.partUUID, operation, error);
        if (!part)
            return false;
        parts << part;
    }
    if (parts.isEmpty())
        return true;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        parts[i]->setContent(texts[i].content); // the setters stamp the part only on a real change
        parts[i]->setNote(texts[i].note);
    }
    setSnippetsUpdated({snippet});
    d->notifier->noteSnippetContentChanged(snippet, sender);
    return true;
}

bool ZDDataCenter::setPartLanguage(const QString &snippetUUID, const QString &partUUID,
                                   const ZDLanguage &language, QObject *sender, ZDError *error)
{
    const char *operation = "setPartLanguage";
    if (refuseWithoutTree(ZDStoreErrors::UpdateSnippetsCode, error))
        return false;
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, operation, error);
    const ZDSnippetPartPtr part = snippet ? findPart(*snippet, partUUID, operation, error) : nullptr;
    if (!part)
        return false;
    if (!language.isValid())
        return ZDError::fail(
            error, Errors::invalidArgument(QLatin1String(operation), tr("The language is unknown.")));
    if (part->language() == language)
        return true;
    part->setLanguage(language);
    setSnippetsUpdated({snippet});
    d->notifier->noteSnippetsLanguageChanged({snippet}, sender);
    return true;
}

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

// Imports -----------------------------------------------------------------------------------------

namespace {
/// An import's records are all there, and its folders (with their subfolders) are new to each
/// other and to `existing`.
bool checkImport(const Nodes &folders, const Nodes &shortcuts, const Nodes &smartGroups,
                 const ZDTagList &tags, const ZDSnippetList &snippets, const QSet<QString> &existing,
                 const char *operation, ZDError *error)
{
    const auto missing = [](const auto &list) {
        return std::any_of(list.cbegin(), list.cend(), [](const auto &record) { return !record; });
    };
    if (missing(folders) || missing(shortcuts) || missing(smartGroups) || missing(tags) || missing(snippets))
        return ZDError::fail(error,
                             Errors::invalidArgument(QLatin1String(operation),
                                                     QObject::tr("A record of the import is missing.")));
    QSet<QString> seen = existing;
    bool repeated = false;
    for (const ZDCategoryNodePtr &folder : folders) {
        const auto note = [&](const ZDCategoryNodePtr &node) {
            if (seen.contains(node->UUID()))
                repeated = true;
            seen.insert(node->UUID());
        };
        note(folder);
        folder->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &child, int) { note(child); });
    }
    if (repeated)
        return ZDError::fail(
            error, Errors::alreadyExists(QLatin1String(operation),
                                         QObject::tr("A folder of the import is in the library already.")));
    return true;
}
} // namespace

bool ZDDataCenter::addFolderNodes(const QList<ZDCategoryNodePtr> &folderNodes,
                                  const QList<ZDCategoryNodePtr> &shortcutNodes,
                                  const QList<ZDCategoryNodePtr> &smartGroups, const ZDSnippetList &snippets,
                                  const ZDTagList &replaceTags, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetFoldersCode, error))
        return false;
    if (!checkImport(folderNodes, shortcutNodes, smartGroups, replaceTags, snippets,
                     UUIDsWithin(d->rootFolderNodes), "addFolderNodes", error))
        return false;
    setRootFolderNodes(d->rootFolderNodes + folderNodes);
    setShortcutNodes(d->shortcutNodes + shortcutNodes);
    setSmartGroupNodes(smartGroupNodes() + smartGroups);
    setTags(replaceTags);
    addSnippetsFromArray(snippets);
    d->notifier->noteApplicationLibraryChanged(this);
    return true;
}

bool ZDDataCenter::replaceFolderNodes(const QList<ZDCategoryNodePtr> &folderNodes,
                                      const QList<ZDCategoryNodePtr> &shortcutNodes,
                                      const QList<ZDCategoryNodePtr> &smartGroups, const ZDTagList &tags,
                                      const ZDSnippetList &snippets, ZDError *error)
{
    if (refuseWithoutTree(ZDStoreErrors::SetFoldersCode, error))
        return false;
    if (!checkImport(folderNodes, shortcutNodes, smartGroups, tags, snippets, {}, "replaceFolderNodes",
                     error))
        return false;
    setRootFolderNodes(folderNodes);
    setShortcutNodes(shortcutNodes);
    setSmartGroupNodes(smartGroups);
    setTags(tags);
    removeSnippetsFromArray(d->snippets);
    addSnippetsFromArray(snippets);
    d->notifier->noteApplicationLibraryChanged(this);
    return true;
}
