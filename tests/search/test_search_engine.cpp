#include "ZDSearchTestSupport.h"

#include "ZDFullTextIndex.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippetIndexes.h"

#include "ZDAnalytics.h"
#include "ZDLogger.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

TEST_F(SearchTest, AnEmptyKeywordGivesTheLibraryInStoreOrderFilteredByConstraints)
{
    addSnippet(QStringLiteral("b"));
    ZDSnippetPtr tagged = addSnippet(QStringLiteral("a"));
    addSnippet(QStringLiteral("c"));
    tagged->setTagUUIDs({QStringLiteral("T1")});
    makeEngine();
    rebuildAndWait();
    EXPECT_EQ(titles(engine->snippetsWithKeyword(QString(), {}, true, true, false)),
              QStringList({"b", "a", "c"}));
    EXPECT_EQ(titles(engine->snippetsWithKeyword(QStringLiteral(""), {}, true, false, true)),
              QStringList({"b", "a", "c"}));
    // Only spaces in fuzzy mode: no word, everything.
    EXPECT_EQ(engine->snippetsWithKeyword(QStringLiteral("   "), {}, true, true, false).size(), 3);
    const ZDSearchConstraint tag(ZDSearchConstraint::tagKind, QStringLiteral("t"), QStringLiteral("T1"), 1);
    EXPECT_EQ(titles(engine->snippetsWithKeyword(QString(), {tag}, true, true, false)), QStringList({"a"}));
}

TEST_F(SearchTest, FuzzyWordsAreAllRequiredAndALiteralKeywordIsOneString)
{
    addSnippet(QStringLiteral("one"), QStringLiteral("foo and bar"));
    addSnippet(QStringLiteral("two"), QStringLiteral("bar foo"));
    addSnippet(QStringLiteral("three"), QStringLiteral("foo bar"));
    addSnippet(QStringLiteral("four"), QStringLiteral("foo only"));
    makeEngine();
    rebuildAndWait();
    auto search = [&](const QString &keyword, bool fuzzy) {
        QStringList result = titles(engine->snippetsWithKeyword(keyword, {}, true, fuzzy, false));
        result.sort();
        return result;
    };
    EXPECT_EQ(search(QStringLiteral("foo  bar"), true), QStringList({"one", "three", "two"}));
    EXPECT_EQ(search(QStringLiteral("foo bar"), false), QStringList({"three"}));
    EXPECT_EQ(search(QStringLiteral("o b"), false), QStringList({"three"}));
    EXPECT_EQ(search(QStringLiteral("oo"), true), QStringList({"four", "one", "three", "two"}));
    // Title only: the content is not looked at.
    EXPECT_EQ(search(QStringLiteral("foo"), true), QStringList({"four", "one", "three", "two"}));
    EXPECT_TRUE(titles(engine->snippetsWithKeyword(QStringLiteral("foo"), {}, false, true, false)).isEmpty());
}

TEST_F(SearchTest, CaseAndDiacritics)
{
    addSnippet(QStringLiteral("lower"), QStringLiteral("foo"));
    addSnippet(QStringLiteral("accented"), QStringLiteral("Crème BRÛLÉE"));
    makeEngine();
    rebuildAndWait();
    auto search = [&](const QString &keyword, bool matchesCase) {
        return titles(engine->snippetsWithKeyword(keyword, {}, true, true, matchesCase));
    };
    EXPECT_EQ(search(QStringLiteral("Foo"), false), QStringList({"lower"}));
    EXPECT_EQ(search(QStringLiteral("föo"), false), QStringList({"lower"}));
    EXPECT_TRUE(search(QStringLiteral("Foo"), true).isEmpty());
    EXPECT_EQ(search(QStringLiteral("föo"), true), QStringList({"lower"})); // diacritics still ignored
    EXPECT_EQ(search(QStringLiteral("creme brulee"), false), QStringList({"accented"}));
    EXPECT_EQ(search(QStringLiteral("Creme BRULEE"), true), QStringList({"accented"}));
    EXPECT_TRUE(search(QStringLiteral("creme"), true).isEmpty());
}

