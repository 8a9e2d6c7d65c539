// Keyword matching and ranking of ZDSearchEngine.

#include "ZDAnalytics.h"
#include "ZDByteSearch.h"
#include "ZDFoldingTokenizer.h"
#include "ZDSearchEngine.h"
#include "ZDSearchFolding.h"
#include "ZDSnippet.h"
#include "ZDSnippetIndexes.h"
#include "ZDTextFolding.h"

#include <algorithm>

namespace {

/// A folded text's runs of letters and digits with their places: whether a character that is
/// not a letter or digit precedes and follows the run inside the text.
struct Run
{
    QString text;
    bool boundedBefore = false;
    bool boundedAfter = false;
};

QList<Run> runsOf(const QString &folded)
{
    QList<Run> runs;
    const QStringList terms = ZDFoldingTokenizer::terms(folded);
    qsizetype from = 0;
    for (const QString &term : terms) {
        const qsizetype at = folded.indexOf(term, from);
        if (at < 0)
            break;
        runs.append({term, at > 0, at + term.size() < folded.size()});
        from = at + term.size();
    }
    return runs;
}

ZDTermPlacement placementOf(const Run &run)
{
    if (run.boundedBefore && run.boundedAfter)
        return ZDTermPlacement::Whole;
    if (run.boundedBefore)
        return ZDTermPlacement::AtStart;
    if (run.boundedAfter)
        return ZDTermPlacement::AtEnd;
    return ZDTermPlacement::Anywhere;
}

/// A folded word (UTF-8) searched for in folded texts.
struct ByteNeedle
{
    explicit ByteNeedle(const QString &folded)
        : word(folded.toUtf8())
    {
    }

    bool isFoundIn(const QByteArray &text) const
    {
        return ZDByteSearch::contains(text.constData(), size_t(text.size()), word.constData(),
                                      size_t(word.size()));
    }

    const QByteArray word;
};

/// One required word and what the index says of it.
struct WordFilter
{
    std::shared_ptr<ZDSearchFolding::Needle> needle; // the word as the comparison asks
    // The word folded, for the indexed documents' folded texts when UTF-8 carries it exactly.
    std::shared_ptr<const ByteNeedle> bytes;
    bool pruned = false;          // `candidates` holds every indexed snippet that may match
    bool decisive = false;        // ... and every one of them does match
    std::vector<bool> candidates; // by document number
    // What the index knows of the word: for each of its runs of letters and digits, the terms
    // that may hold it; and whether the word is one such run.
    std::vector<std::vector<int>> runTerms;
    bool singleTerm = false;
    qint64 cost = 0;
};

void intersect(std::vector<bool> &into, const std::vector<bool> &other)
{
    for (size_t i = 0; i < into.size(); ++i)
        into[i] = into[i] && i < other.size() && other[i];
}

/// Finds what the index can say of a word. A word of letters and digits alone can only occur
/// inside one term of a text, so the documents with a term holding it are exactly its matches;
/// for any other word, each run of letters and digits in it must sit in some term of the text,
/// at the start or end of that term or as the whole of it when the word has other characters
/// around the run.
void plan(WordFilter &filter, const QString &folded, const ZDFullTextIndex &index)
{
    if (ZDFoldingTokenizer::isSingleTerm(folded)) {
        filter.singleTerm = true;
        filter.runTerms.push_back(index.termIdsContaining(folded.toUtf8(), ZDTermPlacement::Anywhere));
    } else {
        QList<Run> runs = runsOf(folded);
        // The most telling runs: whole terms first, then the longest.
        std::stable_sort(runs.begin(), runs.end(), [](const Run &a, const Run &b) {
            const int rankA = (a.boundedBefore ? 1 : 0) + (a.boundedAfter ? 1 : 0);
            const int rankB = (b.boundedBefore ? 1 : 0) + (b.boundedAfter ? 1 : 0);
            return rankA != rankB ? rankA > rankB : a.text.size() > b.text.size();
        });
        if (runs.size() > 3)
            runs.resize(3);
        for (const Run &run : std::as_const(runs))
            filter.runTerms.push_back(index.termIdsContaining(run.text.toUtf8(), placementOf(run)));
    }
    for (const std::vector<int> &terms : filter.runTerms)
        filter.cost += index.postingCount(terms);
}

/// Narrows the word's candidates to the documents the index names.
void prune(WordFilter &filter, const ZDFullTextIndex &index, bool matchesCase)
{
    for (const std::vector<int> &terms : filter.runTerms) {
        const std::vector<bool> documents = index.documentsWithTerms(terms);
        if (!filter.pruned)
            filter.candidates = documents;
        else
            intersect(filter.candidates, documents);
        filter.pruned = true;
    }
    filter.decisive = filter.pruned && filter.singleTerm && !matchesCase;
}

/// Whether the snippet's title, or full text, holds the word. The pieces of a full text are
/// joined by line feeds, so a word without one occurs within a single piece.
bool isFoundIn(const ZDSearchFolding::Needle &needle, const ZDSnippet &snippet, bool fullText)
{
    if (!fullText)
        return needle.isFoundIn(snippet.title());
    if (needle.text().contains(QLatin1Char('\n')))
        return needle.isFoundIn(snippet.stringRepresentation());
    if (needle.isFoundIn(snippet.title()))
        return true;
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        if (needle.isFoundIn(part->note()) || needle.isFoundIn(part->content()))
            return true;
    }
    return false;
}

