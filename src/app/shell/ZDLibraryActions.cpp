#include "ZDLibraryActions.h"

#include "ZDCategoryNode.h"
#include "ZDDataCenter.h"
#include "ZDLanguageRegistry.h"
#include "ZDMulticastDelegateHandler.h"
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

/// Takes `node` out of its parent or out of the top-level list.
void detach(const ZDCategoryNodePtr &node, QList<ZDCategoryNodePtr> &roots)
{
    if (const ZDCategoryNodePtr parent = node->parentCategoryNode())
        parent->removeChild(node);
    else
        roots.removeIf([&](const ZDCategoryNodePtr &n) { return n.get() == node.get(); });
}

QSet<QString> folderUUIDsWithin(const QList<ZDCategoryNodePtr> &folders)
{
    QSet<QString> UUIDs;
    for (const ZDCategoryNodePtr &folder : folders) {
        UUIDs.insert(folder->UUID());
        folder->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &child, int) { UUIDs.insert(child->UUID()); });
    }
    return UUIDs;
}

ZDSnippetList snippetsFiledIn(const ZDSnippetList &snippets, const QSet<QString> &folderUUIDs)
{
    ZDSnippetList filed;
    for (const ZDSnippetPtr &snippet : snippets) {
        if (folderUUIDs.contains(snippet->folderUUID()))
            filed << snippet;
    }
    return filed;
}

ZDSnippetPtr copyWithNewIdentity(const ZDSnippet &snippet, const QString &folderUUID, const QStringList &tagUUIDs)
{
    const QString UUID = zdNewUUIDString();
    QList<ZDSnippetPartPtr> parts;
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        parts << std::make_shared<ZDSnippetPart>(part->title(), zdNewUUIDString(), part->language(), part->noteText(),
                                                 part->contentText(), part->dateCreated(), part->dateModified(), UUID);
    }
    const QDateTime now = ZDRecordDirectory::now();
    return std::make_shared<ZDSnippet>(snippet.title(), UUID, folderUUID, tagUUIDs, snippet.gistIdentifier(),
                                       snippet.githubUsername(), snippet.githubHTMLURL(), parts, now, now);
}
} // namespace

ZDLibraryActions::ZDLibraryActions(ZDDataCenter &center, ZDMulticastDelegateHandler &notifier, QObject *sender)
    : m_center(center), m_notifier(notifier), m_sender(sender)
{
}

QString ZDLibraryActions::folderUUIDForNode(const ZDCategoryNodePtr &node)
{
    if (node && (node->isFolder() || node->isShortcut()))
        return node->UUID();
    return QLatin1String(ZDUncategorizedUUID);
}

ZDSnippetList ZDLibraryActions::snippetsWithUUIDs(const QStringList &UUIDs) const
{
    ZDSnippetList snippets;
    for (const QString &UUID : UUIDs) {
        if (ZDSnippetPtr snippet = m_center.snippetWithUUID(UUID))
            snippets << snippet;
    }
    return snippets;
}

ZDCategoryNodePtr ZDLibraryActions::addFolder(const QString &title, const ZDCategoryNodePtr &parent)
{
    QList<ZDCategoryNodePtr> roots = m_center.rootFolderNodes();
    ZDCategoryNodePtr folder = ZDCategoryNode::folderNodeWithTitle(title);
    int index;
    if (parent) {
        index = int(parent->children().size());
        parent->addChild(folder);
    } else {
        index = int(roots.size());
        roots << folder;
    }
    if (!m_center.setRootFolderNodes(roots))
        return nullptr;
    m_notifier.noteFolderAdded(folder, parent, index, m_sender);
    return folder;
}

ZDCategoryNodePtr ZDLibraryActions::addSmartGroup(const QString &title, const QString &predicateString)
{
    QList<ZDCategoryNodePtr> groups = m_center.smartGroupNodes();
    ZDCategoryNodePtr group = ZDCategoryNode::smartGroupNodeWithTitle(title, {}, predicateString);
    groups << group;
    if (!m_center.setSmartGroupNodes(groups))
        return nullptr;
    m_notifier.noteCategorySelectionChanged(group, {}, {}, m_sender);
    return group;
}

