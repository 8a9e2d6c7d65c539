#include "ZDAnalytics.h"
#include "ZDHighlighter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
// A support module of our own, so the bridge's failure paths can be reached.
QString writeVendors(QTemporaryDir &dir, const QByteArray &module)
{
    QFile file(dir.filePath(QStringLiteral("ZDPythonSupport.py")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(module);
    return dir.path();
}
} // namespace

// One interpreter lives at a time, so each case starts and finalises its own in turn; this also
// checks that the interpreter can be started again after finalisation.
TEST(HighlighterFailureTest, MissingModuleGivesEmptyResults)
{
    QTemporaryDir empty;
    ZDHighlighter highlighter(empty.path());
    EXPECT_FALSE(highlighter.isLoaded());
    EXPECT_TRUE(highlighter.highlightCode(QStringLiteral("x = 1"), QStringLiteral("PythonLexer")).isEmpty());
    EXPECT_EQ(highlighter.parseMarkdown(QStringLiteral("# x")), QString());
    EXPECT_EQ(highlighter.childCount(QStringLiteral("a\n\nb")), 0u);
    EXPECT_EQ(highlighter.pythonCallCount(), 0u);
    EXPECT_EQ(ZDHighlighter::childCountFast(QStringLiteral("a\n\nb")), 2);
}

TEST(HighlighterFailureTest, BadOutputAndRaisingCallsGiveEmptyResults)
{
    QTemporaryDir dir;
    const QString vendors = writeVendors(dir, R"(
def ZDHighlight(code, lexer):
    if lexer == 'Object': return "{'begin': 0, 'length': 1, 'class': 'Token'}"
    if lexer == 'Quoted': return "[{'begin': 0, 'length': 1, 'class': 'Token.It's'}]"
    if lexer == 'Number': return 42
    raise ValueError(lexer)
def ZDMarkdownParse(source):
    raise RuntimeError('no')
def ZDChildCountOfMarkdownSource(source):
    return 'many'
)");
    ZDAnalytics analytics;
    analytics.setConsentProvider([] { return true; });
    ZDAnalytics::install(&analytics);
    ZDHighlighter highlighter(vendors);
    ASSERT_TRUE(highlighter.isLoaded());
    for (const char *lexer : {"Object", "Quoted", "Number", "Raise"})
        EXPECT_TRUE(highlighter.highlightCode(QStringLiteral("x"), QString::fromLatin1(lexer)).isEmpty())
            << lexer;
    // Only the unparsable output is reported.
    EXPECT_EQ(analytics.rateLimiter().lastMinuteEvents(QStringLiteral("PygmentsErr")).size(), 1);
    ZDAnalytics::install(nullptr);
    EXPECT_EQ(highlighter.parseMarkdown(QStringLiteral("# x")), QString());
    EXPECT_EQ(highlighter.childCount(QStringLiteral("a")), 0u);
    // The interpreter is still usable after the failures.
    EXPECT_TRUE(highlighter.highlightCode(QStringLiteral("x"), QStringLiteral("Object")).isEmpty());
    EXPECT_EQ(highlighter.pythonCallCount(), 7u);
}

TEST(HighlighterFailureTest, ModuleWithoutTheCallablesLoadsButAnswersEmpty)
{
    QTemporaryDir dir;
    ZDHighlighter highlighter(writeVendors(dir, "VALUE = 1\n"));
    EXPECT_TRUE(highlighter.isLoaded());
    EXPECT_TRUE(highlighter.highlightCode(QStringLiteral("x"), QStringLiteral("PythonLexer")).isEmpty());
    EXPECT_EQ(highlighter.childCount(QStringLiteral("a")), 0u);
}
