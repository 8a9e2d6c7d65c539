#include "ZDDocumentHighlighter.h"
#include "ZDHighlighter.h"
#include "ZDPygmentsReference.h"
#include "ZDTestSupport.h"

#include <QSignalSpy>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QtTest>

namespace {
QColor colorOf(const QString &tokenClass)
{
    return QColor::fromRgb(qHash(tokenClass) & 0xffffff);
}

ZDHighlightPalette testPalette()
{
    return {colorOf, QColor(Qt::black), QColor(Qt::red), QColor(Qt::blue)};
}

ZDHighlightRule rule(qint64 begin, qint64 length, const char *tokenClass)
{
    return {begin, length, QString::fromLatin1(tokenClass), true};
}

// A Python text of about `lines` lines with comments and strings.
QString pythonText(int lines)
{
    QString text;
    for (int i = 0; i < lines; ++i)
        text += QStringLiteral("value_%1 = compute(%1, 'label')  # note %1\n").arg(i);
    return text;
}
} // namespace

class DocumentHighlighterTest : public QObject
{
    Q_OBJECT
    ZDHighlighter *m_bridge = nullptr;

    struct Fixture
    {
        QTextDocument document;
        ZDDocumentHighlighter highlighter;
        Fixture(ZDHighlighter *bridge, const QString &text, const QString &lexer)
            : highlighter(&document, bridge)
        {
            document.setPlainText(text);
            highlighter.setPalette(testPalette());
            highlighter.setCurrentLexer(lexer);
        }
    };

private Q_SLOTS:
    void initTestCase()
    {
        m_bridge = new ZDHighlighter(ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Vendors"));
    }
    void cleanupTestCase() { delete m_bridge; }

    void rulesLandOnTheRightCharacters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("lexer");
        QTest::addColumn<QVariantMap>("referenceOptions");
        QTest::newRow("astral and tabs")
            << QStringLiteral("def f():\n\treturn \"\U0001F600\U0001F680\" + 'x'\t# 😀 done\nx = 42\n")
            << QStringLiteral("PythonLexer") << QVariantMap();
        QTest::newRow("leading blank lines")
            << QStringLiteral("\n\n\nimport os\nprint(os.name)  # \U00010348\n")
            << QStringLiteral("PythonLexer") << QVariantMap();
        QTest::newRow("php without opening tag")
            << QStringLiteral("$greeting = \"h\u00e9llo \U0001F600\";\necho $greeting; // done\n")
            << QStringLiteral("PhpLexer") << QVariantMap{{QStringLiteral("startinline"), true}};
        QTest::newRow("php with opening tag")
            << QStringLiteral("  <?php\n$a = 1; /* c */\n") << QStringLiteral("PhpLexer") << QVariantMap();
    }

    void rulesLandOnTheRightCharacters()
    {
        QFETCH(QString, text);
        QFETCH(QString, lexer);
        QFETCH(QVariantMap, referenceOptions);
        Fixture f(m_bridge, text, lexer);
        f.highlighter.updateHighlightAsync(false);

        const auto reference = zdPygmentsReferenceTokens(text, lexer, referenceOptions);
        QVERIFY(!reference.isEmpty());
        qsizetype position = 0;
        while (position < text.size() && text.at(position) == QLatin1Char('\n'))
            ++position;
        int checked = 0;
        for (const auto &[value, tokenClass] : reference) {
            for (qsizetype i = 0; i < value.size() && position + i < text.size(); ++i) {
                QCOMPARE(text.at(position + i), value.at(i));
                if (value.at(i).isSpace())
                    continue; // blanks carry no visible colour
                QVERIFY2(f.highlighter.tokenClassAt(position + i) == tokenClass,
                         qPrintable(QStringLiteral("at %1 '%2': %3 instead of %4")
                                        .arg(position + i)
                                        .arg(value, f.highlighter.tokenClassAt(position + i), tokenClass)));
                QCOMPARE(f.highlighter.colorAt(position + i), colorOf(tokenClass));
                ++checked;
            }
            position += value.size();
        }
        QVERIFY(checked > 10);
    }

