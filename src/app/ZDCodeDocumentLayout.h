#pragma once

#include <QPlainTextDocumentLayout>

/// The code editor's document layout: the plain-text layout, with the lines of every block
/// moved apart to a multiple of their natural height (the "line height" preference). The extra
/// space is shared above and below each line, so the text stays centred on its line.
class ZDCodeDocumentLayout : public QPlainTextDocumentLayout
{
    Q_OBJECT
public:
    explicit ZDCodeDocumentLayout(QTextDocument *document);

    qreal lineHeightMultiple() const { return m_multiple; }
    /// Lays the document out again when the multiple changes (kept between 0.5 and 4).
    void setLineHeightMultiple(qreal multiple);

    /// The block's rectangle once its lines are spaced.
    QRectF blockBoundingRect(const QTextBlock &block) const override;

private:
    qreal m_multiple = 1.0;
};
