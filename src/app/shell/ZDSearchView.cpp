#include "ZDSearchView.h"

#include "ZDEditorTheme.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QMimeData>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTextBlock>
#include <QTextDocumentFragment>

namespace {
constexpr int kTokenObjectType = QTextFormat::UserObject + 1;
enum TokenProperty { NameProperty = QTextFormat::UserProperty + 1, DisplayProperty, UnderlyingProperty, CountProperty };
constexpr int kProposalRole = Qt::UserRole + 1;
constexpr int kCountRole = Qt::UserRole + 2;

ZDSearchConstraint constraintOfFormat(const QTextFormat &format)
{
    return ZDSearchConstraint(format.stringProperty(NameProperty), format.stringProperty(DisplayProperty),
                              format.stringProperty(UnderlyingProperty), format.property(CountProperty).toLongLong());
}

QString kindLabel(const QString &kind)
{
    if (kind == ZDSearchConstraint::folderKind)
        return QObject::tr("Folder");
    if (kind == ZDSearchConstraint::tagKind)
        return QObject::tr("Tag");
    if (kind == ZDSearchConstraint::languageKind)
        return QObject::tr("Language");
    return kind;
}

/// Draws a token as a chip: the kind, then the value.
class TokenChip : public QObject, public QTextObjectInterface
{
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)
public:
    QColor nameBackground{0xD8, 0xDE, 0xE8}, name{0x40, 0x48, 0x58}, valueBackground{0xE8, 0xEC, 0xF2}, value{0x20, 0x24, 0x30};

    QSizeF intrinsicSize(QTextDocument *, int, const QTextFormat &format) override
    {
        const QFontMetrics metrics(font(format));
        return QSizeF(metrics.horizontalAdvance(kindLabel(format.stringProperty(NameProperty))) +
                          metrics.horizontalAdvance(format.stringProperty(DisplayProperty)) + 20,
                      metrics.height() + 2);
    }

    void drawObject(QPainter *painter, const QRectF &rect, QTextDocument *, int, const QTextFormat &format) override
    {
        const QFont chipFont = font(format);
        const QFontMetrics metrics(chipFont);
        const QString label = kindLabel(format.stringProperty(NameProperty));
        const QRectF chip = rect.adjusted(1, 1, -1, -1);
        const QRectF left(chip.left(), chip.top(), metrics.horizontalAdvance(label) + 9, chip.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(valueBackground);
        painter->drawRoundedRect(chip, 4, 4);
        painter->setBrush(nameBackground);
        painter->drawRoundedRect(left, 4, 4);
        painter->drawRect(left.adjusted(left.width() / 2, 0, 0, 0));
        painter->setFont(chipFont);
        painter->setPen(name);
        painter->drawText(left, Qt::AlignCenter, label);
        painter->setPen(value);
        painter->drawText(chip.adjusted(left.width(), 0, 0, 0), Qt::AlignCenter, format.stringProperty(DisplayProperty));
        painter->restore();
    }

private:
    static QFont font(const QTextFormat &format)
    {
        QFont result = format.toCharFormat().font();
        result.setPointSizeF(result.pointSizeF() * 0.9);
        return result;
    }
};

/// Proposal rows: the display value, then its count in a secondary colour; section titles bold.
class ProposalDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyleOptionViewItem opt = option;
        initStyleOption(&opt, index);
        const QString count = index.data(kCountRole).toString();
        QStyle *style = opt.widget ? opt.widget->style() : QApplication::style();
        style->drawPrimitive(QStyle::PE_PanelItemViewItem, &opt, painter, opt.widget);
        const bool selected = opt.state & QStyle::State_Selected;
        QRect area = opt.rect.adjusted(8, 0, -8, 0);
        painter->save();
        painter->setFont(opt.font);
        painter->setPen(opt.palette.color(selected ? QPalette::HighlightedText
                                                  : (index.flags() & Qt::ItemIsEnabled ? QPalette::Text : QPalette::PlaceholderText)));
        const QString text = index.data(Qt::DisplayRole).toString() + QStringLiteral("  ");
        painter->drawText(area, Qt::AlignVCenter | Qt::AlignLeft, text);
        area.setLeft(area.left() + opt.fontMetrics.horizontalAdvance(text));
        painter->setPen(selected ? opt.palette.color(QPalette::HighlightedText) : opt.palette.color(QPalette::PlaceholderText));
        painter->drawText(area, Qt::AlignVCenter | Qt::AlignLeft, count);
        painter->restore();
    }
};
} // namespace

