// The search field: tokens in the text, the "in:" completion and its keys, copy and paste,
// and when the query change is reported.

#include "ZDCoreIndex.h"
#include "ZDSearchView.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

namespace {
const ZDSearchConstraint kFolder(ZDSearchConstraint::folderKind, QStringLiteral("Work"), QStringLiteral("F-1"), 4);
const ZDSearchConstraint kTag(ZDSearchConstraint::tagKind, QStringLiteral("swift"), QStringLiteral("T-1"), 2);
} // namespace

class TestSearchView : public QObject
{
    Q_OBJECT
    std::unique_ptr<ZDSearchView> field;
    QStringList askedKeywords;

    void type(const QString &text) { QTest::keyClicks(field.get(), text); }

private Q_SLOTS:
    void init()
    {
        field = std::make_unique<ZDSearchView>();
        askedKeywords.clear();
        // The counting index's records, through the real proposal rules.
        field->setProposalProvider([this](ZDSearchView *view, const QString &keyword) {
            askedKeywords << keyword;
            const QList<ZDIndexResult> folders{{"Swift snippets", "F-2", 9}, {"sw", "F-3", 1}, {"Work", "F-1", 4}};
            const QList<ZDIndexResult> tags{{"swift", "T-1", 2}, {"unused-sw", "T-9", 0}};
            const QList<ZDIndexResult> languages{{"Swift", "SwiftLexer", 30}};
            return zdSearchProposals(keyword, view->searchConstraints(), folders, tags, languages);
        });
        field->show();
        QApplication::setActiveWindow(field.get());
        field->setFocus();
    }

    void tokensStandAsOneCharacterAmongTheKeyword()
    {
        field->setSearchConstraints({kFolder, kTag}, QStringLiteral("line\nbreak"));
        QCOMPARE(field->toPlainText().size(), 2 + 10);
        QCOMPARE(field->searchConstraints(), (QList<ZDSearchConstraint>{kFolder, kTag}));
        QCOMPARE(field->searchConstraints().first().constraintName(), ZDSearchConstraint::folderKind);
        QCOMPARE(field->searchKeyword(), QStringLiteral("line break"));

        // A token, a space and "foo": one constraint, and the space stays in the keyword.
        field->clearContent();
        QVERIFY(field->isEmpty());
        field->insertSearchToken(kTag, {0, 0});
        type(QStringLiteral(" foo"));
        QCOMPARE(field->searchConstraints().size(), 1);
        QCOMPARE(field->searchKeyword(), QStringLiteral(" foo"));

        // Clearing is one undoable step.
        field->clearContent();
        field->undo();
        QCOMPARE(field->searchKeyword(), QStringLiteral(" foo"));
        QCOMPARE(field->searchConstraints().size(), 1);
    }

    void completionProposesOneBestRecordPerKind()
    {
        type(QStringLiteral("in:"));
        QVERIFY(!field->isCompletionVisible()); // an empty keyword proposes nothing
        type(QStringLiteral("sw"));
        QVERIFY(field->isCompletionVisible());
        QCOMPARE(askedKeywords.last(), QStringLiteral("sw"));
        const QList<ZDSearchConstraint> proposals = field->listedProposals();
        QCOMPARE(proposals.size(), 3);
        // The folder named exactly "sw" beats the fuller one; a tag without snippets never shows.
        QCOMPARE(proposals.at(0).constraintUnderlyingValue(), QStringLiteral("F-3"));
        QCOMPARE(proposals.at(1).constraintUnderlyingValue(), QStringLiteral("T-1"));
        QCOMPARE(proposals.at(2).constraintUnderlyingValue(), QStringLiteral("SwiftLexer"));
    }

    void keysGoToTheOpenListAndChoosingReplacesTheWord()
    {
        type(QStringLiteral("abc in:sw"));
        QVERIFY(field->isCompletionVisible());
        QCOMPARE(field->highlightedProposal()->constraintUnderlyingValue(), QStringLiteral("F-3"));
        QTest::keyClick(field.get(), Qt::Key_Down);
        QTest::keyClick(field.get(), Qt::Key_Down);
        QTest::keyClick(field.get(), Qt::Key_Down); // past the end: back to the first, headers skipped
        QTest::keyClick(field.get(), Qt::Key_Down);
        QCOMPARE(field->highlightedProposal()->constraintUnderlyingValue(), QStringLiteral("T-1"));
        QCOMPARE(field->toPlainText(), QStringLiteral("abc in:sw")); // the keys did not move the caret
        QTest::keyClick(field.get(), Qt::Key_Return);
        QVERIFY(!field->isCompletionVisible());
        QCOMPARE(field->searchConstraints(), QList<ZDSearchConstraint>{kTag});
        QCOMPARE(field->searchKeyword(), QStringLiteral("abc "));

        // A tag already in the field is not proposed again.
        type(QStringLiteral(" in:swift"));
        for (const ZDSearchConstraint &proposal : field->listedProposals())
            QVERIFY(proposal.constraintUnderlyingValue() != QStringLiteral("T-1"));
        // Leaving the word closes the list; Escape closes it too.
        QTest::keyClick(field.get(), Qt::Key_Home);
        QVERIFY(!field->isCompletionVisible());
        QTest::keyClick(field.get(), Qt::Key_End);
        type(QStringLiteral("x"));
        QVERIFY(field->isCompletionVisible() || field->listedProposals().isEmpty());
        QTest::keyClick(field.get(), Qt::Key_Escape);
        QVERIFY(!field->isCompletionVisible());
    }

    void withoutProposalsTheListNeverOpens()
    {
        ZDSearchView plain;
        plain.show();
        QTest::keyClicks(&plain, QStringLiteral("in:sw"));
        QVERIFY(!plain.isCompletionVisible());
    }

    void copyLeavesTokensOutAndPasteFlattensLines()
    {
        field->setSearchConstraints({kFolder}, QStringLiteral("foo"));
        field->selectAll();
        field->copy();
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("foo"));

        QTextCursor cursor = field->textCursor();
        cursor.setPosition(0);
        cursor.setPosition(1, QTextCursor::KeepAnchor);
        field->setTextCursor(cursor);
        field->copy();
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("Work")); // a token alone: its name

        field->clearContent();
        QApplication::clipboard()->setText(QStringLiteral("a\nb\rc"));
        field->paste();
        QCOMPARE(field->toPlainText(), QStringLiteral("a b c"));
    }

    void queryChangesArePacedWhileTyping()
    {
        QSignalSpy changes(field.get(), &ZDSearchView::searchQueryDidChange);
        type(QStringLiteral("a"));
        QCOMPARE(changes.count(), 1); // one character: at once
        type(QStringLiteral("bc"));
        QCOMPARE(changes.count(), 1);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(changes.wait(2000));
        QVERIFY(timer.elapsed() >= 250);
        QCOMPARE(changes.count(), 2); // earlier pending notices were cancelled
        field->insertSearchToken(kTag, {3, 0});
        QCOMPARE(changes.count(), 3); // a chosen token: at once
    }
};

QTEST_MAIN(TestSearchView)
#include "test_search_view.moc"
