#include "ZDSmartGroupCounts.h"

#include "ZDCategoryNode.h"
#include "ZDDataCenter.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippet.h"
#include "ZDSnippetKeyPaths.h"
#include "ZDSnippetSnapshot.h"

#include <memory>
#include <vector>

struct ZDSmartGroupCounts::Result
{
    quint64 generation = 0;
    QList<std::pair<QString, QSet<QString>>> matches; // group UUID, matching snippet UUIDs
};

ZDSmartGroupCountsSource ZDSmartGroupCountsSource::fromDataCenter(ZDDataCenter &center)
{
    ZDSmartGroupCountsSource source;
    source.snippets = [&center] { return center.snippets(); };
    source.smartGroupNodes = [&center] { return center.smartGroupNodes(); };
    source.hasValidLibrary = [&center] { return center.dataCenterHasValidLibrary(); };
    return source;
}

ZDSmartGroupCounts::ZDSmartGroupCounts(ZDSmartGroupCountsSource source, ZDMulticastDelegateHandler *notifier,
                                       QObject *parent)
    : QObject(parent), m_source(std::move(source))
{
    if (notifier)
        notifier->addDelegate(this);
}

ZDSmartGroupCounts::~ZDSmartGroupCounts()
{
    m_queue.cancelPending();
    m_queue.waitUntilEmpty();
}

qint64 ZDSmartGroupCounts::countForSmartGroup(const QString &UUID) const
{
    const auto group = m_groups.constFind(UUID);
    if (group == m_groups.cend() || !group->counted || !group->predicate.isValid())
        return -1;
    return group->matches.size();
}

void ZDSmartGroupCounts::recountAll()
{
    // Results of counts still running find no group of their generation and are dropped.
    m_groups.clear();
    smartGroupsDidChange();
    Q_EMIT countsDidChange();
}

void ZDSmartGroupCounts::smartGroupsDidChange()
{
    const bool valid = m_source.hasValidLibrary && m_source.hasValidLibrary();
    const QList<ZDCategoryNodePtr> nodes =
        valid && m_source.smartGroupNodes ? m_source.smartGroupNodes() : QList<ZDCategoryNodePtr>();
    bool changed = false;
    QSet<QString> present;
    QStringList toCount;
    for (const ZDCategoryNodePtr &node : nodes) {
        if (!node || !node->isSmartGroup())
            continue;
        present.insert(node->UUID());
        const auto known = m_groups.constFind(node->UUID());
        if (known != m_groups.cend() && known->predicateString == node->predicateString())
            continue;
        Group group;
        group.predicateString = node->predicateString();
        group.predicate = ZDPredicate::fromFormat(group.predicateString);
        if (group.predicate.isValid())
            toCount << node->UUID();
        m_groups.insert(node->UUID(), group);
        changed = true;
    }
    changed =
        m_groups.removeIf([&](const auto &entry) { return !present.contains(entry.key()); }) > 0 || changed;
    if (!toCount.isEmpty())
        count(toCount);
    if (changed)
        Q_EMIT countsDidChange();
}

void ZDSmartGroupCounts::count(const QStringList &groupUUIDs)
{
    const quint64 generation = ++m_generation;
    QStringList UUIDs;
    auto predicates = std::make_shared<std::vector<ZDPredicate>>();
    for (const QString &UUID : groupUUIDs) {
        const auto group = m_groups.find(UUID);
        if (group == m_groups.end() || !group->predicate.isValid())
            continue;
        group->generation = generation;
        UUIDs << UUID;
        predicates->push_back(group->predicate);
    }
    if (UUIDs.isEmpty())
        return;

    // Snapshots on the main thread, where the records may be read; the predicates run on the queue.
    auto plan = std::make_shared<const ZDSnippetSnapshotPlan>(*predicates);
    auto snapshots = std::make_shared<std::vector<ZDSnippetSnapshot>>();
    const ZDSnippetList snippets = m_source.snippets ? m_source.snippets() : ZDSnippetList();
    snapshots->reserve(size_t(snippets.size()));
    for (const ZDSnippetPtr &snippet : snippets)
        snapshots->push_back(plan->capture(*snippet));

    ++m_running;
    m_queue.async([this, generation, UUIDs, predicates, plan, snapshots] {
        auto result = std::make_shared<Result>();
        result->generation = generation;
        for (qsizetype i = 0; i < UUIDs.size(); ++i) {
            const ZDPredicate &predicate = (*predicates)[size_t(i)];
            QSet<QString> matches;
            for (const ZDSnippetSnapshot &snapshot : *snapshots) {
                if (plan->evaluate(predicate, snapshot))
                    matches.insert(snapshot.UUID);
            }
            result->matches.append({UUIDs[i], std::move(matches)});
        }
        QMetaObject::invokeMethod(
            this, [this, result] { takeResult(*result); }, Qt::QueuedConnection);
    });
}

