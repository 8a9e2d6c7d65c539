#pragma once

#include "ZDLibraryListener.h"
#include "ZDRecordTypes.h"
#include "ZDSnippetEditing.h"

#include <QHash>
#include <QWidget>

class QAction;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSplitter;
class QStackedWidget;
class QTabBar;
class QTimer;
class QToolButton;
class ZDDataCenter;
class ZDHighlighter;
class ZDLanguageChooser;
class ZDSyntaxHighlightedTextView;
class ZDTagTokenField;
class ZDUserDefaults;

/// The snippet editor pane: the snippet's title, its tags (a token field completing the
/// library's tags), the part selector (add, remove, rename and reorder parts, each part with its
/// language chooser), the code editor and the part's notes. With no snippet it shows an empty
/// state.
///
/// Every edit reaches the library store through ZDSnippetEditing and posts the detailed notice.
/// Typed text changes the record at once and is saved and announced when typing pauses (and
/// before another snippet is shown). When a notice names the shown snippet, the pane reloads
/// only when the snippet is no longer identical to what it shows, so its own notices, and
/// notices that change nothing, keep the caret, selection, scroll position and undo history.
///
/// Destroy the pane before the library store: it saves the last typing when it goes.
class ZDSnippetEditorView : public QWidget, public ZDLibraryListener
{
    Q_OBJECT
public:
    /// Pause after typing before the text is saved and announced.
    static constexpr int TextCommitDelayMs = 700;

    /// `dataCenter` and `highlighter` may be null (nothing saved; plain text only).
    ZDSnippetEditorView(ZDDataCenter *dataCenter, ZDHighlighter *highlighter, QWidget *parent = nullptr);
    ~ZDSnippetEditorView() override;

    /// Shows a snippet (its first part); null shows the empty state. Text typed into the
    /// previous snippet is saved first. The shown snippet set again is treated like a notice
    /// about it: reloaded only when it changed.
    void setSnippet(ZDSnippetPtr snippet);
    ZDSnippetPtr snippet() const { return m_snippet; }

    ZDSnippetPartPtr currentPart() const;
    int currentPartIndex() const;
    void selectPart(int index);
    /// Selects the part with that UUID; false when the snippet has none.
    bool selectPartWithUUID(const QString &UUID);

    /// Saves and announces the text typed since the last pause, if any.
    void commitPendingText();

    // The pane's controls, for the window's menus and focus chain.
    QLineEdit *titleField() const { return m_title; }
    ZDTagTokenField *tagsField() const { return m_tags; }
    QTabBar *partBar() const { return m_parts; }
    ZDLanguageChooser *languageChooser() const { return m_language; }
    ZDSyntaxHighlightedTextView *codeView() const { return m_code; }
    QPlainTextEdit *notesView() const { return m_notes; }
    /// The fragment commands with their shortcuts, for the window's menus: "addPart",
    /// "removePart", "renamePart", "nextPart", "previousPart".
    QAction *partAction(const QString &identifier) const { return m_actions.value(identifier); }

public Q_SLOTS:
    /// Adds a part after the current one, in the current part's language, and selects it.
    void addPart();
    /// Removes the part at `index` (never the last one).
    void removePartAt(int index);
    /// Asks for confirmation when the current part holds text, then removes it.
    void removeCurrentPart();
    void renamePart(int index, const QString &title);
    void renameCurrentPartInteractively();

protected:
    // Notices of the library.
    void snippetContentDidChange(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetTitleDidChange(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetsTagsDidChange(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetsLanguageDidChange(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetsDidRemove(QObject *sender, const ZDSnippetList &snippets) override;
    void tagDidRename(QObject *sender, const ZDTagPtr &tag) override;
    void tagsDidRemove(QObject *sender, const ZDTagList &tags) override;
    void applicationLibraryDidChange(QObject *sender) override;

private:
    void buildWidgets();
    void createActions();
    void updateActions();
    void reconsider(const ZDSnippetPtr &announced);
    void reload();
    void showPart(int index);
    void clearCode();
    void rememberShownState();
    void refreshTags();
    void updateNotesVisibility();
    void scheduleCommit();
    QStringList tagNamesOf(const ZDSnippet &snippet) const;

    ZDDataCenter *m_center;
    ZDHighlighter *m_highlighter;
    ZDUserDefaults *m_defaults;
    ZDSnippetEditing m_editing;

    ZDSnippetPtr m_snippet;
    /// A copy of the snippet as the pane last showed or changed it.
    ZDSnippetPtr m_shown;
    QString m_shownPartUUID;
    bool m_loading = false;
    bool m_titleDirty = false;
    bool m_textDirty = false;

    QStackedWidget *m_stack = nullptr;
    QLabel *m_emptyLabel = nullptr;
    QLineEdit *m_title = nullptr;
    ZDTagTokenField *m_tags = nullptr;
    QTabBar *m_parts = nullptr;
    QToolButton *m_addPart = nullptr;
    QToolButton *m_notesToggle = nullptr;
    ZDLanguageChooser *m_language = nullptr;
    QSplitter *m_splitter = nullptr;
    ZDSyntaxHighlightedTextView *m_code = nullptr;
    QPlainTextEdit *m_notes = nullptr;
    QTimer *m_commitTimer = nullptr;
    QHash<QString, QAction *> m_actions;
};
