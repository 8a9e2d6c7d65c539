#include "ZDManualWriteTimer.h"
#include "ZDSearchTestSupport.h"

#include "ZDCategoryNode.h"
#include "ZDCoreIndex.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDPreferenceKeys.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"

#include <QSignalSpy>
#include <QTemporaryDir>

namespace {

} // namespace

class CoreIndexTest : public SearchTest
{
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        parent = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Work"));
        child = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Scripts"));
        parent->addChild(child);
        python = ZDTag::create(QStringLiteral("python"));
        shell = ZDTag::create(QStringLiteral("shell"));
        ZDSnippetPtr a = addSnippet(QStringLiteral("a"));
        a->setFolderUUID(child->UUID());
        a->setTagUUIDs({python->UUID(), python->UUID()});
        a->parts().first()->setLanguage(registry.languageWithIdentifier(QStringLiteral("PythonLexer")));
        ZDSnippetPartPtr second = ZDSnippetPart::create(QStringLiteral("b"), a->UUID());
        second->setLanguage(registry.languageWithIdentifier(QStringLiteral("PythonLexer")));
        a->setParts({a->parts().first(), second});
        ZDSnippetPtr b = addSnippet(QStringLiteral("b"));
        b->setFolderUUID(child->UUID());
        b->setTagUUIDs({python->UUID(), shell->UUID()});
        addSnippet(QStringLiteral("c"));
    }

    ZDCoreIndex &makeIndex(ZDMulticastDelegateHandler *notifier = nullptr, ZDUserDefaults *defaults = nullptr)
    {
        ZDCoreIndexSource source;
        source.snippets = [this] { return library; };
        source.rootFolderNodes = [this] { return QList<ZDCategoryNodePtr>{parent}; };
        source.tags = [this] { return ZDTagList{python, shell}; };
        source.hasValidLibrary = [this] { return valid; };
        source.activeLanguageIdentifiers = [] { return QStringList{QStringLiteral("RustLexer")}; };
        auto timer = std::make_unique<ZDManualWriteTimer>();
        manualTimer = timer.get();
        index = std::make_unique<ZDCoreIndex>(source, notifier, defaults, std::move(timer));
        return *index;
    }

    void settle()
    {
        index->waitUntilIdle();
        ZDTestSupport::waitFor([] { return false; }, 20);
    }

    static QHash<QString, qint64> counts(const QList<ZDIndexResult> &results)
    {
        QHash<QString, qint64> map;
        for (const ZDIndexResult &result : results)
            map.insert(result.displayName, result.count);
        return map;
    }

    ZDCategoryNodePtr parent, child;
    ZDTagPtr python, shell;
    bool valid = true;
    ZDManualWriteTimer *manualTimer = nullptr;
    std::unique_ptr<ZDCoreIndex> index;
};

TEST_F(CoreIndexTest, CountsEachSnippetOncePerFolderTagAndLanguage)
{
    makeIndex().rebuildAllIndex();
    settle();
    EXPECT_EQ(counts(index->folders()),
              (QHash<QString, qint64>{{"Uncategorized", 1}, {"Work", 0}, {"Scripts", 2}}));
    EXPECT_EQ(index->folders().first().ubiquitousName, QLatin1String(ZDUncategorizedUUID));
    EXPECT_EQ(counts(index->tags()), (QHash<QString, qint64>{{"python", 2}, {"shell", 1}}));
    const QHash<QString, qint64> languages = counts(index->languages());
    EXPECT_EQ(languages.value(QStringLiteral("Python")), 1);
    EXPECT_EQ(languages.value(QStringLiteral("Plain Text")), 2);
    EXPECT_TRUE(languages.contains(QStringLiteral("Rust"))); // active, though unused
    EXPECT_EQ(languages.value(QStringLiteral("Rust")), 0);
}