void ZDSmartGroupCounts::takeResult(const Result &result)
{
    --m_running;
    QStringList taken;
    for (const auto &[UUID, matches] : result.matches) {
        const auto group = m_groups.find(UUID);
        // A group dropped, or recounted since (its query changed), waits for its own count.
        if (group == m_groups.end() || group->generation != result.generation)
            continue;
        group->matches = matches;
        group->counted = true;
        taken << UUID;
    }
    // Edits made after this count took its snapshots are not in its result.
    for (const Edit &edit : std::as_const(m_edits)) {
        if (edit.generation >= result.generation)
            apply(edit, taken);
    }
    if (m_running == 0)
        m_edits.clear();
    else
        m_edits.removeIf([&](const Edit &edit) { return edit.generation <= result.generation; });
    if (!taken.isEmpty())
        Q_EMIT countsDidChange();
}

void ZDSmartGroupCounts::recountGroupsReading(const QStringList &keyPathHeads)
{
    QStringList toCount;
    for (auto it = m_groups.cbegin(); it != m_groups.cend(); ++it) {
        if (!it->predicate.isValid())
            continue;
        for (const QString &path : ZDSnippetSnapshotPlan({it->predicate}).valuePaths()) {
            if (keyPathHeads.contains(path.section(QLatin1Char('.'), 0, 0))) {
                toCount << it.key();
                break;
            }
        }
    }
    // The present counts stay shown until the new ones arrive.
    if (!toCount.isEmpty())
        count(toCount);
}

bool ZDSmartGroupCounts::apply(const Edit &edit, const QStringList &groupUUIDs)
{
    bool changed = false;
    const QString UUID = edit.snippet->UUID();
    for (auto it = m_groups.begin(); it != m_groups.end(); ++it) {
        if (!it->predicate.isValid() || (!groupUUIDs.isEmpty() && !groupUUIDs.contains(it.key())))
            continue;
        const bool matches = !edit.removed && ZDSnippetKeyPaths::evaluate(it->predicate, *edit.snippet);
        if (matches == it->matches.contains(UUID))
            continue;
        if (matches)
            it->matches.insert(UUID);
        else
            it->matches.remove(UUID);
        changed = true;
    }
    return changed;
}

void ZDSmartGroupCounts::snippetsDidChange(const ZDSnippetList &snippets, bool removed)
{
    bool changed = false;
    for (const ZDSnippetPtr &snippet : snippets) {
        if (!snippet)
            continue;
        const Edit edit{m_generation, snippet, removed};
        if (m_running > 0)
            m_edits.append(edit);
        changed = apply(edit, {}) || changed;
    }
    if (changed)
        Q_EMIT countsDidChange();
}

void ZDSmartGroupCounts::categorySelectionDidChange(QObject *, const ZDCategoryNodePtr &category,
                                                    const QString &, const QString &)
{
    // A new smart group, or one whose query was edited, is selected after the change.
    if (category && category->isSmartGroup())
        smartGroupsDidChange();
}

void ZDSmartGroupCounts::folderDidRename(QObject *, const ZDCategoryNodePtr &)
{
    recountGroupsReading({QStringLiteral("localizedCategory")});
}

void ZDSmartGroupCounts::foldersDidRemove(QObject *, const QList<ZDCategoryNodePtr> &)
{
    smartGroupsDidChange(); // smart groups are removed with this notice too
}

void ZDSmartGroupCounts::foldersDidReorder(QObject *, const QList<ZDCategoryNodePtr> &)
{
    smartGroupsDidChange();
}

void ZDSmartGroupCounts::smartGroupDidRename(QObject *, const ZDCategoryNodePtr &)
{
    smartGroupsDidChange();
}

void ZDSmartGroupCounts::tagDidRename(QObject *, const ZDTagPtr &)
{
    recountGroupsReading({QStringLiteral("tags"), QStringLiteral("tagNames")});
}

void ZDSmartGroupCounts::snippetDidAdd(QObject *, const ZDSnippetPtr &snippet)
{
    snippetsDidChange({snippet}, false);
}

void ZDSmartGroupCounts::snippetContentDidChange(QObject *, const ZDSnippetPtr &snippet)
{
    snippetsDidChange({snippet}, false);
}

void ZDSmartGroupCounts::snippetTitleDidChange(QObject *, const ZDSnippetPtr &snippet)
{
    snippetsDidChange({snippet}, false);
}

void ZDSmartGroupCounts::snippetsTagsDidChange(QObject *, const ZDSnippetList &snippets)
{
    snippetsDidChange(snippets, false);
}

void ZDSmartGroupCounts::snippetsDidRemove(QObject *, const ZDSnippetList &snippets)
{
    snippetsDidChange(snippets, true);
}

void ZDSmartGroupCounts::snippetsCategoryDidChange(QObject *, const ZDSnippetList &snippets)
{
    snippetsDidChange(snippets, false);
}

void ZDSmartGroupCounts::snippetsLanguageDidChange(QObject *, const ZDSnippetList &snippets)
{
    snippetsDidChange(snippets, false);
}

void ZDSmartGroupCounts::applicationLibraryDidChange(QObject *)
{
    recountAll();
}
