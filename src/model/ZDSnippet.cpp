#include "ZDSnippet.h"

#include "ZDRecordDirectory.h"
#include "ZDTag.h"

#include <QLocale>

ZDSnippet::ZDSnippet()
    : ZDSnippet(QStringLiteral("untitled snippet"), QLatin1String(ZDUncategorizedUUID))
{
}

ZDSnippet::ZDSnippet(const QString &title, const QString &folderUUID)
    : m_title(title)
    , m_UUID(zdNewUUIDString())
    , m_folderUUID(folderUUID)
{
    m_parts.append(ZDSnippetPart::create(QStringLiteral("Fragment"), m_UUID));
    m_dateCreated = ZDRecordDirectory::now();
    m_dateModified = ZDRecordDirectory::now();
}

ZDSnippet::ZDSnippet(const QString &title, const QString &UUID, const QString &folderUUID,
                     const QStringList &tagUUIDs, const QString &gistIdentifier,
                     const QString &githubUsername, const QString &githubHTMLURL,
                     const QList<ZDSnippetPartPtr> &parts, const QDateTime &dateCreated,
                     const QDateTime &dateModified)
    : m_title(title)
    , m_UUID(UUID)
    , m_folderUUID(folderUUID)
    , m_tagUUIDs(tagUUIDs)
    , m_gistIdentifier(gistIdentifier)
    , m_githubUsername(githubUsername)
    , m_githubHTMLURL(githubHTMLURL)
    , m_parts(parts)
    , m_dateCreated(dateCreated)
    , m_dateModified(dateModified)
{
}

void ZDSnippet::touch()
{
    m_dateModified = ZDRecordDirectory::now();
}

void ZDSnippet::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    touch();
}

void ZDSnippet::setTagUUIDs(const QStringList &tagUUIDs)
{
    m_tagUUIDs = tagUUIDs;
    touch();
}

void ZDSnippet::setParts(const QList<ZDSnippetPartPtr> &parts)
{
    m_parts = parts;
    touch();
}

ZDTagList ZDSnippet::tags() const
{
    ZDTagList result;
    const ZDRecordDirectory *directory = ZDRecordDirectory::shared();
    if (!directory || m_tagUUIDs.isEmpty())
        return result;
    const ZDTagList all = directory->allTags();
    for (const QString &UUID : m_tagUUIDs) {
        for (const ZDTagPtr &tag : all) {
            if (tag && tag->UUID() == UUID)
                result.append(tag);
        }
    }
    return result;
}

QStringList ZDSnippet::tagNames() const
{
    QStringList names;
    for (const ZDTagPtr &tag : tags())
        names.append(tag->title());
    return names;
}

QString ZDSnippet::isGist() const
{
    const bool gist = !m_gistIdentifier.isNull() || !m_githubHTMLURL.isNull() || !m_githubUsername.isNull();
    return gist ? QStringLiteral("Yes") : QStringLiteral("No");
}

QString ZDSnippet::stringRepresentation() const
{
    QStringList parts;
    for (const ZDSnippetPartPtr &part : m_parts)
        parts.append(part->stringRepresentation());
    return m_title + QLatin1Char('\n') + parts.join(QLatin1Char('\n'));
}

QDateTime ZDSnippet::canonicalDateModified() const
{
    QDateTime latest = m_dateCreated;
    for (const ZDSnippetPartPtr &part : m_parts) {
        if (part->dateModified().isValid() && (!latest.isValid() || part->dateModified() > latest))
            latest = part->dateModified();
    }
    if (m_dateModified.isValid() && (!latest.isValid() || m_dateModified > latest))
        latest = m_dateModified;
    return latest;
}

namespace {
// Hours and minutes: the C locale's short time format also has the seconds.
QString shortTime(const QLocale &locale, QTime time)
{
    if (locale.language() == QLocale::C)
        return time.toString(QStringLiteral("HH:mm"));
    return locale.toString(time, QLocale::ShortFormat);
}
} // namespace

QString ZDSnippet::localizedDate() const
{
    const QDateTime date = canonicalDateModified().toLocalTime();
    const QLocale locale;
    if (date.date() == ZDRecordDirectory::now().toLocalTime().date())
        return shortTime(locale, date.time());
    return locale.toString(date.date(), QLocale::ShortFormat);
}

QString ZDSnippet::localizedFullDate() const
{
    const QDateTime date = canonicalDateModified().toLocalTime();
    const QLocale locale;
    return locale.toString(date.date(), QLocale::LongFormat) + QLatin1Char(' ') + shortTime(locale, date.time());
}

QString ZDSnippet::localizedCategory() const
{
    if (const ZDRecordDirectory *directory = ZDRecordDirectory::shared())
        return directory->titleForShortcutNodeWithUUID(m_folderUUID, QStringLiteral("localizedCategory"));
    return {};
}

QString ZDSnippet::description() const
{
    return QStringLiteral("<ZDSnippet: 0x%1 - %2>").arg(quintptr(this), 0, 16).arg(m_title);
}

bool ZDSnippet::isIdentical(const ZDSnippet *other) const
{
    if (!isEqual(other) || m_parts.size() != other->m_parts.size()
        || m_tagUUIDs.size() != other->m_tagUUIDs.size() || m_title != other->m_title)
        return false;
    for (qsizetype i = 0; i < m_parts.size(); ++i) {
        if (!m_parts[i]->isIdentical(other->m_parts[i].get()))
            return false;
    }
    return m_tagUUIDs == other->m_tagUUIDs;
}
