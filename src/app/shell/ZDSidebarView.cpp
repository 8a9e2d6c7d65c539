#include "ZDSidebarView.h"

#include "ZDCategoryNode.h"
#include "ZDEditorTheme.h"
#include "ZDSidebarModel.h"

#include <QPainter>
#include <QStyledItemDelegate>

namespace {
QString keyOf(const ZDCategoryNode &node)
{
    return QString::number(node.nodeType()) + QLatin1Char(' ') + node.UUID();
}

/// Group headers as small grey capitals; other rows with a count on the right.
class SidebarDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QColor groupText = Qt::gray;
    QColor badge = Qt::lightGray;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        size.setHeight(std::max(size.height() + 6, index.data(ZDSidebarModel::IsGroupRole).toBool() ? 30 : 26));
        return size;
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        if (index.data(ZDSidebarModel::IsGroupRole).toBool()) {
            painter->save();
            QFont font = option.font;
            font.setBold(true);
            font.setPointSizeF(font.pointSizeF() * 0.85);
            painter->setFont(font);
            painter->setPen(groupText);
            painter->drawText(option.rect.adjusted(4, 6, -4, 0), Qt::AlignLeft | Qt::AlignVCenter,
                              index.data().toString());
            painter->restore();
            return;
        }
        const int count = index.data(ZDSidebarModel::CountRole).toInt();
        QStyleOptionViewItem opt = option;
        QRect badgeRect;
        QString text;
        if (count >= 0) {
            text = QString::number(count);
            const int width = option.fontMetrics.horizontalAdvance(text) + 12;
            badgeRect = QRect(option.rect.right() - width - 6, option.rect.center().y() - 8, width, 16);
            opt.rect.setRight(badgeRect.left() - 4);
        }
        QStyledItemDelegate::paint(painter, opt, index);
        if (count >= 0) {
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing);
            const bool selected = option.state & QStyle::State_Selected;
            painter->setPen(Qt::NoPen);
            painter->setBrush(selected ? option.palette.highlightedText().color() : badge);
            painter->drawRoundedRect(badgeRect, 8, 8);
            QFont font = option.font;
            font.setPointSizeF(font.pointSizeF() * 0.85);
            painter->setFont(font);
            painter->setPen(selected ? option.palette.highlight().color() : option.palette.text().color());
            painter->drawText(badgeRect, Qt::AlignCenter, text);
            painter->restore();
        }
    }
};
} // namespace

ZDSidebarView::ZDSidebarView(QWidget *parent) : QTreeView(parent)
{
    setObjectName(QStringLiteral("sidebar"));
    setHeaderHidden(true);
    setRootIsDecorated(true);
    setIndentation(14);
    setItemDelegate(new SidebarDelegate(this));
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    setFrameShape(QFrame::NoFrame);
    setUniformRowHeights(false);
    setAccessibleName(tr("Sidebar"));
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        if (const ZDCategoryNodePtr node = m_model->nodeAtIndex(index))
            m_collapsed.insert(keyOf(*node));
    });
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex &index) {
        if (const ZDCategoryNodePtr node = m_model->nodeAtIndex(index))
            m_collapsed.remove(keyOf(*node));
    });
}

void ZDSidebarView::setSidebarModel(ZDSidebarModel *model)
{
    m_model = model;
    setModel(model);
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, &ZDSidebarView::rememberExpansion);
    connect(model, &QAbstractItemModel::modelReset, this, &ZDSidebarView::restoreExpansion);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex &current) {
        const ZDCategoryNodePtr node = m_model->nodeAtIndex(current);
        if (!node || node->isGroup())
            return;
        const QString key = keyOf(*node);
        if (key == m_selectedKey)
            return;
        m_selectedKey = key;
        Q_EMIT selectedNodeChanged(node);
    });
    restoreExpansion();
}

void ZDSidebarView::applyTheme(const ZDEditorTheme &theme)
{
    QPalette palette = this->palette();
    palette.setColor(QPalette::Base, theme.windowColor(ZDWindowColor::CategoryBackground));
    palette.setColor(QPalette::Window, theme.windowColor(ZDWindowColor::CategoryBackground));
    palette.setColor(QPalette::Text, theme.windowColor(ZDWindowColor::ControlText));
    palette.setColor(QPalette::Highlight, theme.windowColor(ZDWindowColor::ControlAccent));
    palette.setColor(QPalette::HighlightedText, theme.windowColor(ZDWindowColor::FilelistPrimaryTextHighlight));
    palette.setColor(QPalette::Inactive, QPalette::Highlight, theme.windowColor(ZDWindowColor::CategoryHighlightInactive));
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, theme.windowColor(ZDWindowColor::ControlText));
    setPalette(palette);
    auto *delegate = static_cast<SidebarDelegate *>(itemDelegate());
    delegate->groupText = theme.windowColor(ZDWindowColor::CategoryGroupText);
    delegate->badge = theme.windowColor(ZDWindowColor::CategoryBadgeBackground);
    viewport()->update();
}

ZDCategoryNodePtr ZDSidebarView::selectedNode() const
{
    return m_model ? m_model->nodeAtIndex(currentIndex()) : nullptr;
}

bool ZDSidebarView::selectNode(unsigned type, const QString &UUID)
{
    const QModelIndex index = m_model->indexOfNode(type, UUID);
    if (!index.isValid())
        return false;
    for (QModelIndex parent = index.parent(); parent.isValid(); parent = parent.parent())
        expand(parent);
    setCurrentIndex(index);
    scrollTo(index);
    return true;
}

void ZDSidebarView::rememberExpansion()
{
    if (const ZDCategoryNodePtr node = selectedNode())
        m_selectedKey = keyOf(*node);
}

void ZDSidebarView::restoreExpansion()
{
    std::function<void(const QModelIndex &)> visit = [&](const QModelIndex &parent) {
        for (int row = 0; row < m_model->rowCount(parent); ++row) {
            const QModelIndex index = m_model->index(row, 0, parent);
            const ZDCategoryNodePtr node = m_model->nodeAtIndex(index);
            if (m_model->rowCount(index) > 0) {
                setExpanded(index, !m_collapsed.contains(keyOf(*node)));
                visit(index);
            }
        }
    };
    visit({});
    // The selection survives a reload when its node is still there.
    const QString key = m_selectedKey;
    const int space = key.indexOf(QLatin1Char(' '));
    if (space > 0) {
        const QModelIndex index = m_model->indexOfNode(key.left(space).toUInt(), key.mid(space + 1));
        if (index.isValid()) {
            QSignalBlocker blocker(selectionModel());
            setCurrentIndex(index);
            return;
        }
    }
    m_selectedKey.clear();
    setCurrentIndex(m_model->allSnippetsIndex());
}