ZDSearchView::ZDSearchView(QWidget *parent) : QTextEdit(parent)
{
    setObjectName(QStringLiteral("searchField"));
    setAccessibleName(tr("Search"));
    setPlaceholderText(tr("Search   (in: for folders, tags, languages)"));
    setAcceptRichText(false);
    setTabChangesFocus(true);
    setLineWrapMode(QTextEdit::NoWrap);
    setWordWrapMode(QTextOption::NoWrap);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    document()->setDocumentMargin(3);
    setFixedHeight(fontMetrics().height() + 14);
    m_chip = new TokenChip;
    m_chip->setParent(this);
    document()->documentLayout()->registerHandler(kTokenObjectType, m_chip);

    m_list = new QListWidget(this);
    m_list->setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setItemDelegate(new ProposalDelegate(m_list));
    m_list->setObjectName(QStringLiteral("searchCompletionList"));
    m_list->hide();
    connect(m_list, &QListWidget::itemClicked, this, [this](QListWidgetItem *item) {
        const QVariant row = item->data(kProposalRole);
        if (row.isValid())
            applyConstraintAndCloseCompletionWindow(m_proposals.value(row.toInt()));
    });

    connect(document(), &QTextDocument::contentsChange, this, &ZDSearchView::contentsChanged);
    connect(this, &QTextEdit::cursorPositionChanged, this, [this] {
        // Typing right after a token must not continue the token's format. (With a selection
        // this would reformat the selected text, tokens included.)
        const QTextCursor cursor = textCursor();
        if (!cursor.hasSelection() && cursor.charFormat().objectType() == kTokenObjectType)
            setCurrentCharFormat(QTextCharFormat());
        if (isCompletionVisible() && ZDSearchTokenSyntax::completionKeyword(toPlainText(), textCursor().position()).isNull())
            closeCompletion();
    });
    connect(&m_queryTimer, &ZDSearchQueryChangeTimer::searchQueryDidChange, this, &ZDSearchView::searchQueryDidChange);
}

ZDSearchView::~ZDSearchView() = default;

void ZDSearchView::applyTheme(const ZDEditorTheme &theme)
{
    auto *chip = static_cast<TokenChip *>(m_chip);
    chip->nameBackground = theme.windowColor(ZDWindowColor::SearchTokenNameBackground);
    chip->name = theme.windowColor(ZDWindowColor::SearchTokenName);
    chip->valueBackground = theme.windowColor(ZDWindowColor::SearchTokenValueBackground);
    chip->value = theme.windowColor(ZDWindowColor::SearchTokenValue);
    viewport()->update();
}

QTextCharFormat ZDSearchView::tokenFormat(const ZDSearchConstraint &constraint) const
{
    QTextCharFormat format;
    format.setObjectType(kTokenObjectType);
    format.setProperty(NameProperty, constraint.constraintName());
    format.setProperty(DisplayProperty, constraint.constraintDisplayValue());
    format.setProperty(UnderlyingProperty, constraint.constraintUnderlyingValue());
    format.setProperty(CountProperty, constraint.constriantTargetCount());
    format.setToolTip(constraint.displayString());
    return format;
}

QList<ZDSearchConstraint> ZDSearchView::searchConstraints() const
{
    QList<ZDSearchConstraint> constraints;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.charFormat().objectType() != kTokenObjectType)
                continue;
            const qsizetype tokens = fragment.text().count(ZDSearchTokenSyntax::tokenCharacter);
            for (qsizetype i = 0; i < tokens; ++i)
                constraints << constraintOfFormat(fragment.charFormat());
        }
    }
    return constraints;
}

QString ZDSearchView::searchKeyword() const
{
    return ZDSearchTokenSyntax::searchKeyword(toPlainText());
}

bool ZDSearchView::isEmpty() const
{
    return document()->characterCount() <= 1;
}

void ZDSearchView::setSearchConstraints(const QList<ZDSearchConstraint> &constraints, const QString &keyword)
{
    m_programmaticEdit = true;
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.removeSelectedText();
    for (const ZDSearchConstraint &constraint : constraints)
        cursor.insertText(QString(ZDSearchTokenSyntax::tokenCharacter), tokenFormat(constraint));
    cursor.insertText(ZDSearchTokenSyntax::pastedText(keyword), QTextCharFormat());
    cursor.endEditBlock();
    setTextCursor(cursor);
    m_programmaticEdit = false;
    closeCompletion();
    m_queryTimer.noteQueryChanged(toPlainText(), false);
}

void ZDSearchView::clearContent()
{
    m_programmaticEdit = true;
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.removeSelectedText();
    cursor.endEditBlock();
    m_programmaticEdit = false;
    setCurrentCharFormat(QTextCharFormat());
    closeCompletion();
    m_queryTimer.noteQueryChanged(toPlainText(), false);
}

void ZDSearchView::insertSearchToken(const ZDSearchConstraint &constraint, ZDSearchTokenSyntax::Range range)
{
    if (range.location < 0)
        return;
    m_programmaticEdit = true;
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.location + range.length), QTextCursor::KeepAnchor);
    cursor.insertText(QString(ZDSearchTokenSyntax::tokenCharacter), tokenFormat(constraint));
    cursor.endEditBlock();
    setTextCursor(cursor);
    setCurrentCharFormat(QTextCharFormat());
    m_programmaticEdit = false;
    m_queryTimer.noteQueryChanged(toPlainText(), false);
}

void ZDSearchView::applyConstraintAndCloseCompletionWindow(const std::optional<ZDSearchConstraint> &constraint)
{
    if (!constraint)
        return;
    insertSearchToken(*constraint, ZDSearchTokenSyntax::completionRange(toPlainText(), textCursor().position()));
    closeCompletion();
}

