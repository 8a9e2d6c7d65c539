// The snippet editor pane: edits reach the library store with their notices, each part keeps
// its documents while the snippet is shown, typing reaches the record when it pauses, and a
// snippet announced again takes in only what changed.
#include "ZDCoreServices.h"
#include "ZDDataCenter.h"
#include "ZDLanguageChooser.h"
#include "ZDLanguageRegistry.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippet.h"
#include "ZDSnippetEditing.h"
#include "ZDSnippetEditorView.h"
#include "ZDSnippetPart.h"
#include "ZDSyntaxHighlightedTextView.h"
#include "ZDTag.h"
#include "ZDTagTokenField.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"
#include "ZDWriteTimer.h"

#include <QCompleter>
#include <QLineEdit>
#include <QListWidget>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTest>

namespace {
struct Recorder : ZDLibraryListener
{
    QStringList notices;
    QList<QObject *> senders;
    void note(const char *name, QObject *sender)
    {
        notices.append(QString::fromLatin1(name));
        senders.append(sender);
    }
    void snippetTitleDidChange(QObject *s, const ZDSnippetPtr &) override { note("title", s); }
    void snippetContentDidChange(QObject *s, const ZDSnippetPtr &) override { note("content", s); }
    void snippetsTagsDidChange(QObject *s, const ZDSnippetList &) override { note("tags", s); }
    void snippetsLanguageDidChange(QObject *s, const ZDSnippetList &) override { note("language", s); }
    void applicationDidFinishInitializing(QObject *) override { notices.append(QStringLiteral("marker")); }
};

QStringList partTitles(const ZDSnippet &snippet)
{
    QStringList titles;
    for (const ZDSnippetPartPtr &part : snippet.parts())
        titles.append(part->title());
    return titles;
}
} // namespace

class TestSnippetEditorView : public QObject
{
    Q_OBJECT

    std::unique_ptr<ZDCoreServices> m_services;
    QTemporaryDir m_dir;
    std::unique_ptr<ZDDataCenter> m_center;
    std::unique_ptr<ZDSnippetEditorView> m_view;
    Recorder m_recorder;
    ZDSnippetPtr m_snippet;

    QString packagePath() const { return m_dir.filePath(QStringLiteral("main.zandriolibrary")); }

    std::unique_ptr<ZDDataCenter> openCenter()
    {
        ZDDataCenter::Options options;
        options.packagePath = packagePath();
        options.defaults = &m_services->defaults();
        options.watchForExternalChanges = false;
        return std::make_unique<ZDDataCenter>(std::move(options));
    }

    // Notices arrive asynchronously; a marker posted last shows that the earlier ones are in.
    void deliverNotices()
    {
        ZDMulticastDelegateHandler::globalHandler().noteApplicationInitialized(nullptr);
        QVERIFY(
            ZDTestSupport::waitFor([&] { return m_recorder.notices.contains(QStringLiteral("marker")); }));
        m_recorder.notices.removeAll(QStringLiteral("marker"));
        QTest::qWait(20);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_services = std::make_unique<ZDCoreServices>();
        ZDMulticastDelegateHandler::globalHandler().addDelegate(&m_recorder);
    }

    void init()
    {
        QDir(packagePath()).removeRecursively();
        m_center = openCenter();
        ZDDataCenter::install(m_center.get());
        m_center->setTags({std::make_shared<ZDTag>(QStringLiteral("cafe"))});
        m_snippet = ZDSnippet::create(QStringLiteral("Greeting"));
        m_snippet->parts().constFirst()->setContent(QStringLiteral("line one\nline two\nline three\n"));
        m_center->addSnippet(m_snippet);
        m_view = std::make_unique<ZDSnippetEditorView>(m_center.get(), nullptr);
        m_view->resize(700, 500);
        m_view->setSnippet(m_snippet);
        deliverNotices();
        m_recorder.notices.clear();
        m_recorder.senders.clear();
    }

    void cleanup()
    {
        m_view.reset();
        ZDDataCenter::install(nullptr);
        m_center.reset();
    }

    void cleanupTestCase() { ZDMulticastDelegateHandler::globalHandler().removeDelegate(&m_recorder); }

