#include "ZDLibraryActions.h"

#include "ZDCategoryNode.h"
#include "ZDDataCenter.h"
#include "ZDLanguageRegistry.h"
#include "ZDSidebarModel.h"
#include "ZDSnippet.h"
#include "ZDTag.h"

#include <QCoreApplication>
#include <QSet>

namespace {
QString tr(const char *text)
{
    return QCoreApplication::translate("ZDLibraryActions", text);
}

QStringList UUIDsOf(const QList<ZDCategoryNodePtr> &nodes)
{
    QStringList UUIDs;
    for (const ZDCategoryNodePtr &node : nodes)
        UUIDs << node->UUID();
    return UUIDs;
}

ZDSnippetPtr copyWithNewIdentity(const ZDSnippet &snippet, const QString &folderUUID,
                                 const QStringList &tagUUIDs)
{
    const QString UUID = zdNewUUIDString();
    QList<ZDSnippetPartPtr> parts;
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        parts << std::make_shared<ZDSnippetPart>(part->title(), zdNewUUIDString(), part->language(),
                                                 part->noteText(), part->contentText(), part->dateCreated(),
                                                 part->dateModified(), UUID);
    }
    const QDateTime now = ZDRecordDirectory::now();
    return std::make_shared<ZDSnippet>(snippet.title(), UUID, folderUUID, tagUUIDs, snippet.gistIdentifier(),
                                       snippet.githubUsername(), snippet.githubHTMLURL(), parts, now, now);
}
} // namespace

ZDLibraryActions::ZDLibraryActions(ZDDataCenter &center, QObject *sender) : m_center(center), m_sender(sender)
{
}

QString ZDLibraryActions::folderUUIDForNode(const ZDCategoryNodePtr &node)
{
    if (node && (node->isFolder() || node->isShortcut()))
        return node->UUID();
    return QLatin1String(ZDUncategorizedUUID);
}

QStringList ZDLibraryActions::knownSnippetUUIDs(const QStringList &UUIDs) const
{
    QStringList known;
    for (const QString &UUID : UUIDs) {
        if (m_center.snippetWithUUID(UUID))
            known << UUID;
    }
    return known;
}

ZDCategoryNodePtr ZDLibraryActions::addFolder(const QString &title, const ZDCategoryNodePtr &parent)
{
    return m_center.createFolder(title, parent ? parent->UUID() : QString(), -1, m_sender);
}

ZDCategoryNodePtr ZDLibraryActions::addSmartGroup(const QString &title, const QString &predicateString)
{
    return m_center.addSmartGroup(title, predicateString, m_sender);
}

void ZDLibraryActions::setSmartGroupPredicate(const ZDCategoryNodePtr &smartGroup,
                                              const QString &predicateString)
{
    m_center.setSmartGroupPredicate(smartGroup->UUID(), predicateString, m_sender);
}

ZDTagPtr ZDLibraryActions::tagNamed(const QString &title)
{
    if (ZDTagPtr tag = m_center.tagWithName(title))
        return tag;
    return m_center.addTag(title, m_sender);
}

void ZDLibraryActions::renameNode(const ZDCategoryNodePtr &node, const QString &title)
{
    if (!node)
        return;
    if (node->isFolder())
        m_center.renameFolder(node->UUID(), title, m_sender);
    else if (node->isSmartGroup())
        m_center.renameSmartGroup(node->UUID(), title, m_sender);
    else if (node->isTag())
        m_center.renameTag(node->UUID(), title, m_sender);
}

ZDSnippetList ZDLibraryActions::snippetsInFolders(const QList<ZDCategoryNodePtr> &folders) const
{
    return m_center.snippetsInFolders(UUIDsOf(folders));
}

void ZDLibraryActions::deleteNodes(const QList<ZDCategoryNodePtr> &nodes)
{
    QStringList folders, shortcuts, smartGroups, tags;
    for (const ZDCategoryNodePtr &node : nodes) {
        if (node->isFolder())
            folders << node->UUID();
        else if (node->isShortcut())
            shortcuts << node->UUID();
        else if (node->isSmartGroup())
            smartGroups << node->UUID();
        else if (node->isTag())
            tags << node->UUID();
    }
    if (!folders.isEmpty())
        m_center.deleteFolders(folders, m_sender);
    // Shortcuts to the deleted folders went with them.
    const QStringList remaining = UUIDsOf(m_center.shortcutNodes());
    shortcuts.removeIf([&](const QString &UUID) { return !remaining.contains(UUID); });
    if (!shortcuts.isEmpty())
        m_center.deleteShortcuts(shortcuts, m_sender);
    if (!smartGroups.isEmpty())
        m_center.deleteSmartGroups(smartGroups, m_sender);
    if (!tags.isEmpty())
        m_center.deleteTags(tags, m_sender);
}

