// The store's operations: each checks everything it needs before it touches a record, so that a
// refusal leaves the library as it was, then goes through the list mutations (which cannot fail
// once the tree is known to be there), then posts its notice. Records are shared objects: a
// check that came after the first in-place change could not be undone, hence the order.

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
    // Any title, an empty one too: the editor's title field saves what is typed.
    const ZDSnippetPtr snippet = findSnippet(*this, snippetUUID, operation, error);
    if (!snippet)
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