TEST_F(SearchTest, RankedMatchesComeFirstAndUnrankedOnesLastInStoreOrder)
{
    addSnippet(QStringLiteral("inside a longer term"), QStringLiteral("xfoo bar"));
    addSnippet(QStringLiteral("once in a long text"),
               QStringLiteral("foo bar and then a great many other words that dilute it quite a lot"));
    addSnippet(QStringLiteral("twice in a short text"), QStringLiteral("foo bar foo bar"));
    makeEngine();
    rebuildAndWait();
    ZDRankCollection ranks;
    const ZDSnippetList result =
        engine->snippetsWithKeyword(QStringLiteral("foo bar"), {}, true, false, false, &ranks);
    EXPECT_EQ(titles(result),
              QStringList({"twice in a short text", "once in a long text", "inside a longer term"}));
    EXPECT_EQ(ranks.relevanceForIdentifier(result[2]->UUID()), ZDRankCollection::unranked);
    EXPECT_GT(ranks.relevanceForIdentifier(result[1]->UUID()), 0);

    // Fuzzy words match inside longer terms, so all three are ranked.
    engine->snippetsWithKeyword(QStringLiteral("foo"), {}, true, true, false, &ranks);
    EXPECT_EQ(ranks.count(), 3);
}

TEST_F(SearchTest, WithoutAReadyIndexMatchesComeUnrankedInStoreOrder)
{
    addSnippet(QStringLiteral("a"), QStringLiteral("foo"));
    addSnippet(QStringLiteral("b"), QStringLiteral("foo foo foo"));
    makeEngine();
    EXPECT_FALSE(engine->indexReady());
    EXPECT_EQ(titles(engine->snippetsWithKeyword(QStringLiteral("foo"), {}, true, true, false)),
              QStringList({"a", "b"}));
    EXPECT_TRUE(engine->rankCollectionWithKeyword(QStringLiteral("foo"), true, true).isEmpty());
}

// Parts loaded from the snippet cache read their texts in place; the index sees the same words.
TEST_F(SearchTest, TextsReadInPlaceAreIndexedAsTheirStrings)
{
    const QString wide = QStringLiteral("überall 日本語 wörter");
    auto buffer = std::make_shared<QByteArray>("latin caf\xe9 note");
    buffer->append(reinterpret_cast<const char *>(wide.constData()), wide.size() * 2);
    const auto borrowed = [&](qsizetype offset, qsizetype size, ZDSnippetText::Encoding encoding) {
        return ZDSnippetText::borrowed(buffer, buffer->constData() + offset, size, encoding);
    };
    const QDateTime date = QDateTime::currentDateTimeUtc();
    ZDSnippetPtr snippet = addSnippet(QStringLiteral("cached"));
    snippet->setParts({std::make_shared<ZDSnippetPart>(
        QStringLiteral("Fragment"), QStringLiteral("P"), registry.plainTextLanguage(),
        borrowed(0, 14, ZDSnippetText::Encoding::Latin1), borrowed(15, wide.size(), ZDSnippetText::Encoding::Utf16),
        date, date, snippet->UUID())});
    addSnippet(QStringLiteral("other"), QStringLiteral("nothing here"));
    buffer.reset();

    EXPECT_EQ(ZDIndexedSnippet::capture(snippet).stringRepresentation(), snippet->stringRepresentation());
    makeEngine();
    rebuildAndWait();
    for (const QString &word : {QStringLiteral("cafe"), QStringLiteral("uberall"), QStringLiteral("日本語")})
        EXPECT_EQ(titles(engine->snippetsWithKeyword(word, {}, true, true, false)), QStringList{"cached"}) << word.toStdString();
}

