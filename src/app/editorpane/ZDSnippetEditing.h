#pragma once

#include "ZDLanguage.h"
#include "ZDRecordTypes.h"

#include <QHash>
#include <QStringList>

class QObject;
class ZDDataCenter;

/// The snippet editor's changes to a snippet, each one operation of the library store, which
/// saves it and posts the detailed notice with `sender` as the sender. Text typed into a part
/// (content and note) changes the part at once, so that everything reading the snippet sees
/// it; `commitText`, which the editor calls when typing pauses, saves and announces it.
/// The methods return whether the snippet changed: an edit that changes nothing, or that the
/// store refuses, returns false.
class ZDSnippetEditing
{
public:
    /// `center` may be null: every edit is refused then (typed text still shows in the part).
    ZDSnippetEditing(ZDDataCenter *center, QObject *sender);

    /// Title of a part added to a snippet whose parts already use `titles`: "Fragment",
    /// else "Fragment 2", "Fragment 3"...
    static QString newPartTitle(const QStringList &titles);

    bool setTitle(const ZDSnippetPtr &snippet, const QString &title);
    /// Makes `names` the snippet's tags, in that order; a name no tag of the library has (names
    /// are compared ignoring case and diacritics) becomes a new tag. Duplicates and empty names
    /// are dropped.
    bool setTagNames(const ZDSnippetPtr &snippet, const QStringList &names);
    /// Inserts a new empty part at `index` (clamped); returns it.
    ZDSnippetPartPtr addPart(const ZDSnippetPtr &snippet, int index, const ZDLanguage &language);
    /// Removes a part; the last part of a snippet is never removed.
    bool removePart(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part);
    bool renamePart(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part, const QString &title);
    bool movePart(const ZDSnippetPtr &snippet, int from, int to);
    bool setLanguage(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part, const ZDLanguage &language);

    /// Typing: the part changes now, the save and the notice wait for `commitText`.
    void setContent(const ZDSnippetPartPtr &part, const QString &content);
    void setNote(const ZDSnippetPartPtr &part, const QString &note);
    /// Saves and announces the text typed into the snippet's parts since the last commit (one
    /// save and one notice for all of them).
    void commitText(const ZDSnippetPtr &snippet);

private:
    /// The library's own object for `snippet`, which the store changes; null when it has none.
    ZDSnippetPtr stored(const ZDSnippetPtr &snippet) const;

    ZDDataCenter *m_center;
    QObject *m_sender;
    /// Parts typed into and not yet committed, by UUID.
    QHash<QString, ZDSnippetPartPtr> m_typedParts;
};