void ZDLibraryActions::setSmartGroupPredicate(const ZDCategoryNodePtr &smartGroup, const QString &predicateString)
{
    smartGroup->setPredicateString(predicateString);
    m_center.setSmartGroupNodes(m_center.smartGroupNodes());
    m_notifier.noteCategorySelectionChanged(smartGroup, {}, {}, m_sender);
}

ZDTagPtr ZDLibraryActions::tagNamed(const QString &title)
{
    ZDTagList tags = m_center.tags();
    for (const ZDTagPtr &tag : tags) {
        if (ZDTag::isTagNameEquivalentToName(tag->title(), title))
            return tag;
    }
    ZDTagPtr tag = ZDTag::create(title);
    tags << tag;
    return m_center.setTags(tags) ? tag : nullptr;
}

void ZDLibraryActions::renameNode(const ZDCategoryNodePtr &node, const QString &title)
{
    if (!node || title.isEmpty())
        return;
    if (node->isFolder()) {
        node->setTitle(title);
        m_center.setRootFolderNodes(m_center.rootFolderNodes());
        m_notifier.noteFolderRenamed(node, m_sender);
    } else if (node->isSmartGroup()) {
        node->setTitle(title);
        m_center.setSmartGroupNodes(m_center.smartGroupNodes());
        m_notifier.noteSmartGroupRenamed(node, m_sender);
    } else if (node->isTag()) {
        const ZDTagList tags = m_center.tags();
        for (const ZDTagPtr &tag : tags) {
            if (tag->UUID() == node->UUID()) {
                tag->setTitle(title);
                m_center.setTags(tags);
                m_notifier.noteTagRenamed(tag, m_sender);
            }
        }
    }
}

ZDSnippetList ZDLibraryActions::snippetsInFolders(const QList<ZDCategoryNodePtr> &folders) const
{
    return snippetsFiledIn(m_center.snippets(), folderUUIDsWithin(folders));
}

void ZDLibraryActions::deleteNodes(const QList<ZDCategoryNodePtr> &nodes)
{
    QList<ZDCategoryNodePtr> folders, shortcuts, smartGroups, tagNodes;
    for (const ZDCategoryNodePtr &node : nodes) {
        if (node->isFolder())
            folders << node;
        else if (node->isShortcut())
            shortcuts << node;
        else if (node->isSmartGroup())
            smartGroups << node;
        else if (node->isTag())
            tagNodes << node;
    }

    if (!folders.isEmpty()) {
        const QSet<QString> removed = folderUUIDsWithin(folders);
        const ZDSnippetList snippets = snippetsFiledIn(m_center.snippets(), removed);
        QList<ZDCategoryNodePtr> roots = m_center.rootFolderNodes();
        for (const ZDCategoryNodePtr &folder : folders)
            detach(folder, roots);
        m_center.setRootFolderNodes(roots);
        QList<ZDCategoryNodePtr> remaining = m_center.shortcutNodes();
        if (remaining.removeIf([&](const ZDCategoryNodePtr &s) { return removed.contains(s->UUID()); }) > 0)
            m_center.setShortcutNodes(remaining);
        if (!snippets.isEmpty()) {
            m_center.removeSnippetsFromArray(snippets);
            m_notifier.noteSnippetsRemoved(snippets, m_sender);
        }
        m_notifier.noteFoldersRemoved(folders, m_sender);
    }
    if (!shortcuts.isEmpty()) {
        QList<ZDCategoryNodePtr> remaining = m_center.shortcutNodes();
        remaining.removeIf([&](const ZDCategoryNodePtr &s) { return shortcuts.contains(s); });
        m_center.setShortcutNodes(remaining);
        m_notifier.noteFoldersReordered(shortcuts, m_sender);
    }
    if (!smartGroups.isEmpty()) {
        QList<ZDCategoryNodePtr> remaining = m_center.smartGroupNodes();
        remaining.removeIf([&](const ZDCategoryNodePtr &g) { return smartGroups.contains(g); });
        m_center.setSmartGroupNodes(remaining);
        m_notifier.noteFoldersRemoved(smartGroups, m_sender);
    }
    if (!tagNodes.isEmpty()) {
        QSet<QString> removed;
        for (const ZDCategoryNodePtr &node : tagNodes)
            removed.insert(node->UUID());
        ZDTagList tags = m_center.tags();
        ZDTagList removedTags;
        for (const ZDTagPtr &tag : tags) {
            if (removed.contains(tag->UUID()))
                removedTags << tag;
        }
        tags.removeIf([&](const ZDTagPtr &tag) { return removed.contains(tag->UUID()); });
        ZDSnippetList retagged;
        for (const ZDSnippetPtr &snippet : m_center.snippets()) {
            QStringList UUIDs = snippet->tagUUIDs();
            if (UUIDs.removeIf([&](const QString &UUID) { return removed.contains(UUID); }) > 0) {
                snippet->setTagUUIDs(UUIDs);
                retagged << snippet;
            }
        }
        m_center.setTags(tags);
        if (!retagged.isEmpty()) {
            m_center.setSnippetsUpdated(retagged);
            m_notifier.noteSnippetsTagsChanged(retagged, m_sender);
        }
        m_notifier.noteTagsRemoved(removedTags, m_sender);
    }
}

