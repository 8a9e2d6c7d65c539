#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <vector>

/// The vocabulary of a full-text index: every term seen, numbered from 0 in the order first
/// seen, kept as "\n" + term in one buffer so that a substring scan over all terms is one
/// search of that buffer. Looking a term up is one probe of an open-addressing table, since the
/// tokenizer asks for every term of every document it indexes.
class ZDTermTable
{
public:
    /// The term's number, or -1.
    int find(QByteArrayView term) const { return find(term, hashOf(term)); }
    /// The term's number, adding the term when it is new.
    int insert(QByteArrayView term, bool *added = nullptr);

    int count() const { return int(m_starts.size()); }
    QByteArrayView term(int id) const
    {
        const size_t start = size_t(m_starts[size_t(id)]);
        return QByteArrayView(m_text.constData() + start, qsizetype(endOf(id) - start));
    }
    int length(int id) const { return int(endOf(id) - size_t(m_starts[size_t(id)])); }
    /// The buffer of all terms, each preceded by "\n".
    const QByteArray &text() const { return m_text; }
    /// The number of the term whose text holds buffer position `at`.
    int termAt(qsizetype at) const;

private:
    static quint32 hashOf(QByteArrayView term);
    int find(QByteArrayView term, quint32 hash) const;
    size_t endOf(int id) const
    {
        return size_t(id) + 1 < m_starts.size() ? size_t(m_starts[size_t(id) + 1]) - 1 : size_t(m_text.size());
    }
    void grow();

    QByteArray m_text;
    std::vector<int> m_starts;    // where each term's text begins in m_text
    std::vector<quint32> m_hashes; // each term's hash
    std::vector<int> m_slots;      // term number + 1 by hash slot; 0 for an empty slot
};