    void editsReachTheStoreWithTheirNotices()
    {
        m_view->titleField()->setFocus();
        m_view->titleField()->selectAll();
        QTest::keyClicks(m_view->titleField(), QStringLiteral("Hello"));
        QTest::keyClick(m_view->titleField(), Qt::Key_Return);
        QCOMPARE(m_snippet->title(), QStringLiteral("Hello"));

        // Typed tags become tokens; an equivalent name reuses the library's tag.
        m_view->tagsField()->lineEdit()->setText(QStringLiteral("Caf\u00e9"));
        QTest::keyClicks(m_view->tagsField()->lineEdit(), QStringLiteral(",shell"));
        QTest::keyClick(m_view->tagsField()->lineEdit(), Qt::Key_Return);
        QCOMPARE(m_view->tagsField()->tagNames(),
                 (QStringList{QStringLiteral("cafe"), QStringLiteral("shell")}));
        QCOMPARE(m_center->tagNames(), (QStringList{QStringLiteral("cafe"), QStringLiteral("shell")}));
        QCOMPARE(m_snippet->tagsCount(), 2);
        QTest::keyClick(m_view->tagsField()->lineEdit(), Qt::Key_Backspace); // removes the last token
        QCOMPARE(m_snippet->tagNames(), QStringList{QStringLiteral("cafe")});

        m_view->addPart();
        m_view->renamePart(1, QStringLiteral("setup.py"));
        m_view->addPart();
        QCOMPARE(partTitles(*m_snippet), (QStringList{QStringLiteral("Fragment"), QStringLiteral("setup.py"),
                                                      QStringLiteral("Fragment 2")}));
        m_view->partBar()->moveTab(2, 0);
        QCOMPARE(partTitles(*m_snippet).constFirst(), QStringLiteral("Fragment 2"));
        m_view->removePartAt(0);
        QCOMPARE(m_snippet->partsCount(), 2);
        m_view->removePartAt(0);
        m_view->removePartAt(0); // the last part stays
        QCOMPARE(partTitles(*m_snippet), QStringList{QStringLiteral("setup.py")});

        const ZDLanguage python =
            ZDLanguageRegistry::shared()->languageWithIdentifier(QStringLiteral("PythonLexer"));
        Q_EMIT m_view->languageChooser()->languageChosen(python);
        QCOMPARE(m_snippet->parts().constFirst()->language(), python);
        QCOMPARE(m_view->codeView()->currentLexer(), QStringLiteral("PythonLexer"));

        // Typing reaches the record, and is announced, when it pauses.
        m_view->codeView()->setFocus();
        QTest::keyClicks(m_view->codeView(), QStringLiteral("import os"));
        QCOMPARE(m_snippet->parts().constFirst()->content(), QString());
        deliverNotices();
        QVERIFY(!m_recorder.notices.isEmpty());
        const qsizetype before = m_recorder.notices.count(QStringLiteral("content"));
        m_view->commitPendingText();
        QCOMPARE(m_snippet->parts().constFirst()->content(), QStringLiteral("import os"));
        deliverNotices();
        QCOMPARE(m_recorder.notices.count(QStringLiteral("content")), before + 1);
        for (const QString &kind :
             {QStringLiteral("title"), QStringLiteral("tags"), QStringLiteral("language")})
            QVERIFY2(m_recorder.notices.contains(kind), qPrintable(kind));
        QVERIFY(std::all_of(m_recorder.senders.cbegin(), m_recorder.senders.cend(),
                            [&](QObject *sender) { return sender == m_view.get(); }));

        // What the pane changed is what the library writes.
        QVERIFY(m_center->save());
        m_view.reset();
        ZDDataCenter::install(nullptr);
        m_center.reset();
        m_center = openCenter();
        const ZDSnippetPtr saved = m_center->snippetWithUUID(m_snippet->UUID());
        QVERIFY(saved);
        QVERIFY(saved->isIdentical(m_snippet.get()));
    }

