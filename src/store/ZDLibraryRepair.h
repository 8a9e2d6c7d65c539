#pragma once

#include "ZDRecordTypes.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QVariantMap>

class ZDDataCenter;

/// The repair pass over a loaded library: snippets filed in folders that no longer exist go to
/// Uncategorized, tag UUIDs that name no tag are dropped, shortcuts to unknown folders are
/// removed. Planning is apart from applying so that a check can report what a repair would do.
namespace ZDLibraryRepair {

struct Report
{
    /// Snippets whose folder is unknown (to be moved to Uncategorized).
    QStringList uncategorizedSnippetUUIDs;
    /// Snippet UUID to the tag UUIDs it names that no tag has.
    QHash<QString, QStringList> removedTagUUIDs;
    /// Shortcut nodes whose target folder is unknown.
    QStringList removedShortcutUUIDs;

    int uncategorizedCount() const { return int(uncategorizedSnippetUUIDs.size()); }
    int removedTagCount() const;
    int removedShortcutCount() const { return int(removedShortcutUUIDs.size()); }
    int issuesFixed() const { return uncategorizedCount() + removedTagCount() + removedShortcutCount(); }
    bool isEmpty() const { return issuesFixed() == 0; }
    /// The "LibraryRepair" event's properties: bucketed counts under "Issued fixed",
    /// "Uncategorize snippet", "Remove tag" and "Remove shortcut".
    QVariantMap analyticsProperties() const;
};

/// A count as reported: "0", "1", "2-5", "6-10", "11-50", "51-100" or ">100".
QString bucket(int count);

/// What the pass would change. `folderTitles` holds every known folder (and the predefined
/// nodes) by UUID.
Report inspect(const ZDSnippetList &snippets, const ZDTagList &tags,
               const QHash<QString, QString> &folderTitles, const QList<ZDCategoryNodePtr> &shortcutNodes);

/// Applies the snippet fixes of `report` in place; returns the snippets it changed.
ZDSnippetList applyToSnippets(const Report &report, const ZDSnippetList &snippets);
/// The shortcut list without the removed shortcuts.
QList<ZDCategoryNodePtr> remainingShortcuts(const Report &report, const QList<ZDCategoryNodePtr> &shortcutNodes);

/// What the pass would change in the library of `center` now.
Report inspect(const ZDDataCenter &center);
/// Runs the pass on the library of `center`. The fixes go through the store's ordinary setters,
/// so they are saved like any edit; a pass that fixed anything is reported (the "LibraryRepair"
/// event and a warning in the log).
Report repair(ZDDataCenter &center);

} // namespace ZDLibraryRepair
