#include "ZDCodeDocumentLayout.h"

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
    // Every block is laid out afresh (its first line back at the top), then spaced anew.
    documentChanged(0, 0, document()->characterCount());
}

QRectF ZDCodeDocumentLayout::blockBoundingRect(const QTextBlock &block) const
{
    // The plain-text layout lays the block out when it has to, its first line at the top.
    QRectF bounds = QPlainTextDocumentLayout::blockBoundingRect(block);
    QTextLayout *layout = block.isValid() ? block.layout() : nullptr;
    if (qFuzzyCompare(m_multiple, 1.0) || !layout || layout->lineCount() == 0 || !block.isVisible())
        return bounds;
    const qreal extra = layout->lineAt(0).height() * (m_multiple - 1.0);
    if (layout->lineAt(0).y() == 0) { // not spaced since it was laid out
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
    return bounds;
}
