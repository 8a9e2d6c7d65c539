#include "ZDSyntaxHighlightedTextView.h"

#include "ZDCodeDocumentLayout.h"
#include "ZDDocumentHighlighter.h"
#include "ZDEditorTheme.h"
#include "ZDMarkdownCommands.h"
#include "ZDMarkdownInsertSheet.h"
#include "ZDTextCommands.h"
#include "ZDUserDefaults.h"

#include <QAction>
#include <QCheckBox>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QSpinBox>
#include <QTextBlock>
#include <QTimer>

#include <algorithm>

namespace {
const auto DefaultActionName = QStringLiteral("Typing");
const auto PlainTextLexer = QStringLiteral("TextLexer");
constexpr int BracketFlashMs = 500;
constexpr int CaretBlinkMs = 530;

bool isClosingBracket(QChar c)
{
    return c == QLatin1Char(')') || c == QLatin1Char(']') || c == QLatin1Char('}');
}
} // namespace

/// The line-number column at the view's left edge.
class ZDLineNumberGutter : public QWidget
{
public:
    explicit ZDLineNumberGutter(ZDSyntaxHighlightedTextView *view) : QWidget(view), m_view(view) {}
    QSize sizeHint() const override { return {m_view->gutterWidth(), 0}; }

protected:
    void paintEvent(QPaintEvent *event) override { m_view->paintGutter(event); }

private:
    ZDSyntaxHighlightedTextView *m_view;
};

ZDSyntaxHighlightedTextView::ZDSyntaxHighlightedTextView(QWidget *parent)
    : QPlainTextEdit(parent), m_flashTimer(new QTimer(this)), m_caretTimer(new QTimer(this))
{
    auto *codeDocument = new QTextDocument(this);
    m_layout = new ZDCodeDocumentLayout(codeDocument);
    codeDocument->setDocumentLayout(m_layout);
    setDocument(codeDocument);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setCursorWidth(0); // the caret is painted in the theme's colour
    m_gutter = new ZDLineNumberGutter(this);

    connect(document(), &QTextDocument::contentsChange, this,
            &ZDSyntaxHighlightedTextView::documentContentsChanged);
    connect(document(), &QTextDocument::undoCommandAdded, this, &ZDSyntaxHighlightedTextView::recordUndoStep);
    m_documentHighlighter = new ZDDocumentHighlighter(document(), nullptr, this);
    m_lastRevision = document()->revision();

    connect(this, &QPlainTextEdit::blockCountChanged, this, &ZDSyntaxHighlightedTextView::updateGutterWidth);
    connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect &rect, int dy) {
        if (dy != 0)
            m_gutter->scroll(0, dy);
        else
            m_gutter->update(0, rect.y(), m_gutter->width(), rect.height());
    });
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, [this] {
        m_caretVisible = true;
        if (hasFocus())
            m_caretTimer->start();
        updateExtraSelections();
        viewport()->update();
    });

    m_flashTimer->setSingleShot(true);
    m_flashTimer->setInterval(BracketFlashMs);
    connect(m_flashTimer, &QTimer::timeout, this, [this] {
        m_flashedBracket = -1;
        updateExtraSelections();
    });
    m_caretTimer->setInterval(CaretBlinkMs);
    connect(m_caretTimer, &QTimer::timeout, this, [this] {
        m_caretVisible = !m_caretVisible;
        viewport()->update(cursorRect().adjusted(-2, 0, 2, 0));
    });

    createActions();
    setUserDefaults(ZDUserDefaults::standardUserDefaults());
    if (!m_theme)
        applyTheme(ZDEditorTheme::themeNamed(QStringLiteral("Xcode")));
    updateGutterWidth();
}

ZDSyntaxHighlightedTextView::~ZDSyntaxHighlightedTextView() = default;

void ZDSyntaxHighlightedTextView::setUserDefaults(ZDUserDefaults *defaults)
{
    if (m_defaults)
        disconnect(m_defaults, nullptr, this, nullptr);
    m_defaults = defaults;
    if (m_defaults) {
        ZDEditorTheme::registerWithDefaults(*m_defaults);
        connect(m_defaults, &ZDUserDefaults::valueChanged, this,
                &ZDSyntaxHighlightedTextView::reloadDisplaySettings);
    }
    reloadDisplaySettings();
}

