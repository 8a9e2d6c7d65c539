#include "ZDCli.h"
#include "ZDLanguageRegistry.h"
#include "ZDPackageFormat.h"
#include "ZDRecordArchive.h"
#include "ZDSnippet.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
struct CliRun
{
    int status = 0;
    QString out;
    QString err;
    QStringList lines() const { return out.split(QLatin1Char('\n'), Qt::SkipEmptyParts); }
    QJsonDocument json() const { return QJsonDocument::fromJson(out.toUtf8()); }
};

class StoreCliTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("lib.zandriolibrary"));
    ZDUserDefaults defaults{dir.filePath(QStringLiteral("prefs.ini"))};
    ZDLanguageRegistry languages{ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Languages.json"),
                                 &defaults};

    CliRun run(QStringList arguments, const QString &input = {})
    {
        arguments.prepend(path);
        arguments.prepend(QStringLiteral("--library"));
        CliRun result;
        QString inputCopy = input;
        QTextStream out(&result.out), err(&result.err), in(&inputCopy);
        ZDCli cli(defaults, languages);
        result.status = cli.run(arguments, out, err, &in);
        out.flush();
        err.flush();
        return result;
    }

    QString stamp() const { return ZDPackageFormat::readWriteStamp(path); }
};

QString s(const char *text)
{
    return QString::fromUtf8(text);
}
} // namespace

TEST_F(StoreCliTest, SnippetsAreAddedListedShownAndRemoved)
{
    ASSERT_EQ(run({s("create")}).status, 0);
    EXPECT_EQ(run({s("create")}).status, 1); // never over an existing library
    const QString work = run({s("folder"), s("add"), s("Work")}).out.trimmed();
    const QString sub = run({s("folder"), s("add"), s("Sub"), s("--parent"), s("Work")}).out.trimmed();
    ASSERT_FALSE(sub.isEmpty());
    EXPECT_EQ(run({s("folder"), s("add"), s("X"), s("--parent"), s("Nowhere")}).status, 1);

    const CliRun first = run({s("add"), s("--title"), s("Grüße"), s("--folder"), s("Sub"), s("--tag"), s("Café"),
                              s("--tag"), s("py"), s("--language"), s("PythonLexer"), s("--note"), s("a note"),
                              s("--json")},
                             s("def f():\r\n    pass\r\n"));
    ASSERT_EQ(first.status, 0) << first.err.toStdString();
    const QJsonObject added = first.json().object();
    const QString firstUUID = added.value(s("uuid")).toString();
    // One tag is reused by name equivalence, not made twice.
    const CliRun second = run({s("add"), s("--title"), s("two"), s("--folder"), work, s("--tag"), s("cafe")}, s("x"));
    ASSERT_EQ(second.status, 0);
    const QString secondUUID = second.out.trimmed();
    EXPECT_EQ(run({s("add"), s("--language"), s("NoSuchLexer")}, s("x")).status, 2);

    const QJsonObject shown = run({s("show"), firstUUID, s("--json")}).json().object();
    EXPECT_EQ(shown, added);
    EXPECT_EQ(shown.keys(),
              (QStringList{s("dateCreated"), s("dateModified"), s("folder"), s("folderUUID"), s("gistIdentifier"),
                           s("githubHTMLURL"), s("githubUsername"), s("parts"), s("tagUUIDs"), s("tags"), s("title"),
                           s("uuid")}));
    EXPECT_EQ(shown.value(s("folder")).toString(), s("Sub"));
    EXPECT_EQ(shown.value(s("folderUUID")).toString(), sub);
    EXPECT_EQ(shown.value(s("tags")).toArray(), (QJsonArray{s("Café"), s("py")}));
    EXPECT_TRUE(shown.value(s("gistIdentifier")).isNull());
    const QRegularExpression iso(s("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z$"));
    EXPECT_TRUE(iso.match(shown.value(s("dateModified")).toString()).hasMatch());
    const QJsonObject part = shown.value(s("parts")).toArray().first().toObject();
    EXPECT_EQ(part.value(s("content")).toString(), s("def f():\n    pass\n"));
    EXPECT_EQ(part.value(s("language")).toString(), s("PythonLexer"));
    EXPECT_EQ(part.value(s("note")).toString(), s("a note"));
    EXPECT_TRUE(run({s("show"), firstUUID}).out.contains(s("Title: Grüße\n")));

    const QStringList all = run({s("list")}).lines();
    ASSERT_EQ(all.size(), 2);
    EXPECT_TRUE(all.at(0).startsWith(firstUUID + s("\tGrüße\tSub\t")));
    EXPECT_TRUE(all.at(1).startsWith(secondUUID));
    EXPECT_EQ(run({s("list"), s("--folder"), s("Work")}).lines(), QStringList{all.at(1)});
    EXPECT_EQ(run({s("list"), s("--tag"), s("PY")}).lines(), QStringList{all.at(0)});
    EXPECT_EQ(run({s("list"), s("--tag"), s("café"), s("--json")}).json().array().size(), 2);
    EXPECT_EQ(run({s("list"), s("--tag"), s("none")}).status, 1);

    const QString before = stamp();
    EXPECT_EQ(run({s("rm"), firstUUID, s("NO-SUCH-UUID")}).status, 1);
    EXPECT_EQ(stamp(), before);
    EXPECT_EQ(run({s("rm"), firstUUID, secondUUID}).status, 0);
    EXPECT_TRUE(run({s("list")}).out.isEmpty());
    EXPECT_EQ(run({s("show"), firstUUID}).status, 1);
}