    void reloadsOnlyWhenTheSnippetChanged()
    {
        ZDSyntaxHighlightedTextView *code = m_view->codeView();
        code->setSelectedRange({8, 0});
        QTest::keyClicks(code, QStringLiteral("!"));
        QCOMPARE(code->toPlainText(), QStringLiteral("line one!\nline two\nline three\n"));
        m_view->commitPendingText();
        deliverNotices(); // the pane's own notice
        QCOMPARE(code->selectedRange().location, 9);
        QVERIFY(code->document()->isUndoAvailable());

        // Announced by someone else without a change, or as another object with the same content:
        // nothing is reset, not even a title being typed.
        m_view->titleField()->setFocus();
        m_view->titleField()->setText(QString());
        QTest::keyClicks(m_view->titleField(), QStringLiteral("Draft"));
        ZDMulticastDelegateHandler::globalHandler().noteSnippetContentChanged(m_snippet, nullptr);
        deliverNotices();
        const ZDSnippetPtr copy = std::make_shared<ZDSnippet>(
            m_snippet->title(), m_snippet->UUID(), m_snippet->folderUUID(), m_snippet->tagUUIDs(), QString(),
            QString(), QString(), m_snippet->parts(), m_snippet->dateCreated(), m_snippet->dateModified());
        m_center->addSnippet(copy); // replaces the stored object
        ZDMulticastDelegateHandler::globalHandler().noteSnippetTitleChanged(copy, nullptr);
        deliverNotices();
        QCOMPARE(m_view->titleField()->text(), QStringLiteral("Draft"));
        QCOMPARE(code->selectedRange().location, 9);
        QVERIFY(code->document()->isUndoAvailable());
        QCOMPARE(m_view->snippet(), copy); // edits go to the object the store holds now
        m_view->setSnippet(m_snippet);     // selected again, by an outdated object
        QCOMPARE(code->selectedRange().location, 9);
        QCOMPARE(m_view->snippet(), copy);

        // Changed elsewhere: the pane shows the new state.
        copy->parts().constFirst()->setContent(QStringLiteral("rewritten"));
        copy->setTitle(QStringLiteral("Renamed"));
        ZDMulticastDelegateHandler::globalHandler().noteSnippetContentChanged(copy, nullptr);
        deliverNotices();
        QCOMPARE(code->toPlainText(), QStringLiteral("rewritten"));
        QCOMPARE(m_view->titleField()->text(), QStringLiteral("Renamed"));
        QVERIFY(!code->document()->isUndoAvailable());

        // Another snippet's notice is none of the pane's business; its removal empties the pane.
        const ZDSnippetPtr other = ZDSnippet::create(QStringLiteral("Other"));
        ZDMulticastDelegateHandler::globalHandler().noteSnippetContentChanged(other, nullptr);
        ZDMulticastDelegateHandler::globalHandler().noteSnippetsRemoved({other}, nullptr);
        deliverNotices();
        QCOMPARE(m_view->snippet(), copy);
        ZDMulticastDelegateHandler::globalHandler().noteSnippetsRemoved({m_snippet}, nullptr);
        deliverNotices();
        QVERIFY(!m_view->snippet());
    }

