#pragma once

#include "ZDRecordTypes.h"

#include <QHash>
#include <QJsonObject>

/// A snippet as zandrio-cli prints it with --json: `uuid`, `title`, `folderUUID`, `folder`,
/// `tagUUIDs`, `tags`, `dateCreated`, `dateModified` (ISO 8601 UTC with milliseconds),
/// `gistIdentifier`, `githubUsername`, `githubHTMLURL` (null when absent) and `parts` (`uuid`,
/// `title`, `language`, `note`, `content`, `dateCreated`, `dateModified`).
QJsonObject zdSnippetJson(const ZDSnippet &snippet, const QHash<QString, QString> &folderTitles,
                          const QHash<QString, QString> &tagTitles);
