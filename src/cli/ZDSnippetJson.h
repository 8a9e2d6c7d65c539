#pragma once

#include "ZDRecordTypes.h"

#include <QDateTime>
#include <QHash>
#include <QJsonObject>

class QTextStream;
class ZDDataCenter;

/// The machine-readable form of a snippet printed by zandrio-cli: `uuid`, `title`, `folderUUID`,
/// `folder` (title), `tagUUIDs`, `tags` (names), `dateCreated`, `dateModified`,
/// `gistIdentifier`, `githubUsername`, `githubHTMLURL` (null when absent) and `parts`, each with
/// `uuid`, `title`, `language` (identifier), `note`, `content`, `dateCreated`, `dateModified`.
namespace ZDSnippetJson {
/// Folder titles and tag names are looked up in `folderTitles` and `tags`.
QJsonObject object(const ZDSnippet &snippet, const QHash<QString, QString> &folderTitles,
                   const ZDTagList &tags);
/// Looks them up in the store.
QJsonObject object(const ZDSnippet &snippet, const ZDDataCenter &center);
/// ISO 8601 in UTC with milliseconds ("2024-01-31T12:00:00.000Z"); null for an invalid date.
QJsonValue date(const QDateTime &date);
/// Prints a snippet object, or an array of them, indented.
void print(QTextStream &out, const QJsonValue &value);
} // namespace ZDSnippetJson
