#include "ZDSnippetListModel.h"

#include "ZDSidebarModel.h"
#include "ZDSnippet.h"
#include "ZDSnippetCollection.h"
#include "ZDSnippetPasteboard.h"
#include "ZDUserDefaults.h"

#include <QMimeData>

#include <algorithm>

ZDSnippetListModel::ZDSnippetListModel(QObject *parent)
    : QAbstractListModel(parent), m_sortMethod(SortByDateModified), m_sortOrder(SortOrderDescending)
{
}

void ZDSnippetListModel::setSnippets(const ZDSnippetList &snippets, bool keepOrder)
{
    beginResetModel();
    m_snippets = snippets;
    m_keepOrder = keepOrder;
    if (!keepOrder)
        ZDSnippetCollection::sort(m_snippets, m_sortMethod, m_sortOrder);
    reindex();
    endResetModel();
}

void ZDSnippetListModel::setSortDescriptor(int sortMethod, int sortOrder)
{
    m_sortMethod = sortMethod;
    m_sortOrder = sortOrder;
    if (!m_keepOrder)
        setSnippets(m_snippets);
}

ZDSnippetPtr ZDSnippetListModel::snippetAt(int row) const
{
    return row >= 0 && row < m_snippets.size() ? m_snippets[row] : nullptr;
}

int ZDSnippetListModel::rowOfSnippet(const QString &UUID) const
{
    return m_rows.value(UUID, -1);
}

void ZDSnippetListModel::reindex()
{
    m_rows.clear();
    m_rows.reserve(m_snippets.size());
    reindex(0, int(m_snippets.size()));
}

void ZDSnippetListModel::reindex(int from, int to)
{
    for (int row = from; row < to; ++row)
        m_rows.insert(m_snippets[row]->UUID(), row);
}

void ZDSnippetListModel::snippetChanged(const QString &UUID)
{
    const int row = rowOfSnippet(UUID);
    if (row < 0)
        return;
    if (!m_keepOrder) {
        const int target =
            int(ZDSnippetCollection::sortedRow(m_snippets, row, *m_snippets[row], m_sortMethod, m_sortOrder));
        if (target != row) {
            beginMoveRows({}, row, row, {}, target > row ? target + 1 : target);
            m_snippets.move(row, target);
            reindex(std::min(row, target), std::max(row, target) + 1);
            endMoveRows();
        }
    }
    const QModelIndex changed = index(rowOfSnippet(UUID));
    Q_EMIT dataChanged(changed, changed);
}

void ZDSnippetListModel::insertSnippet(const ZDSnippetPtr &snippet)
{
    if (!snippet || rowOfSnippet(snippet->UUID()) >= 0)
        return;
    const int row = m_keepOrder ? 0
                                : int(ZDSnippetCollection::sortedRow(m_snippets, m_snippets.size(), *snippet,
                                                                     m_sortMethod, m_sortOrder));
    beginInsertRows({}, row, row);
    m_snippets.insert(row, snippet);
    reindex(row, int(m_snippets.size()));
    endInsertRows();
}

void ZDSnippetListModel::removeSnippets(const QStringList &UUIDs)
{
    QList<int> rows;
    for (const QString &UUID : UUIDs) {
        const int row = rowOfSnippet(UUID);
        if (row >= 0)
            rows << row;
    }
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    for (int row : rows) {
        beginRemoveRows({}, row, row);
        m_snippets.removeAt(row);
        endRemoveRows();
    }
    reindex();
}

int ZDSnippetListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_snippets.size());
}

QVariant ZDSnippetListModel::data(const QModelIndex &index, int role) const
{
    const ZDSnippetPtr snippet = snippetAt(index.row());
    if (!snippet || index.parent().isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return snippet->title();
    case Qt::ToolTipRole:
        return QString(snippet->title() + QLatin1Char('\n') + snippet->localizedFullDate());
    case SnippetRole:
        return QVariant::fromValue(snippet);
    case UUIDRole:
        return snippet->UUID();
    case DateRole:
        return snippet->localizedDate();
    case FolderRole:
        return snippet->localizedCategory();
    case LanguagesRole:
        return ZDSnippetCollection::languagesSummary(*snippet);
    default:
        return {};
    }
}

Qt::ItemFlags ZDSnippetListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}

QStringList ZDSnippetListModel::mimeTypes() const
{
    return {QLatin1String(ZDSnippetPasteboard::kSnippetType), ZDSidebarModel::kSnippetUUIDsMimeType,
            QStringLiteral("text/uri-list")};
}

QMimeData *ZDSnippetListModel::mimeData(const QModelIndexList &indexes) const
{
    ZDSnippetList snippets;
    QStringList UUIDs;
    QList<int> rows;
    for (const QModelIndex &index : indexes)
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (int row : rows) {
        if (const ZDSnippetPtr snippet = snippetAt(row)) {
            snippets << snippet;
            UUIDs << snippet->UUID();
        }
    }
    if (snippets.isEmpty())
        return nullptr;
    auto *data = new QMimeData;
    ZDSnippetPasteboard::writeSnippets(data, snippets, ZDSnippetPasteboard::makeDragFolder());
    data->setData(ZDSidebarModel::kSnippetUUIDsMimeType, UUIDs.join(QLatin1Char('\n')).toUtf8());
    return data;
}

Qt::DropActions ZDSnippetListModel::supportedDragActions() const
{
    return Qt::MoveAction | Qt::CopyAction;
}