    void eachPartKeepsItsDocumentsWhileTheSnippetIsShown()
    {
        ZDSyntaxHighlightedTextView *code = m_view->codeView();
        const ZDSnippetPartPtr first = m_snippet->parts().constFirst();
        QString text;
        for (int line = 0; line < 200; ++line)
            text += QStringLiteral("line %1\n").arg(line);
        first->setContent(text); // changed elsewhere: the shown part takes the new text
        ZDMulticastDelegateHandler::globalHandler().noteSnippetContentChanged(m_snippet, nullptr);
        deliverNotices();
        QCOMPARE(code->toPlainText(), text);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
        Q_EMIT m_view->languageChooser()->languageChosen(
            ZDLanguageRegistry::shared()->languageWithIdentifier(QStringLiteral("PythonLexer")));

        const int caret = int(text.indexOf(QStringLiteral("line 150")));
        code->setSelectedRange({caret, 0});
        QTest::keyClicks(code, QStringLiteral("X"));
        QTest::keyClicks(m_view->notesView(), QStringLiteral("n"));
        const int scroll = code->verticalScrollBar()->value();
        QVERIFY(scroll > 0);

        m_view->addPart(); // shown at once, with a document of its own
        Q_EMIT m_view->languageChooser()->languageChosen(
            ZDLanguageRegistry::shared()->languageWithIdentifier(QStringLiteral("BashLexer")));
        QVERIFY(code->toPlainText().isEmpty());
        QVERIFY(!code->document()->isUndoAvailable());
        QVERIFY(m_view->notesView()->toPlainText().isEmpty());
        QTest::keyClicks(code, QStringLiteral("b"));

        // Back to the first part: its unsaved typing, undo history, caret, scroll and lexer.
        m_view->selectPart(0);
        const QString typed = QString(text).insert(caret, QLatin1Char('X'));
        QCOMPARE(code->toPlainText(), typed);
        QCOMPARE(first->content(), text);
        QCOMPARE(code->selectedRange().location, caret + 1);
        QCOMPARE(code->verticalScrollBar()->value(), scroll);
        QCOMPARE(code->currentLexer(), QStringLiteral("PythonLexer"));
        QCOMPARE(m_view->notesView()->toPlainText(), QStringLiteral("n"));
        code->undo();
        QCOMPARE(code->toPlainText(), text);
        code->redo();
        m_view->selectPart(1);
        QCOMPARE(code->toPlainText(), QStringLiteral("b"));
        QVERIFY(code->document()->isUndoAvailable());
        QCOMPARE(code->currentLexer(), QStringLiteral("BashLexer"));

        // The pause saves both parts with one notice.
        deliverNotices();
        m_recorder.notices.clear();
        QTRY_COMPARE(first->content(), typed);
        QCOMPARE(first->note(), QStringLiteral("n"));
        QCOMPARE(m_snippet->parts().at(1)->content(), QStringLiteral("b"));
        deliverNotices();
        QCOMPARE(m_recorder.notices, QStringList{QStringLiteral("content")});
    }

    void typingReachesTheRecordOncePerPauseAndIsNeverLost()
    {
        ZDSyntaxHighlightedTextView *code = m_view->codeView();
        const ZDSnippetPartPtr part = m_snippet->parts().constFirst();
        const QString text = part->content();
        code->setSelectedRange({0, 0});
        for (int i = 0; i < 60; ++i) {
            QTest::keyClicks(code, QStringLiteral("ab"));
            QTest::keyClick(code, Qt::Key_Backspace);
        }
        QTest::keyClicks(m_view->notesView(), QStringLiteral("note"));
        // Keystrokes leave the record alone: no copy of the whole text each.
        QCOMPARE(part->content(), text);
        QVERIFY(part->note().isEmpty());
        deliverNotices();
        QVERIFY(m_recorder.notices.isEmpty());
        QTRY_COMPARE(part->content(), QString(60, QLatin1Char('a')) + text);
        QCOMPARE(part->note(), QStringLiteral("note"));
        deliverNotices();
        QCOMPARE(m_recorder.notices, QStringList{QStringLiteral("content")});

        // Typing then undone changes nothing, and is not announced.
        QTest::keyClicks(code, QStringLiteral("z"));
        code->undo();
        m_view->commitPendingText();
        deliverNotices();
        QCOMPARE(m_recorder.notices, QStringList{QStringLiteral("content")});

        // Showing another snippet saves the typing first; the other starts with fresh documents.
        QTest::keyClicks(code, QStringLiteral("1"));
        QString shown = code->toPlainText();
        const ZDSnippetPtr other = ZDSnippet::create(QStringLiteral("Other"));
        m_center->addSnippet(other);
        m_view->setSnippet(other);
        QCOMPARE(part->content(), shown);
        QVERIFY(code->toPlainText().isEmpty());
        QVERIFY(!code->document()->isUndoAvailable());
        QTest::keyClicks(code, QStringLiteral("2"));
        m_view->setSnippet(m_snippet);
        QCOMPARE(other->parts().constFirst()->content(), QStringLiteral("2"));
        QVERIFY(!code->document()->isUndoAvailable());

        // So does the pane when it goes.
        QTest::keyClicks(code, QStringLiteral("3"));
        shown = code->toPlainText();
        m_view.reset();
        QCOMPARE(part->content(), shown);
    }

