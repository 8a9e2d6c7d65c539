#pragma once

#include "ZDSearchConstraint.h"
#include "ZDSearchTokenSyntax.h"

#include <QTextEdit>

#include <functional>
#include <optional>

class QListWidget;
class ZDEditorTheme;

/// The search field: one line of text in which constraints stand as tokens (one U+FFFC
/// character each, drawn as chips). Typing a word that begins with "in:" opens the completion
/// list of folders, tags and languages; choosing a proposal puts its token in place of the word.
/// Up, Down, Return, Tab and Escape go to the list while it is open. Copying leaves tokens out,
/// pasting turns line breaks into spaces. Query changes are paced by `ZDSearchQueryChangeTimer`.
class ZDSearchView : public QTextEdit
{
    Q_OBJECT
public:
    /// Gives the proposals for the text after "in:"; without one the list never opens.
    using ProposalProvider = std::function<QList<ZDSearchProposalSection>(ZDSearchView *, const QString &keyword)>;

    explicit ZDSearchView(QWidget *parent = nullptr);
    ~ZDSearchView() override;

    void setProposalProvider(ProposalProvider provider) { m_provider = std::move(provider); }
    void applyTheme(const ZDEditorTheme &theme);

    /// The constraints of the tokens, in text order.
    QList<ZDSearchConstraint> searchConstraints() const;
    /// The text without its tokens.
    QString searchKeyword() const;
    /// One token per constraint, then the keyword, as one undoable edit.
    void setSearchConstraints(const QList<ZDSearchConstraint> &constraints, const QString &keyword);
    /// Empties the field as one undoable edit and reports the change.
    void clearContent();
    bool isEmpty() const;
    /// Puts a token in place of `range` as one undoable edit and reports the change at once.
    void insertSearchToken(const ZDSearchConstraint &constraint, ZDSearchTokenSyntax::Range range);
    /// Inserts the constraint's token over the word being completed and closes the list.
    void applyConstraintAndCloseCompletionWindow(const std::optional<ZDSearchConstraint> &constraint);

    bool isCompletionVisible() const;
    /// The proposals now listed, in order (for tests and accessibility).
    QList<ZDSearchConstraint> listedProposals() const;
    /// The highlighted proposal, if any.
    std::optional<ZDSearchConstraint> highlightedProposal() const;

Q_SIGNALS:
    /// The keyword or constraints changed (paced); read them and search.
    void searchQueryDidChange();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    QMimeData *createMimeDataFromSelection() const override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void contentsChanged(int position, int charsRemoved, int charsAdded);
    void updateCompletion();
    void closeCompletion();
    void moveHighlight(int step);
    QTextCharFormat tokenFormat(const ZDSearchConstraint &constraint) const;

    ProposalProvider m_provider;
    ZDSearchQueryChangeTimer m_queryTimer;
    QObject *m_chip = nullptr; // draws the tokens
    QListWidget *m_list = nullptr;
    QList<ZDSearchConstraint> m_proposals; // parallel to the list's selectable rows
    bool m_programmaticEdit = false;
};