    void coloursStayOutOfTheUndoStack()
    {
        Fixture f(m_bridge, QStringLiteral("int main() { return 0; }\n"), QStringLiteral("CLexer"));
        f.document.setModified(false);
        const int undoSteps = f.document.availableUndoSteps();
        f.highlighter.updateHighlightAsync(false);
        QCOMPARE(f.document.availableUndoSteps(), undoSteps);
        QVERIFY(!f.document.isModified());
        const QList<QTextLayout::FormatRange> formats = f.document.firstBlock().layout()->formats();
        QVERIFY(!formats.isEmpty());
        QCOMPARE(formats.first().format.foreground().color(), colorOf(QStringLiteral("Token.Keyword.Type")));
    }

    void plainTextNeverReachesPython()
    {
        Fixture f(m_bridge, QStringLiteral("a\tb c\n"), QString());
        f.highlighter.setShowInvisibles(true);
        const quint64 calls = m_bridge->pythonCallCount();
        f.highlighter.updateHighlightAsync(false);
        f.highlighter.setCurrentLexer(QStringLiteral("TextLexer"));
        f.highlighter.updateHighlightForRange({0, 3}, false);
        QCOMPARE(m_bridge->pythonCallCount(), calls);
        QCOMPARE(f.highlighter.colorAt(0), QColor(Qt::black));
        QCOMPARE(f.highlighter.colorAt(1), QColor(Qt::red)); // the tab
        QCOMPARE(f.highlighter.colorAt(3), QColor(Qt::red)); // the space
    }

    void linksAreDetectedInTheColouredLines()
    {
        const QString text =
            QStringLiteral("see https://example.org/a?b=1, then\nmail mailto:me@example.org.\n# www.x.org");
        Fixture f(m_bridge, text, QStringLiteral("PythonLexer"));
        f.highlighter.setAutomaticLinkDetection(true);
        f.highlighter.updateHighlightAsync(false);
        const qsizetype url = text.indexOf(QStringLiteral("https"));
        QVERIFY(!f.highlighter.isLinkIndex(url - 1));
        QVERIFY(f.highlighter.isLinkIndex(url));
        QVERIFY(f.highlighter.isLinkIndex(text.indexOf(QStringLiteral("=1"))));
        QVERIFY(!f.highlighter.isLinkIndex(text.indexOf(QLatin1Char(','))));
        QVERIFY(!f.highlighter.isLinkIndex(text.indexOf(QStringLiteral("org.\n")) + 3));
        QVERIFY(f.highlighter.isLinkIndex(text.indexOf(QStringLiteral("www"))));
        const QList<QTextLayout::FormatRange> formats = f.document.firstBlock().layout()->formats();
        const auto underlined =
            std::find_if(formats.begin(), formats.end(),
                         [](const QTextLayout::FormatRange &range) { return range.format.fontUnderline(); });
        QVERIFY(underlined != formats.end());
        QCOMPARE(underlined->start, int(url));
        QCOMPARE(underlined->format.foreground().color(), QColor(Qt::blue));

        // Breaking the address ends the link there once the line is coloured again.
        QTextCursor cursor(&f.document);
        cursor.setPosition(int(url) + 12);
        cursor.insertText(QStringLiteral(" "));
        QVERIFY(f.highlighter.isLinkIndex(url));
        QVERIFY(!f.highlighter.isLinkIndex(url + 13));
    }