    void changesFromElsewhereMeetTheOpenParts()
    {
        ZDSyntaxHighlightedTextView *code = m_view->codeView();
        m_view->addPart();
        QTest::keyClicks(code, QStringLiteral("b"));
        m_view->commitPendingText();
        m_view->selectPart(0);
        code->setSelectedRange({0, 0});
        QTest::keyClicks(code, QStringLiteral("typed "));

        // The store holds another object now, with the part not shown changed; the shown part
        // keeps its unsaved typing, caret and history, and the typing goes to the new object.
        QList<ZDSnippetPartPtr> parts;
        for (const ZDSnippetPartPtr &part : m_snippet->parts())
            parts.append(std::make_shared<ZDSnippetPart>(part->title(), part->UUID(), part->language(),
                                                         part->note(), part->content(), part->dateCreated(),
                                                         part->dateModified(), part->snippetUUID()));
        parts.at(1)->setContent(QStringLiteral("from elsewhere"));
        const ZDSnippetPtr replaced = std::make_shared<ZDSnippet>(
            m_snippet->title(), m_snippet->UUID(), m_snippet->folderUUID(), m_snippet->tagUUIDs(), QString(),
            QString(), QString(), parts, m_snippet->dateCreated(), m_snippet->dateModified());
        m_center->addSnippet(replaced);
        ZDMulticastDelegateHandler::globalHandler().noteSnippetContentChanged(replaced, nullptr);
        deliverNotices();
        const QString typed = QStringLiteral("typed line one\nline two\nline three\n");
        QCOMPARE(code->toPlainText(), typed);
        QCOMPARE(code->selectedRange().location, 6);
        QVERIFY(code->document()->isUndoAvailable());
        m_view->selectPart(1);
        QCOMPARE(code->toPlainText(), QStringLiteral("from elsewhere"));
        QVERIFY(!code->document()->isUndoAvailable());
        m_view->commitPendingText();
        QCOMPARE(m_view->snippet(), replaced);
        QCOMPARE(parts.at(0)->content(), typed);
        QCOMPARE(parts.at(1)->content(), QStringLiteral("from elsewhere"));

        // A part removed elsewhere goes from the bar with its document.
        replaced->setParts({parts.at(0)});
        ZDMulticastDelegateHandler::globalHandler().noteSnippetContentChanged(replaced, nullptr);
        deliverNotices();
        QCOMPARE(m_view->partBar()->count(), 1);
        QCOMPARE(code->toPlainText(), typed);
    }

    void languageChooserOffersActiveLanguagesFirst()
    {
        ZDLanguageRegistry &registry = *ZDLanguageRegistry::shared();
        m_services->defaults().setActiveLanguageIdentifiers(
            {QStringLiteral("PythonLexer"), QStringLiteral("BashLexer"), QStringLiteral("NoSuchLexer")});
        int active = 0;
        const QList<ZDLanguage> all = ZDLanguageChooser::offeredLanguages(registry, QString(), &active);
        QCOMPARE(active, 2);
        QCOMPARE(all.at(0).identifier(), QStringLiteral("BashLexer"));
        QCOMPARE(all.at(1).identifier(), QStringLiteral("PythonLexer"));
        QCOMPARE(all.size(), registry.availableLanguages().size());

        // Searching matches names and aliases; Return takes the first match, arrows skip headings.
        m_view->show();
        ZDLanguagePopup *popup = m_view->languageChooser()->showPopup();
        QTest::keyClicks(popup->searchField(), QStringLiteral("py"));
        const QList<ZDLanguage> shown = popup->shownLanguages();
        QVERIFY(!shown.isEmpty());
        QCOMPARE(shown.constFirst().identifier(), QStringLiteral("PythonLexer"));
        QVERIFY(std::all_of(shown.cbegin(), shown.cend(), [](const ZDLanguage &language) {
            return language.displayName().contains(QStringLiteral("py"), Qt::CaseInsensitive) ||
                   language.aliases()
                       .join(QLatin1Char(' '))
                       .contains(QStringLiteral("py"), Qt::CaseInsensitive);
        }));
        QTest::keyClick(popup->searchField(), Qt::Key_Down);
        QTest::keyClick(popup->searchField(), Qt::Key_Down);
        const QString expected = popup->list()->currentItem()->text();
        QVERIFY(popup->list()->currentItem()->flags() & Qt::ItemIsEnabled);
        QTest::keyClick(popup->searchField(), Qt::Key_Return);
        QCOMPARE(m_snippet->parts().constFirst()->language().displayName(), expected);
    }

