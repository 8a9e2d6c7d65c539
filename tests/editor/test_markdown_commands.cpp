// Markdown formatting commands, as before/after tables over marked texts.
#include "ZDEditTestNotation.h"
#include "ZDMarkdownCommands.h"

#include <gtest/gtest.h>

using namespace ZDEditTestNotation;
using namespace ZDMarkdownCommands;

namespace {

struct Case
{
    int tag;
    const char *before;
    const char *after; // nullptr: no edit
};

void runCases(std::initializer_list<Case> cases)
{
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.before) + " with tag " + std::to_string(c.tag));
        const Marked before = parse(c.before);
        const QString expected =
            c.after ? mark(parse(c.after).text, parse(c.after).selection) : QStringLiteral("(no edit)");
        const ZDTextEditResult edit =
            performFormatAction(c.tag, before.text, before.selection, QStringLiteral("python"));
        EXPECT_EQ(applied(before, edit).toStdString(), expected.toStdString());
        if (edit) {
            EXPECT_EQ(edit->actionName, actionNameForTag(c.tag));
        }
    }
}

} // namespace

TEST(MarkdownSurround, EmphasisIsNotStrong)
{
    runCases({
        {EmphasizeTag, "a «word» b", "a *«word»* b"},
        {EmphasizeTag, "a *«word»* b", "a «word» b"},
        {EmphasizeTag, "a **«word»** b", "a ***«word»*** b"},
        {EmphasizeTag, "a ***«word»*** b", "a **«word»** b"},
        {EmphasizeTag, "**wo«»rd**", "***wo«»rd***"},
        {EmphasizeTag, "***wo«»rd***", "**wo«»rd**"},
        {EmphasizeTag, "«*word*»", "«word»"},
        {StrongTag, "a «»word b", "a **«»word** b"},
        {StrongTag, "**«word»**", "«word»"},
        {StrongTag, "«**word**»", "«word»"},
        {StrongTag, "**wo«»rd**", "wo«»rd"},
    });
}

TEST(MarkdownSurround, OtherMarkersAndGranularities)
{
    runCases({
        {InlineCodeTag, "a «» b", "a `«»` b"},
        {InlineCodeTag, "a `co«»de` b", "a co«»de b"},
        {MarkTag, "«hi»", "==«hi»=="},
        {LineThroughTag, "~~«gone»~~", "«gone»"},
        {CommentTag, "x\nhel«»lo", "x\n<!-- hel«»lo -->"},
        {CommentTag, "x\n<!-- hel«»lo -->", "x\nhel«»lo"},
        {42, "«x»", nullptr},
        {InsertLinkTag, "«x»", nullptr},
    });
}

TEST(MarkdownLinePrefix, TogglesEachLineByItself)
{
    runCases({
        {OrderedListTag, "  3. it«»em", "it«»em"},
        {OrderedListTag, "it«»em", "1. it«»em"},
        {UnorderedListTag, "«a\n- b\n\nc»", "«- a\nb\n\n- c»"},
        {UnorderedListTag, "«»", "- «»"},
        {UnorderedListTag, "x\n- «»", "x\n«»"},
        {BlockquoteTag, ">«» quote", "«»quote"},
        {BlockquoteTag, "one «two\nthree» four", "> one «two\n> three» four"},
    });
}

TEST(MarkdownLinePrefix, HeadingsChangeLevelOrToggleOff)
{
    runCases({
        {Heading1Tag + 1, "# Ti«»tle", "## Ti«»tle"},
        {Heading1Tag + 1, "## Ti«»tle", "Ti«»tle"},
        {Heading1Tag + 1, "### T«»", "## T«»"},
        {Heading1Tag, "Title«»", "# Title«»"},
        {Heading1Tag + 3, "  #### «»x", "«»x"},
        {Heading6Tag, "«»x", "###### «»x"},
        {Heading1Tag, "#hashtag«»", "# #hashtag«»"},
    });
}

TEST(MarkdownInsertions, CodeBlockAndTable)
{
    runCases({{CodeBlockTag, "a«»b", "a\n```python\n«»\n```\nb"}});

    const Marked empty = parse("«»");
    const ZDTextEditResult table = insertTable(empty.text, empty.selection, 3, 2);
    ASSERT_TRUE(table);
    EXPECT_EQ(table->appliedTo(QString()),
              QStringLiteral("\n|    |    |\n|----|----|\n|    |    |\n|    |    |\n"));
    EXPECT_EQ(table->actionName, QStringLiteral("Insert Table"));
    EXPECT_FALSE(insertTable(empty.text, empty.selection, 0, 2));
    EXPECT_FALSE(insertTable(empty.text, empty.selection, 2, 0));
}

TEST(MarkdownInsertions, LinkAndImageTexts)
{
    const QString url = QStringLiteral("http://x.org");
    struct Expected
    {
        LinkText made;
        const char *inserted;
        const char *definition;
    };
    const Expected cases[] = {
        {linkText(url, "text", "T", "id", true), "[text][id]", "[id]: http://x.org \"T\""},
        {linkText(url, "", "", "id", true), "[id]", "[id]: http://x.org"},
        {linkText(url, "", "T", "id", false), "[http://x.org](http://x.org)", ""},
        {linkText(url, "text", "T", "id", false), "[text](http://x.org \"T\")", ""},
        {linkText(url, "text", "", "id", false), "[text](http://x.org)", ""},
        {imageText(url, "T", "alt", "id", true), "![alt][id]", "[id]: http://x.org \"T\""},
        {imageText(url, "", "", "id", true), "![][id]", "[id]: http://x.org"},
        {imageText(url, "T", "", "id", false), "![](http://x.org \"T\")", ""},
        {imageText(url, "", "alt", "id", false), "![alt](http://x.org)", ""},
    };
    for (const Expected &c : cases) {
        EXPECT_EQ(c.made.inserted, QString::fromUtf8(c.inserted));
        EXPECT_EQ(c.made.definition, QString::fromUtf8(c.definition));
    }
}

TEST(MarkdownInsertions, ReferenceDefinitionGoesAtTheEnd)
{
    const LinkText link =
        linkText(QStringLiteral("http://x.org"), QStringLiteral("two"), QString(), QStringLiteral("1"), true);
    const Marked middle = parse("one «two» three\nlast");
    EXPECT_EQ(applied(middle, insertLink(middle.text, middle.selection, link, QStringLiteral("Insert Link"))),
              mark(QStringLiteral("one [two][1] three\nlast\n[1]: http://x.org"), {12, 0}));

    const Marked atEnd = parse("end «»");
    EXPECT_EQ(applied(atEnd, insertLink(atEnd.text, atEnd.selection, link, QStringLiteral("Insert Link"))),
              mark(QStringLiteral("end [two][1]\n[1]: http://x.org"), {12, 0}));

    const LinkText inlineLink =
        linkText(QStringLiteral("u"), QStringLiteral("t"), QString(), QString(), false);
    const ZDTextEditResult plain =
        insertLink(atEnd.text, atEnd.selection, inlineLink, QStringLiteral("Insert Link"));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->replacements.size(), 1);
}
