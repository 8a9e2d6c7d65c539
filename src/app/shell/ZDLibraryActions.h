#pragma once

#include "ZDRecordTypes.h"

#include <QObject>
#include <QStringList>

class ZDDataCenter;
struct ZDSidebarDrop;

/// The window's changes to the library, each one operation of the store, which posts the
/// detailed notice with the window as sender. What the sidebar hands over (nodes, drops) is
/// turned into the records' identities here; records the library no longer holds are left out
/// of drops. No confirmation is asked here; the window asks before it calls the deleting
/// operations.
class ZDLibraryActions
{
public:
    ZDLibraryActions(ZDDataCenter &center, QObject *sender);

    /// A new folder at the end of `parent`'s children (the top level when null).
    ZDCategoryNodePtr addFolder(const QString &title, const ZDCategoryNodePtr &parent = nullptr);
    ZDCategoryNodePtr addSmartGroup(const QString &title, const QString &predicateString);
    void setSmartGroupPredicate(const ZDCategoryNodePtr &smartGroup, const QString &predicateString);
    /// A tag of that name, made when the library has none equivalent to it.
    ZDTagPtr tagNamed(const QString &title);
    /// Renames a folder, smart group or tag.
    void renameNode(const ZDCategoryNodePtr &node, const QString &title);
    /// Deletes folders (with their subfolders, their snippets and the shortcuts to them),
    /// shortcuts, smart groups or tags (taking them off their snippets).
    void deleteNodes(const QList<ZDCategoryNodePtr> &nodes);
    /// The snippets a folder deletion would delete with it.
    ZDSnippetList snippetsInFolders(const QList<ZDCategoryNodePtr> &folders) const;
    /// Applies a drop onto the sidebar.
    void applyDrop(const ZDSidebarDrop &drop);

    /// A new snippet where `node` points: its folder (or a shortcut's), else Uncategorized;
    /// a tag's snippets start with that tag. Its part takes the folder's default language.
    ZDSnippetPtr createSnippet(const ZDCategoryNodePtr &node);
    void deleteSnippets(const ZDSnippetList &snippets);
    void moveSnippets(const QStringList &snippetUUIDs, const QString &folderUUID);
    void tagSnippets(const QStringList &snippetUUIDs, const ZDTagPtr &tag);
    /// Adds snippets from the clipboard to the folder; a snippet whose identity the library
    /// already holds is added as a copy with new identities. Tags the library lacks are
    /// dropped. Returns the snippets added.
    ZDSnippetList pasteSnippets(const ZDSnippetList &snippets, const QString &folderUUID);

    /// The folder a new or pasted snippet goes to when `node` is selected.
    static QString folderUUIDForNode(const ZDCategoryNodePtr &node);

private:
    /// Those of `UUIDs` the library holds.
    QStringList knownSnippetUUIDs(const QStringList &UUIDs) const;

    ZDDataCenter &m_center;
    QObject *m_sender;
};
