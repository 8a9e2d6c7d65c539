// The index's own fast structures against what SQLite says: the vocabulary against the
// fts5vocab view of the table, and the ranking with known phrase counts against bm25().

#include "ZDFullTextIndex.h"
#include "ZDTermTable.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace {

const QStringList kWords = {"foo", "bar", "baz", "café", "Cafe", "naïve", "x", "foobar", "barfoo",
                            "日本語", "42", "Straße", "strasse", "qux", "a.b", "foo-bar"};

QString randomText(QRandomGenerator &random)
{
    QStringList words;
    for (int i = random.bounded(1, 12); i > 0; --i)
        words.append(kWords[random.bounded(int(kWords.size()))]);
    return words.join(random.bounded(2) ? QStringLiteral(" ") : QStringLiteral(", "));
}

/// Adds, replaces and removes documents at random.
void churn(ZDFullTextIndex &index, QRandomGenerator &random, int steps)
{
    for (int step = 0; step < steps; ++step) {
        const QString identifier = QString::number(random.bounded(40));
        if (random.bounded(5) == 0)
            index.removeDocument(identifier);
        else
            ASSERT_GT(index.addDocument(identifier, randomText(random)), 0);
    }
    index.flush();
}

} // namespace

TEST(FullTextIndex, TheVocabularyAgreesWithTheTableThroughChangesAndCompaction)
{
    ZDFullTextIndex index(QStringLiteral("Agreement"));
    ASSERT_TRUE(index.isValid());
    QRandomGenerator random(7);
    churn(index, random, 200);
    EXPECT_EQ(index.vocabularyDocumentCounts(), index.documentCountsByTerm());
    churn(index, random, 100);
    ASSERT_TRUE(index.compact());
    EXPECT_EQ(index.vocabularyDocumentCounts(), index.documentCountsByTerm());
    EXPECT_EQ(index.maximumDocumentID(), index.documentCount());
}

TEST(FullTextIndex, RankingWithKnownPhraseCountsEqualsBm25)
{
    ZDFullTextIndex index(QStringLiteral("Ranking"));
    QRandomGenerator random(11);
    churn(index, random, 300);
    const QHash<QByteArray, qint64> counts = index.vocabularyDocumentCounts();
    const QStringList terms = {"foo", "bar", "cafe", "naive", "x", "foobar", "日本語", "strasse", "qux", "absent"};
    for (int round = 0; round < 60; ++round) {
        // One to three clauses: a term, alternatives, or a phrase of two terms (counted by SQLite).
        QStringList clauses;
        std::vector<qint64> phraseCounts;
        for (int c = random.bounded(1, 4); c > 0; --c) {
            QStringList alternatives;
            for (int a = random.bounded(1, 4); a > 0; --a) {
                const QString term = terms[random.bounded(int(terms.size()))];
                if (random.bounded(4) == 0) {
                    alternatives.append(QStringLiteral("\"%1 %2\"").arg(term, terms[random.bounded(int(terms.size()))]));
                    phraseCounts.push_back(-1);
                } else {
                    alternatives.append(QLatin1Char('"') + term + QLatin1Char('"'));
                    phraseCounts.push_back(counts.value(term.toUtf8()));
                }
            }
            clauses.append(QLatin1Char('(') + alternatives.join(QStringLiteral(" OR ")) + QLatin1Char(')'));
        }
        const QString query = clauses.join(QStringLiteral(" AND "));
        const QList<ZDIndexHit> expected = index.search(query, 3000, 3000);
        const QList<ZDIndexHit> actual = index.search(query, 3000, 3000, &phraseCounts, false);
        ASSERT_EQ(actual.size(), expected.size()) << query.toStdString();
        for (qsizetype i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(actual[i].documentID, expected[i].documentID);
            EXPECT_EQ(actual[i].score, expected[i].score) << query.toStdString(); // the same arithmetic
        }
    }
}

TEST(TermTable, FindsEveryTermItWasGivenAcrossGrowth)
{
    ZDTermTable table;
    for (int i = 0; i < 5000; ++i)
        EXPECT_EQ(table.insert(QByteArray::number(i * 7919)), i);
    for (int i = 0; i < 5000; ++i) {
        const QByteArray term = QByteArray::number(i * 7919);
        ASSERT_EQ(table.find(term), i);
        ASSERT_EQ(table.term(i), term);
        ASSERT_EQ(table.termAt(table.term(i).data() - table.text().constData() + 1), i);
    }
    bool added = true;
    EXPECT_EQ(table.insert("0", &added), 0);
    EXPECT_FALSE(added);
    EXPECT_EQ(table.find("x"), -1);
    EXPECT_EQ(table.find(""), -1);
}
