#include "ZDSnippetJson.h"

#include "ZDSnippet.h"

#include <QJsonArray>

namespace {

QJsonValue dateValue(const QDateTime &date)
{
    return date.isValid() ? QJsonValue(date.toUTC().toString(Qt::ISODateWithMs)) : QJsonValue();
}

QJsonValue optionalString(const QString &value)
{
    return value.isNull() ? QJsonValue() : QJsonValue(value);
}

} // namespace

QJsonObject zdSnippetJson(const ZDSnippet &snippet, const QHash<QString, QString> &folderTitles,
                          const QHash<QString, QString> &tagTitles)
{
    QJsonArray tags;
    for (const QString &UUID : snippet.tagUUIDs()) {
        if (tagTitles.contains(UUID))
            tags.append(tagTitles.value(UUID));
    }
    QJsonArray parts;
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        parts.append(QJsonObject{
            {QStringLiteral("uuid"), part->UUID()},
            {QStringLiteral("title"), part->title()},
            {QStringLiteral("language"), part->language().identifier()},
            {QStringLiteral("note"), part->note()},
            {QStringLiteral("content"), part->content()},
            {QStringLiteral("dateCreated"), dateValue(part->dateCreated())},
            {QStringLiteral("dateModified"), dateValue(part->dateModified())},
        });
    }
    return QJsonObject{
        {QStringLiteral("uuid"), snippet.UUID()},
        {QStringLiteral("title"), snippet.title()},
        {QStringLiteral("folderUUID"), snippet.folderUUID()},
        {QStringLiteral("folder"), optionalString(folderTitles.value(snippet.folderUUID()))},
        {QStringLiteral("tagUUIDs"), QJsonArray::fromStringList(snippet.tagUUIDs())},
        {QStringLiteral("tags"), tags},
        {QStringLiteral("dateCreated"), dateValue(snippet.dateCreated())},
        {QStringLiteral("dateModified"), dateValue(snippet.dateModified())},
        {QStringLiteral("gistIdentifier"), optionalString(snippet.gistIdentifier())},
        {QStringLiteral("githubUsername"), optionalString(snippet.githubUsername())},
        {QStringLiteral("githubHTMLURL"), optionalString(snippet.githubHTMLURL())},
        {QStringLiteral("parts"), parts},
    };
}
