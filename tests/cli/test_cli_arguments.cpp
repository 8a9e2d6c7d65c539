#include "ZDCli.h"
#include "ZDLanguageRegistry.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// The opening every command shares: usage problems read and exit alike whichever command meets
// them, each command takes the shared options it documents and no others, and a usage problem is
// found before any library is opened.
namespace {
struct CliRun
{
    int status = 0;
    QString out;
    QString err;
};

class CliArgumentsTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("lib.zandriolibrary"));
    ZDUserDefaults defaults{dir.filePath(QStringLiteral("prefs.ini"))};
    ZDLanguageRegistry languages{
        ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Languages.json"), &defaults};

    CliRun run(QStringList arguments)
    {
        arguments.prepend(path);
        arguments.prepend(QStringLiteral("--library"));
        CliRun result;
        QString input;
        QTextStream out(&result.out), err(&result.err), in(&input);
        ZDCli cli(defaults, languages);
        result.status = cli.run(arguments, out, err, &in);
        out.flush();
        err.flush();
        return result;
    }

    void expectUsage(const QStringList &arguments, const QString &problem)
    {
        SCOPED_TRACE(arguments.join(QLatin1Char(' ')).toStdString());
        const CliRun result = run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, QStringLiteral("zandrio-cli: %1\n").arg(problem));
        EXPECT_TRUE(result.out.isEmpty());
    }
};

QString s(const char *text)
{
    return QString::fromUtf8(text);
}
} // namespace

TEST_F(CliArgumentsTest, UsageProblemsReadAlikeInEveryCommandAndOpenNoLibrary)
{
    for (const char *command :
         {"prefs", "languages", "markdown", "create", "list", "rm", "check", "search"}) {
        expectUsage({s(command), s("--bogus")}, s("Unknown option 'bogus'."));
        expectUsage({s(command), s("-x")}, s("Unknown option 'x'."));
    }
    expectUsage({s("list"), s("--folder")}, s("Missing value after '--folder'."));
    expectUsage({s("search"), s("--folder")}, s("Missing value after '--folder'."));
    // Each command keeps its own words for a wrong count of arguments.
    expectUsage({s("list"), s("extra")}, s("list takes no arguments"));
    expectUsage({s("show")}, s("show takes one snippet UUID"));
    expectUsage({s("show"), s("a"), s("b")}, s("show takes one snippet UUID"));
    expectUsage({s("rm")}, s("rm takes one or more snippet UUIDs"));
    expectUsage({s("search"), s("a"), s("b")}, s("search takes one keyword; quote a keyword with spaces"));
    expectUsage({s("folder"), s("remove"), s("F")}, s("usage: folder add NAME [--parent NAME|UUID]"));
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST_F(CliArgumentsTest, SharedOptionsOnlyWhereACommandTakesThem)
{
    ASSERT_EQ(run({s("create")}).status, 0);
    // --json and --continue-anyway, where taken, may follow the arguments.
    EXPECT_EQ(run({s("list"), s("--json"), s("--continue-anyway")}).status, 0);
    EXPECT_EQ(run({s("search"), s("word"), s("--json"), s("--continue-anyway")}).status, 0);
    EXPECT_EQ(run({s("languages"), s("--json")}).status, 0);
    EXPECT_EQ(run({s("check"), s("--continue-anyway")}).status, 0);

    expectUsage({s("rm"), s("--json"), s("UUID")}, s("Unknown option 'json'."));
    expectUsage({s("check"), s("--json")}, s("Unknown option 'json'."));
    expectUsage({s("prefs"), s("--json")}, s("Unknown option 'json'."));
    expectUsage({s("prefs"), s("--continue-anyway")}, s("Unknown option 'continue-anyway'."));
    expectUsage({s("languages"), s("--continue-anyway")}, s("Unknown option 'continue-anyway'."));
    expectUsage({s("create"), s("--continue-anyway")}, s("Unknown option 'continue-anyway'."));
}
