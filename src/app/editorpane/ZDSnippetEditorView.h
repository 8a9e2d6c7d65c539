#pragma once

#include "ZDLibraryListener.h"
#include "ZDRecordTypes.h"
#include "ZDSnippetEditing.h"

#include <QHash>
#include <QWidget>

#include <map>
#include <memory>

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
/// Every part opened while its snippet is shown keeps its own code and notes documents, so that
/// switching parts keeps each one's undo history, caret, scroll position and highlighting;
/// showing another snippet drops them.
///
/// Every edit reaches the library store through ZDSnippetEditing and posts the detailed notice.
/// Typing only marks its part edited: the record takes the part's text when typing pauses,
/// before another snippet is shown, on `commitPendingText` and when the pane goes. The pane
/// passes over its own notices (they arrive after the change, which it shows already). Another
/// sender's notice about the shown snippet brings in what changed in the record, part by part:
/// a part whose record text changed shows the new text (a part with typing not yet saved keeps
/// the typing, which is saved over it), and what did not change keeps its caret, selection,
/// scroll position and undo history.
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
    /// previous snippet is saved first, and its documents dropped. The shown snippet set again
    /// is treated like another sender's notice about it: only what changed is taken in.
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
    struct OpenPart;

    void reconsider(QObject *sender, const ZDSnippetPtr &announced);
    void reload();
    void showPart(int index);
    ZDSnippetPartPtr partWithUUID(const QString &UUID) const;
    OpenPart &openPart(const ZDSnippetPartPtr &part);
    void takeRecordText(OpenPart &open, const ZDSnippetPart &part);
    void leaveShownPart();
    void closeParts(const QList<ZDSnippetPartPtr> &kept = {});
    void discardPendingText();
    void partEdited(OpenPart *open, bool notes);
    void refreshTags();
    void updateNotesVisibility();
    void scheduleCommit();
    QStringList tagNamesOf(const ZDSnippet &snippet) const;

    ZDDataCenter *m_center;
    ZDHighlighter *m_highlighter;
    ZDUserDefaults *m_defaults;
    ZDSnippetEditing m_editing;

    ZDSnippetPtr m_snippet;
    /// The documents of the parts shown since the snippet was, by part UUID.
    std::map<QString, std::unique_ptr<OpenPart>> m_open;
    OpenPart *m_shownPart = nullptr; // whose documents the views show
    QString m_shownPartUUID;
    QString m_shownTitle; // the record's title the title field last took
    bool m_loading = false;
    bool m_titleDirty = false;

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
