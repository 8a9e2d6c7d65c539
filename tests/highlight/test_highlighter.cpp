#include "ZDHighlighter.h"
#include "ZDTestSupport.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

namespace {
class HighlighterTest : public ::testing::Test
{
protected:
    // One interpreter per process: the whole program shares it.
    static void SetUpTestSuite()
    {
        s_highlighter =
            new ZDHighlighter(ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Vendors"));
    }
    static void TearDownTestSuite()
    {
        delete s_highlighter;
        s_highlighter = nullptr;
    }
    static ZDHighlighter *s_highlighter;

    ZDHighlighter &bridge() { return *s_highlighter; }
    quint64 callsDuring(const std::function<void()> &work)
    {
        const quint64 before = bridge().pythonCallCount();
        work();
        return bridge().pythonCallCount() - before;
    }
};
ZDHighlighter *HighlighterTest::s_highlighter = nullptr;

QString codeOfLength(int length, QChar filler)
{
    QString code = QStringLiteral("x = 1\n");
    return code + QString(length - code.size(), filler);
}
} // namespace

TEST_F(HighlighterTest, HighlightsWithTheNamedLexer)
{
    ASSERT_TRUE(bridge().isLoaded());
    const ZDHighlightRules rules =
        bridge().highlightCode(QStringLiteral("def f():\n    return 'a'\n"), QStringLiteral("PythonLexer"));
    ASSERT_FALSE(rules.isEmpty());
    EXPECT_EQ(rules.first(), (ZDHighlightRule{0, 3, QStringLiteral("Token.Keyword"), true}));
    // The quote inside the code does not break the exchange format; it is a string token.
    const auto string = std::find_if(rules.begin(), rules.end(), [](const ZDHighlightRule &rule) {
        return rule.tokenClass.startsWith(QStringLiteral("Token.Literal.String"));
    });
    ASSERT_NE(string, rules.end());
    EXPECT_EQ(string->begin, 20);
    EXPECT_TRUE(bridge().highlightCode(QStringLiteral("x"), QStringLiteral("NoSuchLexer")).isEmpty());
}

TEST_F(HighlighterTest, CachesOnlyInputsOfFiveHundredCharactersOrMoreKeyedWithTheLexer)
{
    const QString short499 = codeOfLength(499, QLatin1Char('#'));
    EXPECT_EQ(callsDuring([&] {
                  bridge().highlightCode(short499, QStringLiteral("PythonLexer"));
                  bridge().highlightCode(short499, QStringLiteral("PythonLexer"));
              }),
              2u);

    const QString long500 = codeOfLength(500, QLatin1Char('#'));
    ZDHighlightRules first, second;
    EXPECT_EQ(callsDuring([&] {
                  first = bridge().highlightCode(long500, QStringLiteral("PythonLexer"));
                  second = bridge().highlightCode(long500, QStringLiteral("PythonLexer"));
              }),
              1u);
    EXPECT_EQ(first, second);

    ZDHighlightRules asRuby;
    EXPECT_EQ(callsDuring([&] { asRuby = bridge().highlightCode(long500, QStringLiteral("RubyLexer")); }),
              1u);
    EXPECT_NE(asRuby, first);
    EXPECT_EQ(callsDuring([&] {
                  bridge().highlightCode(long500, QStringLiteral("RubyLexer"));
                  bridge().highlightCode(long500, QStringLiteral("PythonLexer"));
              }),
              0u);

    // Markdown follows the same threshold; child counts are cached at any size.
    const QString markdown499 = QStringLiteral("# T\n\n") + QString(494, QLatin1Char('a'));
    EXPECT_EQ(callsDuring([&] {
                  bridge().parseMarkdown(markdown499);
                  bridge().parseMarkdown(markdown499);
              }),
              2u);
    EXPECT_EQ(callsDuring([&] {
                  bridge().parseMarkdown(markdown499 + QLatin1Char('b'));
                  bridge().parseMarkdown(markdown499 + QLatin1Char('b'));
              }),
              1u);
    EXPECT_EQ(callsDuring([&] {
                  EXPECT_EQ(bridge().childCount(QStringLiteral("a\n\nb\n")), 2u);
                  EXPECT_EQ(bridge().childCount(QStringLiteral("a\n\nb\n")), 2u);
              }),
              1u);
}

TEST_F(HighlighterTest, RendersMarkdownAndCountsItsBlocks)
{
    const QString source =
        QStringLiteral("# Title\n\n| a |\n|---|\n| 1 |\n\n~~old~~ text[^1]\n\n- [x] done\n\n"
                       "```rust\nfn main() {}\n```\n\n<!-- hidden -->\n\n[^1]: The note.\n");
    const QString html = bridge().parseMarkdown(source);
    EXPECT_TRUE(html.contains(QStringLiteral("<table>")));
    EXPECT_TRUE(html.contains(QStringLiteral("<s>old</s>")));
    EXPECT_TRUE(html.contains(QStringLiteral("checkbox")));
    EXPECT_TRUE(html.contains(QStringLiteral("class=\"language-rust\"")));

    // Comment and footnote definition are removed first: heading, table, paragraph, list, code.
    EXPECT_EQ(bridge().childCount(source), 5u);
    EXPECT_EQ(bridge().childCount(QString()), 0u);
    EXPECT_EQ(ZDHighlighter::childCountFast(ZDHighlighter::preprocessedStringForCountingChildrens(source)),
              5);
}

TEST_F(HighlighterTest, DeliversBackgroundResultsOnTheMainThread)
{
    QThread *deliveredOn = nullptr;
    ZDHighlightRules rules;
    QString html;
    bridge().highlightCodeAtBackground(QStringLiteral("int x;"), QStringLiteral("CLexer"), nullptr,
                                       [&](const ZDHighlightRules &result) {
                                           deliveredOn = QThread::currentThread();
                                           rules = result;
                                       });
    bridge().parseMarkdown(QStringLiteral("*hi*"), nullptr, [&](const QString &result) { html = result; });
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return !rules.isEmpty() && !html.isEmpty(); }));
    EXPECT_EQ(deliveredOn, QThread::currentThread());
    EXPECT_EQ(html.trimmed(), QStringLiteral("<p><em>hi</em></p>"));

    // A handler whose context is gone is not called.
    bool called = false;
    auto *context = new QObject;
    bridge().highlightCodeAtBackground(QStringLiteral("int y;"), QStringLiteral("CLexer"), context,
                                       [&](const ZDHighlightRules &) { called = true; });
    delete context;
    bridge().waitForBackgroundWork();
    QCoreApplication::processEvents();
    EXPECT_FALSE(called);
}

