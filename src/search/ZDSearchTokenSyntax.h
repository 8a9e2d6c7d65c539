#pragma once

#include "ZDSearchConstraint.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

struct ZDIndexResult;

/// The rules of the search field's text, apart from drawing: constraints stand in the text as
/// tokens, one U+FFFC character each; typing "in:" starts a completion whose proposals come
/// from the counting index.
namespace ZDSearchTokenSyntax {
inline constexpr QChar tokenCharacter = QChar(0xFFFC);
inline const QString completionPrefix = QStringLiteral("in:");

/// A range of the field's text; `location` -1 means none.
struct Range
{
    qsizetype location = -1;
    qsizetype length = 0;
    bool operator==(const Range &) const = default;
};

/// The word being typed: from after the nearest space, tab or token before `insertionPoint`
/// (or the start of the text) up to it. No insertion point (-1) gives no range.
Range completionRange(const QString &text, qsizetype insertionPoint);
/// The text after "in:" when the word being typed begins with it (the list is then shown);
/// a null string otherwise (the list is closed).
QString completionKeyword(const QString &text, qsizetype insertionPoint);
/// The keyword of a query: the field's text without its tokens; spaces around tokens stay.
QString searchKeyword(const QString &text);
/// What a paste inserts: the plain text with every "\n" and "\r" turned into a space.
QString pastedText(const QString &plainText);
/// What a copy writes: the selected text without its tokens.
QString copiedText(const QString &selectedText);
} // namespace ZDSearchTokenSyntax

/// One group of proposals in the completion list ("Folder", "Tags", "Languages").
struct ZDSearchProposalSection
{
    QString title;
    QList<ZDSearchConstraint> proposals;
};

/// The "in:" proposals for `keyword` (the text after "in:"): for each kind at most the one
/// best record whose name contains the keyword (ignoring case), a name equal to the keyword
/// before any other, then the highest count; none at all for an empty keyword. Records with
/// no snippets and those already in `existing` (same kind and value) are left out, and so are
/// empty sections.
QList<ZDSearchProposalSection> zdSearchProposals(const QString &keyword, const QList<ZDSearchConstraint> &existing,
                                                 const QList<ZDIndexResult> &folders,
                                                 const QList<ZDIndexResult> &tags,
                                                 const QList<ZDIndexResult> &languages);

/// Paces the "query changed" notice of the search field: every edit calls `noteQueryChanged`,
/// which cancels a pending notice and then sends it at once, or, when a delay is asked for and
/// the text is longer than one character, 0.3 s later (so typing does not search at every key).
class ZDSearchQueryChangeTimer : public QObject
{
    Q_OBJECT

public:
    static constexpr int delayMs = 300;

    explicit ZDSearchQueryChangeTimer(QObject *parent = nullptr);

    /// `fieldText` is the field's whole text after the edit.
    void noteQueryChanged(const QString &fieldText, bool withDelay);
    void cancel() { m_timer.stop(); }
    bool isPending() const { return m_timer.isActive(); }

Q_SIGNALS:
    /// The client reads the keyword and constraints and searches.
    void searchQueryDidChange();

private:
    QTimer m_timer;
};
