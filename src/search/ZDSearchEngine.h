#pragma once

#include "ZDLibraryListener.h"
#include "ZDRankCollection.h"
#include "ZDRecordTypes.h"
#include "ZDSearchConstraint.h"
#include "ZDSerialQueue.h"

#include <QHash>
#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

class ZDMulticastDelegateHandler;
class ZDSnippetIndexes;
struct ZDIndexedSnippet;

/// How a snippet changed, for `updateIndexForSnippet`. Added and Changed both (re)index it.
enum class ZDIndexChangeKind
{
    Added = 0,
    Removed = 1,
    Changed = 2
};

/// Answers every keyword search of the program. Which snippets match is decided by substring
/// tests over the live snippets (ignoring case and diacritics unless case must match); in
/// which order they come is decided by the relevance the full-text indexes give them; the
/// constraints filter last.
///
/// The engine keeps two in-memory full-text indexes (titles, full texts) of the library's
/// snippets. They are rebuilt from the whole library by `rebuildIndex` (and 0.1 s after the
/// library-changed notice) and kept current by the snippet notices; every index write runs on
/// the serial queue "Zandrio CoreSearch". While a rebuild runs `indexReady` is false and
/// searches return their matches unranked; `searchIndexDidBuild` tells when ranking is back.
/// The indexes also make matching fast: a snippet is tested against the index when it is
/// indexed and no change notice of it is waiting, otherwise directly, so the result equals a
/// plain scan's as long as every change of a snippet's title or text is announced (snippets
/// added or removed without a notice are handled too).
///
/// Searches run on the caller's thread, which must be the one that changes snippets (the main
/// thread). Notices and `rebuildIndex` are for the main thread too.
class ZDSearchEngine : public QObject, public ZDLibraryListener
{
    Q_OBJECT

public:
    static inline const QString queueLabel = QStringLiteral("Zandrio CoreSearch");
    /// The name of the notice `searchIndexDidBuild` stands for.
    static inline const QString indexDidBuildNotification =
        QStringLiteral("ZDSearchIndexDidBuildNotification");
    static constexpr int maximumRankedHits = 3000;
    static constexpr int rankingTimeLimitMs = 3000;
    /// How long after the library-changed notice the rebuild starts.
    static constexpr int rebuildDelayMs = 100;

    /// The library's snippets in the store's order (read on the main thread).
    using SnippetSource = std::function<ZDSnippetList()>;

    /// `notifier` (may be null) is the change notifier the engine listens to.
    explicit ZDSearchEngine(SnippetSource snippets, ZDMulticastDelegateHandler *notifier = nullptr,
                            QObject *parent = nullptr);
    ~ZDSearchEngine() override;

    /// The engine the program installed at start-up, or null.
    static ZDSearchEngine *sharedEngine();
    static void install(ZDSearchEngine *engine);

    // Indexes.
    bool indexReady() const { return m_indexReady; }
    /// Drops both indexes and builds them anew from the library on the queue, superseding a
    /// rebuild in progress and every index update still waiting.
    void rebuildIndex();
    /// Queues the index change for one snippet. Missing data is reported as a "SearchEngineErr"
    /// event and changes nothing.
    void updateIndexForSnippet(const ZDSnippetPtr &snippet, ZDIndexChangeKind kind);
    /// Queues a compaction of each index that has freed more than 100 document numbers.
    void compactIfRequired();
    /// Waits until the queue has nothing left to do (for tests and the command-line tool).
    void waitUntilIndexIsIdle();
    /// The indexes now in use, or null (for tests and benchmarks).
    std::shared_ptr<ZDSnippetIndexes> currentIndexes() const;

    // Searching.
    /// The snippets matching `keyword`, by relevance when a keyword is given, then filtered by
    /// every constraint. An absent or empty keyword gives the library in store order. `ranks`,
    /// when given, receives the relevances used.
    ZDSnippetList snippetsWithKeyword(const QString &keyword, const QList<ZDSearchConstraint> &constraints,
                                      bool fullText, bool fuzzy, bool matchesCase,
                                      ZDRankCollection *ranks = nullptr) const;
    /// The matches sorted by relevance (highest first, unranked last, ties in store order).
    ZDSnippetList mutableOrderedObjectsWithKeyword(const QString &keyword, bool fullText, bool fuzzy,
                                                   bool matchesCase, ZDRankCollection *ranks = nullptr) const;
    /// The matches in store order. Fuzzy splits the keyword at every single space and requires
    /// every non-empty word; otherwise the keyword is one literal string. The text is the title,
    /// or the full text when `fullText`; case and diacritics are ignored, or only diacritics
    /// when `matchesCase`.
    ZDSnippetList privateSearchWithKeyword(const QString &keyword, bool fullText, bool fuzzy,
                                           bool matchesCase) const;
    /// The index's relevance of each snippet for the keyword (empty while the index is not ready).
    ZDRankCollection rankCollectionWithKeyword(const QString &keyword, bool fullText, bool fuzzy) const;

    /// The words a keyword is matched by.
    static QStringList wordsOfKeyword(const QString &keyword, bool fuzzy);

    // Notices.
    void snippetDidAdd(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetsDidRemove(QObject *sender, const ZDSnippetList &snippets) override;
    void snippetTitleDidChange(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetContentDidChange(QObject *sender, const ZDSnippetPtr &snippet) override;
    void applicationLibraryDidChange(QObject *sender) override;

Q_SIGNALS:
    /// A rebuild finished ("ZDSearchIndexDidBuildNotification"); delivered on the main thread.
    void searchIndexDidBuild(ZDSearchEngine *engine);

private:
    void applyUpdate(const ZDIndexedSnippet &snippet, ZDIndexChangeKind kind);
    void enqueueUpdates(QList<ZDIndexedSnippet> snippets, ZDIndexChangeKind kind);
    void notePending(const QList<ZDIndexedSnippet> &snippets, int change);
    static void reportError(const QString &description);

    struct Matching;
    /// Positions in `snippets` of the matches, ascending; `documentIDs` receives each
    /// position's document number in the index used (0: not used).
    std::vector<qsizetype> matchingPositions(const ZDSnippetList &snippets, const QStringList &words,
                                             bool fullText, bool matchesCase, const ZDSnippetIndexes *indexes,
                                             std::vector<qint64> *documentIDs) const;
    std::vector<qint64> documentIDsByPosition(const ZDSnippetList &snippets, const ZDSnippetIndexes &indexes,
                                              bool fullText) const;
    QList<struct ZDIndexHit> rankedHits(const QString &keyword, bool fullText, bool fuzzy,
                                        const ZDSnippetIndexes &indexes, bool identifiers) const;

    // The document numbers of the store's list by position, kept while neither the list nor
    // the indexes change, so that a search need not look at every snippet.
    struct PositionCache
    {
        ZDSnippetList list; // held, so that a change of the store's list gives it new storage
        bool valid = false;
        const void *indexes = nullptr;
        quint64 revision = 0;
        std::vector<qint64> titleIDs;
        std::vector<qint64> fullTextIDs;
    };
    mutable std::mutex m_cacheMutex;
    mutable PositionCache m_cache;
    // Snippets whose change notice came but whose index update has not run yet: searches test
    // them directly.
    mutable std::mutex m_pendingMutex;
    QHash<const ZDSnippet *, int> m_pending;

    SnippetSource m_source;
    std::atomic<bool> m_indexReady{false};
    std::atomic<int> m_generation{0};
    mutable std::mutex m_indexesMutex;
    std::shared_ptr<ZDSnippetIndexes> m_indexes;
    ZDSerialQueue m_queue{queueLabel}; // last: stopped before the members its tasks use
};
