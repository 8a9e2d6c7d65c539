#include "ZDFullTextIndex.h"

#include "ZDFoldingTokenizer.h"
#include "ZDRankFunction.h"
#include "ZDSearchFolding.h"

#include <QByteArrayMatcher>
#include <QElapsedTimer>

#include <sqlite3.h>

#include <algorithm>

namespace {

class Statement
{
public:
    Statement(sqlite3 *db, const QByteArray &sql)
    {
        sqlite3_prepare_v2(db, sql.constData(), -1, &m_statement, nullptr);
    }
    ~Statement() { sqlite3_finalize(m_statement); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    sqlite3_stmt *get() const { return m_statement; }
    explicit operator bool() const { return m_statement != nullptr; }
    void bindText(int index, const QString &text)
    {
        const QByteArray utf8 = text.toUtf8();
        sqlite3_bind_text(m_statement, index, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
    }

private:
    sqlite3_stmt *m_statement = nullptr;
};

void observeTerm(void *context, const char *term, int length)
{
    static_cast<ZDFullTextIndex *>(context)->noteIndexedTerm(term, length);
}

} // namespace

ZDFullTextIndex::ZDFullTextIndex(const QString &name)
    : m_name(name), m_table("\"" + name.toUtf8().replace('"', "\"\"") + "\"")
{
    if (sqlite3_open_v2(":memory:", &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                        nullptr) != SQLITE_OK) {
        m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
        sqlite3_close(m_db);
        m_db = nullptr;
        return;
    }
    const bool ok = ZDFoldingTokenizer::registerWith(m_db, observeTerm, this) && ZDRankFunction::registerWith(m_db) &&
                    exec("PRAGMA journal_mode=OFF") && exec("PRAGMA synchronous=OFF") &&
                    exec(QByteArray("CREATE VIRTUAL TABLE " + m_table +
                                    " USING fts5(body, content='', detail=full, tokenize='zdfold')")
                             .constData());
    if (!ok) {
        sqlite3_close(m_db);
        m_db = nullptr;
    }
}

ZDFullTextIndex::~ZDFullTextIndex()
{
    sqlite3_finalize(m_insert);
    sqlite3_finalize(m_delete);
    if (m_db)
        sqlite3_close(m_db);
}

QString ZDFullTextIndex::lastError() const
{
    std::lock_guard lock(m_mutex);
    return m_lastError;
}

bool ZDFullTextIndex::exec(const char *sql) const
{
    char *message = nullptr;
    if (sqlite3_exec(m_db, sql, nullptr, nullptr, &message) == SQLITE_OK)
        return true;
    m_lastError = QString::fromUtf8(message ? message : sqlite3_errmsg(m_db));
    sqlite3_free(message);
    return false;
}

void ZDFullTextIndex::beginIfNeeded()
{
    if (!m_inTransaction)
        m_inTransaction = exec("BEGIN");
}

bool ZDFullTextIndex::writeRow(sqlite3_stmt *&statement, const QByteArray &sql, qint64 rowid,
                               const QByteArray &folded)
{
    if (!statement && sqlite3_prepare_v3(m_db, sql.constData(), -1, SQLITE_PREPARE_PERSISTENT, &statement,
                                         nullptr) != SQLITE_OK) {
        m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
        return false;
    }
    sqlite3_bind_int64(statement, 1, rowid);
    sqlite3_bind_text(statement, 2, folded.constData(), int(folded.size()), SQLITE_STATIC);
    const bool done = sqlite3_step(statement) == SQLITE_DONE;
    if (!done)
        m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    return done;
}

bool ZDFullTextIndex::insertRow(qint64 rowid, const ZDFoldedText &folded)
{
    m_writing = {rowid, false};
    if (!writeRow(m_insert, "INSERT INTO " + m_table + "(rowid, body) VALUES (?1, ?2)", rowid, folded.utf8))
        return false;
    if (m_folded.size() <= size_t(rowid))
        m_folded.resize(std::max(size_t(rowid) + 1, m_folded.size() * 2));
    m_folded[size_t(rowid)] = folded;
    return true;
}

bool ZDFullTextIndex::deleteRow(qint64 rowid)
{
    // A table without stored content forgets a row by being told the terms it was indexed with.
    m_writing = {rowid, true};
    const bool done = writeRow(m_delete,
                               "INSERT INTO " + m_table + "(" + m_table + ", rowid, body) VALUES ('delete', ?1, ?2)",
                               rowid, m_folded[size_t(rowid)].utf8);
    if (done)
        m_folded[size_t(rowid)] = ZDFoldedText();
    return done;
}

ZDFoldedText ZDFoldedText::of(const QString &text)
{
    const QString folded = ZDSearchFolding::folded(text);
    return {folded.toUtf8(), QStringView(folded).isValidUtf16()};
}

qint64 ZDFullTextIndex::addDocument(const QString &identifier, const QString &text)
{
    return addFoldedDocument(identifier, ZDFoldedText::of(text));
}

qint64 ZDFullTextIndex::addFoldedDocument(const QString &identifier, const ZDFoldedText &folded)
{
    std::lock_guard lock(m_mutex);
    if (!m_db)
        return 0;
    beginIfNeeded();
    qint64 rowid = m_idByIdentifier.value(identifier);
    if (rowid != 0) {
        if (!deleteRow(rowid))
            return 0;
    } else {
        rowid = m_maximumID + 1;
    }
    if (!insertRow(rowid, folded))
        return 0;
    m_idByIdentifier.insert(identifier, rowid);
    m_identifierById.insert(rowid, identifier);
    m_maximumID = std::max(m_maximumID, rowid);
    return rowid;
}

bool ZDFullTextIndex::removeDocument(const QString &identifier)
{
    std::lock_guard lock(m_mutex);
    const qint64 rowid = m_idByIdentifier.value(identifier);
    if (!m_db || rowid == 0)
        return true;
    beginIfNeeded();
    if (!deleteRow(rowid))
        return false;
    m_idByIdentifier.remove(identifier);
    m_identifierById.remove(rowid);
    return true;
}

void ZDFullTextIndex::flush()
{
    std::lock_guard lock(m_mutex);
    if (m_db && m_inTransaction) {
        exec("COMMIT");
        m_inTransaction = false;
    }
}

bool ZDFullTextIndex::compact()
{
    std::lock_guard lock(m_mutex);
    if (!m_db)
        return false;
    QList<qint64> rowids = m_identifierById.keys();
    std::sort(rowids.begin(), rowids.end());
    beginIfNeeded();
    if (!exec(QByteArray("INSERT INTO " + m_table + "(" + m_table + ") VALUES ('delete-all')").constData()))
        return false;
    for (std::vector<quint32> &posting : m_postings)
        posting.clear();
    std::vector<ZDFoldedText> texts(m_folded.size());
    std::swap(texts, m_folded);
    QHash<QString, qint64> ids;
    QHash<qint64, QString> identifiers;
    qint64 next = 0;
    for (qint64 rowid : std::as_const(rowids)) {
        const QString identifier = m_identifierById.value(rowid);
        if (!insertRow(++next, texts[size_t(rowid)]))
            return false;
        ids.insert(identifier, next);
        identifiers.insert(next, identifier);
    }
    m_folded.resize(size_t(next) + 1);
    m_idByIdentifier = std::move(ids);
    m_identifierById = std::move(identifiers);
    m_maximumID = next;
    exec(QByteArray("INSERT INTO " + m_table + "(" + m_table + ") VALUES ('optimize')").constData());
    exec("COMMIT");
    m_inTransaction = false;
    return true;
}

qint64 ZDFullTextIndex::documentCount() const
{
    std::lock_guard lock(m_mutex);
    return m_idByIdentifier.size();
}

qint64 ZDFullTextIndex::maximumDocumentID() const
{
    std::lock_guard lock(m_mutex);
    return m_maximumID;
}

qint64 ZDFullTextIndex::documentID(const QString &identifier) const
{
    std::lock_guard lock(m_mutex);
    return m_idByIdentifier.value(identifier);
}

QList<ZDIndexHit> ZDFullTextIndex::search(const QString &query, int maximumHits, int timeLimitMs,
                                          const std::vector<qint64> *phraseDocumentCounts,
                                          bool identifiers) const
{
    std::lock_guard lock(m_mutex);
    QList<ZDIndexHit> hits;
    if (!m_db)
        return hits;
    hits.reserve(maximumHits);
    const QByteArray rank = phraseDocumentCounts ? QByteArray("zdrank(" + m_table + ", ?3)")
                                                 : QByteArray("bm25(" + m_table + ")");
    Statement statement(m_db, "SELECT rowid, " + rank + " FROM " + m_table + " WHERE " + m_table +
                                  " MATCH ?1 LIMIT ?2");
    if (!statement) {
        m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
        return hits;
    }
    statement.bindText(1, query);
    sqlite3_bind_int(statement.get(), 2, maximumHits);
    std::vector<sqlite3_int64> counts;
    if (phraseDocumentCounts) {
        counts.assign(phraseDocumentCounts->begin(), phraseDocumentCounts->end());
        sqlite3_bind_pointer(statement.get(), 3, counts.data(), ZDRankFunction::countsPointerType, nullptr);
    }
    QElapsedTimer clock;
    clock.start();
    struct Deadline
    {
        QElapsedTimer *clock;
        int limit;
    } deadline{&clock, timeLimitMs};
    sqlite3_progress_handler(
        m_db, 1000,
        [](void *context) -> int {
            auto *d = static_cast<Deadline *>(context);
            return d->clock->elapsed() > d->limit ? 1 : 0;
        },
        &deadline);
    while (sqlite3_step(statement.get()) == SQLITE_ROW) {
        const qint64 rowid = sqlite3_column_int64(statement.get(), 0);
        hits.append({identifiers ? m_identifierById.value(rowid) : QString(), rowid,
                     -sqlite3_column_double(statement.get(), 1)});
    }
    sqlite3_progress_handler(m_db, 0, nullptr, nullptr);
    return hits;
}

QHash<QByteArray, qint64> ZDFullTextIndex::documentCountsByTerm() const
{
    std::lock_guard lock(m_mutex);
    QHash<QByteArray, qint64> counts;
    if (!m_db || !exec(QByteArray("CREATE VIRTUAL TABLE IF NOT EXISTS temp.vocabulary USING fts5vocab(main, " +
                                  m_table + ", 'row')")
                           .constData()))
        return counts;
    Statement statement(m_db, "SELECT term, doc FROM temp.vocabulary");
    while (statement && sqlite3_step(statement.get()) == SQLITE_ROW) {
        const auto *term = static_cast<const char *>(sqlite3_column_blob(statement.get(), 0));
        counts.insert(QByteArray(term, sqlite3_column_bytes(statement.get(), 0)),
                      sqlite3_column_int64(statement.get(), 1));
    }
    return counts;
}

QHash<QByteArray, qint64> ZDFullTextIndex::vocabularyDocumentCounts() const
{
    std::lock_guard lock(m_mutex);
    QHash<QByteArray, qint64> counts;
    for (int id = 0; id < m_terms.count(); ++id) {
        if (!m_postings[size_t(id)].empty())
            counts.insert(m_terms.term(id).toByteArray(), qint64(m_postings[size_t(id)].size()));
    }
    return counts;
}

void ZDFullTextIndex::noteIndexedTerm(const char *term, int length)
{
    // Called by the tokenizer while a write holds the lock: keeps the vocabulary and each
    // term's sorted list of document numbers in step with the table.
    const QByteArrayView key(term, length);
    int id;
    if (m_writing.removing) {
        id = m_terms.find(key);
        if (id < 0)
            return;
    } else {
        bool added = false;
        id = m_terms.insert(key, &added);
        if (added)
            m_postings.emplace_back();
    }
    std::vector<quint32> &posting = m_postings[size_t(id)];
    const auto document = quint32(m_writing.rowid);
    if (!m_writing.removing && (posting.empty() || posting.back() < document)) {
        posting.push_back(document);
        return;
    }
    if (!m_writing.removing && posting.back() == document)
        return; // a repeat within the document being written
    const auto at = std::lower_bound(posting.begin(), posting.end(), document);
    const bool present = at != posting.end() && *at == document;
    if (m_writing.removing && present)
        posting.erase(at);
    else if (!m_writing.removing && !present)
        posting.insert(at, document);
}

std::vector<int> ZDFullTextIndex::termIdsContaining(const QByteArray &fragment,
                                                    ZDTermPlacement placement) const
{
    std::lock_guard lock(m_mutex);
    return unlockedTermIdsContaining(fragment, placement);
}

qint64 ZDFullTextIndex::postingCount(const std::vector<int> &termIds) const
{
    std::lock_guard lock(m_mutex);
    qint64 count = 0;
    for (int id : termIds)
        count += qint64(m_postings[size_t(id)].size());
    return count;
}

std::vector<bool> ZDFullTextIndex::documentsWithTerms(const std::vector<int> &termIds) const
{
    std::lock_guard lock(m_mutex);
    std::vector<bool> documents(size_t(m_maximumID + 1), false);
    for (int id : termIds) {
        for (quint32 document : m_postings[size_t(id)])
            documents[document] = true;
    }
    return documents;
}

std::vector<int> ZDFullTextIndex::unlockedTermIdsContaining(const QByteArray &fragment,
                                                            ZDTermPlacement placement) const
{
    std::vector<int> ids;
    if (fragment.isEmpty())
        return ids;
    if (placement == ZDTermPlacement::Whole) {
        if (const int id = m_terms.find(fragment); id >= 0)
            ids.push_back(id);
        return ids;
    }
    const QByteArray &vocabulary = m_terms.text();
    const QByteArrayMatcher matcher(fragment);
    qsizetype from = 0;
    while ((from = matcher.indexIn(vocabulary, from)) >= 0) {
        // The term holding this occurrence: the last one starting at or before it.
        const int id = m_terms.termAt(from);
        const QByteArrayView term = m_terms.term(id);
        from = term.data() - vocabulary.constData() + term.size(); // one look at each term is enough
        if ((placement == ZDTermPlacement::AtStart && !term.startsWith(fragment)) ||
            (placement == ZDTermPlacement::AtEnd && !term.endsWith(fragment)))
            continue;
        ids.push_back(id);
    }
    return ids;
}

QList<QByteArray> ZDFullTextIndex::termsContaining(const QByteArray &fragment, ZDTermPlacement placement,
                                                   int limit, std::vector<qint64> *documentCounts) const
{
    std::lock_guard lock(m_mutex);
    std::vector<int> ids = unlockedTermIdsContaining(fragment, placement);
    // Terms that no document holds any more are left out; when there are too many, the
    // shortest (the closest to the fragment) are kept.
    std::erase_if(ids, [this](int id) { return m_postings[size_t(id)].empty(); });
    auto length = [this](int id) { return m_terms.length(id); };
    if (limit >= 0 && ids.size() > size_t(limit)) {
        std::stable_sort(ids.begin(), ids.end(), [&](int a, int b) { return length(a) < length(b); });
        ids.resize(size_t(limit));
    }
    QList<QByteArray> terms;
    if (documentCounts)
        documentCounts->clear();
    for (int id : ids) {
        terms.append(m_terms.term(id).toByteArray());
        if (documentCounts)
            documentCounts->push_back(qint64(m_postings[size_t(id)].size()));
    }
    return terms;
}

std::vector<bool> ZDFullTextIndex::documentsWithTermsContaining(const QByteArray &fragment,
                                                                ZDTermPlacement placement) const
{
    std::lock_guard lock(m_mutex);
    return documentsWithTerms(unlockedTermIdsContaining(fragment, placement));
}
