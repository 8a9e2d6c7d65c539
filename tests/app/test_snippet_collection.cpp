// Which snippets a sidebar node lists, and the list's order.

#include "ZDCategoryNode.h"
#include "ZDLanguageRegistry.h"
#include "ZDRecordDirectory.h"
#include "ZDSnippet.h"
#include "ZDSnippetCollection.h"
#include "ZDSnippetListModel.h"
#include "ZDUserDefaults.h"

#include <QRandomGenerator>
#include <QTest>

namespace {
ZDSnippetPtr snippet(const QString &title, const QString &folder, qint64 modifiedSecs)
{
    ZDRecordDirectory::setClock([=] { return QDateTime::fromSecsSinceEpoch(modifiedSecs, Qt::UTC); });
    ZDSnippetPtr s = ZDSnippet::create(title, folder);
    ZDRecordDirectory::setClock({});
    return s;
}

QStringList titles(const ZDSnippetList &snippets)
{
    QStringList result;
    for (const ZDSnippetPtr &s : snippets)
        result << s->title();
    return result;
}
} // namespace

class TestSnippetCollection : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void nodesSelectTheirSnippets()
    {
        auto folder = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Work"));
        auto tag = ZDCategoryNode::tagNodeWithTitle(QStringLiteral("sql"));
        auto a = snippet(QStringLiteral("a"), folder->UUID(), 10);
        auto b = snippet(QStringLiteral("b"), QLatin1String(ZDUncategorizedUUID), 20);
        auto orphan = snippet(QStringLiteral("orphan"), QStringLiteral("GONE-FOLDER"), 30);
        b->setTagUUIDs({tag->UUID()});
        const ZDSnippetList all{a, b, orphan};
        const QSet<QString> known{folder->UUID()};

        QCOMPARE(titles(ZDSnippetCollection::snippetsForNode(*ZDCategoryNode::allSnippetsNode(), all, known)),
                 (QStringList{"a", "b", "orphan"}));
        // A snippet whose folder is gone is shown as uncategorized.
        QCOMPARE(titles(ZDSnippetCollection::snippetsForNode(*ZDCategoryNode::uncategorizedNode(), all, known)),
                 (QStringList{"b", "orphan"}));
        QCOMPARE(titles(ZDSnippetCollection::snippetsForNode(*folder, all, known)), QStringList{"a"});
        auto shortcut = ZDCategoryNode::shortcutNodeWithTargetUUID(folder->UUID());
        QCOMPARE(titles(ZDSnippetCollection::snippetsForNode(*shortcut, all, known)), QStringList{"a"});
        QCOMPARE(titles(ZDSnippetCollection::snippetsForNode(*tag, all, known)), QStringList{"b"});
        auto smart = ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("o"), {}, QStringLiteral("title BEGINSWITH[c] 'O'"));
        QCOMPARE(titles(ZDSnippetCollection::snippetsForNode(*smart, all, known)), QStringList{"orphan"});
        auto broken = ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("x"), {}, QStringLiteral("title ==="));
        QVERIFY(ZDSnippetCollection::snippetsForNode(*broken, all, known).isEmpty());
        QVERIFY(ZDSnippetCollection::snippetsForNode(*ZDCategoryNode::tagsGroupNode(), all, known).isEmpty());
    }

    void sortsByThePreferences()
    {
        auto s10 = snippet(QStringLiteral("Snippet 10"), {}, 300);
        auto s2 = snippet(QStringLiteral("snippet 2"), {}, 100);
        auto alpha = snippet(QStringLiteral("Alpha"), {}, 200);
        ZDSnippetList list{s10, s2, alpha};

        ZDSnippetCollection::sort(list, SortByName, SortOrderAscending);
        QCOMPARE(titles(list), (QStringList{"Alpha", "snippet 2", "Snippet 10"})); // numbers by value, case ignored
        ZDSnippetCollection::sort(list, SortByName, SortOrderDescending);
        QCOMPARE(titles(list), (QStringList{"Snippet 10", "snippet 2", "Alpha"}));
        ZDSnippetCollection::sort(list, SortByDateCreated, SortOrderAscending);
        QCOMPARE(titles(list), (QStringList{"snippet 2", "Alpha", "Snippet 10"}));

        // Editing a part makes the snippet the most recently modified.
        ZDRecordDirectory::setClock([] { return QDateTime::fromSecsSinceEpoch(900, Qt::UTC); });
        s2->parts().first()->setContent(QStringLiteral("select 1"));
        ZDRecordDirectory::setClock({});
        ZDSnippetCollection::sort(list, SortByDateModified, SortOrderDescending);
        QCOMPARE(titles(list), (QStringList{"snippet 2", "Snippet 10", "Alpha"}));
    }

    // A changed or new row is placed by a binary search among the others; with ties everywhere,
    // it must land exactly where a full sort would put it.
    void placingOneRowAgreesWithAFullSort()
    {
        QRandomGenerator random(7);
        const QStringList names{"a", "B", "b", "item 2", "item 10", "Zeta"};
        for (int round = 0; round < 300; ++round) {
            const int method = QList<int>{SortByDateModified, SortByDateCreated, SortByName}[round % 3];
            const int order = round % 2 ? SortOrderAscending : SortOrderDescending;
            ZDSnippetList list;
            for (int i = int(random.bounded(12)); i >= 0; --i)
                list << snippet(names[random.bounded(names.size())], {}, random.bounded(4));
            ZDSnippetCollection::sort(list, method, order);

            // One row changes its title and dates.
            const qsizetype row = random.bounded(list.size());
            list[row] = snippet(names[random.bounded(names.size())], {}, random.bounded(4));
            ZDSnippetList expected = list;
            ZDSnippetCollection::sort(expected, method, order);
            QCOMPARE(ZDSnippetCollection::sortedRow(list, row, *list[row], method, order), expected.indexOf(list[row]));

            // A new row.
            const ZDSnippetPtr added = snippet(names[random.bounded(names.size())], {}, random.bounded(4));
            ZDSnippetList withNew = expected;
            withNew << added;
            ZDSnippetCollection::sort(withNew, method, order);
            QCOMPARE(ZDSnippetCollection::sortedRow(expected, expected.size(), *added, method, order),
                     withNew.indexOf(added));
        }
    }

    void listModelKeepsRowsInOrderAsSnippetsChange()
    {
        auto a = snippet(QStringLiteral("a"), {}, 100);
        auto b = snippet(QStringLiteral("b"), {}, 200);
        auto c = snippet(QStringLiteral("c"), {}, 300);
        ZDSnippetListModel model;
        model.setSnippets({a, b, c});
        QCOMPARE(titles(model.snippets()), (QStringList{"c", "b", "a"}));

        ZDRecordDirectory::setClock([] { return QDateTime::fromSecsSinceEpoch(900, Qt::UTC); });
        a->setTitle(QStringLiteral("a2"));
        auto d = snippet(QStringLiteral("d"), {}, 250);
        ZDRecordDirectory::setClock({});
        model.snippetChanged(a->UUID());
        QCOMPARE(titles(model.snippets()), (QStringList{"a2", "c", "b"}));
        model.insertSnippet(d);
        QCOMPARE(titles(model.snippets()), (QStringList{"a2", "c", "d", "b"}));
        model.removeSnippets({c->UUID(), b->UUID()});
        QCOMPARE(titles(model.snippets()), (QStringList{"a2", "d"}));
        QCOMPARE(model.rowOfSnippet(d->UUID()), 1);
        QCOMPARE(model.rowOfSnippet(c->UUID()), -1);

        // Search results arranged by relevance keep their order, also for new rows.
        model.setSnippets({b, c, a}, true);
        model.snippetChanged(b->UUID());
        model.insertSnippet(d);
        QCOMPARE(titles(model.snippets()), (QStringList{"d", "b", "c", "a2"}));
    }
};

QTEST_MAIN(TestSnippetCollection)
#include "test_snippet_collection.moc"
