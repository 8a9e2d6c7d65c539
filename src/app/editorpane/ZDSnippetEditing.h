#pragma once

#include "ZDLanguage.h"
#include "ZDRecordTypes.h"

#include <QStringList>

class QObject;
class ZDDataCenter;
class ZDMulticastDelegateHandler;

/// The snippet editor's changes to a snippet: each one changes the record in place, tells the
/// library store to save it and posts the detailed notice with `sender` as the sender. Text
/// typed into a part (content and note) changes the record at once and is saved and announced
/// by `commitText`, which the editor calls when typing pauses.
class ZDSnippetEditing
{
public:
    /// `center` may be null (nothing is saved then); `notifier` defaults to the global one.
    ZDSnippetEditing(ZDDataCenter *center, QObject *sender, ZDMulticastDelegateHandler *notifier = nullptr);

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

    /// Typing: the record changes now, the save and the notice wait for `commitText`.
    void setContent(const ZDSnippetPartPtr &part, const QString &content);
    void setNote(const ZDSnippetPartPtr &part, const QString &note);
    void commitText(const ZDSnippetPtr &snippet);

private:
    bool save(const ZDSnippetPtr &snippet);

    ZDDataCenter *m_center;
    QObject *m_sender;
    ZDMulticastDelegateHandler *m_notifier;
};
