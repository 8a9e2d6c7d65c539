#include "ZDMarkdownCommands.h"

#include "ZDTextCommands.h"

#include <QRegularExpression>

namespace ZDMarkdownCommands {

namespace {

bool isWordBoundary(QChar c)
{
    return c.isSpace();
}

bool plainSurround(QStringView s, QStringView prefix, QStringView suffix)
{
    return s.size() >= prefix.size() + suffix.size() && s.startsWith(prefix) && s.endsWith(suffix);
}

/// Whether `s` starts with the prefix and ends with the suffix; a single "*" pair around text
/// in "**" (but not "***") is strong emphasis and does not count as a "*" surround.
bool countsAsSurround(QStringView s, const QString &prefix, const QString &suffix)
{
    if (!plainSurround(s, prefix, suffix))
        return false;
    if (prefix == QLatin1String("*") && suffix == QLatin1String("*"))
        return !plainSurround(s, u"**", u"**") || plainSurround(s, u"***", u"***");
    return true;
}

/// The stretch of text R would have with `prefixLength` characters before and `suffixLength` after.
QStringView outsideStretch(const QString &text, ZDTextRange range, int prefixLength, int suffixLength)
{
    if (range.location < prefixLength || range.end() + suffixLength > text.size())
        return {};
    return QStringView(text).mid(range.location - prefixLength, prefixLength + range.length + suffixLength);
}

bool wrappedOutside(const QString &text, ZDTextRange range, const QString &prefix, const QString &suffix)
{
    const QStringView stretch = outsideStretch(text, range, prefix.size(), suffix.size());
    if (!plainSurround(stretch, prefix, suffix))
        return false;
    if (prefix == QLatin1String("*") && suffix == QLatin1String("*")) {
        const bool strong = plainSurround(outsideStretch(text, range, 2, 2), u"**", u"**");
        const bool strongEmphasis = plainSurround(outsideStretch(text, range, 3, 3), u"***", u"***");
        return !strong || strongEmphasis;
    }
    return true;
}

ZDTextRange rangeForEmptySelection(const QString &text, int caret, Granularity granularity)
{
    switch (granularity) {
    case Granularity::Word: {
        int start = caret;
        while (start > 0 && !isWordBoundary(text.at(start - 1)))
            --start;
        int end = caret;
        while (end < text.size() && !isWordBoundary(text.at(end)))
            ++end;
        return {start, end - start};
    }
    case Granularity::Line: {
        const int start = ZDTextCommands::lineStart(text, caret);
        return {start, ZDTextCommands::lineContentsEnd(text, caret) - start};
    }
    case Granularity::None:
        break;
    }
    return {caret, 0};
}

} // namespace

QString actionNameForTag(int tag)
{
    switch (tag) {
    case StrongTag:
        return QStringLiteral("Strong");
    case EmphasizeTag:
        return QStringLiteral("Emphasize");
    case CommentTag:
        return QStringLiteral("Comment");
    case OrderedListTag:
        return QStringLiteral("Ordered List");
    case UnorderedListTag:
        return QStringLiteral("Unordered List");
    case BlockquoteTag:
        return QStringLiteral("Blockquote");
    case InlineCodeTag:
        return QStringLiteral("Inline Code");
    case MarkTag:
        return QStringLiteral("Mark");
    case LineThroughTag:
        return QStringLiteral("Line-through");
    case CodeBlockTag:
        return QStringLiteral("Insert Code Block");
    case InsertLinkTag:
        return QStringLiteral("Insert Link");
    case InsertImageTag:
        return QStringLiteral("Insert Image");
    case InsertTableTag:
        return QStringLiteral("Insert Table");
    default:
        if (tag >= Heading1Tag && tag <= Heading6Tag)
            return QStringLiteral("Heading %1").arg(tag - 100);
        return QString();
    }
}

ZDTextEditResult performFormatAction(int tag, const QString &text, ZDTextRange selection,
                                     const QString &languageAlias)
{
    const QString name = actionNameForTag(tag);
    const auto surround = [&](const char *marker, Granularity granularity) {
        return toggleSurround(text, selection, QString::fromLatin1(marker), QString::fromLatin1(marker),
                              granularity, name);
    };
    const auto prefix = [&](const char *pattern, const char *canonical) {
        return toggleLinePrefix(text, selection, QString::fromLatin1(pattern), QString(),
                                QString::fromLatin1(canonical), name);
    };
    switch (tag) {
    case StrongTag:
        return surround("**", Granularity::Word);
    case EmphasizeTag:
        return surround("*", Granularity::Word);
    case CommentTag:
        return toggleSurround(text, selection, QStringLiteral("<!-- "), QStringLiteral(" -->"),
                              Granularity::Line, name);
    case OrderedListTag:
        return prefix(OrderedListPattern, "1. ");
    case UnorderedListTag:
        return prefix(UnorderedListPattern, "- ");
    case BlockquoteTag:
        return prefix(BlockquotePattern, "> ");
    case InlineCodeTag:
        return surround("`", Granularity::Word);
    case MarkTag:
        return surround("==", Granularity::Word);
    case LineThroughTag:
        return surround("~~", Granularity::Word);
    case CodeBlockTag:
        return insertCodeBlock(text, selection, languageAlias);
    default:
        if (tag >= Heading1Tag && tag <= Heading6Tag)
            return toggleHeading(text, selection, tag - 100);
        return std::nullopt;
    }
}

ZDTextEditResult toggleSurround(const QString &text, ZDTextRange selection, const QString &prefix,
                                const QString &suffix, Granularity granularity, const QString &actionName)
{
    const ZDTextRange range =
        selection.length > 0 ? selection : rangeForEmptySelection(text, selection.location, granularity);
    const QString inner = text.mid(range.location, range.length);
    const int p = prefix.size();
    const int s = suffix.size();
    if (wrappedOutside(text, range, prefix, suffix))
        return ZDTextEdit{{{{range.location - p, p + range.length + s}, inner}},
                          {selection.location - p, selection.length},
                          actionName};
    if (countsAsSurround(inner, prefix, suffix)) {
        const QString unwrapped = inner.mid(p, inner.size() - p - s);
        const ZDTextRange after = selection.length == 0
                                      ? ZDTextRange{std::max(range.location, selection.location - p), 0}
                                      : ZDTextRange{selection.location, selection.length - p - s};
        return ZDTextEdit{{{range, unwrapped}}, after, actionName};
    }
    return ZDTextEdit{
        {{range, prefix + inner + suffix}}, {selection.location + p, selection.length}, actionName};
}

ZDTextEditResult toggleLinePrefix(const QString &text, ZDTextRange selection,
                                  const QString &equivalencePattern, const QString &alternatePattern,
                                  const QString &canonicalPrefix, const QString &actionName)
{
    const ZDTextRange block = ZDTextCommands::selectedLinesRange(text, selection);
    const QStringList lines = text.mid(block.location, block.length).split(QLatin1Char('\n'));
    const QRegularExpression equivalence(equivalencePattern);
    const QRegularExpression alternate(alternatePattern);
    QStringList changed;
    int firstMarkerLength = 0;
    for (const QString &line : lines) {
        QString result;
        int markerLength = 0;
        if (line.isEmpty() && lines.size() > 1) {
            result = line;
        } else if (const auto match = equivalence.match(line); match.hasMatch()) {
            markerLength = match.capturedLength();
            result = line.mid(markerLength);
        } else if (const auto other =
                       alternatePattern.isEmpty() ? QRegularExpressionMatch() : alternate.match(line);
                   other.hasMatch()) {
            markerLength = other.capturedLength();
            result = canonicalPrefix + line.mid(markerLength);
        } else {
            result = canonicalPrefix + line;
        }
        if (changed.isEmpty())
            firstMarkerLength = markerLength;
        changed.append(result);
    }
    const QString replacement = changed.join(QLatin1Char('\n'));
    if (replacement == text.mid(block.location, block.length))
        return std::nullopt;

    ZDTextRange after = selection;
    const int markerEnd = block.location + firstMarkerLength;
    if (after.location >= block.location && after.location < markerEnd)
        after = {markerEnd, std::max(0, selection.end() - markerEnd)};
    const int totalChange = replacement.size() - block.length;
    const int firstChange = changed.constFirst().size() - lines.constFirst().size();
    if (after.location == block.location && ZDTextCommands::isSelectingMultipleLines(text, after))
        after.length += totalChange;
    else
        after = {after.location + firstChange, after.length + totalChange - firstChange};
    after.location = std::max(after.location, block.location);
    after.length = std::max(after.length, 0);
    return ZDTextEdit{{{block, replacement}}, after, actionName};
}

ZDTextEditResult toggleHeading(const QString &text, ZDTextRange selection, int level)
{
    if (level < 1 || level > 6)
        return std::nullopt;
    return toggleLinePrefix(text, selection, QStringLiteral("^(\\t| )*\\#{%1}+ ").arg(level),
                            QStringLiteral("^(\\t| )*\\#+ "), QStringLiteral("###### ").right(level + 1),
                            actionNameForTag(100 + level));
}

ZDTextEditResult insertCodeBlock(const QString &text, ZDTextRange selection, const QString &languageAlias)
{
    Q_UNUSED(text);
    const QString block = QStringLiteral("\n```%1\n\n```\n").arg(languageAlias);
    return ZDTextEdit{{{selection, block}},
                      {selection.location + int(block.size()) - 5, 0},
                      actionNameForTag(CodeBlockTag)};
}

ZDTextEditResult insertTable(const QString &text, ZDTextRange selection, int rows, int columns)
{
    Q_UNUSED(text);
    if (rows <= 0 || columns <= 0)
        return std::nullopt;
    const QString header = QStringLiteral("|    ").repeated(columns) + QLatin1Char('|');
    QStringList lines{header, QStringLiteral("|----").repeated(columns) + QLatin1Char('|')};
    for (int row = 1; row < rows; ++row)
        lines.append(header);
    const QString table = QLatin1Char('\n') + lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
    // The caret goes into the first header cell.
    return ZDTextEdit{{{selection, table}}, {selection.location + 2, 0}, actionNameForTag(InsertTableTag)};
}

namespace {
QString definitionLine(const QString &identifier, const QString &url, const QString &title)
{
    QString line = QStringLiteral("[%1]: %2").arg(identifier, url);
    if (!title.isEmpty())
        line += QStringLiteral(" \"%1\"").arg(title);
    return line;
}
} // namespace

LinkText linkText(const QString &url, const QString &text, const QString &title, const QString &identifier,
                  bool referenceStyle)
{
    if (referenceStyle) {
        const QString inserted = text.isEmpty() ? QStringLiteral("[%1]").arg(identifier)
                                                : QStringLiteral("[%1][%2]").arg(text, identifier);
        return {inserted, definitionLine(identifier, url, title)};
    }
    if (text.isEmpty())
        return {QStringLiteral("[%1](%1)").arg(url), QString()};
    if (!title.isEmpty())
        return {QStringLiteral("[%1](%2 \"%3\")").arg(text, url, title), QString()};
    return {QStringLiteral("[%1](%2)").arg(text, url), QString()};
}

LinkText imageText(const QString &url, const QString &title, const QString &altText,
                   const QString &identifier, bool referenceStyle)
{
    if (referenceStyle)
        return {QStringLiteral("![%1][%2]").arg(altText, identifier), definitionLine(identifier, url, title)};
    if (!title.isEmpty())
        return {QStringLiteral("![%1](%2 \"%3\")").arg(altText, url, title), QString()};
    return {QStringLiteral("![%1](%2)").arg(altText, url), QString()};
}

ZDTextEditResult insertLink(const QString &text, ZDTextRange selection, const LinkText &link,
                            const QString &actionName)
{
    ZDTextEdit edit{
        {{selection, link.inserted}}, {selection.location + int(link.inserted.size()), 0}, actionName};
    if (!link.definition.isEmpty())
        edit.replacements.append({{int(text.size()), 0}, QLatin1Char('\n') + link.definition});
    return edit;
}

} // namespace ZDMarkdownCommands
