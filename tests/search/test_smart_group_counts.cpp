// Smart-group counts: whole counts on their queue over snapshots, single-snippet notices
// applied at once, and edits that race a whole count.

#include "ZDSearchTestSupport.h"

#include "ZDCategoryNode.h"
#include "ZDRecordDirectory.h"
#include "ZDSmartGroupCounts.h"
#include "ZDSnippetKeyPaths.h"
#include "ZDSnippetSnapshot.h"
#include "ZDTag.h"

namespace {

/// The folder titles and tags a query may read through the library.
class Directory : public ZDRecordDirectory
{
public:
    ZDTagList tags;
    QHash<QString, QString> folders;

    ZDTagList allTags() const override { return tags; }
    QString titleForShortcutNodeWithUUID(const QString &UUID, const QString &) const override
    {
        return folders.value(UUID, QStringLiteral("Uncategorized"));
    }
    QString defaultLanguageIdentifierForFolderUUID(const QString &) const override { return {}; }
};

} // namespace

class SmartGroupCountsTest : public SearchTest
{
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        ZDRecordDirectory::install(&directory);
        sql = ZDTag::create(QStringLiteral("sql"));
        directory.tags = {sql};
        directory.folders.insert(QStringLiteral("F1"), QStringLiteral("Work"));
        addSnippet(QStringLiteral("select users"), QStringLiteral("SELECT * FROM users"));
        addSnippet(QStringLiteral("shell loop"), QStringLiteral("for f in *; do echo $f; done"));
        ZDSnippetPtr tagged = addSnippet(QStringLiteral("join"), QStringLiteral("SELECT a FROM b JOIN c"));
        tagged->setTagUUIDs({sql->UUID()});
        tagged->setFolderUUID(QStringLiteral("F1"));
        byTitle = ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("Selects"), {},
                                                          QStringLiteral("title BEGINSWITH[c] \"select\""));
        byContent = ZDCategoryNode::smartGroupNodeWithTitle(
            QStringLiteral("SQL"), {}, QStringLiteral("ANY parts.content CONTAINS \"SELECT\""));
        byTag = ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("Tagged"), {},
                                                        QStringLiteral("ANY tags.title == \"sql\""));
        broken = ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("Broken"), {},
                                                         QStringLiteral("title == == \"x\""));
        groups = {byTitle, byContent, byTag, broken};
    }
    void TearDown() override
    {
        counts.reset();
        ZDRecordDirectory::install(nullptr);
        SearchTest::TearDown();
    }

    ZDSmartGroupCounts &makeCounts()
    {
        ZDSmartGroupCountsSource source;
        source.snippets = [this] { return library; };
        source.smartGroupNodes = [this] { return groups; };
        source.hasValidLibrary = [this] { return valid; };
        counts = std::make_unique<ZDSmartGroupCounts>(source);
        return *counts;
    }
    void settle()
    {
        counts->waitUntilIdle();
        ZDTestSupport::waitFor([] { return false; }, 20);
    }
    qint64 countOf(const ZDCategoryNodePtr &group) const { return counts->countForSmartGroup(group->UUID()); }

    Directory directory;
    ZDTagPtr sql;
    ZDCategoryNodePtr byTitle, byContent, byTag, broken;
    QList<ZDCategoryNodePtr> groups;
    bool valid = true;
    std::unique_ptr<ZDSmartGroupCounts> counts;
};

TEST_F(SmartGroupCountsTest, AWholeCountArrivesThroughTheEventLoopAndABrokenQueryHasNone)
{
    makeCounts().recountAll();
    EXPECT_EQ(countOf(byContent), -1); // counted on the queue, taken up on the main thread
    settle();
    EXPECT_EQ(countOf(byTitle), 1);
    EXPECT_EQ(countOf(byContent), 2);
    EXPECT_EQ(countOf(byTag), 1);
    EXPECT_EQ(countOf(broken), -1);
}

TEST_F(SmartGroupCountsTest, SnippetNoticesReevaluateOnlyThoseSnippetsAtOnce)
{
    makeCounts().recountAll();
    settle();
    ZDSnippetPtr loop = library[1];
    loop->setTitle(QStringLiteral("Select loop")); // starts matching
    counts->snippetTitleDidChange(nullptr, loop);
    EXPECT_EQ(countOf(byTitle), 2);
    library[0]->parts().first()->setContent(QStringLiteral("select lower case")); // stops matching
    counts->snippetContentDidChange(nullptr, library[0]);
    EXPECT_EQ(countOf(byContent), 1);
    loop->setTagUUIDs({sql->UUID()});
    counts->snippetsTagsDidChange(nullptr, {loop});
    EXPECT_EQ(countOf(byTag), 2);

    ZDSnippetPtr added = addSnippet(QStringLiteral("selective"), QStringLiteral("SELECT 1"));
    counts->snippetDidAdd(nullptr, added);
    counts->snippetDidAdd(nullptr, added); // a repeated notice counts it once
    EXPECT_EQ(countOf(byTitle), 3);
    EXPECT_EQ(countOf(byContent), 2);
    counts->snippetsDidRemove(nullptr, {added, library[2]});
    EXPECT_EQ(countOf(byTitle), 2);
    EXPECT_EQ(countOf(byContent), 0);
    EXPECT_EQ(countOf(byTag), 1);
    EXPECT_EQ(countOf(broken), -1);
}

