#include "ZDSidebarModel.h"

#include "ZDCategoryNode.h"
#include "ZDCoreIndex.h"
#include "ZDSmartGroupCounts.h"
#include "ZDSnippet.h"
#include "ZDSnippetCollection.h"
#include "ZDSnippetPasteboard.h"

#include <QApplication>
#include <QCollator>
#include <QHash>
#include <QIcon>
#include <QMimeData>
#include <QStyle>

#include <algorithm>

namespace {
// All Snippets and Uncategorized come first in the Folders group.
constexpr int kFixedFolderRows = 2;

QList<ZDCategoryNodePtr> sortedByTitle(QList<ZDCategoryNodePtr> nodes)
{
    const QCollator collator = ZDSnippetCollection::titleCollator();
    std::stable_sort(nodes.begin(), nodes.end(), [&](const ZDCategoryNodePtr &a, const ZDCategoryNodePtr &b) {
        return collator.compare(a->title(), b->title()) < 0;
    });
    return nodes;
}

/// One icon per kind of row, made once per model: an icon made anew for every row painted would
/// miss the pixmap cache and decode its image again each time.
QIcon iconFor(int nodeType, QHash<int, QIcon> &icons)
{
    const auto found = icons.constFind(nodeType);
    if (found != icons.cend())
        return *found;
    QStyle *style = QApplication::style();
    QIcon icon;
    switch (nodeType) {
    case ZDCategoryNode::AllSnippets:
        icon = style->standardIcon(QStyle::SP_DirHomeIcon);
        break;
    case ZDCategoryNode::Uncategorized:
        icon = style->standardIcon(QStyle::SP_DirClosedIcon);
        break;
    case ZDCategoryNode::Folder:
        icon = style->standardIcon(QStyle::SP_DirIcon);
        break;
    case ZDCategoryNode::Shortcut:
        icon = style->standardIcon(QStyle::SP_DirLinkIcon);
        break;
    case ZDCategoryNode::SmartGroup:
        icon = style->standardIcon(QStyle::SP_FileDialogContentsView);
        break;
    case ZDCategoryNode::Tag:
        icon = QIcon::fromTheme(QStringLiteral("tag"));
        break;
    default:
        break;
    }
    icons.insert(nodeType, icon);
    return icon;
}

bool contains(const QList<ZDCategoryNodePtr> &nodes, const ZDCategoryNode *node)
{
    return std::any_of(nodes.begin(), nodes.end(),
                       [&](const ZDCategoryNodePtr &n) { return n.get() == node; });
}
} // namespace

struct ZDSidebarModel::Item
{
    ZDCategoryNodePtr node;
    Item *parent = nullptr;
    int row = 0;
    std::vector<std::unique_ptr<Item>> children;

    Item *append(const ZDCategoryNodePtr &child)
    {
        auto item = std::make_unique<Item>();
        item->node = child;
        item->parent = this;
        item->row = int(children.size());
        children.push_back(std::move(item));
        return children.back().get();
    }

    bool isGroup(const QString &UUID) const { return node && node->isGroup() && node->UUID() == UUID; }
};

ZDSidebarModel::ZDSidebarModel(QObject *parent) : QAbstractItemModel(parent), m_root(std::make_unique<Item>())
{
    qRegisterMetaType<ZDSidebarDrop>();
    rebuild();
}

ZDSidebarModel::~ZDSidebarModel() = default;

void ZDSidebarModel::setContent(const ZDSidebarContent &content)
{
    beginResetModel();
    m_content = content;
    rebuild();
    endResetModel();
}

void ZDSidebarModel::setSortsFoldersAndSmartGroups(bool sorts)
{
    if (sorts == m_sorts)
        return;
    beginResetModel();
    m_sorts = sorts;
    rebuild();
    endResetModel();
}

void ZDSidebarModel::setCountProvider(std::function<int(const ZDCategoryNode &)> provider)
{
    m_countProvider = std::move(provider);
    refreshCounts();
}

void ZDSidebarModel::setCountSources(ZDCoreIndex *index, ZDSmartGroupCounts *smartGroups)
{
    if (m_index)
        disconnect(m_index, nullptr, this, nullptr);
    if (m_smartGroups)
        disconnect(m_smartGroups, nullptr, this, nullptr);
    m_index = index;
    m_smartGroups = smartGroups;
    if (index) {
        connect(index, &ZDCoreIndex::indexDidChange, this, [this] {
            takeIndexCounts();
            refreshCounts();
        });
    }
    if (smartGroups)
        connect(smartGroups, &ZDSmartGroupCounts::countsDidChange, this, &ZDSidebarModel::refreshCounts);
    takeIndexCounts();
    setCountProvider([this](const ZDCategoryNode &node) { return countOf(node); });
}