TEST_F(CoreIndexTest, TheFirstChangeCountsAtOnceLaterOnesAtTheNextTickAndAQuietTickStops)
{
    makeIndex().scheduleIndexRebuild(ZDCoreIndex::Folders);
    EXPECT_TRUE(index->isTimerRunning());
    settle();
    EXPECT_EQ(index->buildDirtyTypes(), 0);
    EXPECT_EQ(index->folders().size(), 3);
    EXPECT_TRUE(index->tags().isEmpty()); // not asked for

    index->scheduleIndexRebuild(ZDCoreIndex::Tags);
    settle();
    EXPECT_EQ(index->buildDirtyTypes(), int(ZDCoreIndex::Tags));
    EXPECT_TRUE(index->tags().isEmpty()); // waits for the tick
    manualTimer->fire();
    settle();
    EXPECT_EQ(index->tags().size(), 2);
    EXPECT_TRUE(index->isTimerRunning());
    manualTimer->fire();
    EXPECT_FALSE(index->isTimerRunning());
}

TEST_F(CoreIndexTest, NoticesAdjustCountsInPlaceOrMarkKindsDirty)
{
    ZDMulticastDelegateHandler notifier;
    makeIndex(&notifier).rebuildAllIndex();
    settle();
    manualTimer->fire(); // quiet tick: stops
    ASSERT_FALSE(index->isTimerRunning());

    ZDSnippetPtr added = addSnippet(QStringLiteral("d"));
    added->setTagUUIDs({shell->UUID()});
    notifier.noteSnippetAdded(added, nullptr);
    notifier.noteSnippetsRemoved({library.first()}, nullptr);
    ZDCategoryNodePtr fresh = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Fresh"));
    notifier.noteFolderAdded(fresh, parent, 1, nullptr);
    shell->setTitle(QStringLiteral("bash"));
    notifier.noteTagRenamed(shell, nullptr);
    // The four notices may arrive in any order.
    const QHash<QString, qint64> expectedTags{{"python", 1}, {"bash", 2}};
    ASSERT_TRUE(ZDTestSupport::waitFor([&] {
        return index->folders().size() == 4 && counts(index->tags()) == expectedTags &&
               counts(index->folders()).value(QStringLiteral("Uncategorized")) == 2;
    }));
    EXPECT_EQ(index->folders()[1], ZDIndexResult::resultWithDisplayName("Fresh", fresh->UUID(), 0));
    EXPECT_EQ(counts(index->folders()).value(QStringLiteral("Scripts")), 1);
    EXPECT_EQ(counts(index->folders()).value(QStringLiteral("Uncategorized")), 2);
    EXPECT_EQ(counts(index->languages()).value(QStringLiteral("Python")), 0);
    EXPECT_FALSE(index->isTimerRunning());

    notifier.noteFoldersRemoved({parent}, nullptr); // with its subfolder
    notifier.noteSnippetsLanguageChanged({added}, nullptr);
    EXPECT_TRUE(
        ZDTestSupport::waitFor([&] { return index->isTimerRunning() && index->folders().size() == 2; }));
}

TEST_F(CoreIndexTest, ALibrarySwitchRecountsOnlyAValidLibraryAndActiveLanguagesRecountLanguages)
{
    ZDMulticastDelegateHandler notifier;
    QTemporaryDir directory;
    ZDUserDefaults defaults(directory.filePath(QStringLiteral("prefs.ini")));
    makeIndex(&notifier, &defaults);
    valid = false;
    notifier.noteApplicationLibraryChanged(nullptr);
    ZDTestSupport::waitFor([] { return false; }, 50);
    EXPECT_FALSE(index->isTimerRunning());
    valid = true;
    notifier.noteApplicationLibraryChanged(nullptr);
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return index->isTimerRunning(); }));
    settle();
    manualTimer->fire();
    ASSERT_FALSE(index->isTimerRunning());

    defaults.setActiveLanguageIdentifiers({QStringLiteral("GoLexer")});
    EXPECT_TRUE(index->isTimerRunning());
}

