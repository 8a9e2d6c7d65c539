// The code editor widget: keys and commands edit the text as one named undo step each.
#include "ZDCodeDocument.h"
#include "ZDCodeDocumentLayout.h"
#include "ZDEditorTheme.h"
#include "ZDHighlighter.h"
#include "ZDMarkdownCommands.h"
#include "ZDMarkdownInsertSheet.h"
#include "ZDSyntaxHighlightedTextView.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>

#include <functional>

using Command = std::function<void(ZDSyntaxHighlightedTextView &)>;
Q_DECLARE_METATYPE(Command)

namespace {

// "«" and "»" mark the selection in the texts of the tables below.
void setMarkedText(ZDSyntaxHighlightedTextView &view, const QString &marked)
{
    QString text = marked;
    const int start = text.indexOf(QChar(0x00AB));
    text.remove(start, 1);
    const int end = text.indexOf(QChar(0x00BB));
    text.remove(end, 1);
    view.setPlainText(text);
    view.setSelectedRange({start, end - start});
}

QString markedText(const ZDSyntaxHighlightedTextView &view)
{
    QString text = view.toPlainText();
    const ZDTextRange range = view.selectedRange();
    text.insert(range.end(), QChar(0x00BB));
    text.insert(range.location, QChar(0x00AB));
    return text;
}

// Keys: "\t" Tab, "\x19" Shift+Tab, "\n" Return, "\b" Backspace, anything else is typed.
void press(QWidget &view, const QString &keys)
{
    for (QChar c : keys) {
        if (c == QLatin1Char('\t'))
            QTest::keyClick(&view, Qt::Key_Tab);
        else if (c == QChar(0x19))
            QTest::keyClick(&view, Qt::Key_Backtab, Qt::ShiftModifier);
        else if (c == QLatin1Char('\n'))
            QTest::keyClick(&view, Qt::Key_Return);
        else if (c == QLatin1Char('\b'))
            QTest::keyClick(&view, Qt::Key_Backspace);
        else
            QTest::keyClicks(&view, QString(c));
    }
}

// The colour the view draws the character at `index` in.
QColor drawnColor(const QPlainTextEdit &view, int index)
{
    const QTextBlock block = view.document()->findBlock(index);
    const int offset = index - block.position();
    for (const QTextLayout::FormatRange &range : block.layout()->formats())
        if (offset >= range.start && offset < range.start + range.length)
            return range.format.foreground().color();
    return {};
}

} // namespace

class TestSyntaxHighlightedTextView : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<ZDUserDefaults> m_defaults;
    std::unique_ptr<ZDSyntaxHighlightedTextView> m_view;