void ZDSidebarModel::takeIndexCounts()
{
    m_folderCounts.clear();
    m_tagCounts.clear();
    m_totalCount = -1;
    if (!m_index)
        return;
    const QList<ZDIndexResult> folders = m_index->folders();
    // Before the first count the index lists no folder, not even Uncategorized.
    if (folders.isEmpty())
        return;
    m_totalCount = 0;
    for (const ZDIndexResult &folder : folders) {
        m_folderCounts.insert(folder.ubiquitousName, folder.count);
        m_totalCount += folder.count; // every snippet counts in exactly one folder
    }
    for (const ZDIndexResult &tag : m_index->tags())
        m_tagCounts.insert(tag.ubiquitousName, tag.count);
}

int ZDSidebarModel::countOf(const ZDCategoryNode &node) const
{
    if (node.isSmartGroup())
        return m_smartGroups ? int(m_smartGroups->countForSmartGroup(node.UUID())) : -1;
    if (m_totalCount < 0)
        return -1;
    switch (node.nodeType()) {
    case ZDCategoryNode::AllSnippets:
        return int(m_totalCount);
    case ZDCategoryNode::Uncategorized:
    case ZDCategoryNode::Folder:
    case ZDCategoryNode::Shortcut:
        return int(m_folderCounts.value(node.UUID()));
    case ZDCategoryNode::Tag:
        return int(m_tagCounts.value(node.UUID()));
    default:
        return -1;
    }
}

void ZDSidebarModel::refreshCounts()
{
    std::function<void(const QModelIndex &)> visit = [&](const QModelIndex &parent) {
        const int rows = rowCount(parent);
        if (rows == 0)
            return;
        Q_EMIT dataChanged(index(0, 0, parent), index(rows - 1, 0, parent), {CountRole});
        for (int row = 0; row < rows; ++row)
            visit(index(row, 0, parent));
    };
    visit({});
}

void ZDSidebarModel::rebuild()
{
    m_root = std::make_unique<Item>();
    Item *favourites = m_root->append(ZDCategoryNode::favouritesGroupNode());
    for (const ZDCategoryNodePtr &shortcut : m_content.shortcuts)
        favourites->append(shortcut);

    Item *folders = m_root->append(ZDCategoryNode::foldersGroupNode());
    folders->append(ZDCategoryNode::allSnippetsNode());
    folders->append(ZDCategoryNode::uncategorizedNode());
    std::function<void(Item *, const QList<ZDCategoryNodePtr> &)> addFolders =
        [&](Item *parent, const QList<ZDCategoryNodePtr> &nodes) {
            for (const ZDCategoryNodePtr &node : m_sorts ? sortedByTitle(nodes) : nodes) {
                Item *item = parent->append(node);
                addFolders(item, node->children());
            }
        };
    addFolders(folders, m_content.rootFolders);

    Item *smartGroups = m_root->append(ZDCategoryNode::smartFoldersGroupNode());
    for (const ZDCategoryNodePtr &group :
         m_sorts ? sortedByTitle(m_content.smartGroups) : m_content.smartGroups)
        smartGroups->append(group);

    Item *tags = m_root->append(ZDCategoryNode::tagsGroupNode());
    for (const ZDCategoryNodePtr &tag : m_content.tags)
        tags->append(tag);
}

ZDSidebarModel::Item *ZDSidebarModel::itemAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<Item *>(index.internalPointer()) : m_root.get();
}

QModelIndex ZDSidebarModel::indexOfItem(const Item *item) const
{
    if (!item || item == m_root.get())
        return {};
    return createIndex(item->row, 0, const_cast<Item *>(item));
}

ZDCategoryNodePtr ZDSidebarModel::nodeAtIndex(const QModelIndex &index) const
{
    return index.isValid() ? itemAt(index)->node : nullptr;
}

QModelIndex ZDSidebarModel::indexOfNode(unsigned type, const QString &UUID) const
{
    std::function<const Item *(const Item *)> find = [&](const Item *item) -> const Item * {
        for (const auto &child : item->children) {
            if (child->node->nodeType() == type && child->node->UUID() == UUID)
                return child.get();
            if (const Item *found = find(child.get()))
                return found;
        }
        return nullptr;
    };
    return indexOfItem(find(m_root.get()));
}

QModelIndex ZDSidebarModel::allSnippetsIndex() const
{
    return indexOfNode(ZDCategoryNode::AllSnippets, QLatin1String(ZDAllSnippetsUUID));
}

QModelIndex ZDSidebarModel::groupIndex(const QString &groupUUID) const
{
    return indexOfNode(ZDCategoryNode::Group, groupUUID);
}

QModelIndex ZDSidebarModel::index(int row, int column, const QModelIndex &parent) const
{
    const Item *item = itemAt(parent);
    if (column != 0 || row < 0 || row >= int(item->children.size()))
        return {};
    return createIndex(row, 0, item->children[size_t(row)].get());
}

