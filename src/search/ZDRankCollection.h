#pragma once

#include <QHash>
#include <QString>

/// The relevance of every snippet a ranked query returned, by snippet UUID. Relevances are
/// above zero and greater is better; a snippet the query did not return has relevance -1.
class ZDRankCollection
{
public:
    static constexpr double unranked = -1;

    /// Records a hit; when the identifier repeats the larger relevance is kept.
    void setRelevance(const QString &identifier, double relevance)
    {
        auto it = m_relevances.find(identifier);
        if (it == m_relevances.end())
            m_relevances.insert(identifier, relevance);
        else if (relevance > *it)
            *it = relevance;
    }
    double relevanceForIdentifier(const QString &identifier) const
    {
        return m_relevances.value(identifier, unranked);
    }
    qsizetype count() const { return m_relevances.size(); }
    bool isEmpty() const { return m_relevances.isEmpty(); }

private:
    QHash<QString, double> m_relevances;
};
