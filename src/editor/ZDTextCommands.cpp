#include "ZDTextCommands.h"

namespace ZDTextCommands {

namespace {

QChar charAt(const QString &text, int index)
{
    return index >= 0 && index < text.size() ? text.at(index) : QChar();
}

QString indentationUnit(const ZDEditorSettings &settings)
{
    return settings.indentWithTabs ? QStringLiteral("\t") : QString(settings.tabSize, QLatin1Char(' '));
}

ZDTextEdit insertion(ZDTextRange selection, const QString &inserted, int caretOffset)
{
    return {{{selection, inserted}},
            {selection.location + caretOffset, 0},
            QString::fromLatin1(TypingActionName)};
}

/// An edit made of line replacements: the selection follows the text it covered.
ZDTextEditResult lineEdit(QList<ZDTextReplacement> replacements, ZDTextRange selection,
                          const QString &actionName)
{
    if (replacements.isEmpty())
        return std::nullopt;
    ZDTextEdit edit{std::move(replacements), {}, actionName};
    const int start = edit.mapPosition(selection.location);
    const int end = edit.mapPosition(selection.end());
    edit.selection = {start, std::max(0, end - start)};
    return edit;
}

/// Calls `visit(lineStart, contentsEnd)` for every line of the text.
template <typename Visitor> void forEachLine(const QString &text, Visitor visit)
{
    int start = 0;
    while (true) {
        const int end = lineContentsEnd(text, start);
        visit(start, end);
        if (end >= text.size())
            break;
        start = end + 1;
    }
}

QString shiftedIndentation(const QString &old, const ZDEditorSettings &settings, bool toLeft)
{
    const int tabSize = settings.tabSize;
    if (settings.indentWithTabs) {
        const int width = visualWidth(old, tabSize);
        int level = 0;
        if (!toLeft)
            level = width / tabSize + 1;
        else if (width % tabSize != 0)
            level = width / tabSize;
        else if (width > 0)
            level = width / tabSize - 1;
        return QString(level, QLatin1Char('\t'));
    }
    QString expanded;
    for (QChar c : old) {
        if (c == QLatin1Char('\t'))
            expanded += QString(tabSize - expanded.size() % tabSize, QLatin1Char(' '));
        else
            expanded += c;
    }
    const int n = expanded.size();
    const int remainder = n % tabSize;
    if (toLeft) {
        const int amount = remainder != 0 ? remainder : tabSize;
        return n <= amount ? QString() : expanded.left(n - amount);
    }
    return expanded + QString(tabSize - remainder, QLatin1Char(' '));
}

} // namespace

bool isIndentationSpace(QChar c)
{
    return c != QLatin1Char('\n') && c.isSpace();
}

int lineStart(const QString &text, int position)
{
    if (position <= 0)
        return 0;
    return text.lastIndexOf(QLatin1Char('\n'), position - 1) + 1;
}

int lineContentsEnd(const QString &text, int position)
{
    const int newline = text.indexOf(QLatin1Char('\n'), position);
    return newline < 0 ? text.size() : newline;
}

int indentationLength(const QString &text, int lineStartIndex)
{
    int end = lineStartIndex;
    while (end < text.size() && isIndentationSpace(text.at(end)))
        ++end;
    return end - lineStartIndex;
}

int visualWidth(QStringView run, int tabSize)
{
    int width = 0;
    for (QChar c : run) {
        if (c == QLatin1Char('\t'))
            width += tabSize - width % tabSize;
        else if (c == QLatin1Char(' '))
            ++width;
    }
    return width;
}

bool isSelectingMultipleLines(const QString &text, ZDTextRange selection)
{
    return selection.length > 0 &&
           QStringView(text).mid(selection.location, selection.length).contains(QLatin1Char('\n'));
}

ZDTextRange selectedLinesRange(const QString &text, ZDTextRange selection)
{
    const int start = lineStart(text, selection.location);
    const int last = selection.length > 0 ? selection.end() - 1 : selection.location;
    const int end = lineContentsEnd(text, std::max(start, last));
    return {start, end - start};
}

ZDTextEditResult insertTab(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings)
{
    if (isSelectingMultipleLines(text, selection))
        return shiftLines(text, selection, settings, false, QString::fromLatin1(ShiftRightActionName));
    return insertSmartTab(text, selection, settings);
}

ZDTextEditResult insertSmartTab(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings)
{
    if (settings.indentWithTabs)
        return insertion(selection, QStringLiteral("\t"), 1);
    const int tabSize = settings.tabSize;
    int width = 0;
    for (int i = lineStart(text, selection.location); i < selection.location; ++i)
        width += text.at(i) == QLatin1Char('\t') ? tabSize - width % tabSize : 1;
    const int count = tabSize - width % tabSize;
    return insertion(selection, QString(count, QLatin1Char(' ')), count);
}

ZDTextEditResult shiftLines(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings,
                            bool toLeft, const QString &actionName)
{
    const ZDTextRange lines = selectedLinesRange(text, selection);
    QList<ZDTextReplacement> replacements;
    int start = lines.location;
    while (start <= lines.end()) {
        const ZDTextRange indentation{start, indentationLength(text, start)};
        const QString old = text.mid(indentation.location, indentation.length);
        const QString shifted = shiftedIndentation(old, settings, toLeft);
        if (shifted != old)
            replacements.append({indentation, shifted});
        start = lineContentsEnd(text, start) + 1;
    }
    return lineEdit(std::move(replacements), selection, actionName);
}

ZDTextEditResult insertNewline(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings)
{
    if (!settings.automaticallyIndentOnReturn)
        return insertion(selection, QStringLiteral("\n"), 1);
    const int caret = selection.location;
    const int start = lineStart(text, caret);
    const QString indent = text.mid(start, std::min(indentationLength(text, start), caret - start));
    const QString before = QString(charAt(text, caret - 1)) + charAt(text, selection.end());
    static const QStringList pairs{QStringLiteral("{}"), QStringLiteral("[]"), QStringLiteral("()")};
    if (pairs.contains(before)) {
        const QString opened = QLatin1Char('\n') + indent + indentationUnit(settings);
        return insertion(selection, opened + QLatin1Char('\n') + indent, opened.size());
    }
    const QString inserted = QLatin1Char('\n') + indent;
    return insertion(selection, inserted, inserted.size());
}

ZDTextEditResult insertTypedText(const QString &text, ZDTextRange selection, const QString &typed,
                                 const ZDEditorSettings &settings)
{
    if (!settings.automaticallyCloseBrackets || typed.size() != 1)
        return std::nullopt;
    const QChar c = typed.at(0);
    const QChar next = selection.length == 0 ? charAt(text, selection.location) : QChar();
    const ZDTextEdit moveOver{{}, {selection.location + 1, 0}, QString::fromLatin1(TypingActionName)};
    switch (c.unicode()) {
    case '{':
        return insertion(selection, QStringLiteral("{}"), 1);
    case '[':
        return insertion(selection, QStringLiteral("[]"), 1);
    case '(':
        return insertion(selection, QStringLiteral("()"), 1);
    case '"':
    case '\'':
        if (next == c)
            return moveOver;
        return insertion(selection, QString(2, c), 1);
    case '}':
    case ']':
    case ')':
        if (next == c)
            return moveOver;
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

ZDTextEditResult deleteBackward(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings)
{
    if (selection.length != 0 || selection.location <= 0)
        return std::nullopt;
    const int caret = selection.location;
    const int start = lineStart(text, caret);
    if (caret > start && indentationLength(text, start) >= caret - start) {
        if (auto shifted = shiftLines(text, selection, settings, true, QString::fromLatin1(TypingActionName)))
            return shifted;
    }
    if (!settings.automaticallyCloseBrackets)
        return std::nullopt;
    const QString around = QString(charAt(text, caret - 1)) + charAt(text, caret);
    static const QStringList pairs{QStringLiteral("{}"), QStringLiteral("[]"), QStringLiteral("()"),
                                   QStringLiteral("\"\""), QStringLiteral("''")};
    if (!pairs.contains(around))
        return std::nullopt;
    return ZDTextEdit{{{{caret - 1, 2}, QString()}}, {caret - 1, 0}, QString::fromLatin1(TypingActionName)};
}

std::optional<int> matchingOpeningBracket(const QString &text, int closingIndex)
{
    const QChar closing = charAt(text, closingIndex);
    QChar opening;
    if (closing == QLatin1Char(')'))
        opening = QLatin1Char('(');
    else if (closing == QLatin1Char('}'))
        opening = QLatin1Char('{');
    else if (closing == QLatin1Char(']'))
        opening = QLatin1Char('[');
    else
        return std::nullopt;
    int depth = 1;
    for (int i = closingIndex - 1; i >= 0; --i) {
        if (text.at(i) == closing)
            ++depth;
        else if (text.at(i) == opening && --depth == 0)
            return i;
    }
    return std::nullopt;
}

ZDTextEditResult convertIndentationToSpaces(const QString &text, ZDTextRange selection,
                                            const ZDEditorSettings &settings)
{
    QList<ZDTextReplacement> replacements;
    forEachLine(text, [&](int start, int) {
        const ZDTextRange indentation{start, indentationLength(text, start)};
        QString old = text.mid(indentation.location, indentation.length);
        if (!old.contains(QLatin1Char('\t')))
            return;
        replacements.append(
            {indentation, old.replace(QLatin1Char('\t'), QString(settings.tabSize, QLatin1Char(' ')))});
    });
    return lineEdit(std::move(replacements), selection, QString::fromLatin1(ConvertToSpacesActionName));
}

ZDTextEditResult convertIndentationToTabs(const QString &text, ZDTextRange selection,
                                          const ZDEditorSettings &settings)
{
    QList<ZDTextReplacement> replacements;
    forEachLine(text, [&](int start, int) {
        const ZDTextRange indentation{start, indentationLength(text, start)};
        const QString old = text.mid(indentation.location, indentation.length);
        QString converted;
        int spaces = 0;
        for (QChar c : old) {
            if (c == QLatin1Char(' ') && ++spaces == settings.tabSize) {
                converted += QLatin1Char('\t');
                spaces = 0;
            } else if (c != QLatin1Char(' ')) {
                converted += QString(spaces, QLatin1Char(' ')) + c;
                spaces = 0;
            }
        }
        converted += QString(spaces, QLatin1Char(' '));
        if (converted != old)
            replacements.append({indentation, converted});
    });
    return lineEdit(std::move(replacements), selection, QString::fromLatin1(ConvertToTabsActionName));
}

ZDTextEditResult stripTrailingWhitespace(const QString &text, ZDTextRange selection)
{
    QList<ZDTextReplacement> replacements;
    forEachLine(text, [&](int start, int end) {
        int contentEnd = end;
        while (contentEnd > start && isIndentationSpace(text.at(contentEnd - 1)))
            --contentEnd;
        if (contentEnd < end)
            replacements.append({{contentEnd, end - contentEnd}, QString()});
    });
    return lineEdit(std::move(replacements), selection,
                    QString::fromLatin1(StripTrailingWhitespaceActionName));
}

ZDTextEditResult duplicateSelectedLines(const QString &text, ZDTextRange selection)
{
    const ZDTextRange lines = selectedLinesRange(text, selection);
    const QString copy = QLatin1Char('\n') + text.mid(lines.location, lines.length);
    return ZDTextEdit{{{{lines.end(), 0}, copy}}, selection, QString::fromLatin1(DuplicateActionName)};
}

} // namespace ZDTextCommands