QModelIndex ZDSidebarModel::parent(const QModelIndex &child) const
{
    return child.isValid() ? indexOfItem(itemAt(child)->parent) : QModelIndex();
}

int ZDSidebarModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    return int(itemAt(parent)->children.size());
}

int ZDSidebarModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant ZDSidebarModel::data(const QModelIndex &index, int role) const
{
    const ZDCategoryNodePtr node = nodeAtIndex(index);
    if (!node)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return node->isGroup() ? node->title().toUpper() : node->title();
    case Qt::EditRole:
    case Qt::ToolTipRole:
        return node->title();
    case Qt::DecorationRole:
        return iconFor(node->nodeType(), m_icons);
    case NodeRole:
        return QVariant::fromValue(node);
    case NodeTypeRole:
        return node->nodeType();
    case IsGroupRole:
        return node->isGroup();
    case CountRole:
        return node->isGroup() || !m_countProvider ? -1 : m_countProvider(*node);
    default:
        return {};
    }
}

bool ZDSidebarModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const ZDCategoryNodePtr node = nodeAtIndex(index);
    const QString title = value.toString().trimmed();
    if (role != Qt::EditRole || !node || !node->isRenamable() || title.isEmpty())
        return false;
    if (title != node->title())
        Q_EMIT renameRequested(node, title);
    return true;
}

Qt::ItemFlags ZDSidebarModel::flags(const QModelIndex &index) const
{
    const ZDCategoryNodePtr node = nodeAtIndex(index);
    if (!node)
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled;
    const bool isDropGroup = node->isGroup() && node->UUID() != QLatin1String(ZDGroupUUID::Tags);
    if (!node->isGroup())
        flags |= Qt::ItemIsSelectable;
    if (node->isRenamable())
        flags |= Qt::ItemIsEditable;
    if (node->isDraggable())
        flags |= Qt::ItemIsDragEnabled;
    if (isDropGroup || node->isFolder() || node->isUncategorized() || node->isShortcut() || node->isTag())
        flags |= Qt::ItemIsDropEnabled;
    return flags;
}

QStringList ZDSidebarModel::mimeTypes() const
{
    return {kNodeMimeType, kSnippetUUIDsMimeType, QLatin1String(ZDSnippetPasteboard::kSnippetType)};
}

QMimeData *ZDSidebarModel::mimeData(const QModelIndexList &indexes) const
{
    QStringList lines;
    for (const QModelIndex &index : indexes) {
        const ZDCategoryNodePtr node = nodeAtIndex(index);
        if (node && node->isDraggable())
            lines << QString::number(node->nodeType()) + QLatin1Char(' ') + node->UUID();
    }
    if (lines.isEmpty())
        return nullptr;
    auto *data = new QMimeData;
    data->setData(kNodeMimeType, lines.join(QLatin1Char('\n')).toUtf8());
    return data;
}

Qt::DropActions ZDSidebarModel::supportedDragActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions ZDSidebarModel::supportedDropActions() const
{
    return Qt::MoveAction | Qt::CopyAction | Qt::LinkAction;
}

QList<ZDCategoryNodePtr> ZDSidebarModel::draggedNodes(const QMimeData *data) const
{
    QList<ZDCategoryNodePtr> nodes;
    const QList<QByteArray> lines = data->data(kNodeMimeType).split('\n');
    for (const QByteArray &line : lines) {
        const int space = line.indexOf(' ');
        if (space <= 0)
            continue;
        bool ok = false;
        const unsigned type = line.left(space).toUInt(&ok);
        const ZDCategoryNodePtr node = nodeAtIndex(indexOfNode(type, QString::fromUtf8(line.mid(space + 1))));
        if (!ok || !node)
            return {}; // a node this sidebar does not show: not ours to move
        nodes << node;
    }
    return nodes;
}

QStringList ZDSidebarModel::draggedSnippetUUIDs(const QMimeData *data) const
{
    if (data->hasFormat(kSnippetUUIDsMimeType))
        return QString::fromUtf8(data->data(kSnippetUUIDsMimeType))
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QStringList UUIDs;
    for (const ZDSnippetPtr &snippet : ZDSnippetPasteboard::readSnippets(data))
        UUIDs << snippet->UUID();
    return UUIDs;
}

ZDSidebarDrop ZDSidebarModel::planDrop(const QMimeData *data, int row, const QModelIndex &parent) const
{
    const Item *target = itemAt(parent);
    if (!data || !target->node)
        return {};
    if (data->hasFormat(kNodeMimeType))
        return planNodeDrop(draggedNodes(data), row, target);

    const bool hasSnippets =
        data->hasFormat(kSnippetUUIDsMimeType) || ZDSnippetPasteboard::canReadSnippets(data);
    const ZDCategoryNodePtr &node = target->node;
    if (!hasSnippets || row >= 0)
        return {};
    ZDSidebarDrop drop;
    if (node->isFolder() || node->isUncategorized() || node->isShortcut())
        drop.operation = ZDSidebarDrop::MoveSnippets;
    else if (node->isTag())
        drop.operation = ZDSidebarDrop::TagSnippets;
    else
        return {};
    drop.target = node;
    return drop;
}

