#pragma once

#include "ZDTermTable.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <mutex>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

/// One hit of a ranked query: the document's identity and its relevance (greater is better,
/// always above zero).
struct ZDIndexHit
{
    QString identifier;
    qint64 documentID = 0;
    double score = 0;
};

/// A document's text as an index takes it: folded (ZDSearchFolding::folded), in UTF-8. When the
/// text held unpaired surrogates, which UTF-8 cannot carry, it is not `exact`: a byte-wise test
/// on it would not say what a test of the text says.
struct ZDFoldedText
{
    QByteArray utf8;
    bool exact = true;

    static ZDFoldedText of(const QString &text);
};

/// Where a fragment must sit in a term for `termsContaining`.
enum class ZDTermPlacement
{
    Anywhere,
    AtStart,
    AtEnd,
    Whole
};

/// One in-memory inverted index: an FTS5 table in a private SQLite connection, tokenized by
/// ZDFoldingTokenizer, with proximity (phrase) queries, terms of any length, no stop words and
/// BM25 relevance. Documents are keyed by an identity string and numbered from 1; a document
/// that is replaced keeps its number, a removed one frees it, and compaction renumbers densely.
///
/// The table keeps no copy of the texts; the index keeps each document's folded text
/// (ZDSearchFolding::folded, UTF-8) instead, which is what the table was given, what replacing
/// or removing it takes, and what lets a search test a word against the document without
/// folding it again. Writes go into an open transaction that `flush` commits. Every method is
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

    /// Adds a document, or replaces the one with this identity. Returns the document's number,
    /// 0 on failure.
    qint64 addDocument(const QString &identifier, const QString &text);
    /// The same for a text folded already (ZDFoldedText::of, on any thread).
    qint64 addFoldedDocument(const QString &identifier, const ZDFoldedText &folded);
    /// Removes a document; harmless when it is not there.
    bool removeDocument(const QString &identifier);
    /// Commits the writes made since the last flush.
    void flush();
    /// Renumbers the documents 1...n and merges the index.
    bool compact();

    qint64 documentCount() const;
    qint64 maximumDocumentID() const;
    qint64 documentID(const QString &identifier) const;
    /// The folded text of document `documentID`. Not locked: the caller makes sure no write
    /// runs meanwhile.
    const ZDFoldedText *foldedText(qint64 documentID) const
    {
        return size_t(documentID) < m_folded.size() ? &m_folded[size_t(documentID)] : nullptr;
    }

    /// Runs an FTS5 query and returns at most `maximumHits` hits in document order, stopping
    /// early when `timeLimitMs` passes. Relevance is BM25; `phraseDocumentCounts`, when given,
    /// holds for each phrase of the query (in order) the number of documents it matches, or -1
    /// for one to be counted, which spares counting them all (ZDRankFunction). Without
    /// `identifiers` the hits carry only their document numbers.
    QList<ZDIndexHit> search(const QString &query, int maximumHits, int timeLimitMs,
                             const std::vector<qint64> *phraseDocumentCounts = nullptr,
                             bool identifiers = true) const;
    /// Every known term (UTF-8) holding `fragment` (folded, UTF-8) where `placement` says; at
    /// most `limit` of them when `limit` >= 0 (shorter terms first). Terms no document holds
    /// any more are left out. `documentCounts`, when given, receives how many documents hold
    /// each term.
    QList<QByteArray> termsContaining(const QByteArray &fragment, ZDTermPlacement placement,
                                      int limit = -1, std::vector<qint64> *documentCounts = nullptr) const;
    /// The documents holding a term with `fragment` where `placement` says: a vector indexed
    /// by document number.
    std::vector<bool> documentsWithTermsContaining(const QByteArray &fragment,
                                                   ZDTermPlacement placement) const;
    /// The same in two steps: the numbers of the terms holding `fragment`, how many document
    /// entries they have between them (the cost of the second step), and their documents.
    std::vector<int> termIdsContaining(const QByteArray &fragment, ZDTermPlacement placement) const;
    qint64 postingCount(const std::vector<int> &termIds) const;
    std::vector<bool> documentsWithTerms(const std::vector<int> &termIds) const;

    /// Every term with the number of documents holding it, as the table's fts5vocab view counts
    /// them: what the vocabulary must agree with (for checks; it reads the whole table).
    QHash<QByteArray, qint64> documentCountsByTerm() const;
    /// The same from the vocabulary, leaving out terms no document holds any more.
    QHash<QByteArray, qint64> vocabularyDocumentCounts() const;

    /// Called by the tokenizer for every term of a document being written (lock held).
    void noteIndexedTerm(const char *term, int length);

private:
    bool exec(const char *sql) const;
    bool writeRow(sqlite3_stmt *&statement, const QByteArray &sql, qint64 rowid, const QByteArray &folded);
    bool insertRow(qint64 rowid, const ZDFoldedText &folded);
    bool deleteRow(qint64 rowid);
    void beginIfNeeded();
    std::vector<int> unlockedTermIdsContaining(const QByteArray &fragment, ZDTermPlacement placement) const;

    QString m_name;
    QByteArray m_table;
    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_insert = nullptr;
    sqlite3_stmt *m_delete = nullptr;
    mutable std::recursive_mutex m_mutex;
    mutable QString m_lastError;
    bool m_inTransaction = false;
    QHash<QString, qint64> m_idByIdentifier;
    QHash<qint64, QString> m_identifierById;
    qint64 m_maximumID = 0;
    std::vector<ZDFoldedText> m_folded; // each document's folded text, by number
    // The vocabulary, fed by the tokenizer with the very terms the table is given: a scan of
    // the fts5vocab table reads every doclist and is far slower, and so is asking the table for
    // the documents of many terms at once.
    ZDTermTable m_terms;
    // For each term, the numbers of the documents holding it, ascending.
    std::vector<std::vector<quint32>> m_postings;
    struct Writing
    {
        qint64 rowid = 0;
        bool removing = false;
    } m_writing;
};