void ZDSearchView::contentsChanged(int, int charsRemoved, int charsAdded)
{
    if (m_programmaticEdit || (charsRemoved == 0 && charsAdded == 0))
        return;
    updateCompletion();
    m_queryTimer.noteQueryChanged(toPlainText(), true);
}

bool ZDSearchView::isCompletionVisible() const
{
    return m_list->isVisible();
}

QList<ZDSearchConstraint> ZDSearchView::listedProposals() const
{
    return isCompletionVisible() ? m_proposals : QList<ZDSearchConstraint>();
}

std::optional<ZDSearchConstraint> ZDSearchView::highlightedProposal() const
{
    const QListWidgetItem *item = m_list->currentItem();
    if (!isCompletionVisible() || !item || !item->data(kProposalRole).isValid())
        return std::nullopt;
    return m_proposals.value(item->data(kProposalRole).toInt());
}

void ZDSearchView::updateCompletion()
{
    const QString keyword = ZDSearchTokenSyntax::completionKeyword(toPlainText(), textCursor().position());
    if (keyword.isNull() || !m_provider) {
        closeCompletion();
        return;
    }
    const QList<ZDSearchProposalSection> sections = m_provider(this, keyword);
    m_list->clear();
    m_proposals.clear();
    for (const ZDSearchProposalSection &section : sections) {
        auto *header = new QListWidgetItem(section.title, m_list);
        header->setFlags(Qt::NoItemFlags);
        QFont bold = m_list->font();
        bold.setBold(true);
        header->setFont(bold);
        for (const ZDSearchConstraint &proposal : section.proposals) {
            auto *item = new QListWidgetItem(proposal.constraintDisplayValue(), m_list);
            item->setData(kProposalRole, int(m_proposals.size()));
            item->setData(kCountRole, proposal.countString());
            m_proposals << proposal;
        }
    }
    if (m_proposals.isEmpty()) {
        closeCompletion();
        return;
    }
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->data(kProposalRole).isValid()) {
            m_list->setCurrentRow(row);
            break;
        }
    }
    const int rowHeight = m_list->sizeHintForRow(0);
    m_list->setFixedSize(std::max(width(), 260), rowHeight * m_list->count() + 6);
    m_list->move(mapToGlobal(QPoint(0, height())));
    m_list->show();
}

void ZDSearchView::closeCompletion()
{
    m_list->hide();
}

void ZDSearchView::moveHighlight(int step)
{
    int row = m_list->currentRow();
    for (int i = 0; i < m_list->count(); ++i) {
        row = (row + step + m_list->count()) % m_list->count();
        if (m_list->item(row)->data(kProposalRole).isValid()) {
            m_list->setCurrentRow(row);
            return;
        }
    }
}

void ZDSearchView::keyPressEvent(QKeyEvent *event)
{
    if (isCompletionVisible()) {
        switch (event->key()) {
        case Qt::Key_Up:
        case Qt::Key_Backtab:
            moveHighlight(-1);
            return;
        case Qt::Key_Down:
            moveHighlight(1);
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Tab:
            applyConstraintAndCloseCompletionWindow(highlightedProposal());
            return;
        case Qt::Key_Escape:
            closeCompletion();
            return;
        default:
            break;
        }
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        m_queryTimer.noteQueryChanged(toPlainText(), false); // search now
        return;
    } else if (event->key() == Qt::Key_Escape && !isEmpty()) {
        clearContent();
        return;
    }
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::ControlModifier) {
        updateCompletion(); // the "complete" command
        return;
    }
    QTextEdit::keyPressEvent(event);
}

void ZDSearchView::focusOutEvent(QFocusEvent *event)
{
    closeCompletion();
    QTextEdit::focusOutEvent(event);
}

QMimeData *ZDSearchView::createMimeDataFromSelection() const
{
    const QTextCursor cursor = textCursor();
    const QString selected = cursor.selectedText();
    auto *mime = new QMimeData;
    if (selected == QString(ZDSearchTokenSyntax::tokenCharacter)) {
        // A token by itself is copied as its display value.
        const QTextBlock block = document()->findBlock(cursor.selectionStart());
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.contains(cursor.selectionStart()))
                mime->setText(constraintOfFormat(fragment.charFormat()).constraintDisplayValue());
        }
    } else {
        mime->setText(ZDSearchTokenSyntax::copiedText(selected));
    }
    return mime;
}

bool ZDSearchView::canInsertFromMimeData(const QMimeData *source) const
{
    return source->hasText();
}

void ZDSearchView::insertFromMimeData(const QMimeData *source)
{
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.insertText(ZDSearchTokenSyntax::pastedText(source->text()), QTextCharFormat());
    cursor.endEditBlock();
    setTextCursor(cursor);
}

void ZDSearchView::resizeEvent(QResizeEvent *event)
{
    QTextEdit::resizeEvent(event);
    closeCompletion();
}

#include "ZDSearchView.moc"