TEST_F(StoreCliTest, NewerLibrariesAreRefusedUnlessToldToContinue)
{
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();
    tree.setFile(ZDPackageLayout::versionFile, ZDPackageFormat::encodeVersion(s("1.6.0")));
    ASSERT_TRUE(tree.write(path));

    const CliRun refused = run({s("add")}, s("x"));
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.contains(s("newer version of Zandrio (1.6.0)"))) << refused.err.toStdString();
    EXPECT_TRUE(stamp().isEmpty()); // nothing written
    EXPECT_EQ(run({s("check")}).status, 1);

    ASSERT_EQ(run({s("add"), s("--continue-anyway")}, s("x")).status, 0);
    EXPECT_EQ(run({s("list")}).lines().size(), 1); // restamped with this build's version
}

TEST_F(StoreCliTest, CheckReportsWhatARepairWouldChangeAndRepairFixesIt)
{
    ASSERT_EQ(run({s("create")}).status, 0);
    const ZDSnippetPtr lost = ZDSnippet::create(s("lost"), s("NO-SUCH-FOLDER"));
    ZDPackageTree tree;
    ASSERT_TRUE(ZDPackageTree::read(path, &tree));
    tree.setFile(ZDPackageLayout::snippetFilePath(lost->UUID()), ZDRecordArchive::archivedSnippet(*lost));
    tree.setFile(ZDPackageLayout::snippetFilePath(s("BROKEN")), "garbage");
    ASSERT_TRUE(tree.write(path));

    const QString before = stamp();
    const CliRun check = run({s("check")});
    EXPECT_EQ(check.status, 1);
    EXPECT_TRUE(check.out.contains(s("Would move to Uncategorized: snippet ") + lost->UUID()));
    EXPECT_TRUE(check.out.contains(s("Unreadable record in: Database/Snippets/BROKEN.data")));
    EXPECT_EQ(stamp(), before);

    EXPECT_EQ(run({s("check"), s("--repair")}).status, 0);
    EXPECT_NE(stamp(), before);
    const CliRun after = run({s("check")});
    EXPECT_FALSE(after.out.contains(s("Would move")));
    EXPECT_TRUE(after.out.contains(s("1 snippets, 0 tags, 0 issues")));

    QFile::remove(path + s("/Database/shortcuts.data"));
    const CliRun invalid = run({s("check")});
    EXPECT_EQ(invalid.status, 1);
    EXPECT_TRUE(invalid.err.contains(s("(code 131)")));
}