TEST_F(SearchTest, NoticesKeepTheIndexesCurrent)
{
    ZDMulticastDelegateHandler notifier;
    ZDSnippetPtr first = addSnippet(QStringLiteral("first"), QStringLiteral("alpha"));
    ZDSnippetPtr second = addSnippet(QStringLiteral("second"), QStringLiteral("beta"));
    makeEngine(&notifier);
    rebuildAndWait();
    auto ranked = [&](const QString &keyword) {
        return engine->rankCollectionWithKeyword(keyword, true, true).count();
    };
    ASSERT_EQ(ranked(QStringLiteral("alpha")), 1);

    first->parts().first()->setContent(QStringLiteral("gamma"));
    notifier.noteSnippetContentChanged(first, nullptr);
    ZDSnippetPtr third = addSnippet(QStringLiteral("third"), QStringLiteral("gamma delta"));
    notifier.noteSnippetAdded(third, nullptr);
    library.removeOne(second);
    notifier.noteSnippetsRemoved({second}, nullptr);
    ASSERT_TRUE(ZDTestSupport::waitFor([&] {
        engine->waitUntilIndexIsIdle();
        return ranked(QStringLiteral("gamma")) == 2 && ranked(QStringLiteral("beta")) == 0;
    }));
    EXPECT_EQ(ranked(QStringLiteral("alpha")), 0);
    EXPECT_EQ(engine->currentIndexes()->snippetCount(), 2);

    // A whole new library is indexed 0.1 s after the notice.
    library = {third};
    QSignalSpy built(engine.get(), &ZDSearchEngine::searchIndexDidBuild);
    notifier.noteApplicationLibraryChanged(nullptr);
    ASSERT_TRUE(built.wait(5000));
    EXPECT_EQ(engine->currentIndexes()->snippetCount(), 1);
}

TEST_F(SearchTest, ARebuildSupersedesTheOneBeforeItAndQueuedUpdates)
{
    for (int i = 0; i < 3000; ++i)
        addSnippet(QStringLiteral("snippet %1").arg(i), QStringLiteral("text %1").arg(i));
    makeEngine();
    QSignalSpy built(engine.get(), &ZDSearchEngine::searchIndexDidBuild);
    engine->rebuildIndex();
    engine->updateIndexForSnippet(library.first(), ZDIndexChangeKind::Removed);
    library.resize(10);
    engine->rebuildIndex();
    engine->waitUntilIndexIsIdle();
    ASSERT_TRUE(built.wait(5000));
    ZDTestSupport::waitFor([] { return false; }, 100);
    EXPECT_EQ(built.size(), 1);
    EXPECT_TRUE(engine->indexReady());
    EXPECT_EQ(engine->currentIndexes()->snippetCount(), 10);
}

TEST_F(SearchTest, AnEmptyLibraryBuildsAndTellsSo)
{
    makeEngine();
    QSignalSpy built(engine.get(), &ZDSearchEngine::searchIndexDidBuild);
    engine->rebuildIndex();
    ASSERT_TRUE(built.wait(5000));
    EXPECT_TRUE(engine->indexReady());
    EXPECT_EQ(engine->currentIndexes()->fullTextIndex().documentCount(), 0);
    // Removing what was never indexed is harmless.
    ZDSnippetPtr stranger = ZDSnippet::create(QStringLiteral("stranger"));
    engine->updateIndexForSnippet(stranger, ZDIndexChangeKind::Removed);
    engine->waitUntilIndexIsIdle();
    EXPECT_EQ(engine->currentIndexes()->fullTextIndex().documentCount(), 0);
}

TEST_F(SearchTest, IndexesAreCompactedOnceMoreThanAHundredNumbersAreFree)
{
    for (int i = 0; i < 250; ++i)
        addSnippet(QStringLiteral("snippet %1").arg(i), QStringLiteral("word%1 common").arg(i));
    makeEngine();
    rebuildAndWait();
    ZDFullTextIndex &index = engine->currentIndexes()->fullTextIndex();
    auto removeFirst = [&](int count) {
        for (int i = 0; i < count; ++i)
            engine->updateIndexForSnippet(library.takeFirst(), ZDIndexChangeKind::Removed);
        engine->compactIfRequired();
        engine->waitUntilIndexIsIdle();
    };
    removeFirst(100);
    EXPECT_EQ(index.maximumDocumentID() - index.documentCount(), 100);
    removeFirst(1);
    EXPECT_EQ(index.maximumDocumentID(), 149);
    EXPECT_EQ(index.documentCount(), 149);
    // The renumbered documents still answer queries and substring matching.
    ZDRankCollection ranks;
    const ZDSnippetList found =
        engine->snippetsWithKeyword(QStringLiteral("word249"), {}, true, true, false, &ranks);
    ASSERT_EQ(found.size(), 1);
    EXPECT_GT(ranks.relevanceForIdentifier(found.first()->UUID()), 0);
    EXPECT_EQ(engine->snippetsWithKeyword(QStringLiteral("common"), {}, true, true, false).size(), 149);
}