    void tagFieldTokensAndCompletion()
    {
        ZDTagTokenField field;
        QSignalSpy edits(&field, &ZDTagTokenField::tagNamesEdited);
        field.setCompletionNames({QStringLiteral("shell"), QStringLiteral("Python"), QStringLiteral("go")});
        field.setTagNames({QStringLiteral("python")});
        QCOMPARE(edits.count(), 0); // shown, not edited
        QCOMPARE(field.completionNames(), (QStringList{QStringLiteral("go"), QStringLiteral("shell")}));

        field.lineEdit()->insert(QStringLiteral("PYTHON,go, sql ")); // pasted
        QTest::keyClick(field.lineEdit(), Qt::Key_Tab);
        QCOMPARE(field.tagNames(),
                 (QStringList{QStringLiteral("python"), QStringLiteral("go"), QStringLiteral("sql")}));
        QCOMPARE(edits.count(), 1);                               // one edit for the whole line
        QTest::keyClicks(field.lineEdit(), QStringLiteral("x,")); // a typed comma ends a token
        QCOMPARE(edits.count(), 2);
        QTest::keyClick(field.lineEdit(), Qt::Key_Backspace);
        QCOMPARE(field.completionNames(), QStringList{QStringLiteral("shell")});
        QVERIFY(field.lineEdit()->text().isEmpty());

        // A chosen completion becomes a token.
        Q_EMIT field.completer()->activated(QStringLiteral("shell"));
        QVERIFY(ZDTestSupport::waitFor([&] { return field.tagNames().size() == 4; }));
        QVERIFY(field.completionNames().isEmpty());

        QTest::keyClick(field.lineEdit(), Qt::Key_Backspace);
        QTest::keyClick(field.lineEdit(), Qt::Key_Backspace);
        QTest::keyClick(field.lineEdit(), Qt::Key_Backspace);
        QCOMPARE(field.tagNames(), QStringList{QStringLiteral("python")});
        QTest::keyClick(field.lineEdit(), Qt::Key_A);
        QTest::keyClick(field.lineEdit(), Qt::Key_Backspace); // deletes the letter, not a token
        QCOMPARE(field.tagNames(), QStringList{QStringLiteral("python")});
    }

    void partTitlesAndTagNamesAreNormalised()
    {
        QCOMPARE(ZDSnippetEditing::newPartTitle({}), QStringLiteral("Fragment"));
        QCOMPARE(ZDSnippetEditing::newPartTitle({QStringLiteral("Fragment 2")}), QStringLiteral("Fragment"));
        QCOMPARE(ZDSnippetEditing::newPartTitle({QStringLiteral("Fragment"), QStringLiteral("Fragment 2")}),
                 QStringLiteral("Fragment 3"));

        ZDSnippetEditing editing(m_center.get(), this);
        QVERIFY(editing.setTagNames(m_snippet, {QStringLiteral(" Shell "), QStringLiteral("shell"), QString(),
                                                QStringLiteral("CAF\u00C9"), QStringLiteral("   ")}));
        QCOMPARE(m_center->tagNames(), (QStringList{QStringLiteral("cafe"), QStringLiteral("Shell")}));
        QCOMPARE(m_snippet->tagsCount(), 2);
        const QDateTime stamped = m_snippet->dateModified();
        QVERIFY(
            !editing.setTagNames(m_snippet, {QStringLiteral("shell"), QStringLiteral("Cafe")})); // same tags
        QCOMPARE(m_snippet->dateModified(), stamped);
        QVERIFY(!editing.renamePart(m_snippet, m_snippet->parts().constFirst(), QStringLiteral("  ")));
        QVERIFY(!editing.movePart(m_snippet, 0, 1)); // out of range: one part only
    }
};

QTEST_MAIN(TestSnippetEditorView)
#include "test_snippet_editor_view.moc"
