#pragma once

#include "ZDFullTextIndex.h"
#include "ZDIndexedSnippet.h"

#include <QHash>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

/// The search engine's two indexes over the library's snippets, built and replaced together:
/// "TitleSnippetsIndex" over each title and "FullTextSnippetIndex" over each full text, plus
/// which snippet object each document stands for. Writes come from the engine's queue; a search holds
/// `lock()` while it reads.
class ZDSnippetIndexes
{
public:
    static inline const QString titleIndexName = QStringLiteral("TitleSnippetsIndex");
    static inline const QString fullTextIndexName = QStringLiteral("FullTextSnippetIndex");
    /// An index is compacted once this many document numbers have been freed.
    static constexpr qint64 compactionThreshold = 101;

    /// A snippet the indexes hold. Its texts are not kept: the indexes hold them folded.
    struct Entry
    {
        ZDSnippetPtr snippet; // kept alive, so that its address names no other snippet
        QString UUID;
        qint64 titleID = 0;
        qint64 fullTextID = 0;
    };

    ZDSnippetIndexes();

    ZDFullTextIndex &titleIndex() { return m_title; }
    ZDFullTextIndex &fullTextIndex() { return m_fullText; }
    const ZDFullTextIndex &index(bool fullText) const { return fullText ? m_fullText : m_title; }
    bool isValid() const { return m_title.isValid() && m_fullText.isValid(); }

    /// Adds the snippet's documents, replacing any it had; false when an index refused them.
    bool put(const ZDIndexedSnippet &snippet);
    /// Fills indexes that are still empty with `snippets`, as `put` for each would: the title
    /// index and the folding of the full texts on a thread of their own, the full-text index on
    /// the caller's. Stops early, leaving the indexes half built, once `superseded` says so.
    /// Returns how many snippets an index refused.
    qsizetype build(const QList<ZDIndexedSnippet> &snippets, const std::function<bool()> &superseded);
    /// Removes the snippet's documents; harmless when it has none.
    void remove(const QString &UUID);
    /// Keeps the snippet's documents but no longer vouches for them: searches test it directly
    /// until it is indexed again.
    void distrust(const QString &UUID);
    void flush();
    /// Compacts each index whose highest document number exceeds its document count by at least
    /// `compactionThreshold`.
    void compactIfRequired();

    std::unique_lock<std::mutex> lock() const { return std::unique_lock(m_mutex); }
    /// The entry of this very snippet object (not one with the same UUID), or null. Lock held.
    const Entry *entryFor(const ZDSnippet *snippet) const { return m_byObject.value(snippet); }
    qsizetype snippetCount() const;
    /// Changes whenever a document is added, replaced, removed or renumbered.
    quint64 revision() const { return m_revision; }

private:
    void compact(ZDFullTextIndex &index, qint64 Entry::*id);

    mutable std::mutex m_mutex;
    std::atomic<quint64> m_revision{0};
    ZDFullTextIndex m_title;
    ZDFullTextIndex m_fullText;
    QHash<QString, std::shared_ptr<Entry>> m_byUUID;
    QHash<const ZDSnippet *, const Entry *> m_byObject;
};