TEST(FullTextIndex, ReplacedAndRemovedDocumentsLeaveTheirOldTermsBehind)
{
    ZDFullTextIndex index(QStringLiteral("Test"));
    ASSERT_TRUE(index.isValid());
    const qint64 first = index.addDocument(QStringLiteral("a"), QStringLiteral("Café latte"));
    const qint64 second = index.addDocument(QStringLiteral("b"), QStringLiteral("cafeteria"));
    index.flush();
    auto holders = [&](const char *fragment) {
        const std::vector<bool> documents =
            index.documentsWithTermsContaining(fragment, ZDTermPlacement::Anywhere);
        QList<qint64> ids;
        for (size_t i = 0; i < documents.size(); ++i) {
            if (documents[i])
                ids.append(qint64(i));
        }
        return ids;
    };
    EXPECT_EQ(holders("cafe"), QList<qint64>({first, second}));
    EXPECT_EQ(index.addDocument(QStringLiteral("a"), QStringLiteral("tea")),
              first);
    EXPECT_EQ(holders("cafe"), QList<qint64>({second}));
    EXPECT_EQ(holders("tea"), QList<qint64>({first}));
    index.removeDocument(QStringLiteral("b"));
    index.flush();
    EXPECT_TRUE(holders("cafe").isEmpty());
    EXPECT_EQ(index.search(QStringLiteral("\"tea\""), 10, 1000).size(), 1);
    EXPECT_TRUE(index.termsContaining("caf", ZDTermPlacement::AtStart).isEmpty());
}

TEST_F(SearchTest, UpdatesWithMissingDataAreReportedAndTheSnippetIsStillFound)
{
    QTemporaryDir logs;
    ZDLogger logger(logs.path());
    ZDLogger::install(&logger);
    ZDAnalytics analytics;
    analytics.setConsentProvider([] { return true; });
    ZDAnalytics::install(&analytics);

    ZDSnippetPtr untitled = addSnippet(QStringLiteral("old title"), QStringLiteral("body"));
    makeEngine();
    engine->updateIndexForSnippet(untitled, ZDIndexChangeKind::Added); // before any build
    engine->waitUntilIndexIsIdle();
    rebuildAndWait();
    untitled->setTitle(QString());
    engine->updateIndexForSnippet(untitled, ZDIndexChangeKind::Changed);
    engine->updateIndexForSnippet(nullptr, ZDIndexChangeKind::Removed);
    engine->waitUntilIndexIsIdle();
    EXPECT_TRUE(engine->snippetsWithKeyword(QStringLiteral("old"), {}, true, true, false).isEmpty());
    EXPECT_EQ(engine->snippetsWithKeyword(QStringLiteral("body"), {}, true, true, false).size(), 1);

    ZDAnalytics::install(nullptr);
    ZDLogger::install(nullptr);
    logger.flush();
    QFile file(logger.currentFilePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString log = QString::fromUtf8(file.readAll());
    for (const char *description : {"updateIndexForSnippet:changeKind: titleIndex is nil.",
                                    "updateIndexForSnippet:changeKind: snippet.title is nil.",
                                    "updateIndexForSnippet:changeKind: snippet is nil."}) {
        EXPECT_TRUE(log.contains(
            QStringLiteral("Event SearchEngineErr {\"description\":\"%1\"}").arg(QLatin1String(description))))
            << description;
    }
}
