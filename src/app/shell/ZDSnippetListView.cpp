#include "ZDSnippetListView.h"

#include "ZDEditorTheme.h"
#include "ZDSnippetListModel.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace {
class SnippetRowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QColor secondary = Qt::gray;
    QColor divider = Qt::lightGray;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        return QSize(200, option.fontMetrics.height() * 2 + 18);
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyleOptionViewItem opt = option;
        initStyleOption(&opt, index);
        painter->save();
        const bool selected = opt.state & QStyle::State_Selected;
        const bool active = opt.state & QStyle::State_Active;
        if (selected)
            painter->fillRect(opt.rect, opt.palette.brush(active ? QPalette::Active : QPalette::Inactive, QPalette::Highlight));
        else {
            painter->setPen(divider);
            painter->drawLine(opt.rect.bottomLeft() + QPoint(12, 0), opt.rect.bottomRight());
        }
        const QColor primary = opt.palette.color(active ? QPalette::Active : QPalette::Inactive,
                                                 selected ? QPalette::HighlightedText : QPalette::Text);
        const QColor second = selected ? primary : secondary;
        const QRect area = opt.rect.adjusted(12, 6, -10, -6);
        const int lineHeight = area.height() / 2;
        const QRect first(area.left(), area.top(), area.width(), lineHeight);
        const QRect second_(area.left(), area.top() + lineHeight, area.width(), lineHeight);

        QFont smaller = opt.font;
        smaller.setPointSizeF(opt.font.pointSizeF() * 0.9);
        const QString date = index.data(ZDSnippetListModel::DateRole).toString();
        painter->setFont(smaller);
        const int dateWidth = QFontMetrics(smaller).horizontalAdvance(date);
        painter->setPen(second);
        painter->drawText(first, Qt::AlignRight | Qt::AlignVCenter, date);

        QFont bold = opt.font;
        bold.setBold(true);
        painter->setFont(bold);
        painter->setPen(primary);
        const QRect titleRect = first.adjusted(0, 0, -dateWidth - 8, 0);
        painter->drawText(titleRect, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(bold).elidedText(opt.text, Qt::ElideRight, titleRect.width()));

        painter->setFont(smaller);
        painter->setPen(second);
        QString detail = index.data(ZDSnippetListModel::FolderRole).toString();
        const QString languages = index.data(ZDSnippetListModel::LanguagesRole).toString();
        if (!languages.isEmpty())
            detail += QStringLiteral("  ·  ") + languages;
        painter->drawText(second_, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(smaller).elidedText(detail, Qt::ElideRight, second_.width()));
        painter->restore();
    }
};
} // namespace

ZDSnippetListView::ZDSnippetListView(QWidget *parent) : QListView(parent)
{
    setObjectName(QStringLiteral("snippetList"));
    setItemDelegate(new SnippetRowDelegate(this));
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setDefaultDropAction(Qt::MoveAction);
    setFrameShape(QFrame::NoFrame);
    setAccessibleName(tr("Snippets"));
}

void ZDSnippetListView::setListModel(ZDSnippetListModel *model)
{
    m_model = model;
    setModel(model);
    auto notify = [this] { Q_EMIT selectedSnippetsChanged(selectedSnippets()); };
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, notify);
    connect(model, &QAbstractItemModel::modelReset, this, notify);
}

void ZDSnippetListView::applyTheme(const ZDEditorTheme &theme)
{
    QPalette palette = this->palette();
    palette.setColor(QPalette::Base, theme.windowColor(ZDWindowColor::FilelistBackground));
    palette.setColor(QPalette::Text, theme.windowColor(ZDWindowColor::FilelistPrimaryText));
    palette.setColor(QPalette::Highlight, theme.windowColor(ZDWindowColor::ControlAccent));
    palette.setColor(QPalette::HighlightedText, theme.windowColor(ZDWindowColor::FilelistPrimaryTextHighlight));
    palette.setColor(QPalette::Inactive, QPalette::Highlight, theme.windowColor(ZDWindowColor::FilelistHighlightInactive));
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, theme.windowColor(ZDWindowColor::FilelistPrimaryText));
    setPalette(palette);
    auto *delegate = static_cast<SnippetRowDelegate *>(itemDelegate());
    delegate->secondary = theme.windowColor(ZDWindowColor::FilelistSecondaryText);
    delegate->divider = theme.windowColor(ZDWindowColor::ItemDivider);
    viewport()->update();
}

ZDSnippetList ZDSnippetListView::selectedSnippets() const
{
    QList<int> rows;
    for (const QModelIndex &index : selectionModel()->selectedRows())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    ZDSnippetList snippets;
    for (int row : rows) {
        if (const ZDSnippetPtr snippet = m_model->snippetAt(row))
            snippets << snippet;
    }
    return snippets;
}

bool ZDSnippetListView::selectSnippet(const QString &UUID)
{
    const int row = m_model->rowOfSnippet(UUID);
    if (row < 0)
        return false;
    const QModelIndex index = m_model->index(row);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    scrollTo(index);
    return true;
}

void ZDSnippetListView::keyPressEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) && !selectedSnippets().isEmpty()) {
        Q_EMIT deleteRequested();
        return;
    }
    QListView::keyPressEvent(event);
}
