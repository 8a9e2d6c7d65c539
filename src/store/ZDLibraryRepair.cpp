#include "ZDLibraryRepair.h"

#include "ZDAnalytics.h"
#include "ZDCategoryNode.h"
#include "ZDDataCenter.h"
#include "ZDLogger.h"
#include "ZDSnippet.h"
#include "ZDTag.h"

int ZDLibraryRepair::Report::removedTagCount() const
{
    int count = 0;
    for (const QStringList &uuids : removedTagUUIDs)
        count += int(uuids.size());
    return count;
}

QString ZDLibraryRepair::bucket(int count)
{
    if (count <= 1)
        return QString::number(qMax(count, 0));
    if (count <= 5)
        return QStringLiteral("2-5");
    if (count <= 10)
        return QStringLiteral("6-10");
    if (count <= 50)
        return QStringLiteral("11-50");
    if (count <= 100)
        return QStringLiteral("51-100");
    return QStringLiteral(">100");
}

QVariantMap ZDLibraryRepair::Report::analyticsProperties() const
{
    return {
        {QStringLiteral("Issued fixed"), bucket(issuesFixed())},
        {QStringLiteral("Uncategorize snippet"), bucket(uncategorizedCount())},
        {QStringLiteral("Remove tag"), bucket(removedTagCount())},
        {QStringLiteral("Remove shortcut"), bucket(removedShortcutCount())},
    };
}

ZDLibraryRepair::Report ZDLibraryRepair::inspect(const ZDSnippetList &snippets, const ZDTagList &tags,
                                                 const QHash<QString, QString> &folderTitles,
                                                 const QList<ZDCategoryNodePtr> &shortcutNodes)
{
    QSet<QString> tagUUIDs;
    for (const ZDTagPtr &tag : tags)
        tagUUIDs.insert(tag->UUID());

    Report report;
    for (const ZDSnippetPtr &snippet : snippets) {
        if (!folderTitles.contains(snippet->folderUUID()))
            report.uncategorizedSnippetUUIDs << snippet->UUID();
        QStringList unknown;
        for (const QString &tagUUID : snippet->tagUUIDs()) {
            if (!tagUUIDs.contains(tagUUID))
                unknown << tagUUID;
        }
        if (!unknown.isEmpty())
            report.removedTagUUIDs.insert(snippet->UUID(), unknown);
    }
    for (const ZDCategoryNodePtr &shortcut : shortcutNodes) {
        if (!folderTitles.contains(shortcut->UUID()))
            report.removedShortcutUUIDs << shortcut->UUID();
    }
    return report;
}

ZDSnippetList ZDLibraryRepair::applyToSnippets(const Report &report, const ZDSnippetList &snippets)
{
    const QSet<QString> uncategorize(report.uncategorizedSnippetUUIDs.cbegin(),
                                     report.uncategorizedSnippetUUIDs.cend());
    ZDSnippetList changed;
    for (const ZDSnippetPtr &snippet : snippets) {
        bool touched = false;
        if (uncategorize.contains(snippet->UUID())) {
            snippet->setFolderUUID(QLatin1String(ZDUncategorizedUUID));
            touched = true;
        }
        const auto unknown = report.removedTagUUIDs.constFind(snippet->UUID());
        if (unknown != report.removedTagUUIDs.cend()) {
            QStringList kept = snippet->tagUUIDs();
            for (const QString &tagUUID : *unknown)
                kept.removeAll(tagUUID);
            snippet->setTagUUIDs(kept);
            touched = true;
        }
        if (touched)
            changed << snippet;
    }
    return changed;
}

QList<ZDCategoryNodePtr> ZDLibraryRepair::remainingShortcuts(const Report &report,
                                                            const QList<ZDCategoryNodePtr> &shortcutNodes)
{
    QList<ZDCategoryNodePtr> kept;
    for (const ZDCategoryNodePtr &shortcut : shortcutNodes) {
        if (!report.removedShortcutUUIDs.contains(shortcut->UUID()))
            kept << shortcut;
    }
    return kept;
}

ZDLibraryRepair::Report ZDLibraryRepair::inspect(const ZDDataCenter &center)
{
    return inspect(center.snippets(), center.tags(), center.folderTitles(), center.shortcutNodes());
}

ZDLibraryRepair::Report ZDLibraryRepair::repair(ZDDataCenter &center)
{
    const Report report = inspect(center);
    if (report.isEmpty())
        return report;
    const ZDSnippetList changed = applyToSnippets(report, center.snippets());
    if (!changed.isEmpty())
        center.setSnippetsUpdated(changed);
    if (report.removedShortcutCount() > 0)
        center.setShortcutNodes(remainingShortcuts(report, center.shortcutNodes()));

    const QVariantMap properties = report.analyticsProperties();
    zdReportEvent(QStringLiteral("LibraryRepair"), properties);
    QStringList description;
    for (auto it = properties.cbegin(); it != properties.cend(); ++it)
        description << QStringLiteral("%1 = %2;").arg(it.key(), it.value().toString());
    zdLog(ZDLogLevel::Warning, ZDLogDomain::Library,
          QStringLiteral("Library repaired. {%1}").arg(description.join(QLatin1Char(' '))));
    return report;
}
