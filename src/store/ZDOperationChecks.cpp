#include "ZDOperationChecks.h"

#include "ZDCategoryNode.h"
#include "ZDDataCenter.h"
#include "ZDOperationErrors.h"
#include "ZDPredicate.h"
#include "ZDSnippet.h"
#include "ZDSnippetPart.h"
#include "ZDTag.h"

#include <algorithm>

namespace ZDOperationChecks {
namespace Errors = ZDOperationErrors;

QString uncategorizedUUID()
{
    return QLatin1String(ZDUncategorizedUUID);
}

/// The library's snippets with these UUIDs, in that order, each once; null when one is unknown.
std::optional<ZDSnippetList> findSnippets(const ZDDataCenter &center, const QStringList &UUIDs,
                                          const char *operation, ZDError *error)
{
    ZDSnippetList snippets;
    QSet<QString> seen;
    for (const QString &UUID : UUIDs) {
        const ZDSnippetPtr snippet = center.snippetWithUUID(UUID);
        if (!snippet) {
            ZDError::fail(error,
                          Errors::unknownRecord(QLatin1String(operation), QStringLiteral("snippet"), UUID));
            return std::nullopt;
        }
        if (!seen.contains(UUID)) {
            seen.insert(UUID);
            snippets << snippet;
        }
    }
    return snippets;
}

ZDSnippetPtr findSnippet(const ZDDataCenter &center, const QString &UUID, const char *operation,
                         ZDError *error)
{
    const std::optional<ZDSnippetList> found = findSnippets(center, {UUID}, operation, error);
    return found ? found->first() : nullptr;
}

ZDSnippetPartPtr findPart(const ZDSnippet &snippet, const QString &partUUID, const char *operation,
                          ZDError *error)
{
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        if (part->UUID() == partUUID)
            return part;
    }
    ZDError::fail(error,
                  Errors::unknownRecord(QLatin1String(operation), QStringLiteral("fragment"), partUUID));
    return nullptr;
}

/// The nodes of `list` with these UUIDs, in the order given, each once; null when one is unknown.
std::optional<Nodes> findNodes(const Nodes &list, const QStringList &UUIDs, const QString &kind,
                               const char *operation, ZDError *error)
{
    Nodes found;
    for (const QString &UUID : UUIDs) {
        const auto it = std::find_if(list.cbegin(), list.cend(),
                                     [&](const ZDCategoryNodePtr &n) { return n->UUID() == UUID; });
        if (it == list.cend()) {
            ZDError::fail(error, Errors::unknownRecord(QLatin1String(operation), kind, UUID));
            return std::nullopt;
        }
        if (!found.contains(*it))
            found << *it;
    }
    return found;
}

std::optional<Nodes> findFolders(const ZDDataCenter &center, const QStringList &UUIDs, const char *operation,
                                 ZDError *error)
{
    Nodes folders;
    for (const QString &UUID : UUIDs) {
        const ZDCategoryNodePtr folder = center.folderNodeWithUUID(UUID);
        if (!folder) {
            ZDError::fail(error,
                          Errors::unknownRecord(QLatin1String(operation), QStringLiteral("folder"), UUID));
            return std::nullopt;
        }
        if (!folders.contains(folder))
            folders << folder;
    }
    return folders;
}

ZDTagPtr findTag(const ZDTagList &tags, const QString &UUID, const char *operation, ZDError *error)
{
    for (const ZDTagPtr &tag : tags) {
        if (tag->UUID() == UUID)
            return tag;
    }
    ZDError::fail(error, Errors::unknownRecord(QLatin1String(operation), QStringLiteral("tag"), UUID));
    return nullptr;
}

/// A title must say something; it is kept as typed.
bool checkTitle(const QString &title, const char *operation, ZDError *error)
{
    if (!title.trimmed().isEmpty())
        return true;
    return ZDError::fail(
        error, Errors::invalidArgument(QLatin1String(operation), QObject::tr("A title can’t be empty.")));
}

bool checkPredicate(const QString &predicateString, const char *operation, ZDError *error)
{
    ZDError parseError;
    if (ZDPredicate::fromFormat(predicateString, &parseError).isValid())
        return true;
    ZDError refusal = Errors::invalidArgument(
        QLatin1String(operation), QObject::tr("The query “%1” can’t be read.").arg(predicateString));
    refusal.withInformation(QStringLiteral("UnderlyingError"), parseError.toString());
    return ZDError::fail(error, refusal);
}

qsizetype insertionIndex(int index, qsizetype count)
{
    return index < 0 || index > count ? count : index;
}

/// `list` with `moved` taken out and put back together at `index`.
Nodes movedWithin(Nodes list, const Nodes &moved, int index)
{
    list.removeIf([&](const ZDCategoryNodePtr &node) { return moved.contains(node); });
    qsizetype at = insertionIndex(index, list.size());
    for (const ZDCategoryNodePtr &node : moved)
        list.insert(at++, node);
    return list;
}

/// Takes `node` out of its parent or out of the top-level list.
void detach(const ZDCategoryNodePtr &node, Nodes &roots)
{
    if (const ZDCategoryNodePtr parent = node->parentCategoryNode())
        parent->removeChild(node);
    else
        roots.removeIf([&](const ZDCategoryNodePtr &n) { return n.get() == node.get(); });
}

QSet<QString> UUIDsWithin(const Nodes &folders)
{
    QSet<QString> UUIDs;
    for (const ZDCategoryNodePtr &folder : folders) {
        UUIDs.insert(folder->UUID());
        folder->traverseSubNodesWithBlock(
            [&](const ZDCategoryNodePtr &child, int) { UUIDs.insert(child->UUID()); });
    }
    return UUIDs;
}

/// `tagUUIDs` with every one of `replaced` turned into `replacement` (or dropped when it is
/// empty), each UUID kept once, where it first appears.
QStringList replacedTags(const QStringList &tagUUIDs, const QSet<QString> &replaced,
                         const QString &replacement)
{
    QStringList result;
    for (const QString &UUID : tagUUIDs) {
        const QString kept = replaced.contains(UUID) ? replacement : UUID;
        if (!kept.isEmpty() && !result.contains(kept))
            result << kept;
    }
    return result;
}
} // namespace ZDOperationChecks
