#include "ZDSnippetIndexes.h"

#include "ZDSnippet.h"

ZDSnippetIndexes::ZDSnippetIndexes()
    : m_title(titleIndexName)
    , m_fullText(fullTextIndexName)
{
}

bool ZDSnippetIndexes::put(const ZDIndexedSnippet &snippet)
{
    std::lock_guard lock(m_mutex);
    const QString url = ZDIndexedSnippet::documentURL(snippet.UUID);
    const std::shared_ptr<Entry> previous = m_byUUID.value(snippet.UUID);
    const QString previousTitle = previous ? previous->indexed.title : QString();
    const QString previousText = previous ? previous->indexed.stringRepresentation() : QString();

    auto entry = std::make_shared<Entry>();
    entry->indexed = snippet;
    entry->titleID = m_title.addDocument(url, snippet.title, previousTitle);
    entry->fullTextID = m_fullText.addDocument(url, snippet.stringRepresentation(), previousText);
    if (previous)
        m_byObject.remove(previous->indexed.snippet.get());
    if (entry->titleID == 0 || entry->fullTextID == 0) {
        // What the indexes hold for it is unknown now; searches then test it directly.
        m_byUUID.remove(snippet.UUID);
        return false;
    }
    m_byUUID.insert(snippet.UUID, entry);
    m_byObject.insert(snippet.snippet.get(), entry.get());
    return true;
}

void ZDSnippetIndexes::remove(const QString &UUID)
{
    std::lock_guard lock(m_mutex);
    const std::shared_ptr<Entry> previous = m_byUUID.take(UUID);
    if (!previous)
        return;
    const QString url = ZDIndexedSnippet::documentURL(UUID);
    m_title.removeDocument(url, previous->indexed.title);
    m_fullText.removeDocument(url, previous->indexed.stringRepresentation());
    m_byObject.remove(previous->indexed.snippet.get());
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
    const bool title = &index == &m_title;
    const qsizetype prefix = ZDIndexedSnippet::documentURL(QString()).size();
    index.compact([&](const QString &url) {
        const std::shared_ptr<Entry> entry = m_byUUID.value(url.mid(prefix));
        if (!entry)
            return QString();
        return title ? entry->indexed.title : entry->indexed.stringRepresentation();
    });
    for (const std::shared_ptr<Entry> &entry : std::as_const(m_byUUID))
        entry.get()->*id = index.documentID(ZDIndexedSnippet::documentURL(entry->indexed.UUID));
}
