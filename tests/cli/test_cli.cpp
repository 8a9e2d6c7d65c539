#include "ZDCli.h"
#include "ZDLanguageRegistry.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
struct CliRun
{
    int status = 0;
    QString out;
    QString err;
};

class CliTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    ZDUserDefaults defaults{dir.filePath(QStringLiteral("prefs.ini"))};
    ZDLanguageRegistry languages{ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Languages.json"), &defaults};

    CliRun run(const QStringList &arguments)
    {
        CliRun result;
        QTextStream out(&result.out);
        QTextStream err(&result.err);
        ZDCli cli(defaults, languages);
        result.status = cli.run(arguments, out, err);
        out.flush();
        err.flush();
        return result;
    }
};
} // namespace

TEST_F(CliTest, VersionHelpAndUnknownCommands)
{
    EXPECT_TRUE(run({QStringLiteral("--version")}).out.startsWith(QStringLiteral("zandrio-cli 0.")));
    EXPECT_TRUE(run({QStringLiteral("--help")}).out.contains(QStringLiteral("languages")));
    const CliRun unknown = run({QStringLiteral("frobnicate")});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(unknown.err.startsWith(QStringLiteral("zandrio-cli: ")));
}

TEST_F(CliTest, PrefsPrintsSortedKeyValueLines)
{
    defaults.setTabSize(3);
    const CliRun result = run({QStringLiteral("prefs")});
    ASSERT_EQ(result.status, 0);
    const QStringList lines = result.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QStringList sorted = lines;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(lines, sorted);
    EXPECT_TRUE(lines.contains(QStringLiteral("Preferences TabSize = 3")));
    EXPECT_TRUE(lines.contains(QStringLiteral("Preferences MenubarShortcut = nil")));
}

TEST_F(CliTest, LanguagesAsJsonHaveExactlyTheSixKeys)
{
    const CliRun result = run({QStringLiteral("languages"), QStringLiteral("--json")});
    ASSERT_EQ(result.status, 0);
    const QJsonArray array = QJsonDocument::fromJson(result.out.toUtf8()).array();
    ASSERT_GT(array.size(), 500);
    const QStringList keys = array.first().toObject().keys();
    EXPECT_EQ(keys, (QStringList{QStringLiteral("UTIStrings"), QStringLiteral("aliases"), QStringLiteral("displayName"),
                                 QStringLiteral("fileExtensions"), QStringLiteral("identifier"), QStringLiteral("mimeTypes")}));
}

TEST_F(CliTest, GuessPrintsIdentifiersBestFirst)
{
    const CliRun byName = run({QStringLiteral("languages"), QStringLiteral("--guess"), QStringLiteral("--name"), QStringLiteral("python")});
    EXPECT_EQ(byName.out, QStringLiteral("PythonLexer\n"));
    const CliRun byExtension = run({QStringLiteral("languages"), QStringLiteral("--guess"), QStringLiteral("--extension"), QStringLiteral("h")});
    EXPECT_EQ(byExtension.status, 0);
    EXPECT_TRUE(byExtension.out.contains(QStringLiteral("CLexer\n")));
    // Objective-C is active by default, so it ranks first among the languages of ".h".
    EXPECT_TRUE(byExtension.out.startsWith(QStringLiteral("ObjectiveCLexer\n")));
    EXPECT_EQ(run({QStringLiteral("languages"), QStringLiteral("--guess")}).status, 2);
}

TEST_F(CliTest, BrokenLanguageTableIsReportedWithItsCode)
{
    ZDLanguageRegistry broken(dir.filePath(QStringLiteral("missing.json")), &defaults);
    QString out, err;
    QTextStream outStream(&out), errStream(&err);
    ZDCli cli(defaults, broken);
    EXPECT_EQ(cli.run({QStringLiteral("languages")}, outStream, errStream), 1);
    errStream.flush();
    EXPECT_TRUE(err.startsWith(QStringLiteral("zandrio-cli: Couldn’t load syntaxes data from application bundle (code 227)")));
}
