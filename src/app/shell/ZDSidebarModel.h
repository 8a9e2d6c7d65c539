#pragma once

#include "ZDRecordTypes.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QIcon>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class ZDCoreIndex;
class ZDSmartGroupCounts;

/// What the sidebar shows: the library's lists of nodes, as the store hands them out.
struct ZDSidebarContent
{
    QList<ZDCategoryNodePtr> shortcuts;
    QList<ZDCategoryNodePtr> rootFolders;
    QList<ZDCategoryNodePtr> smartGroups;
    QList<ZDCategoryNodePtr> tags;
};

/// What a drop onto the sidebar asks for. `index` is the position in the target's list after
/// the dragged nodes have been taken out of it.
struct ZDSidebarDrop
{
    enum Operation
    {
        None,
        MoveFolders,
        MakeShortcuts,
        ReorderShortcuts,
        ReorderSmartGroups,
        MoveSnippets,
        TagSnippets
    };

    Operation operation = None;
    QList<ZDCategoryNodePtr> nodes; // the dragged sidebar nodes
    ZDCategoryNodePtr target;       // MoveFolders: new parent (null: top level); MoveSnippets: the
                                    // folder, Uncategorized or shortcut; TagSnippets: the tag
    int index = -1;                 // list position; -1 for the end
    QStringList snippetUUIDs;       // MoveSnippets, TagSnippets
};

/// The sidebar's tree: Favorites (shortcuts), Folders (All Snippets, Uncategorized and the
/// folder tree), Smart Groups and Tags, with snippet counts. The model never changes the
/// records: renames and drops are handed to the window as requests, which it applies through
/// the library and then reloads the model.
///
/// Drag rules by node kind: folders, shortcuts and smart groups may be dragged; a folder may be
/// dropped onto or among folders (never into itself or its own subfolders) or onto Favorites,
/// which makes a shortcut; shortcuts and smart groups only move within their own group; snippets
/// dropped onto a folder, Uncategorized or a shortcut move there, onto a tag are tagged.
class ZDSidebarModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Role
    {
        NodeRole = Qt::UserRole + 1,
        CountRole,
        NodeTypeRole,
        IsGroupRole
    };
    /// Sidebar nodes being dragged: lines of "<type> <UUID>".
    static inline const QString kNodeMimeType = QStringLiteral("application/x-zandrio-sidebar-nodes");
    /// Snippets being dragged from the list: their UUIDs, one a line.
    static inline const QString kSnippetUUIDsMimeType = QStringLiteral("application/x-zandrio-snippet-uuids");

    explicit ZDSidebarModel(QObject *parent = nullptr);
    ~ZDSidebarModel() override;

    void setContent(const ZDSidebarContent &content);
    /// Shows folders and smart groups by title instead of their stored order; moving them
    /// among themselves is then refused.
    void setSortsFoldersAndSmartGroups(bool sorts);
    /// Count shown beside a node; a negative count shows none.
    void setCountProvider(std::function<int(const ZDCategoryNode &)> provider);
    /// Shows the counting index's counts beside All Snippets, Uncategorized, folders, shortcuts
    /// and tags, and the smart groups' own counts, following both as they change. Either may
    /// be null; nodes without a count (or before the first count) show none.
    void setCountSources(ZDCoreIndex *index, ZDSmartGroupCounts *smartGroups);
    /// Asks every count again.
    void refreshCounts();

    ZDCategoryNodePtr nodeAtIndex(const QModelIndex &index) const;
    /// The first row showing a node of `type` with `UUID`.
    QModelIndex indexOfNode(unsigned type, const QString &UUID) const;
    QModelIndex allSnippetsIndex() const;
    QModelIndex groupIndex(const QString &groupUUID) const;

    /// What dropping `data` at `row` under `parent` would do (row -1: onto `parent` itself).
    ZDSidebarDrop planDrop(const QMimeData *data, int row, const QModelIndex &parent) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

Q_SIGNALS:
    void renameRequested(const ZDCategoryNodePtr &node, const QString &title);
    void dropRequested(const ZDSidebarDrop &drop);

private:
    mutable QHash<int, QIcon> m_icons;
    struct Item;
    Item *itemAt(const QModelIndex &index) const;
    QModelIndex indexOfItem(const Item *item) const;
    void rebuild();
    QList<ZDCategoryNodePtr> draggedNodes(const QMimeData *data) const;
    QStringList draggedSnippetUUIDs(const QMimeData *data) const;
    ZDSidebarDrop planNodeDrop(const QList<ZDCategoryNodePtr> &nodes, int row, const Item *target) const;

    ZDSidebarContent m_content;
    bool m_sorts = false;
    int countOf(const ZDCategoryNode &node) const;
    void takeIndexCounts();

    std::function<int(const ZDCategoryNode &)> m_countProvider;
    std::unique_ptr<Item> m_root;
    QPointer<ZDCoreIndex> m_index;
    QPointer<ZDSmartGroupCounts> m_smartGroups;
    QHash<QString, qint64> m_folderCounts; // as the index last counted, by UUID
    QHash<QString, qint64> m_tagCounts;
    qint64 m_totalCount = -1;
};

Q_DECLARE_METATYPE(ZDSidebarDrop)