void reportRankingError(const QString &description)
{
    zdReportEvent(QStringLiteral("SearchEngineErr"), {{QStringLiteral("description"), description}});
}

} // namespace

QStringList ZDSearchEngine::wordsOfKeyword(const QString &keyword, bool fuzzy)
{
    QStringList words = fuzzy ? keyword.split(QLatin1Char(' ')) : QStringList{keyword};
    words.removeAll(QString());
    return words;
}

std::vector<qint64> ZDSearchEngine::documentIDsByPosition(const ZDSnippetList &snippets,
                                                          const ZDSnippetIndexes &indexes,
                                                          bool fullText) const
{
    std::lock_guard lock(m_cacheMutex);
    PositionCache &cache = m_cache;
    if (!cache.valid || cache.list.constData() != snippets.constData() ||
        cache.list.size() != snippets.size() || cache.indexes != &indexes ||
        cache.revision != indexes.revision()) {
        cache.list = snippets;
        cache.valid = true;
        cache.indexes = &indexes;
        cache.revision = indexes.revision();
        cache.titleIDs.assign(size_t(snippets.size()), 0);
        cache.fullTextIDs.assign(size_t(snippets.size()), 0);
        for (qsizetype i = 0; i < snippets.size(); ++i) {
            if (const ZDSnippetIndexes::Entry *entry = indexes.entryFor(snippets[i].get())) {
                cache.titleIDs[size_t(i)] = entry->titleID;
                cache.fullTextIDs[size_t(i)] = entry->fullTextID;
            }
        }
    }
    return fullText ? cache.fullTextIDs : cache.titleIDs;
}

std::vector<qsizetype> ZDSearchEngine::matchingPositions(const ZDSnippetList &snippets,
                                                         const QStringList &words, bool fullText,
                                                         bool matchesCase, const ZDSnippetIndexes *indexes,
                                                         std::vector<qint64> *documentIDs) const
{
    std::vector<WordFilter> filters;
    for (const QString &word : words) {
        WordFilter filter;
        filter.needle = std::make_shared<ZDSearchFolding::Needle>(word, !matchesCase);
        if (!matchesCase && QStringView(filter.needle->text()).isValidUtf16())
            filter.bytes = std::make_shared<const ByteNeedle>(filter.needle->text());
        if (indexes)
            plan(filter, ZDTextFolding::folded(word), indexes->index(fullText));
        filters.push_back(std::move(filter));
    }
    if (indexes) {
        // The cheapest word first. Once few candidates are left, testing them directly beats
        // gathering the documents of a common word.
        std::stable_sort(filters.begin(), filters.end(),
                         [](const WordFilter &a, const WordFilter &b) { return a.cost < b.cost; });
        constexpr qint64 entriesPerDirectTest = 2000;
        qint64 candidates = -1;
        for (WordFilter &filter : filters) {
            if (filter.runTerms.empty() ||
                (candidates >= 0 && filter.cost > candidates * entriesPerDirectTest))
                continue;
            prune(filter, indexes->index(fullText), matchesCase);
            candidates = qint64(std::count(filter.candidates.begin(), filter.candidates.end(), true));
        }
        // Words the index answers come first, so that most snippets never need a direct test.
        std::stable_partition(filters.begin(), filters.end(),
                              [](const WordFilter &filter) { return filter.pruned; });
    }
    std::vector<qint64> ids = indexes ? documentIDsByPosition(snippets, *indexes, fullText)
                                      : std::vector<qint64>(size_t(snippets.size()), 0);
    QHash<const ZDSnippet *, int> pending;
    {
        std::lock_guard lock(m_pendingMutex);
        pending = m_pending;
    }

    std::vector<qsizetype> positions;
    for (qsizetype i = 0; i < snippets.size(); ++i) {
        const qint64 id = ids[size_t(i)];
        const bool indexed = id > 0 && (pending.isEmpty() || !pending.contains(snippets[i].get()));
        bool matched = true;
        for (const WordFilter &filter : filters) {
            if (indexed && filter.pruned) {
                if (size_t(id) >= filter.candidates.size() || !filter.candidates[size_t(id)]) {
                    matched = false;
                    break;
                }
                if (filter.decisive)
                    continue;
            }
            if (indexed && filter.bytes) {
                // What the index holds of the snippet is its current text, folded already.
                const ZDFoldedText *text = indexes->index(fullText).foldedText(id);
                if (text && text->exact) {
                    if (!filter.bytes->isFoundIn(text->utf8)) {
                        matched = false;
                        break;
                    }
                    continue;
                }
            }
            if (!isFoundIn(*filter.needle, *snippets[i], fullText)) {
                matched = false;
                break;
            }
        }
        if (matched)
            positions.push_back(i);
    }
    if (documentIDs)
        *documentIDs = std::move(ids);
    return positions;
}

