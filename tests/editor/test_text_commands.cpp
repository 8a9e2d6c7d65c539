// Indentation, bracket and whole-text commands, as before/after tables over marked texts.
#include "ZDEditTestNotation.h"
#include "ZDTextCommands.h"

#include <gtest/gtest.h>

#include <functional>

using namespace ZDEditTestNotation;
using namespace ZDTextCommands;

namespace {

ZDEditorSettings spaces(int tabSize = 4)
{
    ZDEditorSettings settings;
    settings.tabSize = tabSize;
    settings.indentWithTabs = false;
    return settings;
}

ZDEditorSettings tabs(int tabSize = 4)
{
    ZDEditorSettings settings = spaces(tabSize);
    settings.indentWithTabs = true;
    return settings;
}

using Command = std::function<ZDTextEditResult(const QString &, ZDTextRange)>;

struct Case
{
    const char *name;
    Command command;
    const char *before;
    const char *after; // nullptr: no edit
};

void runCases(std::initializer_list<Case> cases)
{
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const Marked before = parse(c.before);
        const QString expected =
            c.after ? mark(parse(c.after).text, parse(c.after).selection) : QStringLiteral("(no edit)");
        EXPECT_EQ(applied(before, c.command(before.text, before.selection)).toStdString(),
                  expected.toStdString());
    }
}

Command shift(ZDEditorSettings settings, bool toLeft)
{
    return [=](const QString &text, ZDTextRange selection) {
        return shiftLines(text, selection, settings, toLeft, QStringLiteral("Shift"));
    };
}

template <typename Function> Command with(Function function, ZDEditorSettings settings)
{
    return [=](const QString &text, ZDTextRange selection) { return function(text, selection, settings); };
}

Command typing(const char *typed, ZDEditorSettings settings)
{
    return [=](const QString &text, ZDTextRange selection) {
        return insertTypedText(text, selection, QString::fromUtf8(typed), settings);
    };
}

} // namespace

TEST(ShiftLines, SnapsToTheTabGridInBothModes)
{
    runCases({
        {"spaces: 6 right gives 8", shift(spaces(), false), "      «»x", "        «»x"},
        {"spaces: 6 left gives 4", shift(spaces(), true), "      «»x", "    «»x"},
        {"spaces: 2 left loses it", shift(spaces(), true), "  «»x", "«»x"},
        {"spaces: 4 left gives 0", shift(spaces(), true), "    x«»", "x«»"},
        {"spaces: a tab expands before snapping", shift(spaces(), true), "\t  x«»", "    x«»"},
        {"spaces: tab after a space ends on its stop", shift(spaces(), false), " \tx«»", "        x«»"},
        {"spaces: nothing to remove", shift(spaces(), true), "x«»", nullptr},
        {"tabs: tab + 2 spaces left gives one tab", shift(tabs(), true), "\t  «»x", "\t«»x"},
        {"tabs: tab + 2 spaces right gives two tabs", shift(tabs(), false), "\t  «»x", "\t\t«»x"},
        {"tabs: spaces snap to a tab", shift(tabs(), false), "  x«»", "\tx«»"},
        {"tabs: one tab left", shift(tabs(), true), "\tx«»", "x«»"},
        {"tab size 2", shift(spaces(2), false), "   x«»", "    x«»"},
        {"all selected lines", shift(spaces(), false), "«a\n    b\nc»", "    «a\n        b\n    c»"},
        {"a selection ending at a line start leaves that line", shift(spaces(), false), "«a\n»b",
         "    «a\n»b"},
        {"only changed lines move", shift(spaces(), true), "«a\n    b»", "«a\nb»"},
    });
}

TEST(SmartTab, InsertsUpToTheNextTabStop)
{
    runCases({
        {"column 6 inserts 2 spaces", with(insertSmartTab, spaces()), "abcdef«»", "abcdef  «»"},
        {"a tab counts to its stop", with(insertSmartTab, spaces()), "\tab«»", "\tab  «»"},
        {"line start inserts a full step", with(insertSmartTab, spaces()), "x\n«»", "x\n    «»"},
        {"replaces the selection", with(insertSmartTab, spaces()), "ab«cd»", "ab  «»"},
        {"tab mode inserts a tab", with(insertSmartTab, tabs()), "abcdef«»", "abcdef\t«»"},
        {"Tab on several lines shifts them", with(insertTab, spaces()), "«a\nb»", "    «a\n    b»"},
        {"Tab on one line is a smart tab", with(insertTab, spaces()), "a«b»", "a   «»"},
    });
}

TEST(Newline, CarriesIndentationAndOpensBracketPairs)
{
    ZDEditorSettings manual = spaces();
    manual.automaticallyIndentOnReturn = false;
    runCases({
        {"between braces, indented by two", with(insertNewline, spaces()), "  if {«»}",
         "  if {\n      «»\n  }"},
        {"between parentheses, tabs", with(insertNewline, tabs()), "\tf(«»)", "\tf(\n\t\t«»\n\t)"},
        {"between square brackets", with(insertNewline, spaces()), "[«»]", "[\n    «»\n]"},
        {"keeps the indentation", with(insertNewline, spaces()), "    abc«»", "    abc\n    «»"},
        {"cut at the caret inside it", with(insertNewline, spaces()), "  «»  x", "  \n  «»  x"},
        {"mismatched pair is plain", with(insertNewline, spaces()), "(«»]", "(\n«»]"},
        {"off: a plain newline", with(insertNewline, manual), "  {«»}", "  {\n«»}"},
    });
}

