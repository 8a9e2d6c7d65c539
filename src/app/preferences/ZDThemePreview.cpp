#include "ZDThemePreview.h"

#include "ZDEditorTheme.h"
#include "ZDSyntaxHighlightedTextView.h"

#include <QFontDatabase>
#include <QPainter>
#include <QPainterPath>

QPixmap zdThemePreview(const ZDEditorTheme &theme, QSize size, qreal devicePixelRatio)
{
    QPixmap pixmap(size * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    const ZDEditorColors colors = ZDSyntaxHighlightedTextView::colorsOfTheme(theme);

    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(0, 0, size.width(), size.height()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath rounded;
    rounded.addRoundedRect(frame, 5, 5);
    painter.fillPath(rounded, colors.background);
    painter.setClipPath(rounded);

    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(std::max(8, size.height() / 7));
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    const qreal gutter = metrics.horizontalAdvance(QLatin1Char('9')) + 8;
    painter.fillRect(QRectF(0, 0, gutter, size.height()), colors.gutterBackground);

    // One line is drawn selected, one as the current line.
    using Run = std::pair<const char *, const char *>; // text, token type
    const QList<QList<Run>> lines{
        {{"def", "Keyword"}, {" ", ""}, {"greet", "Name.Function"}, {"(name):", "Punctuation"}},
        {{"    ", ""}, {"# say hello", "Comment.Single"}},
        {{"    ", ""},
         {"return", "Keyword"},
         {" ", ""},
         {"\"Hi, \"", "Literal.String"},
         {" + ", "Operator"},
         {"name", "Name"}},
        {{"greet", "Name"}, {"(", "Punctuation"}, {"42", "Literal.Number"}, {")", "Punctuation"}},
    };
    const qreal lineHeight = metrics.height() + 2;
    qreal y = 6;
    for (int i = 0; i < lines.size(); ++i) {
        if (i == 2)
            painter.fillRect(QRectF(gutter, y, size.width(), lineHeight), colors.currentLine);
        painter.setPen(colors.gutterText);
        painter.drawText(QRectF(0, y, gutter - 4, lineHeight), Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(i + 1));
        qreal x = gutter + 5;
        for (const auto &[text, type] : lines.at(i)) {
            const QString run = QString::fromLatin1(text);
            const qreal width = metrics.horizontalAdvance(run);
            if (i == 3 && QLatin1String(type) == QLatin1String("Literal.Number"))
                painter.fillRect(QRectF(x, y, width, lineHeight), colors.selection);
            painter.setPen(*type ? theme.colorForType(QString::fromLatin1(type)) : colors.foreground);
            painter.drawText(QPointF(x, y + metrics.ascent() + 1), run);
            x += width;
        }
        y += lineHeight;
    }
    painter.setClipping(false);
    QColor border = colors.foreground;
    border.setAlphaF(0.25f);
    painter.setPen(border);
    painter.drawPath(rounded);
    return pixmap;
}