ZDSidebarDrop ZDSidebarModel::planNodeDrop(const QList<ZDCategoryNodePtr> &nodes, int row,
                                           const Item *target) const
{
    if (nodes.isEmpty())
        return {};
    const unsigned kind = nodes.first()->nodeType();
    if (std::any_of(nodes.begin(), nodes.end(),
                    [&](const ZDCategoryNodePtr &n) { return n->nodeType() != kind; }))
        return {};

    // The position among `target`'s rows once the dragged nodes are out of the list.
    auto positionAmong = [&](int firstRow) {
        if (row < 0)
            return -1;
        int position = 0;
        for (int r = firstRow; r < row && r < int(target->children.size()); ++r) {
            if (!contains(nodes, target->children[size_t(r)]->node.get()))
                ++position;
        }
        return position;
    };

    ZDSidebarDrop drop;
    drop.nodes = nodes;
    if (kind == ZDCategoryNode::Folder) {
        if (target->isGroup(QLatin1String(ZDGroupUUID::Favourites))) {
            // A folder that already has a shortcut gets no second one.
            drop.nodes.clear();
            for (const ZDCategoryNodePtr &folder : nodes) {
                const bool hasShortcut =
                    std::any_of(m_content.shortcuts.begin(), m_content.shortcuts.end(),
                                [&](const ZDCategoryNodePtr &s) { return s->UUID() == folder->UUID(); });
                if (!hasShortcut)
                    drop.nodes << folder;
            }
            if (drop.nodes.isEmpty())
                return {};
            drop.operation = ZDSidebarDrop::MakeShortcuts;
            drop.index = row;
            return drop;
        }
        const ZDCategoryNodePtr &parentNode = target->node;
        if (target->isGroup(QLatin1String(ZDGroupUUID::Folders))) {
            drop.target = nullptr;
            drop.index = positionAmong(kFixedFolderRows);
        } else if (parentNode->isFolder()) {
            for (const ZDCategoryNodePtr &folder : nodes) {
                if (folder.get() == parentNode.get() || parentNode->isDescendantOfNode(folder))
                    return {};
            }
            drop.target = parentNode;
            drop.index = positionAmong(0);
        } else {
            return {};
        }
        if (m_sorts)
            drop.index = -1; // the order is the titles'
        drop.operation = ZDSidebarDrop::MoveFolders;
        return drop;
    }
    if (kind == ZDCategoryNode::Shortcut && target->isGroup(QLatin1String(ZDGroupUUID::Favourites))) {
        drop.operation = ZDSidebarDrop::ReorderShortcuts;
        drop.index = positionAmong(0);
        return drop;
    }
    if (kind == ZDCategoryNode::SmartGroup && target->isGroup(QLatin1String(ZDGroupUUID::SmartGroups)) &&
        !m_sorts) {
        drop.operation = ZDSidebarDrop::ReorderSmartGroups;
        drop.index = positionAmong(0);
        return drop;
    }
    return {};
}

bool ZDSidebarModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                     const QModelIndex &parent) const
{
    // Reading whole snippets off a foreign drag would be slow for every mouse move; their
    // presence is enough here.
    if (data && !data->hasFormat(kNodeMimeType)) {
        const ZDCategoryNodePtr node = nodeAtIndex(parent);
        const bool hasSnippets = data->hasFormat(kSnippetUUIDsMimeType) ||
                                 data->hasFormat(QLatin1String(ZDSnippetPasteboard::kSnippetType));
        return hasSnippets && row < 0 && node &&
               (node->isFolder() || node->isUncategorized() || node->isShortcut() || node->isTag());
    }
    return planDrop(data, row, parent).operation != ZDSidebarDrop::None;
}

bool ZDSidebarModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int,
                                  const QModelIndex &parent)
{
    if (action == Qt::IgnoreAction)
        return true;
    ZDSidebarDrop drop = planDrop(data, row, parent);
    if (drop.operation == ZDSidebarDrop::None)
        return false;
    if (drop.operation == ZDSidebarDrop::MoveSnippets || drop.operation == ZDSidebarDrop::TagSnippets) {
        drop.snippetUUIDs = draggedSnippetUUIDs(data);
        if (drop.snippetUUIDs.isEmpty())
            return false;
    }
    Q_EMIT dropRequested(drop);
    // The window applies the drop and reloads; the view must not remove the dragged rows.
    return false;
}
