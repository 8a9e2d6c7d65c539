#include "ZDSnippetIndexes.h"

#include "ZDSnippet.h"

#include <QThread>

#include <atomic>

ZDSnippetIndexes::ZDSnippetIndexes() : m_title(titleIndexName), m_fullText(fullTextIndexName) {}

bool ZDSnippetIndexes::put(const ZDIndexedSnippet &snippet)
{
    std::lock_guard lock(m_mutex);
    ++m_revision;
    const QString url = ZDIndexedSnippet::documentURL(snippet.UUID);
    const std::shared_ptr<Entry> previous = m_byUUID.value(snippet.UUID);

    auto entry = std::make_shared<Entry>(Entry{snippet.snippet, snippet.UUID});
    entry->titleID = m_title.addDocument(url, snippet.title);
    entry->fullTextID = m_fullText.addDocument(url, snippet.stringRepresentation());
    if (previous)
        m_byObject.remove(previous->snippet.get());
    if (entry->titleID == 0 || entry->fullTextID == 0) {
        // What the indexes hold for it is unknown now; searches then test it directly.
        m_byUUID.remove(snippet.UUID);
        return false;
    }
    m_byUUID.insert(snippet.UUID, entry);
    m_byObject.insert(snippet.snippet.get(), entry.get());
    return true;
}

qsizetype ZDSnippetIndexes::build(const QList<ZDIndexedSnippet> &snippets, const std::function<bool()> &superseded)
{
    const size_t count = size_t(snippets.size());
    std::vector<ZDFoldedText> texts(count);
    std::vector<qint64> titleIDs(count, 0);
    std::vector<qint64> fullTextIDs(count, 0);
    std::atomic<size_t> folded{0};
    std::atomic<bool> stop{false};
    auto url = [&](size_t i) { return ZDIndexedSnippet::documentURL(snippets[qsizetype(i)].UUID); };

    // The full texts are folded ahead of the full-text index, which takes most of the time;
    // the titles are indexed once they are all folded.
    std::unique_ptr<QThread> helper(QThread::create([&] {
        for (size_t i = 0; i < count && !stop; ++i) {
            texts[i] = ZDFoldedText::of(snippets[qsizetype(i)].stringRepresentation());
            folded.store(i + 1, std::memory_order_release);
            folded.notify_one();
        }
        for (size_t i = 0; i < count && !stop; ++i)
            titleIDs[i] = m_title.addDocument(url(i), snippets[qsizetype(i)].title);
    }));
    helper->setObjectName(QStringLiteral("Zandrio CoreSearch Titles"));
    helper->start();
    for (size_t i = 0; i < count; ++i) {
        if ((i % 256 == 0 && superseded()) || stop) {
            stop = true;
            break;
        }
        for (size_t ready = folded.load(std::memory_order_acquire); ready <= i;
             ready = folded.load(std::memory_order_acquire))
            folded.wait(ready, std::memory_order_acquire);
        fullTextIDs[i] = m_fullText.addFoldedDocument(url(i), texts[i]);
        texts[i] = ZDFoldedText(); // the index holds it now
    }
    helper->wait();
    if (stop)
        return 0;

    std::lock_guard lock(m_mutex);
    ++m_revision;
    qsizetype refused = 0;
    for (size_t i = 0; i < count; ++i) {
        const ZDIndexedSnippet &snippet = snippets[qsizetype(i)];
        if (titleIDs[i] == 0 || fullTextIDs[i] == 0) {
            ++refused;
            continue;
        }
        auto entry = std::make_shared<Entry>(Entry{snippet.snippet, snippet.UUID, titleIDs[i], fullTextIDs[i]});
        if (const std::shared_ptr<Entry> previous = m_byUUID.value(snippet.UUID))
            m_byObject.remove(previous->snippet.get());
        m_byUUID.insert(snippet.UUID, entry);
        m_byObject.insert(snippet.snippet.get(), entry.get());
    }
    return refused;
}

void ZDSnippetIndexes::remove(const QString &UUID)
{
    std::lock_guard lock(m_mutex);
    const std::shared_ptr<Entry> previous = m_byUUID.take(UUID);
    if (!previous)
        return;
    ++m_revision;
    const QString url = ZDIndexedSnippet::documentURL(UUID);
    m_title.removeDocument(url);
    m_fullText.removeDocument(url);
    m_byObject.remove(previous->snippet.get());
}

void ZDSnippetIndexes::distrust(const QString &UUID)
{
    std::lock_guard lock(m_mutex);
    if (const std::shared_ptr<Entry> entry = m_byUUID.value(UUID)) {
        ++m_revision;
        m_byObject.remove(entry->snippet.get());
    }
}

void ZDSnippetIndexes::flush()
{
    m_title.flush();
    m_fullText.flush();
}

qsizetype ZDSnippetIndexes::snippetCount() const
{
    std::lock_guard lock(m_mutex);
    return m_byUUID.size();
}

void ZDSnippetIndexes::compactIfRequired()
{
    std::lock_guard lock(m_mutex);
    compact(m_title, &Entry::titleID);
    compact(m_fullText, &Entry::fullTextID);
}

void ZDSnippetIndexes::compact(ZDFullTextIndex &index, qint64 Entry::*id)
{
    if (!index.isValid() || index.maximumDocumentID() - index.documentCount() < compactionThreshold)
        return;
    ++m_revision;
    index.compact();
    for (const std::shared_ptr<Entry> &entry : std::as_const(m_byUUID))
        entry.get()->*id = index.documentID(ZDIndexedSnippet::documentURL(entry->UUID));
}