ZDSnippetList ZDSearchEngine::privateSearchWithKeyword(const QString &keyword, bool fullText, bool fuzzy,
                                                       bool matchesCase) const
{
    const ZDSnippetList snippets = m_source ? m_source() : ZDSnippetList();
    const QStringList words = wordsOfKeyword(keyword, fuzzy);
    if (words.isEmpty())
        return snippets;
    const std::shared_ptr<ZDSnippetIndexes> indexes = m_indexReady ? currentIndexes() : nullptr;
    std::unique_lock<std::mutex> lock;
    if (indexes)
        lock = indexes->lock();
    ZDSnippetList matches;
    for (qsizetype position :
         matchingPositions(snippets, words, fullText, matchesCase, indexes.get(), nullptr))
        matches.append(snippets[position]);
    return matches;
}

QList<ZDIndexHit> ZDSearchEngine::rankedHits(const QString &keyword, bool fullText, bool fuzzy,
                                             const ZDSnippetIndexes &indexes, bool identifiers) const
{
    const ZDFullTextIndex &index = indexes.index(fullText);
    // Each fuzzy word may match inside longer terms: it stands for the terms holding it. A
    // literal keyword is a phrase of its terms.
    constexpr int expansionLimit = 64;
    QStringList clauses;
    // How many documents each phrase of the query matches, as far as the vocabulary knows it:
    // the ranking then need not count them (-1: it counts).
    std::vector<qint64> phraseCounts;
    auto addPhrase = [&](const QStringList &terms) {
        clauses.append(QLatin1Char('"') + terms.join(QLatin1Char(' ')) + QLatin1Char('"'));
        std::vector<qint64> counts;
        if (terms.size() == 1)
            index.termsContaining(terms.first().toUtf8(), ZDTermPlacement::Whole, -1, &counts);
        phraseCounts.push_back(terms.size() != 1 ? -1 : counts.empty() ? 0 : counts.front());
    };
    if (fuzzy) {
        for (const QString &word : wordsOfKeyword(keyword, true)) {
            const QString folded = ZDTextFolding::folded(word);
            if (ZDFoldingTokenizer::isSingleTerm(folded)) {
                std::vector<qint64> counts;
                const QList<QByteArray> terms =
                    index.termsContaining(folded.toUtf8(), ZDTermPlacement::Anywhere, expansionLimit, &counts);
                if (terms.isEmpty())
                    return {}; // every word is required
                QStringList alternatives;
                for (const QByteArray &term : terms)
                    alternatives.append(QLatin1Char('"') + QString::fromUtf8(term) + QLatin1Char('"'));
                clauses.append(QLatin1Char('(') + alternatives.join(QStringLiteral(" OR ")) +
                               QLatin1Char(')'));
                phraseCounts.insert(phraseCounts.end(), counts.begin(), counts.end());
            } else if (const QStringList terms = ZDFoldingTokenizer::terms(folded); !terms.isEmpty()) {
                addPhrase(terms);
            }
        }
    } else if (const QStringList terms = ZDFoldingTokenizer::terms(keyword); !terms.isEmpty()) {
        addPhrase(terms);
    }
    if (clauses.isEmpty())
        return {};
    return index.search(clauses.join(QStringLiteral(" AND ")), maximumRankedHits, rankingTimeLimitMs,
                        &phraseCounts, identifiers);
}

