#pragma once

#include <QList>
#include <QTextDocument>

#include <memory>

class ZDCodeDocumentLayout;
class ZDDocumentHighlighter;
class ZDEditorTheme;
class ZDHighlighter;

/// The text of one code part with everything that belongs to the text rather than to a view:
/// the code layout (ZDCodeDocumentLayout), the highlighting state (a ZDDocumentHighlighter that
/// follows every edit), the lexer, and the names of the undo steps. A code view shows one such
/// document at a time; an editor keeps one per open part, so that switching parts keeps each
/// part's undo history and highlighting.
///
/// `textEdited` reports changes of the text only, with their range; the colouring the
/// highlighter applies does not count.
class ZDCodeDocument : public QTextDocument
{
    Q_OBJECT
public:
    /// `highlighter` may be null (plain text only).
    explicit ZDCodeDocument(ZDHighlighter *highlighter = nullptr, QObject *parent = nullptr);
    ~ZDCodeDocument() override;

    ZDCodeDocumentLayout *codeLayout() const { return m_layout; }
    ZDDocumentHighlighter *documentHighlighter() const { return m_documentHighlighter; }

    /// The bridge the text is highlighted through; a new one highlights the whole text again,
    /// keeping the lexer, colours and options.
    void setHighlighter(ZDHighlighter *highlighter);
    ZDHighlighter *highlighter() const { return m_highlighter; }
    /// Colours the text in the theme's colours; the same theme object again does nothing.
    void setTheme(std::shared_ptr<const ZDEditorTheme> theme);
    /// Colouring options; the text is coloured again when one changes.
    void setColoringOptions(bool showInvisibles, bool detectLinks);

    /// The Pygments lexer ("TextLexer" when none is set); a new lexer highlights the whole text
    /// again.
    void setLexer(const QString &lexer);
    QString lexer() const;
    /// Replaces the text (clearing the undo history) and highlights it with `lexer`.
    void showText(const QString &text, const QString &lexer);

    /// Names the undo step the edits made until `clearPendingStepName` belong to (by default
    /// "Typing").
    void setPendingStepName(const QString &name) { m_pendingStepName = name; }
    void clearPendingStepName() { m_pendingStepName.clear(); }
    /// The names of the undo and redo steps at hand ("" when there is none).
    QString undoStepName() const;
    QString redoStepName() const;

Q_SIGNALS:
    /// `removed` characters at `position` became `added` characters. Not emitted for formatting.
    void textEdited(int position, int removed, int added);

private:
    void recordUndoStep();

    ZDCodeDocumentLayout *m_layout;
    ZDHighlighter *m_highlighter;
    ZDDocumentHighlighter *m_documentHighlighter = nullptr;
    std::shared_ptr<const ZDEditorTheme> m_theme;
    bool m_showInvisibles = false;
    bool m_detectLinks = false;
    int m_lastRevision = 0;

    struct UndoStep
    {
        int commandCount;
        QString name;
    };
    QList<UndoStep> m_undoSteps;
    QString m_pendingStepName;
};