void ZDLibraryActions::applyDrop(const ZDSidebarDrop &drop)
{
    switch (drop.operation) {
    case ZDSidebarDrop::MoveFolders: {
        QList<ZDCategoryNodePtr> roots = m_center.rootFolderNodes();
        for (const ZDCategoryNodePtr &folder : drop.nodes)
            detach(folder, roots);
        int index = drop.index;
        for (const ZDCategoryNodePtr &folder : drop.nodes) {
            if (drop.target) {
                const int count = int(drop.target->children().size());
                drop.target->insertChild(index < 0 || index > count ? count : index, folder);
            } else {
                roots.insert(index < 0 || index > roots.size() ? roots.size() : index, folder);
            }
            if (index >= 0)
                ++index;
        }
        m_center.setRootFolderNodes(roots);
        m_notifier.noteFoldersReordered(drop.nodes, m_sender);
        break;
    }
    case ZDSidebarDrop::MakeShortcuts:
    case ZDSidebarDrop::ReorderShortcuts:
    case ZDSidebarDrop::ReorderSmartGroups: {
        const bool smart = drop.operation == ZDSidebarDrop::ReorderSmartGroups;
        QList<ZDCategoryNodePtr> list = smart ? m_center.smartGroupNodes() : m_center.shortcutNodes();
        QList<ZDCategoryNodePtr> moved;
        for (const ZDCategoryNodePtr &node : drop.nodes)
            moved << (drop.operation == ZDSidebarDrop::MakeShortcuts ? ZDCategoryNode::shortcutNodeWithTargetUUID(node->UUID()) : node);
        list.removeIf([&](const ZDCategoryNodePtr &n) { return moved.contains(n) && drop.operation != ZDSidebarDrop::MakeShortcuts; });
        int index = drop.index < 0 || drop.index > list.size() ? int(list.size()) : drop.index;
        for (const ZDCategoryNodePtr &node : moved)
            list.insert(index++, node);
        if (smart)
            m_center.setSmartGroupNodes(list);
        else
            m_center.setShortcutNodes(list);
        m_notifier.noteFoldersReordered(moved, m_sender);
        break;
    }
    case ZDSidebarDrop::MoveSnippets:
        moveSnippets(drop.snippetUUIDs, drop.target->isUncategorized() ? QLatin1String(ZDUncategorizedUUID) : drop.target->UUID());
        break;
    case ZDSidebarDrop::TagSnippets: {
        const ZDTagList tags = m_center.tags();
        for (const ZDTagPtr &tag : tags) {
            if (tag->UUID() == drop.target->UUID())
                tagSnippets(drop.snippetUUIDs, tag);
        }
        break;
    }
    case ZDSidebarDrop::None:
        break;
    }
}

