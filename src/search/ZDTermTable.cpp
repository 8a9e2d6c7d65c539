#include "ZDTermTable.h"

#include <algorithm>
#include <cstring>

quint32 ZDTermTable::hashOf(QByteArrayView term)
{
    // FNV-1a: terms are short, and this is cheap per byte.
    quint32 hash = 2166136261u;
    for (const char c : term) {
        hash ^= quint8(c);
        hash *= 16777619u;
    }
    return hash;
}

int ZDTermTable::find(QByteArrayView term, quint32 hash) const
{
    if (m_slots.empty())
        return -1;
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = hash & mask;; slot = (slot + 1) & mask) {
        const int id = m_slots[slot] - 1;
        if (id < 0)
            return -1;
        if (m_hashes[size_t(id)] == hash && length(id) == term.size() &&
            std::memcmp(m_text.constData() + m_starts[size_t(id)], term.data(), size_t(term.size())) == 0)
            return id;
    }
}

int ZDTermTable::insert(QByteArrayView term, bool *added)
{
    const quint32 hash = hashOf(term);
    int id = find(term, hash);
    if (added)
        *added = id < 0;
    if (id >= 0)
        return id;
    if ((m_starts.size() + 1) * 2 > m_slots.size())
        grow();
    id = int(m_starts.size());
    m_text.append('\n');
    m_starts.push_back(int(m_text.size()));
    m_text.append(term.data(), term.size());
    m_hashes.push_back(hash);
    const size_t mask = m_slots.size() - 1;
    size_t slot = hash & mask;
    while (m_slots[slot] != 0)
        slot = (slot + 1) & mask;
    m_slots[slot] = id + 1;
    return id;
}

void ZDTermTable::grow()
{
    m_slots.assign(std::max<size_t>(64, m_slots.size() * 2), 0);
    const size_t mask = m_slots.size() - 1;
    for (size_t id = 0; id < m_starts.size(); ++id) {
        size_t slot = m_hashes[id] & mask;
        while (m_slots[slot] != 0)
            slot = (slot + 1) & mask;
        m_slots[slot] = int(id) + 1;
    }
}

int ZDTermTable::termAt(qsizetype at) const
{
    const auto it = std::upper_bound(m_starts.begin(), m_starts.end(), int(at));
    return int(it - m_starts.begin()) - 1;
}
