#pragma once

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>
#include <vector>

struct sqlite3;

/// One hit of a ranked query: the document's identity and its relevance (greater is better,
/// always above zero).
struct ZDIndexHit
{
    QString identifier;
    double score = 0;
};

/// Where a fragment must sit in a term for `termsContaining`.
enum class ZDTermPlacement { Anywhere, AtStart, AtEnd, Whole };

/// One in-memory inverted index: an FTS5 table in a private SQLite connection, tokenized by
/// ZDFoldingTokenizer, with proximity (phrase) queries, terms of any length, no stop words and
/// BM25 relevance. Documents are keyed by an identity string and numbered from 1; a document
/// that is replaced keeps its number, a removed one frees it, and compaction renumbers densely.
///
/// The table keeps no copy of the texts, so replacing or removing a document needs the text it
/// was indexed with. Writes go into an open transaction that `flush` commits. Every method is
/// safe from any thread; writes are meant for one thread at a time.
class ZDFullTextIndex
{
public:
    explicit ZDFullTextIndex(const QString &name);
    ~ZDFullTextIndex();
    ZDFullTextIndex(const ZDFullTextIndex &) = delete;
    ZDFullTextIndex &operator=(const ZDFullTextIndex &) = delete;

    QString name() const { return m_name; }
    /// False when the database could not be opened; every write then fails.
    bool isValid() const { return m_db != nullptr; }
    QString lastError() const;

    /// Adds a document, or replaces the one with this identity (`previousText` is what it was
    /// indexed with). Returns the document's number, 0 on failure.
    qint64 addDocument(const QString &identifier, const QString &text, const QString &previousText = {});
    /// Removes a document; harmless when it is not there.
    bool removeDocument(const QString &identifier, const QString &previousText);
    /// Commits the writes made since the last flush.
    void flush();
    /// Renumbers the documents 1...n and merges the index; `textOf` gives each document's text.
    bool compact(const std::function<QString(const QString &identifier)> &textOf);

    qint64 documentCount() const;
    qint64 maximumDocumentID() const;
    qint64 documentID(const QString &identifier) const;

    /// Runs an FTS5 query and returns at most `maximumHits` hits in document order, stopping
    /// early when `timeLimitMs` passes.
    QList<ZDIndexHit> search(const QString &query, int maximumHits, int timeLimitMs) const;
    /// Every known term (UTF-8) holding `fragment` (folded, UTF-8) where `placement` says; at
    /// most `limit` of them when `limit` >= 0 (shorter terms first). Terms of removed documents
    /// may linger.
    QList<QByteArray> termsContaining(const QByteArray &fragment, ZDTermPlacement placement,
                                      int limit = -1) const;
    /// The numbers of the documents holding any of `terms`; a vector indexed by number.
    std::vector<bool> documentsWithAnyTerm(const QList<QByteArray> &terms) const;

    /// Called by the tokenizer for every term of a document being written (lock held).
    void noteIndexedTerm(const char *term, int length);

private:
    bool exec(const char *sql) const;
    bool insertRow(qint64 rowid, const QString &text);
    bool deleteRow(qint64 rowid, const QString &text);
    void beginIfNeeded();


    QString m_name;
    QByteArray m_table;
    sqlite3 *m_db = nullptr;
    mutable std::recursive_mutex m_mutex;
    mutable QString m_lastError;
    bool m_inTransaction = false;
    QHash<QString, qint64> m_idByIdentifier;
    QHash<qint64, QString> m_identifierById;
    qint64 m_maximumID = 0;
    // The vocabulary: every term seen, each as "\n" + term in one buffer, for fast substring
    // scans (a scan of the fts5vocab table reads every doclist and is far slower).
    QByteArray m_vocabulary;
    std::vector<int> m_termStarts;
    QSet<QByteArray> m_termSet;
};
