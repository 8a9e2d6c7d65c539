// The smart-group editor's rows and the saved queries they stand for.

#include "ZDSmartGroupRows.h"
#include "ZDSnippet.h"
#include "ZDSnippetKeyPaths.h"

#include <QTest>

using namespace ZDSmartGroupRows;

class TestSmartGroupRows : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rowsSurviveSavingAndReading()
    {
        Query query;
        query.matchAll = false;
        query.rows << Row{QStringLiteral("parts.content"), ZDPredicate::Contains, QStringLiteral("select \"x\""), 0, {}}
                   << Row{QStringLiteral("partsCount"), ZDPredicate::Greater, {}, 1, {}}
                   << Row{QStringLiteral("dateCreated"), ZDPredicate::Greater, {}, 2, ZDDateRelativeRowTemplate::Days}
                   << Row{QStringLiteral("canonicalDateModified"), ZDPredicate::Less, {}, 7, ZDDateRelativeRowTemplate::Weeks}
                   << Row{QStringLiteral("isGist"), ZDPredicate::Equal, QStringLiteral("No"), 0, {}};
        const QString saved = predicateStringForQuery(query);
        QVERIFY(saved.contains(QStringLiteral("ANY parts.content CONTAINS[cd]")));
        QVERIFY(saved.contains(QStringLiteral(" OR ")));
        QVERIFY(saved.contains(QStringLiteral("172802"))); // two days, a second longer each

        const std::optional<Query> read = queryForPredicateString(saved);
        QVERIFY(read);
        QCOMPARE(read->matchAll, false);
        QCOMPARE(read->rows.size(), 5);
        QCOMPARE(read->rows.at(0).text, QStringLiteral("select \"x\""));
        QCOMPARE(read->rows.at(1).number, 1);
        QCOMPARE(read->rows.at(2).number, 2);
        QCOMPARE(read->rows.at(2).unit, ZDDateRelativeRowTemplate::Days);
        QCOMPARE(read->rows.at(3).unit, ZDDateRelativeRowTemplate::Weeks);
        QCOMPARE(read->rows.at(3).op, ZDPredicate::Less);
        QCOMPARE(read->rows.at(4).text, QStringLiteral("No"));
        QCOMPARE(predicateStringForQuery(*read), saved);

        // One row stands alone; no rows match everything.
        QCOMPARE(queryForPredicateString(predicateStringForQuery({true, {query.rows.at(1)}}))->rows.size(), 1);
        QVERIFY(queryForPredicateString(predicateStringForQuery({true, {}}))->rows.isEmpty());
    }

    void queriesTheRowsCannotShowAreLeftAsText()
    {
        for (const char *format : {"title MATCHES 'a.*'",                  // no such operator in the rows
                                   "title CONTAINS 'a'",                    // case-sensitive: the rows ignore case
                                   "tags.title CONTAINS[cd] 'a'",           // a to-many key without ANY
                                   "title CONTAINS[cd] 'a' AND (partsCount > 1 OR tagsCount > 1)",
                                   "UUID == 'x'",                           // not a key the editor offers
                                   "dateCreated > CAST(0, \"NSDate\")",     // an absolute date
                                   "not a query ("})
            QVERIFY2(!queryForPredicateString(QString::fromUtf8(format)), format);
    }

    void savedRowsSelectTheRightSnippets()
    {
        auto two = ZDSnippet::create(QStringLiteral("Two parts"));
        two->setParts({two->parts().first(), ZDSnippetPart::create(QStringLiteral("b"), two->UUID())});
        two->parts().first()->setContent(QStringLiteral("SELECT * FROM café"));
        auto one = ZDSnippet::create(QStringLiteral("One part"));
        one->parts().first()->setContent(QStringLiteral("select 1"));

        const Query query{true, {Row{QStringLiteral("parts.content"), ZDPredicate::Contains, QStringLiteral("CAFE"), 0, {}},
                                 Row{QStringLiteral("partsCount"), ZDPredicate::Greater, {}, 1, {}}}};
        const ZDPredicate predicate = ZDPredicate::fromFormat(predicateStringForQuery(query));
        QVERIFY(ZDSnippetKeyPaths::evaluate(predicate, *two));
        QVERIFY(!ZDSnippetKeyPaths::evaluate(predicate, *one));
        const Query recent{true, {Row{QStringLiteral("dateCreated"), ZDPredicate::Greater, {}, 1, ZDDateRelativeRowTemplate::Hours}}};
        QVERIFY(ZDSnippetKeyPaths::evaluate(ZDPredicate::fromFormat(predicateStringForQuery(recent)), *one));
    }
};

QTEST_MAIN(TestSmartGroupRows)
#include "test_smart_group_rows.moc"
