#pragma once

#include "ZDPredicate.h"
#include "ZDRecordTypes.h"

/// The key paths predicates use over snippets: "title", "UUID", "folderUUID", "tagUUIDs",
/// "localizedCategory", "tags.title", "tagNames", "tagsCount", "partsCount", "hasMultipleParts",
/// "parts.title", "parts.note", "parts.content", "parts.language.identifier",
/// "parts.language.displayName", "dateCreated", "dateModified", "canonicalDateModified",
/// "isGist", "gistIdentifier", "githubUsername", "githubHTMLURL" and "<to-many>.@count".
/// A path through "parts" or "tags" gives a list with one value per part or tag.
namespace ZDSnippetKeyPaths {
QVariant valueForKeyPath(const ZDSnippet &snippet, const QString &keyPath);
/// A resolver over `snippet`, which must outlive it.
ZDKeyPathResolver resolver(const ZDSnippet &snippet);
bool evaluate(const ZDPredicate &predicate, const ZDSnippet &snippet);
} // namespace ZDSnippetKeyPaths
