#include "ZDRecordCache.h"

#include "ZDLanguageRegistry.h"
#include "ZDLogger.h"
#include "ZDSnippet.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <limits>

namespace {

const QByteArray kMagic("ZDSnippetCache 1\n");
constexpr qint64 kNoDate = std::numeric_limits<qint64>::min();

void writeDate(QDataStream &stream, const QDateTime &date)
{
    stream << (date.isValid() ? date.toMSecsSinceEpoch() : kNoDate);
}

QDateTime readDate(QDataStream &stream)
{
    qint64 milliseconds = kNoDate;
    stream >> milliseconds;
    return milliseconds == kNoDate ? QDateTime() : QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC);
}

void writeSnippet(QDataStream &stream, const ZDSnippet &snippet)
{
    stream << snippet.title() << snippet.UUID() << snippet.folderUUID() << snippet.tagUUIDs()
           << snippet.gistIdentifier() << snippet.githubUsername() << snippet.githubHTMLURL();
    writeDate(stream, snippet.dateCreated());
    writeDate(stream, snippet.dateModified());
    const QList<ZDSnippetPartPtr> parts = snippet.parts();
    stream << qint32(parts.size());
    for (const ZDSnippetPartPtr &part : parts) {
        stream << part->title() << part->UUID() << part->language().identifier() << part->note() << part->content()
               << part->snippetUUID();
        writeDate(stream, part->dateCreated());
        writeDate(stream, part->dateModified());
    }
}

ZDSnippetPtr readSnippet(QDataStream &stream, ZDLanguageRegistry *languages)
{
    QString title, uuid, folderUUID, gist, user, url;
    QStringList tagUUIDs;
    stream >> title >> uuid >> folderUUID >> tagUUIDs >> gist >> user >> url;
    const QDateTime created = readDate(stream);
    const QDateTime modified = readDate(stream);
    qint32 count = 0;
    stream >> count;
    if (stream.status() != QDataStream::Ok || count < 0 || count > 100000)
        return nullptr;
    QList<ZDSnippetPartPtr> parts;
    parts.reserve(count);
    for (qint32 index = 0; index < count; ++index) {
        QString partTitle, partUUID, language, note, content, owner;
        stream >> partTitle >> partUUID >> language >> note >> content >> owner;
        const QDateTime partCreated = readDate(stream);
        const QDateTime partModified = readDate(stream);
        const ZDLanguage partLanguage = !languages ? ZDLanguage()
                                        : language.isEmpty() ? languages->plainTextLanguage()
                                                             : languages->languageWithIdentifier(language);
        parts << std::make_shared<ZDSnippetPart>(partTitle, partUUID, partLanguage, note, content, partCreated,
                                                 partModified, owner);
    }
    if (stream.status() != QDataStream::Ok)
        return nullptr;
    return std::make_shared<ZDSnippet>(title, uuid, folderUUID, tagUUIDs, gist, user, url, parts, created, modified);
}

} // namespace

QString ZDRecordCache::pathForPackage(const QString &packagePath)
{
    const QByteArray key = QFileInfo(packagePath).absoluteFilePath().toUtf8();
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/Zandrio/Libraries/") +
           QString::fromLatin1(QCryptographicHash::hash(key, QCryptographicHash::Md5).toHex()) +
           QStringLiteral(".snippets");
}

QHash<QString, ZDRecordCache::Entry> ZDRecordCache::read(const QString &cachePath)
{
    QHash<QString, Entry> entries;
    QFile file(cachePath);
    if (!file.open(QIODevice::ReadOnly))
        return entries;
    if (file.read(kMagic.size()) != kMagic)
        return entries;
    QDataStream stream(&file);
    stream.setVersion(QDataStream::Qt_6_4);
    qint64 count = 0;
    stream >> count;
    if (count < 0 || count > file.size())
        return entries;
    ZDLanguageRegistry *languages = ZDLanguageRegistry::shared();
    entries.reserve(count);
    for (qint64 index = 0; index < count; ++index) {
        QString name;
        quint64 identity = 0;
        stream >> name >> identity;
        ZDSnippetPtr snippet = readSnippet(stream, languages);
        if (!snippet) {
            zdLog(ZDLogLevel::Warning, ZDLogDomain::Library, QStringLiteral("Ignoring a damaged snippet cache"));
            return {};
        }
        entries.insert(name, {identity, std::move(snippet)});
    }
    return entries;
}

bool ZDRecordCache::write(const QString &cachePath, const QList<QPair<QString, Entry>> &entries)
{
    QByteArray bytes = kMagic;
    {
        QDataStream stream(&bytes, QIODevice::WriteOnly | QIODevice::Append);
        stream.setVersion(QDataStream::Qt_6_4);
        qint64 count = 0;
        for (const auto &entry : entries)
            count += entry.second.identity != 0;
        stream << count;
        for (const auto &[name, entry] : entries) {
            if (entry.identity == 0)
                continue;
            stream << name << entry.identity;
            writeSnippet(stream, *entry.snippet);
        }
    }
    QDir().mkpath(QFileInfo(cachePath).path());
    QSaveFile file(cachePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        zdLog(ZDLogLevel::Warning, ZDLogDomain::Library,
              QStringLiteral("Cannot write the snippet cache %1: %2").arg(cachePath, file.errorString()));
        return false;
    }
    return true;
}
