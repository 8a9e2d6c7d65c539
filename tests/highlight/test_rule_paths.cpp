// The highlighter has two ways to write and two ways to read a rule list: the built-in C writer
// and the support module's pure Python one, the one-pass reader and the JSON reader. Each pair
// must give exactly the same result.
#include "ZDHighlightRule.h"
#include "ZDPythonInterpreter.h"
#include "ZDSerialQueue.h"
#include "ZDTestSupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace {
// Compares both writers on real lexer output and on odd token streams; answers "" when they
// agree, else what differed.
const char kCompareModule[] = R"(
import sys
sys.path.insert(0, VENDORS)
import pygments.lexers
from pygments.token import Token
import ZDPythonSupport as support
from ZDPythonSupport import ZDHighlight

def _compare(tokens, utf16):
    tokens = list(tokens)
    try:
        python = support._rule_list(iter(tokens), utf16)
    except Exception as error:
        python = type(error)
    try:
        native = support._native_rule_list(iter(tokens), utf16)
    except Exception as error:
        native = type(error)
    return "" if python == native else "%r utf16=%r:\n python %r\n native %r\n" % (tokens[:8], utf16, python, native)

def ZDCompareLexed(code, lexer_name):
    if support._native_rule_list is None:
        return "no built-in writer"
    lexer = getattr(pygments.lexers, lexer_name)()
    report = ""
    for utf16 in (False, True):
        report += _compare(lexer.get_tokens_unprocessed(support._prepared(lexer, code)), utf16)
        report += _compare(((0, kind, value) for kind, value in lexer.get_tokens(code)), utf16)
    return report

def ZDCompareOdd(_):
    streams = [
        [],
        [(0, Token.Text, "")],
        [(0, Token.Text, ""), (0, Token.Name, "x"), (1, Token.Text, "")],
        [(0, Token.String, "\U0001F600a"), (3, Token.Text, "\u00e9\n")],
        [(0, "odd %d % kind", "x"), (1, "caf\u00e9 \ud800", "y")],
        [(0, 1, "x"), (1, 1.0, "y"), (2, True, "z")],
        [(0, Token.Text, b"bytes")],
        [(0, [], "x")],
        [(0, [], "")],
        [(0, Token.Text)],
        [5],
        [(0, Token.Text, "a" * 100000)],
    ]
    return "".join(_compare(stream, utf16) for stream in streams for utf16 in (False, True))
)";

class RulePathsTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_directory = new QTemporaryDir;
        QByteArray module = kCompareModule;
        const QString vendors = ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Vendors");
        const QByteArray quoted = QByteArray("'") + vendors.toUtf8() + "'";
        module.replace("VENDORS", quoted);
        QFile file(s_directory->filePath(QStringLiteral("ZDRulePaths.py")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(module);
        file.close();
        s_python = new ZDPythonInterpreter(s_directory->path(), QStringLiteral("ZDRulePaths"), {});
    }
    static void TearDownTestSuite()
    {
        delete s_python;
        delete s_directory;
    }

    static QByteArray call(const QString &callable, const QList<QByteArray> &arguments)
    {
        QByteArray text = "(no result)";
        s_python->queue().sync([&] { text = s_python->callForString(callable, arguments).value_or(text); });
        return text;
    }

    static QTemporaryDir *s_directory;
    static ZDPythonInterpreter *s_python;
};
QTemporaryDir *RulePathsTest::s_directory = nullptr;
ZDPythonInterpreter *RulePathsTest::s_python = nullptr;

struct Sample
{
    const char *lexer;
    QString code;
};

QList<Sample> samples()
{
    // Mixed scripts, astral characters, CR/LF, tabs, a byte order mark, empty lines at both ends.
    const QString noise = QStringLiteral("\n\n\tx = '\U0001F600 caf\u00e9 \u4e2d'\r\n# note %d\r\n\n");
    return {
        {"PythonLexer",
         QStringLiteral(
             "class A:\n    \"\"\"Doc\"\"\"\n    def f(self, x=1.5e3):\n        return f'{x!r}'\n") +
             noise},
        {"CLexer",
         QStringLiteral("#include <stdio.h>\n/* block */ int main(void) { printf(\"%d\\n\", 0x1F); }\n") +
             noise},
        {"PhpLexer", QStringLiteral("\ufeff<?php echo $a . \"b\"; // c\n?>\n<p>html</p>") + noise},
        {"MarkdownLexer",
         QStringLiteral("# Title\n\n**bold** _em_ `code`\n\n```python\nx = 1\n```\n") + noise},
        {"CssLexer",
         QStringLiteral("a:hover { color: #fff; /* c */ }\n@media print { p { margin: 0 } }\n") + noise},
        {"HtmlLexer",
         QStringLiteral("<!DOCTYPE html><script>var a = '<b>';</script><b class=\"x\">&amp;</b>") + noise},
        {"JsonLexer", QStringLiteral("{\"a\": [1, 2.5, true, null], \"b\": \"\\u00e9\"}") + noise},
        {"RstLexer", QStringLiteral("Title\n=====\n\n.. code:: python\n\n   x = 1\n\n* item\n") + noise},
        {"TextLexer", noise},
    };
}
} // namespace