ZDEditorSettings ZDSyntaxHighlightedTextView::currentSettings() const
{
    return m_defaults ? ZDEditorSettings::fromDefaults(*m_defaults) : ZDEditorSettings();
}

void ZDSyntaxHighlightedTextView::reloadDisplaySettings()
{
    const ZDEditorSettings settings = currentSettings();
    if (m_defaults) {
        const ZDFontDescriptor descriptor = m_defaults->editorFont();
        QFont editorFont(descriptor.family);
        editorFont.setStyleHint(QFont::Monospace);
        editorFont.setPointSizeF(descriptor.pointSize > 0 ? descriptor.pointSize : 12.0);
        if (editorFont != font())
            setFont(editorFont);
    }
    if (m_defaults) {
        m_layout->setLineHeightMultiple(m_defaults->editorLineHeightMultiple());
        m_layout->setWrapIndentSpaces(settings.useSoftWrap && m_defaults->enableWrapIndent()
                                          ? m_defaults->wrapIndentSize()
                                          : 0);
    }
    setLineWrapMode(settings.useSoftWrap ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setTabStopDistance(settings.tabSize * fontMetrics().horizontalAdvance(QLatin1Char(' ')));
    const bool detectLinks = m_defaults && m_defaults->automaticLinkDetection();
    const bool recolor = settings.showInvisibles != m_showInvisibles || detectLinks != m_detectLinks;
    m_showInvisibles = settings.showInvisibles;
    m_detectLinks = detectLinks;
    m_documentHighlighter->setShowInvisibles(m_showInvisibles);
    m_documentHighlighter->setAutomaticLinkDetection(m_detectLinks);
    if (m_defaults && m_themeFromPreferences) {
        const auto theme = ZDEditorTheme::currentTheme(*m_defaults);
        if (theme && (!m_theme || !theme->isEqual(*m_theme)))
            applyTheme(theme);
    }
    if (recolor)
        m_documentHighlighter->updateHighlightAsync();
    updateGutterWidth();
    viewport()->update();
}

void ZDSyntaxHighlightedTextView::setColors(const ZDEditorColors &colors)
{
    m_colors = colors;
    QPalette palette = this->palette();
    palette.setColor(QPalette::Base, colors.background);
    palette.setColor(QPalette::Text, colors.foreground);
    palette.setColor(QPalette::Highlight, colors.selection);
    palette.setColor(QPalette::HighlightedText, colors.foreground);
    setPalette(palette);
    updateExtraSelections();
    m_gutter->update();
    viewport()->update();
}

QString ZDSyntaxHighlightedTextView::currentLexer() const
{
    return m_currentLexer.isEmpty() ? PlainTextLexer : m_currentLexer;
}

// Highlighting and theme

ZDEditorColors ZDSyntaxHighlightedTextView::colorsOfTheme(const ZDEditorTheme &theme)
{
    const auto mix = [&](double amount) {
        const QColor back = theme.backgroundColor();
        const QColor fore = theme.foregroundColor();
        return QColor::fromRgbF(float(back.redF() + (fore.redF() - back.redF()) * amount),
                                float(back.greenF() + (fore.greenF() - back.greenF()) * amount),
                                float(back.blueF() + (fore.blueF() - back.blueF()) * amount));
    };
    ZDEditorColors colors;
    colors.background = theme.backgroundColor();
    colors.foreground = theme.foregroundColor();
    colors.caret = theme.caretColor();
    colors.selection = theme.selectedTextBackgroundColor();
    colors.invisibles = theme.invisibleCharacterColor();
    colors.gutterText = theme.gutterTextColor();
    colors.gutterBackground = mix(0.035);
    colors.currentLine = mix(0.05);
    return colors;
}

void ZDSyntaxHighlightedTextView::setTheme(std::shared_ptr<const ZDEditorTheme> theme)
{
    m_themeFromPreferences = !theme;
    if (!theme && m_defaults)
        theme = ZDEditorTheme::currentTheme(*m_defaults);
    if (theme)
        applyTheme(std::move(theme));
}

void ZDSyntaxHighlightedTextView::applyTheme(std::shared_ptr<const ZDEditorTheme> theme)
{
    if (!theme)
        return;
    m_theme = std::move(theme);
    setColors(colorsOfTheme(*m_theme));
    m_documentHighlighter->setPalette(zdHighlightPaletteOfTheme(m_theme));
}

void ZDSyntaxHighlightedTextView::setHighlighter(ZDHighlighter *highlighter)
{
    if (highlighter == m_highlighter)
        return;
    m_highlighter = highlighter;
    delete m_documentHighlighter;
    m_documentHighlighter = new ZDDocumentHighlighter(document(), highlighter, this);
    m_documentHighlighter->setCurrentLexer(m_currentLexer);
    m_documentHighlighter->setShowInvisibles(m_showInvisibles);
    m_documentHighlighter->setAutomaticLinkDetection(m_detectLinks);
    if (m_theme)
        m_documentHighlighter->setPalette(zdHighlightPaletteOfTheme(m_theme));
    m_documentHighlighter->updateHighlightAsync();
}

void ZDSyntaxHighlightedTextView::setCurrentLexer(const QString &lexer)
{
    if (lexer == m_currentLexer)
        return;
    m_currentLexer = lexer;
    m_documentHighlighter->setCurrentLexer(lexer);
    m_documentHighlighter->updateHighlightAsync();
}

void ZDSyntaxHighlightedTextView::showText(const QString &text, const QString &lexer)
{
    // The text goes in as plain text first, so that only one highlighting pass runs.
    m_currentLexer.clear();
    m_documentHighlighter->setCurrentLexer(QString());
    setPlainText(text);
    m_currentLexer = lexer;
    m_documentHighlighter->setCurrentLexer(lexer);
    m_documentHighlighter->updateHighlightAsync();
}

QColor ZDSyntaxHighlightedTextView::colorAt(int index) const
{
    const QColor color = m_documentHighlighter->colorAt(index);
    return color.isValid() ? color : m_colors.foreground;
}

// Editing

void ZDSyntaxHighlightedTextView::documentContentsChanged(int position, int removed, int added)
{
    const int length = document()->characterCount() - 1;
    // Format-only changes (highlighting) arrive here too; only a new revision is a text change.
    if (document()->revision() == m_lastRevision)
        return;
    m_lastRevision = document()->revision();
    notifyUndoActionNames();
    const int originalLength = m_lastLength;
    m_lastLength = length;
    // An edit of ours arrives as one change over its whole block; applyEdit moves the rules
    // and announces the change itself.
    if (m_applyingEdit)
        return;
    Q_EMIT textDidChange(position, std::min(removed, originalLength - position), originalLength,
                         std::min(added, length - position));
}

bool ZDSyntaxHighlightedTextView::applyEdit(const ZDTextEdit &edit)
{
    if (edit.changesText()) {
        const int originalLength = document()->characterCount() - 1;
        QTextCursor cursor(document());
        m_applyingEdit = true;
        m_pendingActionName = edit.actionName.isEmpty() ? DefaultActionName : edit.actionName;
        cursor.beginEditBlock();
        for (auto it = edit.replacements.crbegin(); it != edit.replacements.crend(); ++it) {
            cursor.setPosition(it->range.location);
            cursor.setPosition(it->range.end(), QTextCursor::KeepAnchor);
            if (it->text.isEmpty())
                cursor.removeSelectedText();
            else
                cursor.insertText(it->text);
        }
        // Ends the step with a command that typing cannot merge into, so that text typed right
        // after the edit is an undo step of its own.
        cursor.setBlockFormat(cursor.blockFormat());
        cursor.endEditBlock();
        m_pendingActionName.clear();
        m_applyingEdit = false;
        const ZDTextRange changed = edit.changedRange();
        Q_EMIT textDidChange(changed.location, changed.length, originalLength, edit.changedRangeNewLength());
    }
    setSelectedRange(edit.selection);
    return edit.changesText();
}

ZDTextRange ZDSyntaxHighlightedTextView::selectedRange() const
{
    const QTextCursor cursor = textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

void ZDSyntaxHighlightedTextView::setSelectedRange(ZDTextRange range)
{
    const int length = document()->characterCount() - 1;
    QTextCursor cursor = textCursor();
    cursor.setPosition(std::clamp(range.location, 0, length));
    cursor.setPosition(std::clamp(range.end(), 0, length), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

bool ZDSyntaxHighlightedTextView::runCommand(const ZDTextEditResult &edit)
{
    if (!edit || isReadOnly())
        return false;
    applyEdit(*edit);
    return true;
}

// The document counts undo commands, several to a step; each step is remembered with the
// command count at its end, so the step at hand is the last one at or below the current count.
void ZDSyntaxHighlightedTextView::recordUndoStep()
{
    const int commands = document()->availableUndoSteps();
    m_undoSteps.removeIf([&](const UndoStep &step) { return step.commandCount >= commands; });
    m_undoSteps.append({commands, m_pendingActionName.isEmpty() ? DefaultActionName : m_pendingActionName});
    notifyUndoActionNames();
}

void ZDSyntaxHighlightedTextView::notifyUndoActionNames()
{
    const QStringList names{undoActionName(), redoActionName()};
    if (names == m_announcedUndoNames)
        return;
    m_announcedUndoNames = names;
    Q_EMIT undoActionNamesChanged();
}

QString ZDSyntaxHighlightedTextView::undoActionName() const
{
    const int commands = document()->availableUndoSteps();
    for (auto it = m_undoSteps.crbegin(); it != m_undoSteps.crend(); ++it)
        if (it->commandCount <= commands)
            return commands > 0 ? it->name : QString();
    return commands > 0 ? DefaultActionName : QString();
}

QString ZDSyntaxHighlightedTextView::redoActionName() const
{
    if (!document()->isRedoAvailable())
        return QString();
    const int commands = document()->availableUndoSteps();
    for (const UndoStep &step : m_undoSteps)
        if (step.commandCount > commands)
            return step.name;
    return DefaultActionName;
}

// Commands

void ZDSyntaxHighlightedTextView::insertTab()
{
    if (ZDTextCommands::isSelectingMultipleLines(toPlainText(), selectedRange()))
        shiftRight();
    else
        runCommand(ZDTextCommands::insertSmartTab(toPlainText(), selectedRange(), currentSettings()));
}

void ZDSyntaxHighlightedTextView::insertBacktab()
{
    if (ZDTextCommands::isSelectingMultipleLines(toPlainText(), selectedRange()))
        shiftLeft();
    else
        focusNextPrevChild(false);
}

void ZDSyntaxHighlightedTextView::shiftLeft()
{
    if (m_textViewRole != ShiftDisabledRole)
        runCommand(ZDTextCommands::shiftLines(toPlainText(), selectedRange(), currentSettings(), true,
                                              QString::fromLatin1(ZDTextCommands::ShiftLeftActionName)));
}

void ZDSyntaxHighlightedTextView::shiftRight()
{
    if (m_textViewRole != ShiftDisabledRole)
        runCommand(ZDTextCommands::shiftLines(toPlainText(), selectedRange(), currentSettings(), false,
                                              QString::fromLatin1(ZDTextCommands::ShiftRightActionName)));
}

void ZDSyntaxHighlightedTextView::insertNewline()
{
    runCommand(ZDTextCommands::insertNewline(toPlainText(), selectedRange(), currentSettings()));
}

void ZDSyntaxHighlightedTextView::deleteBackward()
{
    if (runCommand(ZDTextCommands::deleteBackward(toPlainText(), selectedRange(), currentSettings())))
        return;
    QTextCursor cursor = textCursor();
    if (cursor.hasSelection())
        cursor.removeSelectedText();
    else
        cursor.deletePreviousChar();
    setTextCursor(cursor);
}

void ZDSyntaxHighlightedTextView::convertIndentationToSpaces()
{
    runCommand(ZDTextCommands::convertIndentationToSpaces(toPlainText(), selectedRange(), currentSettings()));
}

void ZDSyntaxHighlightedTextView::convertIndentationToTabs()
{
    runCommand(ZDTextCommands::convertIndentationToTabs(toPlainText(), selectedRange(), currentSettings()));
}

void ZDSyntaxHighlightedTextView::stripTrailingWhitespace()
{
    runCommand(ZDTextCommands::stripTrailingWhitespace(toPlainText(), selectedRange()));
}

void ZDSyntaxHighlightedTextView::duplicateSelectedLines()
{
    runCommand(ZDTextCommands::duplicateSelectedLines(toPlainText(), selectedRange()));
}

void ZDSyntaxHighlightedTextView::performMarkdownFormatAction(int tag, const QString &languageAlias)
{
    switch (tag) {
    case ZDMarkdownCommands::InsertLinkTag:
    case ZDMarkdownCommands::InsertImageTag:
    case ZDMarkdownCommands::InsertTableTag:
        openInsertSheet(tag);
        return;
    default:
        runCommand(
            ZDMarkdownCommands::performFormatAction(tag, toPlainText(), selectedRange(), languageAlias));
    }
}

void ZDSyntaxHighlightedTextView::insertMarkdownLink(const QString &url, const QString &linkText,
                                                     const QString &title, const QString &identifier,
                                                     bool referenceStyle)
{
    runCommand(ZDMarkdownCommands::insertLink(
        toPlainText(), selectedRange(),
        ZDMarkdownCommands::linkText(url, linkText, title, identifier, referenceStyle),
        ZDMarkdownCommands::actionNameForTag(ZDMarkdownCommands::InsertLinkTag)));
}

void ZDSyntaxHighlightedTextView::insertMarkdownImage(const QString &url, const QString &title,
                                                      const QString &altText, const QString &identifier,
                                                      bool referenceStyle)
{
    runCommand(ZDMarkdownCommands::insertLink(
        toPlainText(), selectedRange(),
        ZDMarkdownCommands::imageText(url, title, altText, identifier, referenceStyle),
        ZDMarkdownCommands::actionNameForTag(ZDMarkdownCommands::InsertImageTag)));
}

void ZDSyntaxHighlightedTextView::insertMarkdownTable(int rows, int columns)
{
    runCommand(ZDMarkdownCommands::insertTable(toPlainText(), selectedRange(), rows, columns));
}

void ZDSyntaxHighlightedTextView::openInsertSheet(int tag)
{
    using Kind = ZDMarkdownInsertSheet::Kind;
    const Kind kind = tag == ZDMarkdownCommands::InsertLinkTag    ? Kind::Link
                      : tag == ZDMarkdownCommands::InsertImageTag ? Kind::Image
                                                                  : Kind::Table;
    const QString text = toPlainText();
    const ZDTextRange selection = selectedRange();
    auto *sheet = new ZDMarkdownInsertSheet(kind, text.mid(selection.location, selection.length),
                                            ZDMarkdownInsertSheet::nextFreeIdentifier(text), this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    connect(sheet, &QDialog::accepted, this, [this, sheet] {
        switch (sheet->kind()) {
        case ZDMarkdownInsertSheet::Kind::Link:
            insertMarkdownLink(sheet->urlField()->text(), sheet->textField()->text(),
                               sheet->titleField()->text(), sheet->identifierField()->text(),
                               sheet->referenceStyleBox()->isChecked());
            break;
        case ZDMarkdownInsertSheet::Kind::Image:
            insertMarkdownImage(sheet->urlField()->text(), sheet->titleField()->text(),
                                sheet->textField()->text(), sheet->identifierField()->text(),
                                sheet->referenceStyleBox()->isChecked());
            break;
        case ZDMarkdownInsertSheet::Kind::Table:
            insertMarkdownTable(sheet->rowsBox()->value(), sheet->columnsBox()->value());
            break;
        }
    });
    sheet->open();
}

bool ZDSyntaxHighlightedTextView::typeText(const QString &typed)
{
    return runCommand(
        ZDTextCommands::insertTypedText(toPlainText(), selectedRange(), typed, currentSettings()));
}

void ZDSyntaxHighlightedTextView::showMatchingBracketForClosingBracketAt(int index)
{
    const std::optional<int> opening = ZDTextCommands::matchingOpeningBracket(toPlainText(), index);
    if (!opening)
        return;
    m_flashedBracket = *opening;
    updateExtraSelections();
    m_flashTimer->start();
}

void ZDSyntaxHighlightedTextView::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const int key = event->key();
    if (isReadOnly())
        return QPlainTextEdit::keyPressEvent(event);
    if (key == Qt::Key_Tab && modifiers == Qt::NoModifier)
        return insertTab();
    if (key == Qt::Key_Backtab || (key == Qt::Key_Tab && modifiers == Qt::ShiftModifier))
        return insertBacktab();
    // Shift+Return too: the snippet's text has one kind of line break only.
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) &&
        (modifiers == Qt::NoModifier || modifiers == Qt::ShiftModifier))
        return insertNewline();
    if (key == Qt::Key_Backspace && modifiers == Qt::NoModifier)
        return deleteBackward();

    const QString typed = event->text();
    const bool plainText =
        !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) && typed.size() == 1;
    const bool pairing = plainText && QStringLiteral("{[(\"')]}").contains(typed);
    if (!(pairing && typeText(typed)))
        QPlainTextEdit::keyPressEvent(event);

    const int caret = textCursor().position();
    const QString text = toPlainText();
    const bool closingTyped = plainText && isClosingBracket(typed.at(0));
    const bool passedRight = key == Qt::Key_Right && caret > 0 && isClosingBracket(text.at(caret - 1));
    const bool passedLeft = key == Qt::Key_Left && caret < text.size() && isClosingBracket(text.at(caret));
    if (currentSettings().automaticallyCloseBrackets && (closingTyped || passedRight))
        showMatchingBracketForClosingBracketAt(caret - 1);
    else if (currentSettings().automaticallyCloseBrackets && passedLeft)
        showMatchingBracketForClosingBracketAt(caret);
}

// Actions

void ZDSyntaxHighlightedTextView::addEditorAction(const QString &identifier, const QString &title,
                                                  const QKeySequence &shortcut, std::function<void()> handler)
{
    auto *action = new QAction(title, this);
    action->setObjectName(identifier);
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(action, &QAction::triggered, this, std::move(handler));
    addAction(action);
    m_actions.insert(identifier, action);
}

void ZDSyntaxHighlightedTextView::createActions()
{
    using namespace ZDMarkdownCommands;
    addEditorAction(QStringLiteral("shiftLeft"), tr("Shift Left"),
                    QKeySequence(Qt::CTRL | Qt::Key_BracketLeft), [this] { shiftLeft(); });
    addEditorAction(QStringLiteral("shiftRight"), tr("Shift Right"),
                    QKeySequence(Qt::CTRL | Qt::Key_BracketRight), [this] { shiftRight(); });
    addEditorAction(QStringLiteral("duplicate"), tr("Duplicate"), QKeySequence(Qt::CTRL | Qt::Key_D),
                    [this] { duplicateSelectedLines(); });
    addEditorAction(QStringLiteral("convertToSpaces"), tr("Convert Indentation to Spaces"), {},
                    [this] { convertIndentationToSpaces(); });
    addEditorAction(QStringLiteral("convertToTabs"), tr("Convert Indentation to Tabs"), {},
                    [this] { convertIndentationToTabs(); });
    addEditorAction(QStringLiteral("stripTrailingWhitespace"), tr("Strip Trailing Whitespace"), {},
                    [this] { stripTrailingWhitespace(); });

    const QList<std::pair<int, QKeySequence>> markdown{
        {StrongTag, QKeySequence(Qt::CTRL | Qt::Key_B)},
        {EmphasizeTag, QKeySequence(Qt::CTRL | Qt::Key_I)},
        {CommentTag, QKeySequence(Qt::CTRL | Qt::Key_Slash)},
        {OrderedListTag, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_O)},
        {UnorderedListTag, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_U)},
        {BlockquoteTag, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Q)},
        {InlineCodeTag, QKeySequence(Qt::CTRL | Qt::Key_QuoteLeft)},
        {MarkTag, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_M)},
        {LineThroughTag, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_X)},
        {CodeBlockTag, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_C)},
        {InsertLinkTag, QKeySequence(Qt::CTRL | Qt::Key_K)},
        {InsertImageTag, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I)},
        {InsertTableTag, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_T)},
    };
    for (const auto &[tag, shortcut] : markdown)
        addEditorAction(QStringLiteral("markdown.%1").arg(tag), actionNameForTag(tag), shortcut,
                        [this, tag = tag] { performMarkdownFormatAction(tag); });
    for (int level = 1; level <= 6; ++level)
        addEditorAction(QStringLiteral("markdown.%1").arg(100 + level), actionNameForTag(100 + level),
                        QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_0 + level)),
                        [this, level] { performMarkdownFormatAction(100 + level); });
}
