#pragma once

#include "ZDLibraryListener.h"
#include "ZDPredicate.h"
#include "ZDRecordTypes.h"
#include "ZDSerialQueue.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>

class ZDDataCenter;
class ZDMulticastDelegateHandler;

/// What the smart-group counts read, on the main thread.
struct ZDSmartGroupCountsSource
{
    std::function<ZDSnippetList()> snippets;
    std::function<QList<ZDCategoryNodePtr>()> smartGroupNodes;
    std::function<bool()> hasValidLibrary;

    static ZDSmartGroupCountsSource fromDataCenter(ZDDataCenter &center);
};

/// How many snippets each smart group's saved query matches, for the sidebar.
///
/// A whole count (at a library switch, for a new smart group or a changed query, after a folder
/// or tag rename that a query may read) takes snapshots of the snippets on the main thread and
/// evaluates the queries on the queue "com.varnok.Zandrio.CoreIndex.SmartGroups"; the result is
/// taken up on the main thread. A notice about some snippets re-evaluates only those snippets, on
/// the main thread, and edits made while a whole count runs are applied again on top of its
/// result, so none is lost. A query that does not parse has no count.
///
/// Smart groups are taken from the source again whenever a notice may mean they changed (a
/// smart group selected, renamed, reordered or removed), so a query edited in place is noticed.
/// Main thread only.
class ZDSmartGroupCounts : public QObject, public ZDLibraryListener
{
    Q_OBJECT

public:
    static inline const QString queueLabel = QStringLiteral("com.varnok.Zandrio.CoreIndex.SmartGroups");

    /// `notifier` (may be null) is listened to.
    explicit ZDSmartGroupCounts(ZDSmartGroupCountsSource source,
                                ZDMulticastDelegateHandler *notifier = nullptr, QObject *parent = nullptr);
    ~ZDSmartGroupCounts() override;

    /// The number of snippets the group's query matches; -1 for an unknown group, one not
    /// counted yet, or one whose query does not parse.
    qint64 countForSmartGroup(const QString &UUID) const;

    /// Forgets every count and counts all the source's smart groups again.
    void recountAll();
    /// Takes the source's smart groups again: new ones and ones whose query changed are counted,
    /// removed ones forgotten.
    void smartGroupsDidChange();
    /// Waits for whole counts in progress; their results arrive through the event loop.
    void waitUntilIdle() { m_queue.waitUntilEmpty(); }

    // Notices.
    void categorySelectionDidChange(QObject *sender, const ZDCategoryNodePtr &category,
                                    const QString &designatedSnippetUUID,
                                    const QString &fragmentUUID) override;
    void folderDidRename(QObject *sender, const ZDCategoryNodePtr &folder) override;
    void foldersDidRemove(QObject *sender, const QList<ZDCategoryNodePtr> &folders) override;
    void foldersDidReorder(QObject *sender, const QList<ZDCategoryNodePtr> &folders) override;
    void smartGroupDidRename(QObject *sender, const ZDCategoryNodePtr &smartGroup) override;
    void tagDidRename(QObject *sender, const ZDTagPtr &tag) override;
    void snippetDidAdd(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetContentDidChange(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetTitleDidChange(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetsTagsDidChange(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetsDidRemove(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetsCategoryDidChange(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetsLanguageDidChange(QObject *sender, const ZDSnippetList &snippets) override;
    void applicationLibraryDidChange(QObject *sender) override;

Q_SIGNALS:
    /// Some group's count changed, or a group was counted, added or dropped.
    void countsDidChange();

private:
    struct Group
    {
        QString predicateString;
        ZDPredicate predicate;
        QSet<QString> matches; // UUIDs of the matching snippets
        bool counted = false;
        quint64 generation = 0; // of the whole count that will fill `matches`
    };
    /// A snippet changed (or, when `removed`, left the library) after a whole count was started.
    struct Edit
    {
        quint64 generation;
        ZDSnippetPtr snippet;
        bool removed;
    };
    struct Result;

    void count(const QStringList &groupUUIDs);
    void takeResult(const Result &result);
    void recountGroupsReading(const QStringList &keyPathHeads);
    void snippetsDidChange(const ZDSnippetList &snippets, bool removed);
    bool apply(const Edit &edit, const QStringList &groupUUIDs);

    ZDSmartGroupCountsSource m_source;
    QHash<QString, Group> m_groups;
    QList<Edit> m_edits; // kept while whole counts run
    quint64 m_generation = 0;
    int m_running = 0;
    ZDSerialQueue m_queue{queueLabel};
};
