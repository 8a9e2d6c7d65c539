#pragma once

#include <QPlainTextDocumentLayout>

/// The code editor's document layout: the plain-text layout, with
/// - the lines of every block moved apart to a multiple of their natural height (the "line
///   height" preference), the extra space shared above and below each line;
/// - optionally, wrapped lines indented: the continuation lines of a long line start at its own
///   indentation plus a number of spaces (never beyond half the width).
class ZDCodeDocumentLayout : public QPlainTextDocumentLayout
{
    Q_OBJECT
public:
    explicit ZDCodeDocumentLayout(QTextDocument *document);

    qreal lineHeightMultiple() const { return m_multiple; }
    /// Lays the document out again when the multiple changes (kept between 0.5 and 4).
    void setLineHeightMultiple(qreal multiple);
    int wrapIndentSpaces() const { return m_wrapIndent; }
    /// Indents wrapped lines by this many spaces more than their line (0: not at all), and lays
    /// the document out again when that changes.
    void setWrapIndentSpaces(int spaces);

    /// The block's rectangle once its lines are placed.
    QRectF blockBoundingRect(const QTextBlock &block) const override;

private:
    void relayoutAll();
    /// Lays the block's lines out again with wrapped lines indented; returns whether the block's
    /// line count changed.
    bool layoutIndented(const QTextBlock &block) const;

    qreal m_multiple = 1.0;
    int m_wrapIndent = 0;
};
