#include "ZDFullTextIndex.h"

#include "ZDFoldingTokenizer.h"

#include <QByteArrayMatcher>
#include <QElapsedTimer>

#include <sqlite3.h>

#include <algorithm>

namespace {

class Statement
{
public:
    Statement(sqlite3 *db, const QByteArray &sql) { sqlite3_prepare_v2(db, sql.constData(), -1, &m_statement, nullptr); }
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
    : m_name(name)
    , m_table("\"" + name.toUtf8().replace('"', "\"\"") + "\"")
{
    if (sqlite3_open_v2(":memory:", &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                        nullptr)
        != SQLITE_OK) {
        m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
        sqlite3_close(m_db);
        m_db = nullptr;
        return;
    }
    const bool ok = ZDFoldingTokenizer::registerWith(m_db, observeTerm, this)
        && exec("PRAGMA journal_mode=OFF") && exec("PRAGMA synchronous=OFF")
        && exec(QByteArray("CREATE VIRTUAL TABLE " + m_table
                           + " USING fts5(body, content='', detail=full, tokenize='zdfold')")
                    .constData());
    if (!ok) {
        sqlite3_close(m_db);
        m_db = nullptr;
    }
}

ZDFullTextIndex::~ZDFullTextIndex()
{
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

bool ZDFullTextIndex::insertRow(qint64 rowid, const QString &text)
{
    Statement statement(m_db, "INSERT INTO " + m_table + "(rowid, body) VALUES (?1, ?2)");
    if (!statement)
        return false;
    sqlite3_bind_int64(statement.get(), 1, rowid);
    statement.bindText(2, text);
    if (sqlite3_step(statement.get()) == SQLITE_DONE)
        return true;
    m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
    return false;
}

bool ZDFullTextIndex::deleteRow(qint64 rowid, const QString &text)
{
    // A table without stored content forgets a row by being told the terms it was indexed with.
    Statement statement(m_db, "INSERT INTO " + m_table + "(" + m_table + ", rowid, body) VALUES ('delete', ?1, ?2)");
    if (!statement)
        return false;
    sqlite3_bind_int64(statement.get(), 1, rowid);
    statement.bindText(2, text);
    if (sqlite3_step(statement.get()) == SQLITE_DONE)
        return true;
    m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
    return false;
}

qint64 ZDFullTextIndex::addDocument(const QString &identifier, const QString &text, const QString &previousText)
{
    std::lock_guard lock(m_mutex);
    if (!m_db)
        return 0;
    beginIfNeeded();
    qint64 rowid = m_idByIdentifier.value(identifier);
    if (rowid != 0) {
        if (!deleteRow(rowid, previousText))
            return 0;
    } else {
        rowid = m_maximumID + 1;
    }
    if (!insertRow(rowid, text))
        return 0;
    m_idByIdentifier.insert(identifier, rowid);
    m_identifierById.insert(rowid, identifier);
    m_maximumID = std::max(m_maximumID, rowid);
    return rowid;
}

bool ZDFullTextIndex::removeDocument(const QString &identifier, const QString &previousText)
{
    std::lock_guard lock(m_mutex);
    const qint64 rowid = m_idByIdentifier.value(identifier);
    if (!m_db || rowid == 0)
        return true;
    beginIfNeeded();
    if (!deleteRow(rowid, previousText))
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

bool ZDFullTextIndex::compact(const std::function<QString(const QString &identifier)> &textOf)
{
    std::lock_guard lock(m_mutex);
    if (!m_db)
        return false;
    QList<qint64> rowids = m_identifierById.keys();
    std::sort(rowids.begin(), rowids.end());
    beginIfNeeded();
    if (!exec(QByteArray("INSERT INTO " + m_table + "(" + m_table + ") VALUES ('delete-all')").constData()))
        return false;
    QHash<QString, qint64> ids;
    QHash<qint64, QString> identifiers;
    qint64 next = 0;
    for (qint64 rowid : std::as_const(rowids)) {
        const QString identifier = m_identifierById.value(rowid);
        if (!insertRow(++next, textOf(identifier)))
            return false;
        ids.insert(identifier, next);
        identifiers.insert(next, identifier);
    }
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

QList<ZDIndexHit> ZDFullTextIndex::search(const QString &query, int maximumHits, int timeLimitMs) const
{
    std::lock_guard lock(m_mutex);
    QList<ZDIndexHit> hits;
    if (!m_db)
        return hits;
    Statement statement(m_db, "SELECT rowid, bm25(" + m_table + ") FROM " + m_table + " WHERE " + m_table
                                  + " MATCH ?1 LIMIT ?2");
    if (!statement) {
        m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
        return hits;
    }
    statement.bindText(1, query);
    sqlite3_bind_int(statement.get(), 2, maximumHits);
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
        hits.append({m_identifierById.value(rowid), -sqlite3_column_double(statement.get(), 1)});
    }
    sqlite3_progress_handler(m_db, 0, nullptr, nullptr);
    return hits;
}

void ZDFullTextIndex::noteIndexedTerm(const char *term, int length)
{
    // Called by the tokenizer while a write holds the lock.
    const QByteArray key = QByteArray::fromRawData(term, length);
    if (m_termSet.contains(key))
        return;
    const QByteArray owned(term, length);
    m_termSet.insert(owned);
    m_vocabulary.append('\n');
    m_termStarts.push_back(int(m_vocabulary.size()));
    m_vocabulary.append(owned);
}

QList<QByteArray> ZDFullTextIndex::termsContaining(const QByteArray &fragment, ZDTermPlacement placement,
                                                   int limit) const
{
    std::lock_guard lock(m_mutex);
    QList<QByteArray> terms;
    if (fragment.isEmpty())
        return terms;
    if (placement == ZDTermPlacement::Whole) {
        if (m_termSet.contains(fragment))
            terms.append(fragment);
        return terms;
    }
    const QByteArrayMatcher matcher(fragment);
    const qsizetype vocabularySize = m_vocabulary.size();
    qsizetype from = 0;
    qsizetype lastTerm = -1;
    while ((from = matcher.indexIn(m_vocabulary, from)) >= 0) {
        // The term holding this occurrence: the last one starting at or before it.
        const auto it = std::upper_bound(m_termStarts.begin(), m_termStarts.end(), int(from));
        const qsizetype index = (it - m_termStarts.begin()) - 1;
        const qsizetype start = m_termStarts[size_t(index)];
        const qsizetype end = size_t(index + 1) < m_termStarts.size() ? m_termStarts[size_t(index + 1)] - 1
                                                                       : vocabularySize;
        from += 1;
        if (index == lastTerm)
            continue;
        const bool atStart = from - 1 == start;
        const bool atEnd = from - 1 + fragment.size() == end;
        if ((placement == ZDTermPlacement::AtStart && !atStart) || (placement == ZDTermPlacement::AtEnd && !atEnd))
            continue;
        lastTerm = index;
        terms.append(m_vocabulary.mid(start, end - start));
    }
    if (limit >= 0 && terms.size() > limit) {
        std::stable_sort(terms.begin(), terms.end(),
                         [](const QByteArray &a, const QByteArray &b) { return a.size() < b.size(); });
        terms.resize(limit);
    }
    return terms;
}

std::vector<bool> ZDFullTextIndex::documentsWithAnyTerm(const QList<QByteArray> &terms) const
{
    std::lock_guard lock(m_mutex);
    std::vector<bool> documents(size_t(m_maximumID + 1), false);
    if (!m_db || terms.isEmpty())
        return documents;
    Statement statement(m_db, "SELECT rowid FROM " + m_table + " WHERE " + m_table + " MATCH ?1");
    if (!statement)
        return documents;
    // Terms hold only letters and digits, so each quoted term is one token.
    constexpr int batch = 256;
    for (qsizetype first = 0; first < terms.size(); first += batch) {
        QByteArray query;
        for (qsizetype i = first; i < std::min(terms.size(), first + batch); ++i) {
            if (!query.isEmpty())
                query += " OR ";
            query += '"' + terms[i] + '"';
        }
        sqlite3_reset(statement.get());
        sqlite3_bind_text(statement.get(), 1, query.constData(), int(query.size()), SQLITE_TRANSIENT);
        while (sqlite3_step(statement.get()) == SQLITE_ROW) {
            const qint64 rowid = sqlite3_column_int64(statement.get(), 0);
            if (rowid > 0 && rowid <= m_maximumID)
                documents[size_t(rowid)] = true;
        }
    }
    return documents;
}