ZDRankCollection ZDSearchEngine::rankCollectionWithKeyword(const QString &keyword, bool fullText,
                                                           bool fuzzy) const
{
    ZDRankCollection ranks;
    const std::shared_ptr<ZDSnippetIndexes> indexes = m_indexReady ? currentIndexes() : nullptr;
    if (!indexes)
        return ranks;
    for (const ZDIndexHit &hit : rankedHits(keyword, fullText, fuzzy, *indexes, true)) {
        if (hit.identifier.isEmpty()) {
            reportRankingError(QStringLiteral("rankCollectionWithKeyword:fullText:fuzzy: url is nil"));
            continue;
        }
        const QString identifier = hit.identifier.mid(hit.identifier.lastIndexOf(QLatin1Char('/')) + 1);
        if (identifier.isEmpty()) {
            reportRankingError(
                QStringLiteral("rankCollectionWithKeyword:fullText:fuzzy: lastPathComponent is nil"));
            continue;
        }
        ranks.setRelevance(identifier, hit.score);
    }
    return ranks;
}

ZDSnippetList ZDSearchEngine::mutableOrderedObjectsWithKeyword(const QString &keyword, bool fullText,
                                                               bool fuzzy, bool matchesCase,
                                                               ZDRankCollection *ranksOut) const
{
    const ZDSnippetList snippets = m_source ? m_source() : ZDSnippetList();
    const QStringList words = wordsOfKeyword(keyword, fuzzy);
    if (ranksOut)
        *ranksOut = ZDRankCollection();
    if (words.isEmpty())
        return snippets;
    const std::shared_ptr<ZDSnippetIndexes> indexes = m_indexReady ? currentIndexes() : nullptr;
    std::unique_lock<std::mutex> lock;
    if (indexes)
        lock = indexes->lock();
    std::vector<qint64> ids;
    std::vector<qsizetype> positions =
        matchingPositions(snippets, words, fullText, matchesCase, indexes.get(), &ids);

    if (indexes) {
        // Relevance by document number; a match the ranking did not return keeps -1 and goes last.
        std::vector<double> relevance(size_t(indexes->index(fullText).maximumDocumentID() + 1),
                                      ZDRankCollection::unranked);
        for (const ZDIndexHit &hit : rankedHits(keyword, fullText, fuzzy, *indexes, false)) {
            if (size_t(hit.documentID) < relevance.size())
                relevance[size_t(hit.documentID)] = std::max(relevance[size_t(hit.documentID)], hit.score);
        }
        auto relevanceAt = [&](qsizetype position) {
            const qint64 id = ids[size_t(position)];
            return id > 0 && size_t(id) < relevance.size() ? relevance[size_t(id)]
                                                           : ZDRankCollection::unranked;
        };
        const auto unranked =
            std::stable_partition(positions.begin(), positions.end(), [&](qsizetype position) {
                return relevanceAt(position) != ZDRankCollection::unranked;
            });
        std::stable_sort(positions.begin(), unranked,
                         [&](qsizetype a, qsizetype b) { return relevanceAt(a) > relevanceAt(b); });
        if (ranksOut) {
            for (auto it = positions.begin(); it != unranked; ++it)
                ranksOut->setRelevance(snippets[*it]->UUID(), relevanceAt(*it));
        }
    }
    ZDSnippetList matches;
    matches.reserve(qsizetype(positions.size()));
    for (qsizetype position : positions)
        matches.append(snippets[position]);
    return matches;
}
ZDSnippetList ZDSearchEngine::snippetsWithKeyword(const QString &keyword,
                                                  const QList<ZDSearchConstraint> &constraints, bool fullText,
                                                  bool fuzzy, bool matchesCase, ZDRankCollection *ranks) const
{
    ZDSnippetList result = mutableOrderedObjectsWithKeyword(keyword, fullText, fuzzy, matchesCase, ranks);
    if (constraints.isEmpty())
        return result;
    ZDSnippetList filtered;
    for (const ZDSnippetPtr &snippet : std::as_const(result)) {
        const bool kept =
            std::all_of(constraints.begin(), constraints.end(),
                        [&](const ZDSearchConstraint &constraint) { return constraint.matches(*snippet); });
        if (kept)
            filtered.append(snippet);
    }
    return filtered;
}