TEST_F(CoreIndexTest, MovesRetaggingAndLanguageChangesCountAtOnceFromWhereTheSnippetWas)
{
    ZDMulticastDelegateHandler notifier;
    makeIndex(&notifier).rebuildAllIndex();
    settle();
    // The tick keeps running, so nothing below is recounted before the next one.
    ASSERT_TRUE(index->isTimerRunning());
    ZDSnippetPtr a = library[0], b = library[1];
    b->setFolderUUID(parent->UUID());
    notifier.noteSnippetsCategoryChanged({b}, nullptr);
    a->setTagUUIDs({shell->UUID()});
    notifier.noteSnippetsTagsChanged({a}, nullptr);
    for (const ZDSnippetPartPtr &part : a->parts())
        part->setLanguage(registry.languageWithIdentifier(QStringLiteral("RustLexer")));
    notifier.noteSnippetsLanguageChanged({a}, nullptr);
    const QHash<QString, qint64> expectedFolders{{"Uncategorized", 1}, {"Work", 1}, {"Scripts", 1}};
    const QHash<QString, qint64> expectedTags{{"python", 1}, {"shell", 2}};
    // Each kind is recounted at the next tick all the same.
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return index->buildDirtyTypes() == int(ZDCoreIndex::All); }));
    EXPECT_EQ(counts(index->folders()), expectedFolders);
    EXPECT_EQ(counts(index->tags()), expectedTags);
    EXPECT_EQ(counts(index->languages()).value(QStringLiteral("Rust")), 1);
    EXPECT_EQ(counts(index->languages()).value(QStringLiteral("Python")), 0);

    // A snippet already seen by a recount is not counted twice by its late notice; one filed
    // in a folder the library does not know counts as uncategorized.
    ZDSnippetPtr orphan = addSnippet(QStringLiteral("d"));
    orphan->setFolderUUID(QStringLiteral("gone"));
    manualTimer->fire();
    settle();
    notifier.noteSnippetAdded(orphan, nullptr);
    ZDTestSupport::waitFor([] { return false; }, 50);
    EXPECT_EQ(counts(index->folders()).value(QStringLiteral("Uncategorized")), 2);
    notifier.noteSnippetsRemoved({orphan}, nullptr);
    EXPECT_TRUE(ZDTestSupport::waitFor(
        [&] { return counts(index->folders()).value(QStringLiteral("Uncategorized")) == 1; }));
}

TEST_F(CoreIndexTest, ChangesNoticedWhileARecountRunsSurviveItsResult)
{
    makeIndex().rebuildAllIndex();
    // The recount has taken its facts; its result arrives through the event loop.
    ZDSnippetPtr added = addSnippet(QStringLiteral("d"));
    added->setTagUUIDs({shell->UUID()});
    index->snippetDidAdd(nullptr, added);
    ZDCategoryNodePtr fresh = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Fresh"));
    index->folderDidAdd(nullptr, fresh, nullptr, 3);
    index->snippetsDidRemove(nullptr, {library[1]});
    settle();
    EXPECT_EQ(counts(index->folders()),
              (QHash<QString, qint64>{{"Uncategorized", 2}, {"Work", 0}, {"Scripts", 1}, {"Fresh", 0}}));
    EXPECT_EQ(counts(index->tags()), (QHash<QString, qint64>{{"python", 1}, {"shell", 1}}));
}

TEST_F(CoreIndexTest, ARecountOfOneKindLeavesTheOtherKindsToTheirOwnNotices)
{
    makeIndex().rebuildAllIndex();
    settle();
    manualTimer->fire(); // quiet: stops
    ZDSnippetPtr b = library[1];
    b->setFolderUUID(parent->UUID());
    b->setTagUUIDs({shell->UUID()});
    index->snippetsCategoryDidChange(nullptr, {b}); // recounts folders at once, seeing the new tags too
    index->snippetsTagsDidChange(nullptr, {b});
    settle();
    EXPECT_EQ(counts(index->tags()), (QHash<QString, qint64>{{"python", 1}, {"shell", 1}}));
    EXPECT_EQ(counts(index->folders()).value(QStringLiteral("Work")), 1);
}
