#include "ZDSnippetJson.h"

#include "ZDDataCenter.h"
#include "ZDSnippet.h"
#include "ZDTag.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTextStream>

namespace {
QJsonValue nullable(const QString &value)
{
    return value.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(value);
}
} // namespace

QJsonValue ZDSnippetJson::date(const QDateTime &date)
{
    if (!date.isValid())
        return QJsonValue::Null;
    return date.toUTC().toString(Qt::ISODateWithMs);
}

QJsonObject ZDSnippetJson::object(const ZDSnippet &snippet, const QHash<QString, QString> &folderTitles,
                                  const ZDTagList &tags)
{
    QJsonArray tagNames;
    for (const QString &tagUUID : snippet.tagUUIDs()) {
        const auto tag = std::find_if(tags.cbegin(), tags.cend(), [&tagUUID](const ZDTagPtr &candidate) {
            return candidate->UUID() == tagUUID;
        });
        if (tag != tags.cend())
            tagNames.append((*tag)->title());
    }
    QJsonArray parts;
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        parts.append(QJsonObject{
            {QStringLiteral("uuid"), part->UUID()},
            {QStringLiteral("title"), part->title()},
            {QStringLiteral("language"), part->language().identifier()},
            {QStringLiteral("note"), part->note()},
            {QStringLiteral("content"), part->content()},
            {QStringLiteral("dateCreated"), date(part->dateCreated())},
            {QStringLiteral("dateModified"), date(part->dateModified())},
        });
    }
    const auto folder = folderTitles.constFind(snippet.folderUUID());
    return QJsonObject{
        {QStringLiteral("uuid"), snippet.UUID()},
        {QStringLiteral("title"), snippet.title()},
        {QStringLiteral("folderUUID"), snippet.folderUUID()},
        {QStringLiteral("folder"),
         folder == folderTitles.cend() ? QJsonValue(QJsonValue::Null) : QJsonValue(*folder)},
        {QStringLiteral("tagUUIDs"), QJsonArray::fromStringList(snippet.tagUUIDs())},
        {QStringLiteral("tags"), tagNames},
        {QStringLiteral("dateCreated"), date(snippet.dateCreated())},
        {QStringLiteral("dateModified"), date(snippet.dateModified())},
        {QStringLiteral("gistIdentifier"), nullable(snippet.gistIdentifier())},
        {QStringLiteral("githubUsername"), nullable(snippet.githubUsername())},
        {QStringLiteral("githubHTMLURL"), nullable(snippet.githubHTMLURL())},
        {QStringLiteral("parts"), parts},
    };
}

QJsonObject ZDSnippetJson::object(const ZDSnippet &snippet, const ZDDataCenter &center)
{
    return object(snippet, center.folderTitles(), center.tags());
}

void ZDSnippetJson::print(QTextStream &out, const QJsonValue &value)
{
    const QJsonDocument document =
        value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    out << QString::fromUtf8(document.toJson(QJsonDocument::Indented));
}
