#include "ZDSearchTestSupport.h"

#include "ZDCategoryNode.h"
#include "ZDCli.h"
#include "ZDDataCenter.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDPackageFormat.h"
#include "ZDPackageTree.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"
#include "ZDWriteTimer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

class CliSearchTest : public SearchTest
{
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        ZDMulticastDelegateHandler notifier;
        ZDDataCenter::Options options;
        options.packagePath = libraryPath;
        options.defaults = &defaults;
        options.notifier = &notifier;
        options.watchForExternalChanges = false;
        ZDDataCenter center(std::move(options));
        work = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Work"));
        ASSERT_TRUE(center.setRootFolderNodes({work}));
        swift = ZDTag::create(QStringLiteral("swift"));
        ASSERT_TRUE(center.setTags({swift}));
        ZDSnippetPtr once =
            addSnippet(QStringLiteral("mentions it once"), QStringLiteral("parse the foo here and there"));
        ZDSnippetPtr often = addSnippet(QStringLiteral("foo foo"), QStringLiteral("foo"));
        often->setFolderUUID(work->UUID());
        often->setTagUUIDs({swift->UUID()});
        often->parts().first()->setLanguage(registry.languageWithIdentifier(QStringLiteral("SwiftLexer")));
        addSnippet(QStringLiteral("inside"), QStringLiteral("xfoo"));
        for (int i = 0; i < 4; ++i)
            addSnippet(QStringLiteral("filler"), QStringLiteral("nothing to see"));
        ASSERT_TRUE(center.addSnippetsFromArray(library));
        ASSERT_TRUE(center.save());
    }

    QString run(const QStringList &arguments, int expectedStatus = 0)
    {
        QString out, err;
        QTextStream outStream(&out), errStream(&err);
        ZDCli cli(defaults, registry);
        const QStringList chosen = libraryPath.isEmpty() ? QStringList() : QStringList{"--library", libraryPath};
        EXPECT_EQ(cli.run(chosen + arguments, outStream, errStream), expectedStatus) << err.toStdString();
        outStream.flush();
        errStream.flush();
        lastError = err;
        return out;
    }

    QTemporaryDir directory;
    QString libraryPath = directory.filePath(QStringLiteral("test.zandriolibrary"));
    QString lastError;
    ZDUserDefaults defaults{directory.filePath(QStringLiteral("prefs.ini"))};
    ZDCategoryNodePtr work;
    ZDTagPtr swift;
};

TEST_F(CliSearchTest, SearchPrintsTheEnginesOrderWithRelevanceInJson)
{
    const QJsonArray result =
        QJsonDocument::fromJson(run({"search", "--json", "--exact", "foo"}).toUtf8()).array();
    ASSERT_EQ(result.size(), 3);
    EXPECT_EQ(result[0][QStringLiteral("title")], QStringLiteral("foo foo"));
    EXPECT_EQ(result[0][QStringLiteral("folder")], QStringLiteral("Work"));
    EXPECT_EQ(result[0][QStringLiteral("tags")], QJsonArray({"swift"}));
    EXPECT_EQ(result[0][QStringLiteral("parts")][0][QStringLiteral("language")],
              QStringLiteral("SwiftLexer"));
    EXPECT_GT(result[0][QStringLiteral("relevance")].toDouble(),
              result[1][QStringLiteral("relevance")].toDouble());
    EXPECT_TRUE(result[0][QStringLiteral("gistIdentifier")].isNull());
    // "xfoo" holds no term "foo": found, but unranked and last.
    EXPECT_EQ(result[2][QStringLiteral("title")], QStringLiteral("inside"));
    EXPECT_TRUE(result[2][QStringLiteral("relevance")].isNull());

    EXPECT_EQ(run({"search", "--title-only", "FOO"}).count(QLatin1Char('\n')), 1);
    EXPECT_EQ(run({"search", "--match-case", "FOO"}), QString());
    EXPECT_EQ(run({"search"}).count(QLatin1Char('\n')), 7);
}

TEST_F(CliSearchTest, ConstraintsByNameAndTheirProposals)
{
    EXPECT_EQ(run({"search", "--folder", "Work", "foo"}).count(QLatin1Char('\n')), 1);
    EXPECT_EQ(run({"search", "--tag", "SWIFT"}).count(QLatin1Char('\n')), 1);
    EXPECT_EQ(run({"search", "--language", "TextLexer", "foo"}).count(QLatin1Char('\n')), 2);
    EXPECT_EQ(run({"search", "--tag", "swift", "--folder", "Work", "--language", "TextLexer"}), QString());
    run({"search", "--folder", "Nowhere"}, 2);

    const QStringList proposals = run({"complete", "in:sw"}).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    EXPECT_EQ(proposals, QStringList({"TAG\t" + swift->UUID() + "\tswift  (1 snippet)",
                                      "LANG\tSwiftLexer\tSwift  (1 snippet)"}));
    EXPECT_EQ(run({"complete", "in:"}), QString());
}

// Like the other commands, the search commands open the library the application uses, and
// refuse one written by a newer version unless told to go on, without writing to it.
TEST_F(CliSearchTest, SearchOpensTheApplicationsLibraryAndRefusesNewerOnes)
{
    const QString path = libraryPath;
    libraryPath.clear();
    defaults.setDesignatedLibraryPathString(path);
    EXPECT_EQ(run({"search", "--exact", "foo"}).count(QLatin1Char('\n')), 3);

    ZDPackageTree tree;
    ASSERT_TRUE(ZDPackageTree::read(path, &tree));
    tree.setFile(ZDPackageLayout::versionFile, ZDPackageFormat::encodeVersion(QStringLiteral("1.6.0")));
    ASSERT_TRUE(tree.write(path));
    for (const char *command : {"search", "complete"}) {
        EXPECT_EQ(run({command, "foo"}, 1), QString());
        EXPECT_TRUE(lastError.contains(QStringLiteral("newer version"))) << lastError.toStdString();
    }
    EXPECT_EQ(run({"search", "--continue-anyway", "--exact", "foo"}).count(QLatin1Char('\n')), 3);
    ZDPackageTree after;
    ASSERT_TRUE(ZDPackageTree::read(path, &after));
    QString version;
    ASSERT_TRUE(ZDPackageFormat::decodeVersion(after.fileContents(ZDPackageLayout::versionFile), &version));
    EXPECT_EQ(version, QStringLiteral("1.6.0"));
}
