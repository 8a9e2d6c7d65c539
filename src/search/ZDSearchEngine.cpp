#include "ZDSearchEngine.h"

#include "ZDAnalytics.h"
#include "ZDLogger.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippet.h"
#include "ZDSnippetIndexes.h"

#include <QPointer>
#include <QTimer>

namespace {
ZDSearchEngine *s_sharedEngine = nullptr;
}

ZDSearchEngine::ZDSearchEngine(SnippetSource snippets, ZDMulticastDelegateHandler *notifier, QObject *parent)
    : QObject(parent), m_source(std::move(snippets))
{
    if (notifier)
        notifier->addDelegate(this); // held weakly: nothing to undo
}

ZDSearchEngine::~ZDSearchEngine()
{
    ++m_generation; // stops a rebuild in progress
    m_queue.cancelPending();
    m_queue.waitUntilEmpty();
    if (s_sharedEngine == this)
        s_sharedEngine = nullptr;
}

ZDSearchEngine *ZDSearchEngine::sharedEngine()
{
    return s_sharedEngine;
}

void ZDSearchEngine::install(ZDSearchEngine *engine)
{
    s_sharedEngine = engine;
}

void ZDSearchEngine::reportError(const QString &description)
{
    zdLog(ZDLogLevel::Error, ZDLogDomain::Core, description);
    zdReportEvent(QStringLiteral("SearchEngineErr"), {{QStringLiteral("description"), description}});
}

std::shared_ptr<ZDSnippetIndexes> ZDSearchEngine::currentIndexes() const
{
    std::lock_guard lock(m_indexesMutex);
    return m_indexes;
}

void ZDSearchEngine::rebuildIndex()
{
    zdLog(ZDLogLevel::Info, ZDLogDomain::Core, QStringLiteral("Rebuild index requested ..."));
    m_indexReady = false;
    const int generation = ++m_generation;

    // The snippets' texts are taken here, on the thread that owns them; the strings are shared,
    // not copied.
    auto snapshot = std::make_shared<QList<ZDIndexedSnippet>>();
    const ZDSnippetList snippets = m_source ? m_source() : ZDSnippetList();
    snapshot->reserve(snippets.size());
    for (const ZDSnippetPtr &snippet : snippets)
        snapshot->append(ZDIndexedSnippet::capture(snippet));

    m_queue.cancelPending();
    {
        // The snapshot above holds every change announced so far.
        std::lock_guard lock(m_pendingMutex);
        m_pending.clear();
    }
    m_queue.async([this, generation, snapshot] {
        {
            std::lock_guard lock(m_indexesMutex);
            m_indexes.reset();
        }
        auto indexes = std::make_shared<ZDSnippetIndexes>();
        // When superseded, the later rebuild finishes the job.
        const qsizetype refused = indexes->build(*snapshot, [&] { return m_generation != generation; });
        if (m_generation != generation)
            return;
        for (qsizetype i = 0; i < refused; ++i)
            reportError(QStringLiteral("updateIndexForSnippet:changeKind: document cannot be created."));
        indexes->flush();
        if (m_generation != generation)
            return;
        {
            std::lock_guard lock(m_indexesMutex);
            m_indexes = indexes;
        }
        m_indexReady = true;
        zdLog(ZDLogLevel::Info, ZDLogDomain::Core, QStringLiteral("Search index created successfully."));
        QMetaObject::invokeMethod(
            this, [this] { Q_EMIT searchIndexDidBuild(this); }, Qt::QueuedConnection);
    });
}

void ZDSearchEngine::applyUpdate(const ZDIndexedSnippet &snippet, ZDIndexChangeKind kind)
{
    const std::shared_ptr<ZDSnippetIndexes> indexes = currentIndexes();
    QString problem;
    if (!snippet.snippet)
        problem = QStringLiteral("snippet is nil.");
    else if (snippet.UUID.isEmpty())
        problem = QStringLiteral("snippet.UUID is nil.");
    else if (snippet.title.isNull())
        problem = QStringLiteral("snippet.title is nil.");
    else if (!indexes)
        problem = QStringLiteral("titleIndex is nil.");
    else if (!indexes->isValid())
        problem = QStringLiteral("fullTextSnippetIndex is nil.");
    if (!problem.isEmpty()) {
        reportError(QStringLiteral("updateIndexForSnippet:changeKind: ") + problem);
        // Its documents are left as they were, but they may no longer tell the truth.
        if (indexes && !snippet.UUID.isEmpty())
            indexes->distrust(snippet.UUID);
        return;
    }
    if ((int(kind) | 2) == 2) {
        if (!indexes->put(snippet))
            reportError(QStringLiteral("updateIndexForSnippet:changeKind: document cannot be created."));
    } else {
        indexes->remove(snippet.UUID);
    }
}

void ZDSearchEngine::notePending(const QList<ZDIndexedSnippet> &snippets, int change)
{
    std::lock_guard lock(m_pendingMutex);
    for (const ZDIndexedSnippet &snippet : snippets) {
        const ZDSnippet *key = snippet.snippet.get();
        if (!key)
            continue;
        const int count = m_pending.value(key) + change;
        if (count > 0)
            m_pending.insert(key, count);
        else
            m_pending.remove(key);
    }
}

void ZDSearchEngine::enqueueUpdates(QList<ZDIndexedSnippet> snippets, ZDIndexChangeKind kind)
{
    notePending(snippets, 1);
    m_queue.async([this, snippets = std::move(snippets), kind] {
        for (const ZDIndexedSnippet &snippet : snippets)
            applyUpdate(snippet, kind);
        if (const std::shared_ptr<ZDSnippetIndexes> indexes = currentIndexes())
            indexes->flush();
        notePending(snippets, -1);
    });
}

void ZDSearchEngine::updateIndexForSnippet(const ZDSnippetPtr &snippet, ZDIndexChangeKind kind)
{
    enqueueUpdates({ZDIndexedSnippet::capture(snippet)}, kind);
}

void ZDSearchEngine::compactIfRequired()
{
    m_queue.async([this] {
        if (const std::shared_ptr<ZDSnippetIndexes> indexes = currentIndexes())
            indexes->compactIfRequired();
    });
}

void ZDSearchEngine::waitUntilIndexIsIdle()
{
    m_queue.waitUntilEmpty();
}

void ZDSearchEngine::snippetDidAdd(QObject *, const ZDSnippetPtr &snippet)
{
    updateIndexForSnippet(snippet, ZDIndexChangeKind::Added);
}

void ZDSearchEngine::snippetsDidRemove(QObject *, const ZDSnippetList &snippets)
{
    QList<ZDIndexedSnippet> removed;
    for (const ZDSnippetPtr &snippet : snippets)
        removed.append(ZDIndexedSnippet::capture(snippet));
    enqueueUpdates(std::move(removed), ZDIndexChangeKind::Removed);
    compactIfRequired(); // only once enough numbers are free
}

void ZDSearchEngine::snippetTitleDidChange(QObject *, const ZDSnippetPtr &snippet)
{
    updateIndexForSnippet(snippet, ZDIndexChangeKind::Changed);
}

void ZDSearchEngine::snippetContentDidChange(QObject *, const ZDSnippetPtr &snippet)
{
    updateIndexForSnippet(snippet, ZDIndexChangeKind::Changed);
}

void ZDSearchEngine::applicationLibraryDidChange(QObject *)
{
    QTimer::singleShot(rebuildDelayMs, this, &ZDSearchEngine::rebuildIndex);
}
