#pragma once

#include "ZDRecordTypes.h"

#include <QCollator>
#include <QSet>
#include <QString>

class ZDCategoryNode;

/// Which snippets a sidebar node shows, and in what order the list shows them.
namespace ZDSnippetCollection {
/// The snippets of `node`: every snippet for All Snippets; those filed in the folder for a
/// folder, Uncategorized or a shortcut (a snippet whose folder is not in `knownFolderUUIDs`
/// counts as uncategorized); those carrying the tag for a tag; those matching the saved query
/// for a smart group. Group headers show nothing. Order is kept.
ZDSnippetList snippetsForNode(const ZDCategoryNode &node, const ZDSnippetList &snippets,
                              const QSet<QString> &knownFolderUUIDs);

/// Sorts by a sort method (by date modified, date created or name; by snippet count means by
/// name for snippets) in a sort order (descending 11, ascending 12). Ties keep their order.
void sort(ZDSnippetList &snippets, int sortMethod, int sortOrder);

/// The row at which `snippet` stands once `snippets` is sorted, when every row but `row` is
/// already in order: the row `sort` would give it, found without sorting. `row` is the snippet's
/// present row, or `snippets.size()` for a snippet not listed yet (it then goes after its ties).
qsizetype sortedRow(const ZDSnippetList &snippets, qsizetype row, const ZDSnippet &snippet, int sortMethod,
                    int sortOrder);

/// Compares titles as people read them: case ignored, numbers by value ("2" before "10").
QCollator titleCollator();

/// The distinct display names of the parts' languages, in part order, joined by ", ".
QString languagesSummary(const ZDSnippet &snippet);
} // namespace ZDSnippetCollection
