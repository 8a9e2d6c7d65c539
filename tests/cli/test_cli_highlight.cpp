#include "ZDCli.h"
#include "ZDLanguageRegistry.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
class HighlightCliTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    ZDUserDefaults defaults{dir.filePath(QStringLiteral("prefs.ini"))};
    ZDLanguageRegistry languages{
        ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Languages.json"), &defaults};

    QString file(const QString &name, const QString &text)
    {
        QFile f(dir.filePath(name));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text.toUtf8());
        return f.fileName();
    }

    int run(const QStringList &arguments, QString *out, QString *err = nullptr)
    {
        QString errors;
        QTextStream outStream(out);
        QTextStream errStream(err ? err : &errors);
        ZDCli cli(defaults, languages);
        const int status = cli.run(arguments, outStream, errStream);
        outStream.flush();
        errStream.flush();
        return status;
    }
};
} // namespace

TEST_F(HighlightCliTest, HighlightPrintsTheRulesAsJson)
{
    QString out;
    ASSERT_EQ(run({QStringLiteral("highlight"), QStringLiteral("--lexer"), QStringLiteral("PythonLexer"),
                   file(QStringLiteral("a.py"), QStringLiteral("import os\n"))},
                  &out),
              0);
    const QJsonArray rules = QJsonDocument::fromJson(out.toUtf8()).array();
    ASSERT_FALSE(rules.isEmpty());
    EXPECT_EQ(rules.first().toObject(),
              (QJsonObject{{QStringLiteral("begin"), 0},
                           {QStringLiteral("length"), 6},
                           {QStringLiteral("class"), QStringLiteral("Token.Keyword.Namespace")}}));

    QString err;
    EXPECT_NE(
        run({QStringLiteral("highlight"), file(QStringLiteral("b.py"), QStringLiteral("x"))}, &out, &err), 0);
    EXPECT_NE(run({QStringLiteral("highlight"), QStringLiteral("--lexer"), QStringLiteral("PythonLexer"),
                   dir.filePath(QStringLiteral("missing.py"))},
                  &out, &err),
              0);
    EXPECT_TRUE(err.contains(QStringLiteral("zandrio-cli: Cannot read")));
}

TEST_F(HighlightCliTest, MarkdownPrintsHtmlOrBothCounts)
{
    const QString path =
        file(QStringLiteral("n.md"), QStringLiteral("# Title\n\nText <!-- c -->\n\n- a\n- b\n"));
    QString html;
    ASSERT_EQ(run({QStringLiteral("markdown"), path}, &html), 0);
    EXPECT_TRUE(html.startsWith(QStringLiteral("<h1>Title</h1>")));
    QString counts;
    ASSERT_EQ(run({QStringLiteral("markdown"), QStringLiteral("--count"), path}, &counts), 0);
    EXPECT_EQ(counts, QStringLiteral("precise: 3\nfast: 3\n"));
}
