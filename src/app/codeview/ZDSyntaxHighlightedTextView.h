#pragma once

#include "ZDEditorColors.h"
#include "ZDEditorSettings.h"
#include "ZDTextEdit.h"

#include <QHash>
#include <QList>
#include <QPlainTextEdit>
#include <QPointer>

#include <functional>
#include <memory>

class QTimer;
class ZDCodeDocumentLayout;
class ZDDocumentHighlighter;
class ZDEditorTheme;
class ZDHighlighter;
class ZDUserDefaults;

/// The code editor of a snippet part. Each command reads the settings afresh, computes its edit
/// with the pure commands of the editor library and applies it as one undo step carrying the
/// command's name. Every change of the text is announced with `textDidChange`.
///
/// The view hosts a ZDDocumentHighlighter on its document: the text is coloured with the lexer
/// of the part through the highlighter bridge, in the colours of the editor theme. The theme,
/// font and display settings follow the preferences live unless a theme is set explicitly.
class ZDSyntaxHighlightedTextView : public QPlainTextEdit
{
    Q_OBJECT
    Q_PROPERTY(QString undoActionName READ undoActionName NOTIFY undoActionNamesChanged)
    Q_PROPERTY(QString redoActionName READ redoActionName NOTIFY undoActionNamesChanged)

public:
    /// In this role the shift commands do nothing.
    static constexpr int ShiftDisabledRole = 1;

    explicit ZDSyntaxHighlightedTextView(QWidget *parent = nullptr);
    ~ZDSyntaxHighlightedTextView() override;

    /// The preferences the settings are read from (by default the standard ones).
    void setUserDefaults(ZDUserDefaults *defaults);
    ZDEditorSettings currentSettings() const;

    void setColors(const ZDEditorColors &colors);
    const ZDEditorColors &colors() const { return m_colors; }
    /// The editor colours of a theme: its background, text, caret, selection, invisibles and gutter.
    static ZDEditorColors colorsOfTheme(const ZDEditorTheme &theme);

    /// Colours the text and the view with `theme`; a null theme follows the preference
    /// "User EditorTheme" again (the default).
    void setTheme(std::shared_ptr<const ZDEditorTheme> theme);
    std::shared_ptr<const ZDEditorTheme> theme() const { return m_theme; }

    /// The bridge the text is highlighted through; null colours plain text only.
    void setHighlighter(ZDHighlighter *highlighter);
    ZDDocumentHighlighter *documentHighlighter() const { return m_documentHighlighter; }
    /// Replaces the text (clearing the undo history) and highlights it with `lexer`.
    void showText(const QString &text, const QString &lexer);

    void setTextViewRole(int role) { m_textViewRole = role; }
    int textViewRole() const { return m_textViewRole; }
    /// The Pygments lexer of the edited part ("TextLexer" when none is set); a new lexer
    /// highlights the whole text again.
    void setCurrentLexer(const QString &lexer);
    QString currentLexer() const;

    /// Applies an edit as one undo step named after its action and selects its selection.
    /// Returns false when the edit changes nothing and only moves the selection.
    bool applyEdit(const ZDTextEdit &edit);
    ZDTextRange selectedRange() const;
    void setSelectedRange(ZDTextRange range);

    /// The names of the undo and redo steps at hand ("" when there is none), for "Undo <name>".
    QString undoActionName() const;
    QString redoActionName() const;

    /// The view's commands with their shortcuts, by identifier ("shiftLeft", "shiftRight",
    /// "duplicate", "convertToSpaces", "convertToTabs", "stripTrailingWhitespace",
    /// "markdown.<tag>"), for the window's menus.
    QAction *editorAction(const QString &identifier) const { return m_actions.value(identifier); }
    QStringList editorActionIdentifiers() const { return m_actions.keys(); }

    int gutterWidth() const;
    /// The selection as HTML with highlighting colours over the theme's background.
    QString selectionAsHtml() const;

public Q_SLOTS:
    void insertTab();
    void insertBacktab();
    void insertNewline();
    void deleteBackward();
    void shiftLeft();
    void shiftRight();
    void convertIndentationToSpaces();
    void convertIndentationToTabs();
    void stripTrailingWhitespace();
    void duplicateSelectedLines();
    /// A Markdown action by its tag; `languageAlias` names the code block's language. Tags 1001
    /// to 1003 open a sheet (a window-modal ZDMarkdownInsertSheet child) for the link, image
    /// or table data and insert when it is accepted.
    void performMarkdownFormatAction(int tag, const QString &languageAlias = QString());
    void insertMarkdownLink(const QString &url, const QString &linkText, const QString &title,
                            const QString &identifier, bool referenceStyle);
    void insertMarkdownImage(const QString &url, const QString &title, const QString &altText,
                             const QString &identifier, bool referenceStyle);
    void insertMarkdownTable(int rows, int columns);
    /// Shows the opening bracket that matches the closing one at `index` for a moment.
    void showMatchingBracketForClosingBracketAt(int index);
    /// Re-reads the display settings (theme, font, tab width, soft wrap, invisibles, link
    /// detection).
    void reloadDisplaySettings();

Q_SIGNALS:
    /// The text changed: `editedLength` characters at `location` of a text `originalLength` long
    /// became `replacementLength` characters. Drives re-highlighting.
    void textDidChange(int location, int editedLength, int originalLength, int replacementLength);
    void undoActionNamesChanged();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    QMimeData *createMimeDataFromSelection() const override;

private:
    friend class ZDLineNumberGutter;

    bool runCommand(const ZDTextEditResult &edit);
    bool typeText(const QString &typed);
    void openInsertSheet(int tag);
    void createActions();
    void addEditorAction(const QString &identifier, const QString &title, const QKeySequence &shortcut,
                         std::function<void()> handler);
    void documentContentsChanged(int position, int removed, int added);
    void applyTheme(std::shared_ptr<const ZDEditorTheme> theme);
    void recordUndoStep();
    void notifyUndoActionNames();
    void updateExtraSelections();
    void updateGutterWidth();
    void paintGutter(QPaintEvent *event);
    void paintInvisibles(QPainter &painter, const QRect &area);
    void paintCaret(QPainter &painter);
    QColor colorAt(int index) const;

    QPointer<ZDUserDefaults> m_defaults;
    ZDEditorColors m_colors;
    int m_textViewRole = 0;
    QString m_currentLexer;
    bool m_showInvisibles = false;
    bool m_detectLinks = false;

    std::shared_ptr<const ZDEditorTheme> m_theme;
    bool m_themeFromPreferences = true;
    ZDHighlighter *m_highlighter = nullptr;
    ZDDocumentHighlighter *m_documentHighlighter = nullptr;

    struct UndoStep
    {
        int commandCount;
        QString name;
    };
    QList<UndoStep> m_undoSteps;
    QStringList m_announcedUndoNames;
    QString m_pendingActionName;
    bool m_applyingEdit = false;
    int m_lastRevision = 0;
    int m_lastLength = 0;

    QWidget *m_gutter = nullptr;
    ZDCodeDocumentLayout *m_layout = nullptr; // of the view's own document
    QHash<QString, QAction *> m_actions;
    int m_flashedBracket = -1;
    QTimer *m_flashTimer = nullptr;
    QTimer *m_caretTimer = nullptr;
    bool m_caretVisible = true;
};