ZDSnippetPtr ZDLibraryActions::createSnippet(const ZDCategoryNodePtr &node)
{
    const QString folderUUID = folderUUIDForNode(node);
    ZDSnippetPtr snippet = ZDSnippet::create(tr("untitled snippet"), folderUUID);
    if (ZDLanguageRegistry *languages = ZDLanguageRegistry::shared()) {
        const ZDLanguage language = languages->languageWithIdentifier(m_center.defaultLanguageIdentifierForFolderWithUUID(folderUUID));
        if (language.isValid() && !snippet->parts().isEmpty())
            snippet->parts().first()->setLanguage(language);
    }
    if (node && node->isTag())
        snippet->setTagUUIDs({node->UUID()});
    if (!m_center.addSnippet(snippet))
        return nullptr;
    m_notifier.noteSnippetAdded(snippet, m_sender);
    return snippet;
}

void ZDLibraryActions::deleteSnippets(const ZDSnippetList &snippets)
{
    if (snippets.isEmpty() || !m_center.removeSnippetsFromArray(snippets))
        return;
    m_notifier.noteSnippetsRemoved(snippets, m_sender);
}

void ZDLibraryActions::moveSnippets(const QStringList &snippetUUIDs, const QString &folderUUID)
{
    ZDSnippetList moved;
    for (const ZDSnippetPtr &snippet : snippetsWithUUIDs(snippetUUIDs)) {
        if (snippet->folderUUID() != folderUUID) {
            snippet->setFolderUUID(folderUUID);
            moved << snippet;
        }
    }
    if (moved.isEmpty() || !m_center.setSnippetsUpdated(moved))
        return;
    m_notifier.noteSnippetsCategoryChanged(moved, m_sender);
}

void ZDLibraryActions::tagSnippets(const QStringList &snippetUUIDs, const ZDTagPtr &tag)
{
    ZDSnippetList tagged;
    for (const ZDSnippetPtr &snippet : snippetsWithUUIDs(snippetUUIDs)) {
        if (!snippet->tagUUIDs().contains(tag->UUID())) {
            snippet->setTagUUIDs(snippet->tagUUIDs() << tag->UUID());
            tagged << snippet;
        }
    }
    if (tagged.isEmpty() || !m_center.setSnippetsUpdated(tagged))
        return;
    m_notifier.noteSnippetsTagsChanged(tagged, m_sender);
}

ZDSnippetList ZDLibraryActions::pasteSnippets(const ZDSnippetList &snippets, const QString &folderUUID)
{
    QSet<QString> knownTags;
    for (const ZDTagPtr &tag : m_center.tags())
        knownTags.insert(tag->UUID());
    ZDSnippetList added;
    for (const ZDSnippetPtr &snippet : snippets) {
        QStringList tags = snippet->tagUUIDs();
        tags.removeIf([&](const QString &UUID) { return !knownTags.contains(UUID); });
        if (m_center.snippetWithUUID(snippet->UUID())) {
            added << copyWithNewIdentity(*snippet, folderUUID, tags);
        } else {
            snippet->setFolderUUID(folderUUID);
            if (tags != snippet->tagUUIDs())
                snippet->setTagUUIDs(tags);
            added << snippet;
        }
    }
    if (added.isEmpty() || !m_center.addSnippetsFromArray(added))
        return {};
    for (const ZDSnippetPtr &snippet : added)
        m_notifier.noteSnippetAdded(snippet, m_sender);
    return added;
}