void ZDLibraryActions::applyDrop(const ZDSidebarDrop &drop)
{
    switch (drop.operation) {
    case ZDSidebarDrop::MoveFolders:
        m_center.moveFolders(UUIDsOf(drop.nodes), drop.target ? drop.target->UUID() : QString(), drop.index,
                             m_sender);
        break;
    case ZDSidebarDrop::MakeShortcuts:
        m_center.addShortcuts(UUIDsOf(drop.nodes), drop.index, m_sender);
        break;
    case ZDSidebarDrop::ReorderShortcuts:
        m_center.moveShortcuts(UUIDsOf(drop.nodes), drop.index, m_sender);
        break;
    case ZDSidebarDrop::ReorderSmartGroups:
        m_center.moveSmartGroups(UUIDsOf(drop.nodes), drop.index, m_sender);
        break;
    case ZDSidebarDrop::MoveSnippets:
        moveSnippets(drop.snippetUUIDs, folderUUIDForNode(drop.target));
        break;
    case ZDSidebarDrop::TagSnippets:
        m_center.addTagToSnippets(knownSnippetUUIDs(drop.snippetUUIDs), drop.target->UUID(), m_sender);
        break;
    case ZDSidebarDrop::None:
        break;
    }
}

ZDSnippetPtr ZDLibraryActions::createSnippet(const ZDCategoryNodePtr &node)
{
    const QString folderUUID = folderUUIDForNode(node);
    ZDSnippetPtr snippet = ZDSnippet::create(tr("untitled snippet"), folderUUID);
    if (ZDLanguageRegistry *languages = ZDLanguageRegistry::shared()) {
        const ZDLanguage language = languages->languageWithIdentifier(
            m_center.defaultLanguageIdentifierForFolderWithUUID(folderUUID));
        if (language.isValid() && !snippet->parts().isEmpty())
            snippet->parts().first()->setLanguage(language);
    }
    if (node && node->isTag())
        snippet->setTagUUIDs({node->UUID()});
    return m_center.addSnippets({snippet}, m_sender) ? snippet : nullptr;
}

void ZDLibraryActions::deleteSnippets(const ZDSnippetList &snippets)
{
    QStringList UUIDs;
    for (const ZDSnippetPtr &snippet : snippets)
        UUIDs << snippet->UUID();
    m_center.removeSnippets(UUIDs, m_sender);
}

void ZDLibraryActions::moveSnippets(const QStringList &snippetUUIDs, const QString &folderUUID)
{
    m_center.moveSnippetsToFolder(knownSnippetUUIDs(snippetUUIDs), folderUUID, m_sender);
}

void ZDLibraryActions::tagSnippets(const QStringList &snippetUUIDs, const ZDTagPtr &tag)
{
    m_center.addTagToSnippets(knownSnippetUUIDs(snippetUUIDs), tag->UUID(), m_sender);
}

ZDSnippetList ZDLibraryActions::pasteSnippets(const ZDSnippetList &snippets, const QString &folderUUID)
{
    // The clipboard's snippets are not the library's records yet: they are made ready here and
    // added in one operation.
    QSet<QString> knownTags;
    for (const ZDTagPtr &tag : m_center.tags())
        knownTags.insert(tag->UUID());
    ZDSnippetList added;
    QSet<QString> addedUUIDs;
    for (const ZDSnippetPtr &snippet : snippets) {
        QStringList tags = snippet->tagUUIDs();
        tags.removeIf([&](const QString &UUID) { return !knownTags.contains(UUID); });
        if (m_center.snippetWithUUID(snippet->UUID()) || addedUUIDs.contains(snippet->UUID())) {
            added << copyWithNewIdentity(*snippet, folderUUID, tags);
        } else {
            snippet->setFolderUUID(folderUUID);
            if (tags != snippet->tagUUIDs())
                snippet->setTagUUIDs(tags);
            added << snippet;
        }
        addedUUIDs.insert(added.last()->UUID());
    }
    if (added.isEmpty() || !m_center.addSnippets(added, m_sender))
        return {};
    return added;
}
