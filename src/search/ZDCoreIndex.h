#pragma once

#include "ZDLibraryListener.h"
#include "ZDRecordTypes.h"
#include "ZDSerialQueue.h"
#include "ZDWriteTimer.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <mutex>

class ZDDataCenter;
class ZDMulticastDelegateHandler;
class ZDUserDefaults;

/// One line of the counting index: a folder, tag or language, and how many snippets it holds.
struct ZDIndexResult
{
    QString displayName;    ///< the folder's or tag's title, the language's name
    QString ubiquitousName; ///< the folder's or tag's UUID, the language identifier
    qint64 count = 0;

    static ZDIndexResult resultWithDisplayName(const QString &displayName, const QString &ubiquitousName,
                                               qint64 count)
    {
        return {displayName, ubiquitousName, count};
    }
    bool operator==(const ZDIndexResult &) const = default;
};

/// What the counting index counts, read on the main thread.
struct ZDCoreIndexSource
{
    std::function<ZDSnippetList()> snippets;
    std::function<QList<ZDCategoryNodePtr>()> rootFolderNodes;
    std::function<ZDTagList()> tags;
    std::function<bool()> hasValidLibrary;
    /// The user's active languages ("User ActiveLanguages"): listed even before any snippet uses them.
    std::function<QStringList()> activeLanguageIdentifiers;

    static ZDCoreIndexSource fromDataCenter(ZDDataCenter &center, ZDUserDefaults *defaults);
};

/// How many snippets each folder, tag and language holds; it feeds the search field's "in:"
/// proposals and the sidebar's counts. Folders are listed in tree order after Uncategorized,
/// tags in the library's order, languages by name. A snippet filed in a folder the library does
/// not know counts as uncategorized, as the sidebar lists it.
///
/// Whole recounts run on the queue "com.varnok.Zandrio.CoreIndex" and are paced by a repeating
/// tick (10 s): `scheduleIndexRebuild` marks kinds dirty and, when the tick is not running,
/// starts it and counts at once; each tick counts the dirty kinds, and the first tick with
/// nothing dirty stops. Notices adjust the counts in place at once: the index remembers each
/// snippet's folder, tags and languages as last counted, so a move or retagging is counted
/// from where the snippet was. Adjustments made while a recount runs are applied again on top
/// of its result. Main thread only, except the list readers, which are safe anywhere.
class ZDCoreIndex : public QObject, public ZDLibraryListener
{
    Q_OBJECT

public:
    enum DirtyType
    {
        Folders = 1,
        Tags = 2,
        Languages = 4,
        All = 7
    };
    /// What one snippet adds to the counts.
    struct SnippetFacts
    {
        QString folderUUID;
        QStringList tagUUIDs; // distinct
        QStringList languages;
    };

    static inline const QString queueLabel = QStringLiteral("com.varnok.Zandrio.CoreIndex");
    static constexpr int tickIntervalMs = 10000;

    /// `notifier` (may be null) is listened to; `defaults` (may be null) is observed for
    /// "User ActiveLanguages"; `timer` null means a 10-second QTimer.
    ZDCoreIndex(ZDCoreIndexSource source, ZDMulticastDelegateHandler *notifier = nullptr,
                ZDUserDefaults *defaults = nullptr, std::unique_ptr<ZDWriteTimer> timer = nullptr,
                QObject *parent = nullptr);
    ~ZDCoreIndex() override;

    static ZDCoreIndex *sharedIndex();
    static void install(ZDCoreIndex *index);

    QList<ZDIndexResult> folders() const;
    QList<ZDIndexResult> tags() const;
    QList<ZDIndexResult> languages() const;

    int buildDirtyTypes() const { return m_dirty; }
    bool isTimerRunning() const { return m_timer->isActive(); }
    void scheduleIndexRebuild(int types);
    void rebuildAllIndex() { scheduleIndexRebuild(All); }
    /// Waits for recounts in progress; their results reach the lists through the event loop.
    void waitUntilIdle() { m_queue.waitUntilEmpty(); }

    void increaseFolder(const QString &UUID, qint64 number);
    void increaseTag(const QString &UUID, qint64 number);
    void increaseLanguage(const QString &identifier, qint64 number);

    // Notices.
    void folderDidAdd(QObject *sender, const ZDCategoryNodePtr &folder, const ZDCategoryNodePtr &parentNode,
                      int index) override;
    void folderDidRename(QObject *sender, const ZDCategoryNodePtr &folder) override;
    void foldersDidRemove(QObject *sender, const QList<ZDCategoryNodePtr> &folders) override;
    void tagDidRename(QObject *sender, const ZDTagPtr &tag) override;
    void tagsDidRemove(QObject *sender, const ZDTagList &tags) override;
    void snippetDidAdd(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetsDidRemove(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetsCategoryDidChange(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetsTagsDidChange(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetsLanguageDidChange(QObject *sender, const ZDSnippetList &snippets) override;
    void applicationLibraryDidChange(QObject *sender) override;

Q_SIGNALS:
    /// The lists changed (after a recount or an adjustment).
    void indexDidChange();

private:
    /// A change of one list made while a recount ran, to be made again on its result.
    struct Change
    {
        quint64 generation;
        int type;
        std::function<void(QList<ZDIndexResult> &)> apply;
    };

    void tick();
    static SnippetFacts factsOf(const ZDSnippet &snippet);
    QList<ZDIndexResult> &list(int type);
    void change(int type, std::function<void(QList<ZDIndexResult> &)> apply);
    void adjustFolder(const QString &UUID, qint64 number);
    void adjustTag(const QString &UUID, qint64 number);
    void adjustLanguage(const QString &identifier, qint64 number);
    /// Counts a snippet from its remembered facts (none: not counted) to `now` (none: gone).
    void recount(const QString &snippetUUID, const SnippetFacts *now);
    void adjustOne(int type, const QString &key, qint64 number);
    static int countedSlot(int type) { return type == Folders ? 0 : type == Tags ? 1 : 2; }
    void snippetsDidChange(const ZDSnippetList &snippets);

    ZDCoreIndexSource m_source;
    std::unique_ptr<ZDWriteTimer> m_timer;
    int m_dirty = 0;
    /// What each list counts of every snippet (by UUID): its folder, its tags, its languages.
    QHash<QString, QStringList> m_counted[3];
    QList<Change> m_changes;              // kept while recounts run
    quint64 m_generation = 0;
    int m_running = 0;
    mutable std::mutex m_mutex;
    QList<ZDIndexResult> m_folders;
    QList<ZDIndexResult> m_tags;
    QList<ZDIndexResult> m_languages;
    ZDSerialQueue m_queue{queueLabel};
};
