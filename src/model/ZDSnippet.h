#pragma once

#include "ZDRecordTypes.h"
#include "ZDSnippetPart.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

/// The predefined folder of snippets filed nowhere, and a new snippet's folder.
inline constexpr char ZDUncategorizedUUID[] = "com.varnok.Zandrio.UUID.Predefined.Uncategorized";
/// The predefined collection of every snippet.
inline constexpr char ZDAllSnippetsUUID[] = "com.varnok.Zandrio.UUID.Predefined.AllSnippets";

/// A snippet: a titled list of parts, filed in one folder, labelled with tags (by UUID), perhaps
/// linked to a GitHub Gist. Setting the title (when it differs), the parts or the tag UUIDs stamps
/// `dateModified`; moving to another folder and the Gist fields never do.
class ZDSnippet
{
public:
    /// A new snippet titled "untitled snippet" in the Uncategorized folder.
    ZDSnippet();
    /// A new snippet: fresh UUID, one part "Fragment", no tags, no Gist, both dates now.
    ZDSnippet(const QString &title, const QString &folderUUID);
    /// Stores every argument as given.
    ZDSnippet(const QString &title, const QString &UUID, const QString &folderUUID,
              const QStringList &tagUUIDs, const QString &gistIdentifier, const QString &githubUsername,
              const QString &githubHTMLURL, const QList<ZDSnippetPartPtr> &parts,
              const QDateTime &dateCreated, const QDateTime &dateModified);

    static ZDSnippetPtr create(const QString &title = QStringLiteral("untitled snippet"),
                               const QString &folderUUID = QLatin1String(ZDUncategorizedUUID))
    {
        return std::make_shared<ZDSnippet>(title, folderUUID);
    }

    QString title() const { return m_title; }
    void setTitle(const QString &title);
    QString UUID() const { return m_UUID; }
    QString folderUUID() const { return m_folderUUID; }
    void setFolderUUID(const QString &folderUUID) { m_folderUUID = folderUUID; }
    QStringList tagUUIDs() const { return m_tagUUIDs; }
    void setTagUUIDs(const QStringList &tagUUIDs);
    QList<ZDSnippetPartPtr> parts() const { return m_parts; }
    void setParts(const QList<ZDSnippetPartPtr> &parts);
    /// Null (a null QString) when the snippet has no Gist.
    QString gistIdentifier() const { return m_gistIdentifier; }
    void setGistIdentifier(const QString &value) { m_gistIdentifier = value; }
    QString githubUsername() const { return m_githubUsername; }
    void setGithubUsername(const QString &value) { m_githubUsername = value; }
    QString githubHTMLURL() const { return m_githubHTMLURL; }
    void setGithubHTMLURL(const QString &value) { m_githubHTMLURL = value; }
    QDateTime dateCreated() const { return m_dateCreated; }
    QDateTime dateModified() const { return m_dateModified; }

    int tagsCount() const { return int(m_tagUUIDs.size()); }
    int partsCount() const { return int(m_parts.size()); }
    bool hasMultipleParts() const { return m_parts.size() > 1; }
    /// The tags of the library's tag list named by `tagUUIDs`, in that order (unknown ones skipped).
    ZDTagList tags() const;
    QStringList tagNames() const;
    /// "Yes" when any Gist field is set, else "No" (a display value).
    QString isGist() const;
    /// The title, a line feed, and the parts' representations joined by line feeds.
    QString stringRepresentation() const;
    /// The latest of `dateCreated`, the snippet's `dateModified` and every part's `dateModified`.
    QDateTime canonicalDateModified() const;
    /// `canonicalDateModified` for lists: the time alone when it is today, else the date alone.
    QString localizedDate() const;
    QString localizedFullDate() const;
    /// The display title of the snippet's folder, asked of the library.
    QString localizedCategory() const;
    QString description() const;

    /// Same identity (UUID).
    bool isEqual(const ZDSnippet *other) const { return other && (other == this || other->m_UUID == m_UUID); }
    /// Same identity, title, tag UUIDs and identical parts (folder, dates and Gist not compared).
    bool isIdentical(const ZDSnippet *other) const;

private:
    void touch();

    QString m_title;
    QString m_UUID;
    QString m_folderUUID;
    QStringList m_tagUUIDs;
    QString m_gistIdentifier;
    QString m_githubUsername;
    QString m_githubHTMLURL;
    QList<ZDSnippetPartPtr> m_parts;
    QDateTime m_dateCreated;
    QDateTime m_dateModified;
};
