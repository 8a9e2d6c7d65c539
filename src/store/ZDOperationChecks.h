#pragma once

// Checks the store's operations make before they change anything, and the list arithmetic they
// share. Each check that fails fills `error` with the operation's name and returns null or false.

#include "ZDRecordTypes.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <optional>

class ZDDataCenter;
class ZDError;

namespace ZDOperationChecks {
using Nodes = QList<ZDCategoryNodePtr>;

QString uncategorizedUUID();

/// The library's snippets with these UUIDs, in that order, each once; null when one is unknown.
std::optional<ZDSnippetList> findSnippets(const ZDDataCenter &center, const QStringList &UUIDs,
                                          const char *operation, ZDError *error);

ZDSnippetPtr findSnippet(const ZDDataCenter &center, const QString &UUID, const char *operation,
                         ZDError *error);

ZDSnippetPartPtr findPart(const ZDSnippet &snippet, const QString &partUUID, const char *operation,
                          ZDError *error);

/// The nodes of `list` with these UUIDs, in the order given, each once; null when one is unknown.
std::optional<Nodes> findNodes(const Nodes &list, const QStringList &UUIDs, const QString &kind,
                               const char *operation, ZDError *error);

std::optional<Nodes> findFolders(const ZDDataCenter &center, const QStringList &UUIDs, const char *operation,
                                 ZDError *error);

ZDTagPtr findTag(const ZDTagList &tags, const QString &UUID, const char *operation, ZDError *error);

/// A title must say something; it is kept as typed.
bool checkTitle(const QString &title, const char *operation, ZDError *error);

bool checkPredicate(const QString &predicateString, const char *operation, ZDError *error);

qsizetype insertionIndex(int index, qsizetype count);

/// `list` with `moved` taken out and put back together at `index`.
Nodes movedWithin(Nodes list, const Nodes &moved, int index);

/// Takes `node` out of its parent or out of the top-level list.
void detach(const ZDCategoryNodePtr &node, Nodes &roots);

QSet<QString> UUIDsWithin(const Nodes &folders);

/// `tagUUIDs` with every one of `replaced` turned into `replacement` (or dropped when it is
/// empty), each UUID kept once, where it first appears.
QStringList replacedTags(const QStringList &tagUUIDs, const QSet<QString> &replaced,
                         const QString &replacement);
} // namespace ZDOperationChecks