TEST_F(RulePathsTest, BothWritersWriteTheSameText)
{
    for (const Sample &sample : samples())
        EXPECT_EQ(call(QStringLiteral("ZDCompareLexed"), {sample.code.toUtf8(), sample.lexer}), QByteArray())
            << sample.lexer;
    EXPECT_EQ(call(QStringLiteral("ZDCompareOdd"), {QByteArray()}), QByteArray());
}

TEST_F(RulePathsTest, BothReadersReadRealOutputAlike)
{
    using namespace ZDHighlightRuleFormat;
    for (const Sample &sample : samples()) {
        const QByteArray output = call(QStringLiteral("ZDHighlight"), {sample.code.toUtf8(), sample.lexer});
        ZDHighlightRules fast, json;
        ASSERT_TRUE(readUsualShape(output, &fast)) << sample.lexer << output.left(200).constData();
        ASSERT_EQ(parseAsJson(output, &json), ParseResult::Rules) << sample.lexer;
        EXPECT_EQ(fast, json) << sample.lexer;
        EXPECT_FALSE(fast.isEmpty()) << sample.lexer;
    }
}

TEST_F(RulePathsTest, AnInterpreterStartedAgainHasTheBuiltInWriter)
{
    delete s_python;
    s_python = new ZDPythonInterpreter(s_directory->path(), QStringLiteral("ZDRulePaths"), {});
    EXPECT_EQ(call(QStringLiteral("ZDCompareLexed"), {"x = 1\n", "PythonLexer"}), QByteArray());
}

TEST(RuleReadersTest, AgreeOnOutputOfOtherShapes)
{
    using namespace ZDHighlightRuleFormat;
    const QList<QByteArray> inputs = {
        "[]",
        " [ ] ",
        "[{\"begin\": 1, \"length\": 2, \"class\": \"Token.Name\"}]",
        "[{'class': 'T', 'length': -0, 'begin': 7}]",            // any key order, negative zero
        "[{'begin': 1, 'length': 2, 'class': 'caf\xc3\xa9'}]",   // valid UTF-8
        "[{'begin': 1, 'length': 2, 'class': 'a\xff'}]",         // invalid UTF-8: not JSON
        "[{'begin': 1, 'length': 2, 'class': 'a\xed\xa0\x80'}]", // an encoded surrogate
        "[{'begin': 1, 'length': 2, 'class': 'a\\u0041'}]",      // an escape
        "[{'begin': 1.9, 'length': 2e0, 'class': 'T'}]",         // numbers that are not integers
        "[{'begin': 123456789012345678901234567890, 'length': -1e300, 'class': 'T'}]",
        "[{'begin': 01, 'length': 2, 'class': 'T'}]",
        "[{'begin': 1, 'length': 2}]",
        "[{'begin': 1, 'length': 2, 'class': 'T', 'x': 1}]",
        "[{'begin': 1, 'begin': 2, 'length': 2, 'class': 'T'}]",
        "[{'begin': 1, 'length': 2, 'class': 'T'},]",
        "[{'begin': 1, 'length': 2, 'class': 'T'}] x",
        QByteArray("[]\0", 3),
        "\xef\xbb\xbf[]",
        "[{'begin': 1, 'length': 2, 'class': 'T\x7f'}]",
        "[{'begin': 1, 'length': 2, 'class': 'T\tU'}]",
    };
    for (const QByteArray &input : inputs) {
        ZDHighlightRules viaParse, viaJson;
        const ParseResult parsed = parse(input, &viaParse);
        EXPECT_EQ(parsed, parseAsJson(input, &viaJson)) << input.constData();
        EXPECT_EQ(viaParse, viaJson) << input.constData();
    }
    ZDHighlightRules rules;
    ASSERT_EQ(parse("[{'begin': 1e300, 'length': -1e300, 'class': 'T'}]", &rules), ParseResult::Rules);
    EXPECT_EQ(rules.value(0).begin, std::numeric_limits<qint64>::max());
    EXPECT_EQ(rules.value(0).length, std::numeric_limits<qint64>::min());
}