TEST_F(SmartGroupCountsTest, EditsMadeWhileAWholeCountRunsAreAppliedToItsResult)
{
    makeCounts().recountAll();
    // The count has taken its snapshots; its result cannot arrive before the event loop runs.
    library[1]->setTitle(QStringLiteral("Select loop"));
    counts->snippetTitleDidChange(nullptr, library[1]);
    counts->snippetsDidRemove(nullptr, {library[2]});
    settle();
    EXPECT_EQ(countOf(byTitle), 2);
    EXPECT_EQ(countOf(byContent), 1);
    EXPECT_EQ(countOf(byTag), 0);
}

TEST_F(SmartGroupCountsTest, AChangedQueryANewGroupAndALibrarySwitchAreCountedAgain)
{
    makeCounts().recountAll();
    settle();
    byTitle->setPredicateString(QStringLiteral("title CONTAINS \"l\""));
    ZDCategoryNodePtr everything =
        ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("All"), {}, QStringLiteral("TRUEPREDICATE"));
    groups = {byTitle, everything}; // byContent and the others removed
    counts->categorySelectionDidChange(nullptr, byTitle, {}, {});
    EXPECT_EQ(countOf(byTitle), -1); // the old count no longer holds
    EXPECT_EQ(countOf(byContent), -1);
    settle();
    EXPECT_EQ(countOf(byTitle), 2);
    EXPECT_EQ(countOf(everything), 3);

    // A renamed folder is counted again for queries that read folder titles.
    ZDCategoryNodePtr inWork = ZDCategoryNode::smartGroupNodeWithTitle(
        QStringLiteral("Work"), {}, QStringLiteral("localizedCategory == \"Job\""));
    groups << inWork;
    counts->smartGroupsDidChange();
    settle();
    EXPECT_EQ(countOf(inWork), 0);
    directory.folders.insert(QStringLiteral("F1"), QStringLiteral("Job"));
    counts->folderDidRename(nullptr, nullptr);
    settle();
    EXPECT_EQ(countOf(inWork), 1);

    library.removeLast();
    counts->applicationLibraryDidChange(nullptr);
    settle();
    EXPECT_EQ(countOf(everything), 2);
    valid = false;
    counts->applicationLibraryDidChange(nullptr);
    EXPECT_EQ(countOf(everything), -1);
}

TEST_F(SmartGroupCountsTest, ASnapshotAnswersEveryQueryAsTheSnippetItselfDoes)
{
    ZDSnippetPtr snippet = library[2];
    ZDSnippetPartPtr second = ZDSnippetPart::create(QStringLiteral("b.py"), snippet->UUID());
    second->setNote(QStringLiteral("a note"));
    second->setLanguage(registry.languageWithIdentifier(QStringLiteral("PythonLexer")));
    snippet->setParts({snippet->parts().first(), second});
    const QStringList formats{
        QStringLiteral("ANY parts.content CONTAINS[cd] \"join\""),
        QStringLiteral("ANY parts.note == \"a note\""),
        QStringLiteral("stringRepresentation ENDSWITH \"JOIN c\\na note\\n\""),
        QStringLiteral("stringRepresentation CONTAINS \"join\\n\\nSELECT\""),
        QStringLiteral("ANY parts.stringRepresentation BEGINSWITH \"a note\\n\""),
        QStringLiteral("localizedCategory == \"Work\" AND tagsCount == 1"),
        QStringLiteral("ANY tags.title == \"sql\" AND partsCount == 2"),
        QStringLiteral("ANY parts.language.displayName == \"Python\""),
        QStringLiteral("canonicalDateModified > CAST(0, \"NSDate\") AND isGist == \"No\""),
        QStringLiteral("NOT title BEGINSWITH \"j\" OR parts.title CONTAINS \"b.py\""),
    };
    for (const QString &format : formats) {
        const ZDPredicate predicate = ZDPredicate::fromFormat(format);
        ASSERT_TRUE(predicate.isValid()) << format.toStdString();
        const ZDSnippetSnapshotPlan plan({predicate});
        for (const ZDSnippetPtr &each : library) {
            EXPECT_EQ(plan.evaluate(predicate, plan.capture(*each)),
                      ZDSnippetKeyPaths::evaluate(predicate, *each))
                << format.toStdString() << " on " << each->title().toStdString();
        }
        EXPECT_TRUE(ZDSnippetKeyPaths::evaluate(predicate, *snippet)) << format.toStdString();
    }
}