private Q_SLOTS:
    void init()
    {
        m_defaults = std::make_unique<ZDUserDefaults>(m_dir.filePath(QStringLiteral("prefs.ini")));
        m_defaults->setIndentMethod(QStringLiteral("Spaces"));
        m_defaults->setTabSize(4);
        m_view = std::make_unique<ZDSyntaxHighlightedTextView>();
        m_view->setUserDefaults(m_defaults.get());
        m_view->resize(400, 300);
    }

    void cleanup()
    {
        m_view.reset();
        m_defaults.reset();
    }

    void keys_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("undoName");
        QTest::newRow("smart tab at column 6") << "abcdef«»"
                                               << "\t"
                                               << "abcdef  «»"
                                               << "Typing";
        QTest::newRow("tab over lines shifts") << "«a\nb»"
                                               << "\t"
                                               << "    «a\n    b»"
                                               << "Shift Right";
        QTest::newRow("back-tab over lines") << "«    a\n      b»"
                                             << "\x19"
                                             << "«a\n    b»"
                                             << "Shift Left";
        QTest::newRow("return between braces") << "  if {«»}"
                                               << "\n"
                                               << "  if {\n      «»\n  }"
                                               << "Typing";
        QTest::newRow("brace pair") << "x«»"
                                    << "{"
                                    << "x{«»}"
                                    << "Typing";
        QTest::newRow("backspace over indentation") << "        «»x"
                                                    << "\b"
                                                    << "    «»x"
                                                    << "Typing";
        QTest::newRow("backspace over a pair") << "f(«»)"
                                               << "\b"
                                               << "f«»"
                                               << "Typing";
        QTest::newRow("plain typing") << "a«»"
                                      << "bc"
                                      << "abc«»"
                                      << "Typing";
    }

    void keys()
    {
        QFETCH(QString, before);
        QFETCH(QString, keys);
        QFETCH(QString, after);
        QFETCH(QString, undoName);
        setMarkedText(*m_view, before);
        press(*m_view, keys);
        QCOMPARE(markedText(*m_view), after);
        QCOMPARE(m_view->undoActionName(), undoName);
        m_view->undo();
        QCOMPARE(m_view->toPlainText(), QString(before).remove(QChar(0x00AB)).remove(QChar(0x00BB)));
        QVERIFY(!m_view->document()->isUndoAvailable());
        QCOMPARE(m_view->redoActionName(), undoName);
    }

    void typingAfterACommandIsAStepOfItsOwn()
    {
        setMarkedText(*m_view, QStringLiteral("«»"));
        m_view->insertMarkdownLink(QStringLiteral("u"), QStringLiteral("t"), QString(), QString(), false);
        press(*m_view, QStringLiteral("x"));
        QCOMPARE(m_view->toPlainText(), QStringLiteral("[t](u)x"));
        QCOMPARE(m_view->undoActionName(), QStringLiteral("Typing"));
        m_view->undo();
        QCOMPARE(m_view->toPlainText(), QStringLiteral("[t](u)"));
        QCOMPARE(m_view->undoActionName(), QStringLiteral("Insert Link"));
    }

    void quoteOverTypingMakesNoUndoStep()
    {
        setMarkedText(*m_view, QStringLiteral("say \"«»\""));
        press(*m_view, QStringLiteral("\""));
        QCOMPARE(markedText(*m_view), QStringLiteral("say \"\"«»"));
        QVERIFY(!m_view->document()->isUndoAvailable());
    }

    void commands_data()
    {
        using namespace ZDMarkdownCommands;
        QTest::addColumn<QString>("before");
        QTest::addColumn<Command>("command");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("undoName");
        const auto markdown = [](int tag) {
            return Command([tag](ZDSyntaxHighlightedTextView &v) {
                v.performMarkdownFormatAction(tag, QStringLiteral("js"));
            });
        };
        QTest::newRow("to tabs") << "      x«»"
                                 << Command(&ZDSyntaxHighlightedTextView::convertIndentationToTabs)
                                 << "\t  x«»"
                                 << "Convert Indentation to Tabs";
        QTest::newRow("strip") << "a \nb\t«»"
                               << Command(&ZDSyntaxHighlightedTextView::stripTrailingWhitespace) << "a\nb«»"
                               << "Strip Trailing Whitespace";
        QTest::newRow("duplicate") << "a«»\nb"
                                   << Command(&ZDSyntaxHighlightedTextView::duplicateSelectedLines)
                                   << "a«»\na\nb"
                                   << "Duplicate";
        QTest::newRow("strong") << "a «b» c" << markdown(StrongTag) << "a **«b»** c"
                                << "Strong";
        QTest::newRow("heading") << "# T«»" << markdown(Heading1Tag + 1) << "## T«»"
                                 << "Heading 2";
        QTest::newRow("code block") << "«»" << markdown(CodeBlockTag) << "\n```js\n«»\n```\n"
                                    << "Insert Code Block";
        QTest::newRow("reference link")
            << "a «b» c\nd"
            << Command([](ZDSyntaxHighlightedTextView &v) { v.insertMarkdownLink("u", "b", "", "1", true); })
            << "a [b][1]«» c\nd\n[1]: u"
            << "Insert Link";
        QTest::newRow("table") << "«»"
                               << Command([](ZDSyntaxHighlightedTextView &v) { v.insertMarkdownTable(1, 1); })
                               << "\n|«»    |\n|----|\n"
                               << "Insert Table";
    }

    void commands()
    {
        QFETCH(QString, before);
        QFETCH(Command, command);
        QFETCH(QString, after);
        QFETCH(QString, undoName);
        setMarkedText(*m_view, before);
        command(*m_view);
        QCOMPARE(markedText(*m_view), after);
        QCOMPARE(m_view->undoActionName(), undoName);
        m_view->undo();
        QCOMPARE(m_view->toPlainText(), QString(before).remove(QChar(0x00AB)).remove(QChar(0x00BB)));
        QVERIFY(!m_view->document()->isUndoAvailable());
    }

    void eachCommandIsItsOwnUndoStep()
    {
        const QString original = QStringLiteral("a\n  b");
        setMarkedText(*m_view, QStringLiteral("«a\n  b»"));
        m_view->shiftRight();
        m_view->duplicateSelectedLines();
        m_view->performMarkdownFormatAction(ZDMarkdownCommands::UnorderedListTag);
        const QStringList texts{QStringLiteral("-     a\n-     b\n    a\n    b"),
                                QStringLiteral("    a\n    b\n    a\n    b"), QStringLiteral("    a\n    b"),
                                original};
        const QStringList names{QStringLiteral("Unordered List"), QStringLiteral("Duplicate"),
                                QStringLiteral("Shift Right")};
        for (int step = 0; step < names.size(); ++step) {
            QCOMPARE(m_view->toPlainText(), texts.at(step));
            QCOMPARE(m_view->undoActionName(), names.at(step));
            m_view->undo();
        }
        QCOMPARE(m_view->toPlainText(), original);
        QVERIFY(!m_view->document()->isUndoAvailable());
        QCOMPARE(m_view->redoActionName(), QStringLiteral("Shift Right"));
        QSignalSpy announced(m_view.get(), &ZDSyntaxHighlightedTextView::undoActionNamesChanged);
        m_view->redo();
        QCOMPARE(announced.count(), 1);
        QCOMPARE(m_view->undoActionName(), QStringLiteral("Shift Right"));
        QCOMPARE(m_view->redoActionName(), QStringLiteral("Duplicate"));
    }

    void settingsAreReadAtEachCommand()
    {
        setMarkedText(*m_view, QStringLiteral("«»"));
        m_defaults->setTabSize(2);
        m_view->insertTab();
        QCOMPARE(m_view->toPlainText(), QStringLiteral("  "));
        m_defaults->setIndentMethod(QStringLiteral("Tabs"));
        m_view->insertTab();
        QCOMPARE(m_view->toPlainText(), QStringLiteral("  \t"));
        m_defaults->setAutomaticallyCloseBrackets(false);
        press(*m_view, QStringLiteral("("));
        QCOMPARE(m_view->toPlainText(), QStringLiteral("  \t("));
    }

    void shiftIsDisabledInRoleOne()
    {
        setMarkedText(*m_view, QStringLiteral("«a»"));
        m_view->setTextViewRole(ZDSyntaxHighlightedTextView::ShiftDisabledRole);
        m_view->shiftRight();
        QCOMPARE(m_view->toPlainText(), QStringLiteral("a"));
    }

    void textDidChangeReportsEditsOnly()
    {
        setMarkedText(*m_view, QStringLiteral("ab\n  «c»\nd"));
        QSignalSpy spy(m_view.get(), &ZDSyntaxHighlightedTextView::textDidChange);
        m_view->setTheme(ZDEditorTheme::themeNamed(QStringLiteral("Monokai"))); // recolours only
        QCOMPARE(spy.count(), 0);

        m_view->shiftRight(); // 2 spaces become 4 at index 3
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.takeFirst(), (QVariantList{3, 2, 8, 4}));

        press(*m_view, QStringLiteral("x")); // replaces the selected "c" with one character
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.takeFirst(), (QVariantList{7, 1, 10, 1}));
    }

    void textIsColouredInTheThemeAndFollowsEditsAndPreferences()
    {
        ZDHighlighter bridge(ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Vendors"));
        QVERIFY(bridge.isLoaded());
        m_defaults->setEditorTheme(QStringLiteral("Xcode"));
        m_view->setHighlighter(&bridge);
        m_view->showText(QStringLiteral("def f():\n    return 'x'\n"), QStringLiteral("PythonLexer"));
        const QColor keyword(0xB8, 0x33, 0xA1);
        QCOMPARE(drawnColor(*m_view, 0), keyword);                   // def
        QCOMPARE(drawnColor(*m_view, 13), keyword);                  // return
        QCOMPARE(drawnColor(*m_view, 20), QColor(0xCF, 0x31, 0x25)); // 'x'

        setMarkedText(*m_view, QStringLiteral("def f():\n    «»return 'x'\n"));
        press(*m_view, QStringLiteral("# "));
        QCOMPARE(drawnColor(*m_view, 17), QColor(0x00, 0x83, 0x12)); // now inside a comment
        QCOMPARE(drawnColor(*m_view, 0), keyword);

        // A theme chosen in the preferences applies at once, to the text and to the view.
        m_defaults->setEditorTheme(QStringLiteral("Monokai"));
        const auto monokai = ZDEditorTheme::themeNamed(QStringLiteral("Monokai"));
        QCOMPARE(m_view->palette().color(QPalette::Base), monokai->backgroundColor());
        QCOMPARE(drawnColor(*m_view, 0), monokai->colorForType(QStringLiteral("Token.Keyword")));
        m_view->selectAll();
        const QString html = m_view->selectionAsHtml();
        QVERIFY(html.contains(QStringLiteral("background-color:%1").arg(monokai->backgroundColor().name())));
        QVERIFY(html.contains(QStringLiteral("<span style=\"color:%1;\">def</span>")
                                  .arg(monokai->colorForType(QStringLiteral("Token.Keyword")).name())));

        // An explicit theme is kept until the preference is followed again.
        m_view->setTheme(ZDEditorTheme::themeNamed(QStringLiteral("Xcode")));
        m_defaults->setEditorTheme(QStringLiteral("Dusk"));
        QCOMPARE(m_view->theme()->name(), QStringLiteral("Xcode"));
        m_view->setTheme(nullptr);
        QCOMPARE(m_view->theme()->name(), QStringLiteral("Dusk"));
        m_view->setHighlighter(nullptr); // the bridge goes before the view
    }

    // A document handed to the view keeps its text, undo steps and lexer, and takes the view's
    // settings, theme and bridge; the view's own document is as it was left.
    void showsDocumentsHandedToIt()
    {
        ZDHighlighter bridge(ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Vendors"));
        QVERIFY(bridge.isLoaded());
        m_defaults->setEditorTheme(QStringLiteral("Xcode"));
        m_defaults->setEditorLineHeightMultiple(1.5);
        m_view->setHighlighter(&bridge);
        setMarkedText(*m_view, QStringLiteral("own«»"));
        press(*m_view, QStringLiteral("\t"));

        ZDCodeDocument part;
        part.showText(QStringLiteral("def f():\n    pass\n"), QStringLiteral("PythonLexer"));
        m_view->setCodeDocument(&part);
        QCOMPARE(m_view->document(), &part);
        QCOMPARE(part.defaultFont(), m_view->font());
        QCOMPARE(part.codeLayout()->lineHeightMultiple(), 1.5);
        QCOMPARE(part.highlighter(), &bridge);
        QCOMPARE(m_view->currentLexer(), QStringLiteral("PythonLexer"));
        QCOMPARE(drawnColor(*m_view, 0), QColor(0xB8, 0x33, 0xA1)); // def
        QVERIFY(m_view->undoActionName().isEmpty());
        m_view->duplicateSelectedLines();
        QCOMPARE(m_view->undoActionName(), QStringLiteral("Duplicate"));

        m_view->setCodeDocument(nullptr);
        QCOMPARE(m_view->toPlainText(), QStringLiteral("own "));
        QCOMPARE(m_view->undoActionName(), QStringLiteral("Typing"));
        QCOMPARE(m_view->currentLexer(), QStringLiteral("TextLexer"));
        m_defaults->setEditorLineHeightMultiple(2.0); // reaches the document when it is shown again
        m_view->setCodeDocument(&part);
        QCOMPARE(part.codeLayout()->lineHeightMultiple(), 2.0);
        QCOMPARE(m_view->undoActionName(), QStringLiteral("Duplicate"));
        m_view->undo();
        QCOMPARE(m_view->toPlainText(), QStringLiteral("def f():\n    pass\n"));
        m_view->setCodeDocument(nullptr); // the document goes before the view
        m_view->setHighlighter(nullptr);
        m_defaults->setEditorLineHeightMultiple(1.0); // the preferences file outlives the test
    }

    void copyCarriesTheThemeBackground()
    {
        ZDEditorColors colors;
        colors.background = QColor(0x12, 0x34, 0x56);
        m_view->setColors(colors);
        setMarkedText(*m_view, QStringLiteral("a «<b> &»c"));
        m_view->copy();
        const QMimeData *mime = QApplication::clipboard()->mimeData();
        QVERIFY(mime);
        QCOMPARE(mime->text(), QStringLiteral("<b> &"));
        QVERIFY(mime->html().contains(QStringLiteral("<body style=\"background-color:#123456;\">")));
        QVERIFY(mime->html().contains(QStringLiteral("&lt;b&gt; &amp;")));
    }

    void insertSheetsCollectTheirDataFirst()
    {
        setMarkedText(*m_view, QStringLiteral("a «b» c\n[1]: old"));
        m_view->performMarkdownFormatAction(ZDMarkdownCommands::InsertLinkTag);
        auto *sheet = m_view->findChild<ZDMarkdownInsertSheet *>();
        QVERIFY(sheet);
        QCOMPARE(sheet->textField()->text(), QStringLiteral("b"));
        QCOMPARE(sheet->identifierField()->text(), QStringLiteral("2"));
        QPushButton *ok = sheet->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
        QVERIFY(!ok->isEnabled()); // no URL yet
        sheet->urlField()->setText(QStringLiteral("http://x"));
        sheet->referenceStyleBox()->setChecked(true);
        QVERIFY(ok->isEnabled());
        sheet->accept();
        QCOMPARE(m_view->toPlainText(), QStringLiteral("a [b][2] c\n[1]: old\n[2]: http://x"));
        QCOMPARE(m_view->undoActionName(), QStringLiteral("Insert Link"));

        QVERIFY(QTest::qWaitFor([&] { return !m_view->findChild<ZDMarkdownInsertSheet *>(); }));
        m_view->performMarkdownFormatAction(ZDMarkdownCommands::InsertTableTag);
        sheet = m_view->findChild<ZDMarkdownInsertSheet *>();
        QVERIFY(sheet);
        sheet->columnsBox()->setValue(0);
        sheet->accept(); // a table without columns inserts nothing
        QCOMPARE(m_view->toPlainText(), QStringLiteral("a [b][2] c\n[1]: old\n[2]: http://x"));
    }

    void displayPreferencesApplyAtOnce()
    {
        m_defaults->setUseSoftWrap(true);
        QCOMPARE(m_view->lineWrapMode(), QPlainTextEdit::WidgetWidth);
        m_defaults->setUseSoftWrap(false);
        QCOMPARE(m_view->lineWrapMode(), QPlainTextEdit::NoWrap);
    }

    // The line height preference spaces lines apart; the caret, clicks and edits follow.
    void lineHeightSpacesTheLines()
    {
        m_view->setPlainText(QStringLiteral("first\nsecond\nthird"));
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
        const auto caretTop = [this](int block) {
            QTextCursor cursor(m_view->document()->findBlockByNumber(block));
            return m_view->cursorRect(cursor).top();
        };
        const int natural = caretTop(2) - caretTop(1);
        QVERIFY(natural > 0);

        m_defaults->setEditorLineHeightMultiple(2.0);
        QApplication::processEvents();
        const int spaced = caretTop(2) - caretTop(1);
        QVERIFY2(qAbs(spaced - 2 * natural) <= 2,
                 qPrintable(QStringLiteral("%1 vs %2").arg(spaced).arg(natural)));

        // A click on the third line lands there; an edit keeps the spacing.
        QTextCursor third(m_view->document()->findBlockByNumber(2));
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, m_view->cursorRect(third).center());
        QCOMPARE(m_view->textCursor().blockNumber(), 2);
        QTest::keyClicks(m_view.get(), QStringLiteral("x"));
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QCOMPARE(m_view->document()->blockCount(), 4);
        QVERIFY(qAbs(caretTop(3) - caretTop(2) - spaced) <= 1);

        m_defaults->setEditorLineHeightMultiple(1.0);
        QApplication::processEvents();
        QVERIFY(qAbs(caretTop(2) - caretTop(1) - natural) <= 1);
    }

    // Wrapped lines start at their line's indentation plus the preference's spaces; the caret
    // and clicks follow, and turning it off puts them back at the margin.
    void wrappedLinesAreIndented()
    {
        m_defaults->setUseSoftWrap(true);
        m_defaults->setWrapIndentSize(4);
        m_defaults->setEnableWrapIndent(true);
        m_view->setPlainText(QStringLiteral("  ") + QStringLiteral("word ").repeated(60) +
                             QStringLiteral("\nshort"));
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
        const QTextBlock block = m_view->document()->firstBlock();
        const auto secondLineLeft = [&] {
            m_view->document()->documentLayout()->blockBoundingRect(block); // places the block's lines
            const QTextLine second = block.layout()->lineAt(1);
            QTextCursor cursor(block);
            cursor.setPosition(block.position() + second.textStart());
            return std::pair{m_view->cursorRect(cursor).left(), second.textStart()};
        };
        QVERIFY(block.layout()->lineCount() > 2);
        QTextCursor start(block);
        const int margin = m_view->cursorRect(start).left();
        const qreal space = QFontMetricsF(m_view->font()).horizontalAdvance(QLatin1Char(' '));
        const auto [left, textStart] = secondLineLeft();
        QVERIFY(qAbs(left - margin - 6 * space) <= 2);

        const QRect first = m_view->cursorRect(start);
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {},
                          QPoint(left + 1, first.center().y() + first.height()));
        QCOMPARE(m_view->textCursor().position(), textStart);

        m_defaults->setEnableWrapIndent(false);
        QApplication::processEvents();
        QVERIFY(qAbs(secondLineLeft().first - margin) <= 1);
    }

    void shortcutsRunTheCommands()
    {
        m_view->show();
        m_view->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
        setMarkedText(*m_view, QStringLiteral("a «b» c"));
        QTest::keyClick(m_view.get(), Qt::Key_B, Qt::ControlModifier);
        QCOMPARE(markedText(*m_view), QStringLiteral("a **«b»** c"));
        QTest::keyClick(m_view.get(), Qt::Key_D, Qt::ControlModifier);
        QCOMPARE(m_view->toPlainText(), QStringLiteral("a **b** c\na **b** c"));
        QCOMPARE(m_view->undoActionName(), QStringLiteral("Duplicate"));
    }
};

QTEST_MAIN(TestSyntaxHighlightedTextView)
#include "test_syntax_highlighted_text_view.moc"