    void processRulesShiftsMergesAndDrops()
    {
        // Markdown markers take the class of what they mark; a keyword elsewhere keeps its own.
        Fixture md(m_bridge, QStringLiteral("**bold** #x"), QStringLiteral("MarkdownLexer"));
        md.highlighter.processRules({rule(0, 2, "Token.Keyword"), rule(2, 4, "Token.Generic.Strong"),
                                     rule(6, 2, "Token.Keyword"), rule(8, 1, "Token.Text"),
                                     rule(9, 1, "Token.Keyword"), rule(10, 1, "Token.Name")},
                                    {0, 11}, false);
        QCOMPARE(md.highlighter.tokenClassAt(0), QStringLiteral("Token.Generic.Strong"));
        QCOMPARE(md.highlighter.tokenClassAt(7), QStringLiteral("Token.Generic.Strong"));
        QCOMPARE(md.highlighter.tokenClassAt(9), QStringLiteral("Token.Keyword"));

        // With the PHP prefix the first two rules go and positions move back by six; a rule that
        // would start before the text is dropped.
        Fixture php(m_bridge, QStringLiteral("$a = 1;"), QStringLiteral("PhpLexer"));
        php.highlighter.processRules({rule(0, 5, "Token.Comment.Preproc"), rule(5, 1, "Token.Text"),
                                      rule(2, 2, "Token.Error"), rule(6, 2, "Token.Name.Variable")},
                                     {0, 7}, true);
        QCOMPARE(php.highlighter.tokenClassAt(0), QStringLiteral("Token.Name.Variable"));
        QCOMPARE(php.highlighter.tokenClassAt(1), QStringLiteral("Token.Name.Variable"));
        QCOMPARE(php.highlighter.tokenClassAt(2), QString());

        // The lexer's own final newline: one past the end is shortened, further is skipped.
        Fixture end(m_bridge, QStringLiteral("abc"), QStringLiteral("CLexer"));
        end.highlighter.highlightWithRules({rule(1, 3, "Token.Name"), rule(0, 1, "Token.Keyword"),
                                            rule(2, 5, "Token.Error"), rule(3, 1, "Token.Error")});
        QCOMPARE(end.highlighter.tokenClassAt(0), QStringLiteral("Token.Keyword"));
        QCOMPARE(end.highlighter.tokenClassAt(2), QStringLiteral("Token.Name"));
    }