TEST(Typing, PairsBracketsAndStepsOverClosers)
{
    ZDEditorSettings off = spaces();
    off.automaticallyCloseBrackets = false;
    runCases({
        {"quote before a quote only moves", typing("\"", spaces()), "say «»\"", "say \"«»"},
        {"quote elsewhere pairs", typing("\"", spaces()), "a«»", "a\"«»\""},
        {"single quote before one moves", typing("'", spaces()), "«»'", "'«»"},
        {"brace pairs", typing("{", spaces()), "x«»", "x{«»}"},
        {"parenthesis replaces the selection", typing("(", spaces()), "«x»", "(«»)"},
        {"closer over the same closer", typing(")", spaces()), "f(«»)", "f()«»"},
        {"closer elsewhere types normally", typing("]", spaces()), "a«»", nullptr},
        {"other text types normally", typing("a", spaces()), "«»", nullptr},
        {"pairing off", typing("{", off), "«»", nullptr},
    });
    const Marked quoted = parse("«»\"");
    EXPECT_FALSE(
        insertTypedText(quoted.text, quoted.selection, QStringLiteral("\""), spaces())->changesText());
}

TEST(Backspace, RemovesIndentationLevelsAndEmptyPairs)
{
    ZDEditorSettings off = spaces();
    off.automaticallyCloseBrackets = false;
    runCases({
        {"spaces: one level", with(deleteBackward, spaces()), "        «»x", "    «»x"},
        {"spaces: snaps to the grid", with(deleteBackward, spaces()), "      «»", "    «»"},
        {"spaces: inside the indentation", with(deleteBackward, spaces()), "a\n    «»    x", "a\n    «»x"},
        {"tabs: one tab", with(deleteBackward, tabs()), "\t\t«»", "\t«»"},
        {"empty parentheses", with(deleteBackward, spaces()), "f(«»)", "f«»"},
        {"empty quotes", with(deleteBackward, spaces()), "\"«»\"", "«»"},
        {"plain character", with(deleteBackward, spaces()), "ab«»", nullptr},
        {"line start", with(deleteBackward, spaces()), "a\n«»b", nullptr},
        {"selection", with(deleteBackward, spaces()), "  «a»", nullptr},
        {"pairs off", with(deleteBackward, off), "(«»)", nullptr},
    });
}

TEST(MatchingBracket, CountsNesting)
{
    const QString text = QStringLiteral("f(a[(b)]c) }");
    EXPECT_EQ(matchingOpeningBracket(text, 9), 1);
    EXPECT_EQ(matchingOpeningBracket(text, 7), 3);
    EXPECT_EQ(matchingOpeningBracket(QStringLiteral("{ { } }"), 6), 0);
    EXPECT_EQ(matchingOpeningBracket(text, 11), std::nullopt); // no partner before it
    EXPECT_EQ(matchingOpeningBracket(text, 0), std::nullopt);  // not a closing bracket
}

TEST(WholeText, ConvertsStripsAndDuplicates)
{
    const auto toTabs = [](ZDEditorSettings s) {
        return [=](const QString &t, ZDTextRange r) { return convertIndentationToTabs(t, r, s); };
    };
    const auto toSpaces = [](ZDEditorSettings s) {
        return [=](const QString &t, ZDTextRange r) { return convertIndentationToSpaces(t, r, s); };
    };
    runCases({
        {"to tabs: 6 spaces give a tab and 2", toTabs(spaces()), "      x\n  y\n        z«»",
         "\t  x\n  y\n\t\tz«»"},
        {"to tabs: counted from the left", toTabs(spaces()), "  \t    x«»", "  \t\tx«»"},
        {"to tabs: nothing to do", toTabs(spaces()), "\tx «»    y", nullptr},
        {"to spaces: each tab is a full step", toSpaces(spaces()), "\tx\n \ty«»", "    x\n     y«»"},
        {"to spaces: selection follows", toSpaces(spaces(2)), "\t«x»", "  «x»"},
        {"strip trailing", stripTrailingWhitespace, "a  \n \t\nb\t«»", "a\n\nb«»"},
        {"strip: nothing to do", stripTrailingWhitespace, " a\nb«»", nullptr},
        {"duplicate the selected lines", duplicateSelectedLines, "a\nb«c\nd»\ne", "a\nb«c\nd»\nbc\nd\ne"},
        {"duplicate the last line", duplicateSelectedLines, "x«»", "x«»\nx"},
    });
}

TEST(ActionNames, NameTheUndoSteps)
{
    const Marked lines = parse("«a\nb»");
    EXPECT_EQ(insertTab(lines.text, lines.selection, spaces())->actionName, QStringLiteral("Shift Right"));
    EXPECT_EQ(insertSmartTab(QString(), {}, spaces())->actionName, QStringLiteral("Typing"));
    EXPECT_EQ(deleteBackward(QStringLiteral("    "), {4, 0}, spaces())->actionName, QStringLiteral("Typing"));
    EXPECT_EQ(convertIndentationToTabs(QStringLiteral("    x"), {}, spaces())->actionName,
              QStringLiteral("Convert Indentation to Tabs"));
    EXPECT_EQ(stripTrailingWhitespace(QStringLiteral("x "), {})->actionName,
              QStringLiteral("Strip Trailing Whitespace"));
    EXPECT_EQ(duplicateSelectedLines(QStringLiteral("x"), {})->actionName, QStringLiteral("Duplicate"));
}
