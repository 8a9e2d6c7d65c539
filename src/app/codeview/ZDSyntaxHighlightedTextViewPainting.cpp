// The editor's drawing (gutter, invisibles, caret, line and bracket marks) and its rich-text copy.
#include "ZDSyntaxHighlightedTextView.h"

#include <QMimeData>
#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>

namespace {
constexpr int GutterPadding = 6;
constexpr int CaretWidth = 2;
} // namespace

void ZDSyntaxHighlightedTextView::updateExtraSelections()
{
    QList<QTextEdit::ExtraSelection> selections;
    QTextEdit::ExtraSelection line;
    line.format.setBackground(m_colors.currentLine);
    line.format.setProperty(QTextFormat::FullWidthSelection, true);
    line.cursor = textCursor();
    line.cursor.clearSelection();
    selections.append(line);
    if (m_flashedBracket >= 0 && m_flashedBracket < document()->characterCount() - 1) {
        QTextEdit::ExtraSelection bracket;
        bracket.format.setBackground(m_colors.selection);
        bracket.cursor = QTextCursor(document());
        bracket.cursor.setPosition(m_flashedBracket);
        bracket.cursor.setPosition(m_flashedBracket + 1, QTextCursor::KeepAnchor);
        selections.append(bracket);
    }
    setExtraSelections(selections);
}

int ZDSyntaxHighlightedTextView::gutterWidth() const
{
    const int digits = QString::number(std::max(1, blockCount())).size();
    return 2 * GutterPadding + fontMetrics().horizontalAdvance(QLatin1Char('9')) * std::max(2, digits);
}

void ZDSyntaxHighlightedTextView::updateGutterWidth()
{
    setViewportMargins(gutterWidth(), 0, 0, 0);
}

void ZDSyntaxHighlightedTextView::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    const QRect area = contentsRect();
    m_gutter->setGeometry(area.left(), area.top(), gutterWidth(), area.height());
}

void ZDSyntaxHighlightedTextView::paintGutter(QPaintEvent *event)
{
    QPainter painter(m_gutter);
    painter.fillRect(event->rect(), m_colors.gutterBackground);
    painter.setPen(m_colors.gutterText);
    painter.setFont(font());
    const int width = m_gutter->width() - GutterPadding;
    const int current = textCursor().blockNumber();
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        const QRectF bounds = blockBoundingGeometry(block).translated(contentOffset());
        if (bounds.top() > event->rect().bottom())
            break;
        if (!block.isVisible() || bounds.bottom() < event->rect().top())
            continue;
        QFont numberFont = font();
        numberFont.setBold(block.blockNumber() == current);
        painter.setFont(numberFont);
        const QTextLine first = block.layout()->lineAt(0); // lines may be spaced apart
        const qreal top = first.isValid() ? bounds.top() + first.y() : bounds.top();
        painter.drawText(QRectF(0, top, width, first.isValid() ? first.height() : fontMetrics().height()),
                         Qt::AlignRight | Qt::AlignVCenter, QString::number(block.blockNumber() + 1));
    }
}

void ZDSyntaxHighlightedTextView::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    QPainter painter(viewport());
    if (m_showInvisibles)
        paintInvisibles(painter, event->rect());
    paintCaret(painter);
}

void ZDSyntaxHighlightedTextView::paintInvisibles(QPainter &painter, const QRect &area)
{
    painter.setPen(m_colors.invisibles);
    painter.setFont(font());
    const QPointF offset = contentOffset();
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        const QRectF bounds = blockBoundingGeometry(block).translated(offset);
        if (bounds.top() > area.bottom())
            break;
        const QTextLayout *layout = block.layout();
        const QString text = block.text();
        const auto mark = [&](int index, const QString &glyph, Qt::Alignment alignment) {
            const QTextLine line = layout->lineForTextPosition(index);
            if (!line.isValid())
                return;
            const qreal left = line.cursorToX(index);
            const qreal right = index < text.size() ? line.cursorToX(index + 1)
                                                    : left + fontMetrics().horizontalAdvance(glyph);
            painter.drawText(QRectF(bounds.left() + left, bounds.top() + line.y(),
                                    std::max<qreal>(right - left, 1), line.height()),
                             alignment | Qt::AlignVCenter, glyph);
        };
        for (int i = 0; i < text.size(); ++i) {
            if (text.at(i) == QLatin1Char('\t'))
                mark(i, QStringLiteral("\u2192"), Qt::AlignLeft);
            else if (text.at(i).isSpace())
                mark(i, QStringLiteral("\u00B7"), Qt::AlignHCenter);
        }
        if (block.next().isValid())
            mark(int(text.size()), QStringLiteral("\u00AC"), Qt::AlignLeft);
    }
}

void ZDSyntaxHighlightedTextView::paintCaret(QPainter &painter)
{
    if (!hasFocus() || !m_caretVisible || isReadOnly())
        return;
    const QRect caret = cursorRect();
    painter.fillRect(QRect(caret.left(), caret.top(), CaretWidth, caret.height()), m_colors.caret);
}

void ZDSyntaxHighlightedTextView::focusInEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusInEvent(event);
    m_caretVisible = true;
    m_caretTimer->start();
}

void ZDSyntaxHighlightedTextView::focusOutEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusOutEvent(event);
    m_caretTimer->stop();
    viewport()->update();
}

QString ZDSyntaxHighlightedTextView::selectionAsHtml() const
{
    const ZDTextRange range = selectedRange();
    const QString text = toPlainText().mid(range.location, range.length);
    QList<QColor> colors(text.size());
    for (int i = 0; i < text.size(); ++i)
        colors[i] = colorAt(range.location + i);
    QString html =
        QStringLiteral(
            "<html><body style=\"background-color:%1;\"><pre style=\"background-color:%1; color:%2; "
            "font-family:'%3'; font-size:%4pt;\">")
            .arg(m_colors.background.name(), m_colors.foreground.name(), font().family().toHtmlEscaped())
            .arg(font().pointSizeF());
    for (int start = 0; start < text.size();) {
        int end = start + 1;
        while (end < text.size() && colors[end] == colors[start])
            ++end;
        html += QStringLiteral("<span style=\"color:%1;\">%2</span>")
                    .arg(colors[start].name(), text.mid(start, end - start).toHtmlEscaped());
        start = end;
    }
    return html + QStringLiteral("</pre></body></html>");
}

QMimeData *ZDSyntaxHighlightedTextView::createMimeDataFromSelection() const
{
    auto *mime = new QMimeData;
    const ZDTextRange range = selectedRange();
    mime->setText(toPlainText().mid(range.location, range.length));
    mime->setHtml(selectionAsHtml());
    return mime;
}
