#pragma once

#include "ZDLanguage.h"
#include "ZDRecordTypes.h"
#include "ZDSnippetText.h"

#include <QDateTime>
#include <QString>

/// One fragment of a snippet: a titled piece of text in one language with a note. Setters store
/// and stamp `dateModified` only on a real change. Parts refer to their snippet by UUID only.
class ZDSnippetPart
{
public:
    /// A new part: fresh UUID, plain-text language, empty note and content, both dates now.
    ZDSnippetPart(const QString &title, const QString &snippetUUID);
    /// Stores every argument as given; an invalid language becomes plain text.
    ZDSnippetPart(const QString &title, const QString &UUID, const ZDLanguage &language,
                  const QString &note, const QString &content, const QDateTime &dateCreated,
                  const QDateTime &dateModified, const QString &snippetUUID);
    /// The same with a note and content that may be read in place (see ZDSnippetText).
    ZDSnippetPart(const QString &title, const QString &UUID, const ZDLanguage &language,
                  ZDSnippetText note, ZDSnippetText content, const QDateTime &dateCreated,
                  const QDateTime &dateModified, const QString &snippetUUID);

    static ZDSnippetPartPtr create(const QString &title, const QString &snippetUUID)
    {
        return std::make_shared<ZDSnippetPart>(title, snippetUUID);
    }

    QString title() const { return m_title; }
    void setTitle(const QString &title);
    QString UUID() const { return m_UUID; }
    QString snippetUUID() const { return m_snippetUUID; }
    ZDLanguage language() const { return m_language; }
    void setLanguage(const ZDLanguage &language);
    QString note() const { return m_note.toString(); }
    /// The note without a copy (see contentText).
    const ZDSnippetText &noteText() const { return m_note; }
    void setNote(const QString &note);
    QString content() const { return m_content.toString(); }
    /// The content without a copy: what the search index and the snippet cache read.
    const ZDSnippetText &contentText() const { return m_content; }
    void setContent(const QString &content);
    QDateTime dateCreated() const { return m_dateCreated; }
    QDateTime dateModified() const { return m_dateModified; }

    /// Same identity (UUID).
    bool isEqual(const ZDSnippetPart *other) const { return other && (other == this || other->m_UUID == m_UUID); }
    /// Same identity, and the same title, content, note and language.
    bool isIdentical(const ZDSnippetPart *other) const;

    /// The note, a line feed, the content.
    QString stringRepresentation() const;
    /// The same text made from a note and a content held elsewhere (a snapshot of the part).
    static QString stringRepresentation(const ZDSnippetText &note, const ZDSnippetText &content);

    /// The part's file name when it is exported, dragged out or published: the snippet's title
    /// when the snippet has one part, else the part's own title; a trailing ".ext" (1-10 letters
    /// or digits) is kept as the extension, otherwise the language's first extension or "txt".
    QString filenameWithoutExtensionWithSnippet(const ZDSnippet *snippet) const;
    QString fileExtensionWithSnippet(const ZDSnippet *snippet) const;
    QString filenameWithSnippet(const ZDSnippet *snippet) const;

private:
    QString fileBaseTitle(const ZDSnippet *snippet) const;
    void touch();

    QString m_title;
    QString m_UUID;
    ZDLanguage m_language;
    ZDSnippetText m_note;
    ZDSnippetText m_content;
    QDateTime m_dateCreated;
    QDateTime m_dateModified;
    QString m_snippetUUID;
};