TEST(MarkdownCountingTest, FastCountThroughTheHtmlParser)
{
    EXPECT_EQ(ZDHighlighter::childCountFast(QString()), 0);
    EXPECT_EQ(ZDHighlighter::childCountFast(QStringLiteral("\n\n")), 0);
    EXPECT_EQ(ZDHighlighter::childCountFast(QStringLiteral("# a\n\npara\n\n| x |\n|---|\n| 1 |\n\n~~s~~\n")),
              4);
    EXPECT_EQ(ZDHighlighter::indexOfLastRootElementInHTML(QStringLiteral("<p>a</p>\ntext\n<p>b</p>")), 1);
    EXPECT_EQ(ZDHighlighter::indexOfLastRootElementInHTML(QString()), -1);
}

TEST(MarkdownCountingTest, PreprocessingRemovesCommentsAndFootnoteDefinitions)
{
    using H = ZDHighlighter;
    EXPECT_EQ(H::preprocessedStringForCountingChildrens(QStringLiteral("ab<!-- x -->cd\n")),
              QStringLiteral("abcd\n"));
    EXPECT_EQ(H::preprocessedStringForCountingChildrens(QStringLiteral("a<!--1-->b<!--2-->c")),
              QStringLiteral("abc"));
    EXPECT_EQ(H::preprocessedStringForCountingChildrens(QStringLiteral("keep\n<!-- open\nall\n")),
              QStringLiteral("keep\n"));
    EXPECT_EQ(H::preprocessedStringForCountingChildrens(QStringLiteral("a\n    [^1]: four\nb\n")),
              QStringLiteral("a\n\nb\n"));
    EXPECT_EQ(H::preprocessedStringForCountingChildrens(QStringLiteral("a\n     [^1]: five\n")),
              QStringLiteral("a\n     [^1]: five\n"));
    EXPECT_EQ(H::preprocessedStringForCountingChildrens(QStringLiteral("see [^1]: inline\n")),
              QStringLiteral("see [^1]: inline\n"));
}

TEST(HighlightRuleFormatTest, ReadsTheSingleQuotedListOnly)
{
    using namespace ZDHighlightRuleFormat;
    ZDHighlightRules rules;
    ASSERT_EQ(
        parse("[{'begin': 2, 'length': 3, 'class': 'Token.Name'}, {'begin': 'x', 'length': 1}]", &rules),
        ParseResult::Rules);
    ASSERT_EQ(rules.size(), 2);
    EXPECT_EQ(rules[0], (ZDHighlightRule{2, 3, QStringLiteral("Token.Name"), true}));
    EXPECT_FALSE(rules[1].valid);
    EXPECT_EQ(toJson(rules).size(), 1);

    EXPECT_EQ(parse("{'begin': 0}", &rules), ParseResult::NotAList);
    EXPECT_EQ(parse("[{'class': 'it's'}]", &rules), ParseResult::Unparsable);
    EXPECT_EQ(parse("", &rules), ParseResult::Unparsable);
}

TEST(LruCacheTest, EvictsTheLeastRecentlyUsedEntry)
{
    ZDLruCache<int> cache(2);
    cache.setObject(QStringLiteral("a"), 1);
    cache.setObject(QStringLiteral("b"), 2);
    EXPECT_EQ(cache.object(QStringLiteral("a")), 1); // "b" is now the oldest
    cache.setObject(QStringLiteral("c"), 3);
    EXPECT_FALSE(cache.object(QStringLiteral("b")).has_value());
    EXPECT_EQ(cache.object(QStringLiteral("a")), 1);
    EXPECT_EQ(cache.count(), 2);
    EXPECT_EQ(ZDHighlighter::digest(QStringLiteral("abc")),
              QStringLiteral("900150983cd24fb0d6963f7d28e17f72"));
}