    void contextualIndexesFollowEdits()
    {
        Fixture f(m_bridge, QStringLiteral("x = 1  # comment\ny = 'str'\n"), QStringLiteral("PythonLexer"));
        f.highlighter.updateHighlightAsync(false);
        QVERIFY(!f.highlighter.isContextualIndex(0));
        QVERIFY(f.highlighter.isContextualIndex(7));  // "#"
        QVERIFY(f.highlighter.isContextualIndex(22)); // inside 'str'
        const qsizetype count = f.highlighter.contextualIndexCount();

        // Removing "x = " moves the rest left; the removed characters leave the set.
        QTextCursor cursor(&f.document);
        cursor.setPosition(0);
        cursor.setPosition(4, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        QVERIFY(f.highlighter.isContextualIndex(3));
        QVERIFY(f.highlighter.isContextualIndex(18));
        QCOMPARE(f.highlighter.contextualIndexCount(), count);
    }

    void extendedRangeCoversContextAndWholeLines()
    {
        const QString text = QStringLiteral("a = 1\n\"\"\"doc\nstring\"\"\"\nb = 2\n");
        Fixture f(m_bridge, text, QStringLiteral("PythonLexer"));
        f.highlighter.updateHighlightAsync(false);
        const qsizetype max = text.size() - 1;
        QCOMPARE(f.highlighter.extendedRangeOfRange({2, 1}, max), (ZDCharacterRange{0, 5}));
        QCOMPARE(f.highlighter.extendedRangeOfRange({0, 0}, max), (ZDCharacterRange{0, 5}));
        // Inside the docstring: the whole docstring's lines.
        QCOMPARE(f.highlighter.extendedRangeOfRange({15, 1}, max), (ZDCharacterRange{6, 16}));
        // A range that starts on a newline keeps its start; the docstring after it joins.
        QCOMPARE(f.highlighter.extendedRangeOfRange({5, 2}, max), (ZDCharacterRange{5, 17}));
        QCOMPARE(f.highlighter.extendedRangeOfRange({24, 1}, max), (ZDCharacterRange{23, 5}));
        QCOMPARE(f.highlighter.extendedRangeOfRange({text.size(), 3}, max), (ZDCharacterRange{text.size(), 3}));
    }

    void chooseFullOrPartialAfterAnEdit()
    {
        using Mode = ZDDocumentHighlighter::UpdateMode;
        Fixture small(m_bridge, pythonText(5), QStringLiteral("PythonLexer"));
        QCOMPARE(small.highlighter.updateModeOnTextEditedByUser(), Mode::Full);

        Fixture large(m_bridge, pythonText(100), QStringLiteral("PythonLexer"));
        large.highlighter.didUpdateHighlightForEntireContent(0.0);
        QCOMPARE(large.highlighter.updateModeOnTextEditedByUser(), Mode::Partial);
        large.highlighter.didUpdateHighlightForEntireContent(0.019);
        QCOMPARE(large.highlighter.updateModeOnTextEditedByUser(), Mode::Full);
        large.highlighter.didUpdateHighlightForEntireContent(0.021);
        QCOMPARE(large.highlighter.updateModeOnTextEditedByUser(), Mode::Partial);
        QTextCursor cursor(&large.document);
        cursor.setPosition(0);
        cursor.setPosition(1500, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        // The text shrank by more than 1000 since the measurement: the whole text was highlighted
        // again, at once, and measured anew.
        QCOMPARE(large.highlighter.lastContentLength(), qsizetype(large.document.characterCount() - 1));
        QCOMPARE(large.highlighter.lastLexer(), QStringLiteral("PythonLexer"));
    }

    void partialRehighlightAfterTyping()
    {
        Fixture f(m_bridge, pythonText(200), QStringLiteral("PythonLexer"));
        f.highlighter.updateHighlightAsync(false);
        f.highlighter.didUpdateHighlightForEntireContent(0.5); // as if the whole text were slow
        const QTextBlock line = f.document.findBlockByNumber(10);
        const quint64 calls = m_bridge->pythonCallCount();

        QTextCursor cursor(line);
        cursor.insertText(QStringLiteral("#"));
        QCOMPARE(m_bridge->pythonCallCount(), calls + 1);
        QCOMPARE(f.highlighter.tokenClassAt(line.position() + 5), QStringLiteral("Token.Comment.Single"));
        const qsizetype nextLine = f.document.findBlockByNumber(11).position();
        QCOMPARE(f.highlighter.tokenClassAt(nextLine), QStringLiteral("Token.Name"));
        QVERIFY(f.highlighter.hasPendingWholeTextPass());
        QSignalSpy applied(&f.highlighter, &ZDDocumentHighlighter::highlightApplied);
        QVERIFY(applied.wait(5000)); // the delayed whole-text pass, in the background
        QCOMPARE(f.highlighter.lastLexer(), QString());
    }

    void cssRangeRunsFromBraceToBrace()
    {
        QString text;
        for (int i = 0; i < 60; ++i)
            text += QStringLiteral(".rule%1 { color: red; }\n").arg(i);
        Fixture f(m_bridge, text, QStringLiteral("CssLexer"));
        const qsizetype ruleStart = text.indexOf(QStringLiteral(".rule7 "));
        const qsizetype colon = text.indexOf(QLatin1Char(':'), ruleStart);
        const auto range = f.highlighter.partialRangeForEdit({colon, 1}, text.size(), 1);
        QVERIFY(range.has_value());
        QCOMPARE(range->location, text.indexOf(QLatin1Char('{'), ruleStart));
        QCOMPARE(range->end(), text.indexOf(QLatin1Char('}'), ruleStart) + 1);
    }

    void staleBackgroundResultsAreDropped()
    {
        Fixture f(m_bridge, QStringLiteral("x = 1\n"), QStringLiteral("PythonLexer"));
        QSignalSpy applied(&f.highlighter, &ZDDocumentHighlighter::highlightApplied);
        f.highlighter.updateHighlightAsync(true);
        QTextCursor(&f.document).insertText(QStringLiteral("y = 2\n")); // re-highlighted at once
        QCOMPARE(applied.count(), 1);
        m_bridge->waitForBackgroundWork();
        QTest::qWait(50);
        QCOMPARE(applied.count(), 1);
        QCOMPARE(f.highlighter.tokenClassAt(0), QStringLiteral("Token.Name"));

        f.highlighter.updateHighlightAsync(true);
        QVERIFY(applied.wait(5000));
        QCOMPARE(applied.count(), 2);
    }
};

QTEST_MAIN(DocumentHighlighterTest)
#include "test_document_highlighter.moc"
