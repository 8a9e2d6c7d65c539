#pragma once

#include <QHash>
#include <QString>

#include <list>
#include <mutex>
#include <optional>
#include <utility>

/// A count-limited cache that evicts its least recently used entry. Safe for concurrent use.
template <typename Value> class ZDLruCache
{
public:
    explicit ZDLruCache(int countLimit) : m_countLimit(countLimit) {}

    std::optional<Value> object(const QString &key)
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_index.constFind(key);
        if (found == m_index.constEnd())
            return std::nullopt;
        m_order.splice(m_order.begin(), m_order, found.value());
        return found.value()->second;
    }

    void setObject(const QString &key, Value value)
    {
        std::lock_guard lock(m_mutex);
        if (const auto found = m_index.constFind(key); found != m_index.constEnd()) {
            found.value()->second = std::move(value);
            m_order.splice(m_order.begin(), m_order, found.value());
            return;
        }
        m_order.emplace_front(key, std::move(value));
        m_index.insert(key, m_order.begin());
        while (int(m_order.size()) > m_countLimit) {
            m_index.remove(m_order.back().first);
            m_order.pop_back();
        }
    }

    int count() const
    {
        std::lock_guard lock(m_mutex);
        return int(m_order.size());
    }
    int countLimit() const { return m_countLimit; }

private:
    using Entry = std::pair<QString, Value>;
    const int m_countLimit;
    mutable std::mutex m_mutex;
    std::list<Entry> m_order; // most recently used first
    QHash<QString, typename std::list<Entry>::iterator> m_index;
};
