#include "ZDCodeDocumentLayout.h"

#include <QFontMetricsF>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>

ZDCodeDocumentLayout::ZDCodeDocumentLayout(QTextDocument *document) : QPlainTextDocumentLayout(document) {}

void ZDCodeDocumentLayout::setLineHeightMultiple(qreal multiple)
{
    multiple = std::clamp<qreal>(multiple, 0.5, 4.0);
    if (qFuzzyCompare(multiple, m_multiple))
        return;
    m_multiple = multiple;
    relayoutAll();
}

void ZDCodeDocumentLayout::setWrapIndentSpaces(int spaces)
{
    spaces = std::max(spaces, 0);
    if (spaces == m_wrapIndent)
        return;
    m_wrapIndent = spaces;
    relayoutAll();
}

void ZDCodeDocumentLayout::relayoutAll()
{
    // Every block is laid out afresh by the plain-text layout, then placed anew when asked for.
    documentChanged(0, 0, document()->characterCount());
}

bool ZDCodeDocumentLayout::layoutIndented(const QTextBlock &block) const
{
    QTextLayout *layout = block.layout();
    const qreal margin = document()->documentMargin();
    // The plain-text layout gives every line the width there is.
    const QTextLine probe = layout->lineAt(0);
    const qreal available = probe.width();
    const QString text = block.text();
    const QFontMetricsF metrics(document()->defaultFont());
    qsizetype leading = 0;
    while (leading < text.size() && (text.at(leading) == QLatin1Char(' ') || text.at(leading) == QLatin1Char('\t')))
        ++leading;
    const qreal ownIndent = leading > 0 ? probe.cursorToX(int(leading)) - probe.x() : 0;
    // At least a pixel, so that an indented block is told from one the plain-text layout made.
    const qreal indent = std::max<qreal>(
        1, std::min(ownIndent + m_wrapIndent * metrics.horizontalAdvance(QLatin1Char(' ')), available / 2));

    const int before = layout->lineCount();
    layout->beginLayout();
    for (int index = 0;; ++index) {
        QTextLine line = layout->createLine();
        if (!line.isValid())
            break;
        line.setLeadingIncluded(true);
        line.setLineWidth(index == 0 ? available : available - indent);
        line.setPosition(QPointF(index == 0 ? margin : margin + indent, 0));
    }
    layout->endLayout();
    QTextBlock changed = block;
    changed.setLineCount(layout->lineCount());
    return layout->lineCount() != before;
}

QRectF ZDCodeDocumentLayout::blockBoundingRect(const QTextBlock &block) const
{
    // The plain-text layout lays the block out when it has to: every line at the left margin, the
    // first one at the top, each under the one before.
    QRectF bounds = QPlainTextDocumentLayout::blockBoundingRect(block);
    QTextLayout *layout = block.isValid() ? block.layout() : nullptr;
    if (!layout || layout->lineCount() == 0 || !block.isVisible())
        return bounds;
    const bool spaced = !qFuzzyCompare(m_multiple, 1.0);
    bool placed = false;
    bool sizeChanged = false;
    if (m_wrapIndent > 0 && layout->lineCount() > 1 && layout->lineAt(1).x() == layout->lineAt(0).x()) {
        sizeChanged = layoutIndented(block);
        placed = true;
    }
    if (!placed && !spaced)
        return bounds;

    const qreal extra = layout->lineAt(0).height() * (m_multiple - 1.0);
    if (placed || (spaced && layout->lineAt(0).y() == 0)) { // not placed since it was laid out
        qreal y = extra / 2;
        for (int index = 0; index < layout->lineCount(); ++index) {
            QTextLine line = layout->lineAt(index);
            line.setPosition(QPointF(line.x(), y));
            y += line.height() + extra;
        }
    }
    qreal bottom = layout->boundingRect().bottom() + extra / 2;
    if (!block.next().isValid())
        bottom += document()->documentMargin();
    bounds.setHeight(std::max<qreal>(bottom, 1));
    if (sizeChanged) // as the plain-text layout does when a block's line count changes
        Q_EMIT const_cast<ZDCodeDocumentLayout *>(this)->documentSizeChanged(documentSize());
    return bounds;
}
