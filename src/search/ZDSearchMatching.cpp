// Keyword matching and ranking of ZDSearchEngine.

#include "ZDAnalytics.h"
#include "ZDFoldingTokenizer.h"
#include "ZDSearchEngine.h"
#include "ZDSnippet.h"
#include "ZDSnippetIndexes.h"
#include "ZDTextFolding.h"

#include <algorithm>
#include <optional>

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

/// One required word and what the index says of it.
struct WordFilter
{
    QString needle;              // the word folded as the comparison asks
    bool pruned = false;         // `candidates` holds every indexed snippet that may match
    bool decisive = false;       // ... and every one of them does match
    std::vector<bool> candidates; // by document number
};

void intersect(std::vector<bool> &into, const std::vector<bool> &other)
{
    for (size_t i = 0; i < into.size(); ++i)
        into[i] = into[i] && i < other.size() && other[i];
}

/// The documents that may contain `folded`. A word of letters and digits alone can only occur
/// inside one term of a text, so the documents with a term holding it are exactly its matches;
/// for any other word, each run of letters and digits in it must sit in some term of the text,
/// at the start or end of that term or as the whole of it when the word has other characters
/// around the run.
void prune(WordFilter &filter, const QString &folded, const ZDFullTextIndex &index, bool matchesCase)
{
    if (ZDFoldingTokenizer::isSingleTerm(folded)) {
        filter.candidates = index.documentsWithAnyTerm(index.termsContaining(folded.toUtf8(), ZDTermPlacement::Anywhere));
        filter.pruned = true;
        filter.decisive = !matchesCase;
        return;
    }
    QList<Run> runs = runsOf(folded);
    // The most telling runs: whole terms first, then the longest.
    std::stable_sort(runs.begin(), runs.end(), [](const Run &a, const Run &b) {
        const int rankA = (a.boundedBefore ? 1 : 0) + (a.boundedAfter ? 1 : 0);
        const int rankB = (b.boundedBefore ? 1 : 0) + (b.boundedAfter ? 1 : 0);
        return rankA != rankB ? rankA > rankB : a.text.size() > b.text.size();
    });
    if (runs.size() > 3)
        runs.resize(3);
    for (const Run &run : std::as_const(runs)) {
        const std::vector<bool> documents =
            index.documentsWithAnyTerm(index.termsContaining(run.text.toUtf8(), placementOf(run)));
        if (!filter.pruned)
            filter.candidates = documents;
        else
            intersect(filter.candidates, documents);
        filter.pruned = true;
    }
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

    std::vector<WordFilter> filters;
    for (const QString &word : words) {
        WordFilter filter;
        const QString folded = ZDTextFolding::folded(word);
        filter.needle = matchesCase ? ZDTextFolding::removingDiacritics(word) : folded;
        if (indexes)
            prune(filter, folded, indexes->index(fullText), matchesCase);
        filters.push_back(std::move(filter));
    }

    ZDSnippetList matches;
    for (const ZDSnippetPtr &snippet : snippets) {
        const ZDSnippetIndexes::Entry *entry = indexes ? indexes->entryFor(snippet.get()) : nullptr;
        const bool indexed = entry
            && (fullText ? entry->indexed.isCurrent(*snippet) : entry->indexed.isCurrentTitle(*snippet));
        const qint64 id = entry ? (fullText ? entry->fullTextID : entry->titleID) : 0;
        std::optional<QString> text;
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
            if (!text) {
                const QString source = fullText ? snippet->stringRepresentation() : snippet->title();
                text = matchesCase ? ZDTextFolding::removingDiacritics(source) : ZDTextFolding::folded(source);
            }
            if (!text->contains(filter.needle)) {
                matched = false;
                break;
            }
        }
        if (matched)
            matches.append(snippet);
    }
    return matches;
}

ZDRankCollection ZDSearchEngine::rankCollectionWithKeyword(const QString &keyword, bool fullText, bool fuzzy) const
{
    ZDRankCollection ranks;
    const std::shared_ptr<ZDSnippetIndexes> indexes = m_indexReady ? currentIndexes() : nullptr;
    if (!indexes)
        return ranks;
    const ZDFullTextIndex &index = indexes->index(fullText);

    // Each fuzzy word may match inside longer terms: it stands for the terms holding it. A
    // literal keyword is a phrase of its terms.
    constexpr int expansionLimit = 64;
    QStringList clauses;
    auto phrase = [](const QStringList &terms) -> QString { return QLatin1Char('"') + terms.join(QLatin1Char(' ')) + QLatin1Char('"'); };
    if (fuzzy) {
        for (const QString &word : wordsOfKeyword(keyword, true)) {
            const QString folded = ZDTextFolding::folded(word);
            if (ZDFoldingTokenizer::isSingleTerm(folded)) {
                const QList<QByteArray> terms = index.termsContaining(folded.toUtf8(), ZDTermPlacement::Anywhere, expansionLimit);
                if (terms.isEmpty())
                    return ranks; // every word is required
                QStringList alternatives;
                for (const QByteArray &term : terms)
                    alternatives.append(QLatin1Char('"') + QString::fromUtf8(term) + QLatin1Char('"'));
                clauses.append(QLatin1Char('(') + alternatives.join(QStringLiteral(" OR ")) + QLatin1Char(')'));
            } else if (const QStringList terms = ZDFoldingTokenizer::terms(folded); !terms.isEmpty()) {
                clauses.append(phrase(terms));
            }
        }
    } else if (const QStringList terms = ZDFoldingTokenizer::terms(keyword); !terms.isEmpty()) {
        clauses.append(phrase(terms));
    }
    if (clauses.isEmpty())
        return ranks;

    const QList<ZDIndexHit> hits = index.search(clauses.join(QStringLiteral(" AND ")), maximumRankedHits, rankingTimeLimitMs);
    for (const ZDIndexHit &hit : hits) {
        if (hit.identifier.isEmpty()) {
            reportRankingError(QStringLiteral("rankCollectionWithKeyword:fullText:fuzzy: url is nil"));
            continue;
        }
        const QString identifier = hit.identifier.mid(hit.identifier.lastIndexOf(QLatin1Char('/')) + 1);
        if (identifier.isEmpty()) {
            reportRankingError(QStringLiteral("rankCollectionWithKeyword:fullText:fuzzy: lastPathComponent is nil"));
            continue;
        }
        ranks.setRelevance(identifier, hit.score);
    }
    return ranks;
}

ZDSnippetList ZDSearchEngine::mutableOrderedObjectsWithKeyword(const QString &keyword, bool fullText, bool fuzzy,
                                                               bool matchesCase, ZDRankCollection *ranksOut) const
{
    ZDSnippetList matches = privateSearchWithKeyword(keyword, fullText, fuzzy, matchesCase);
    if (keyword.isEmpty())
        return matches;
    const ZDRankCollection ranks = rankCollectionWithKeyword(keyword, fullText, fuzzy);
    QHash<const ZDSnippet *, double> relevance;
    relevance.reserve(matches.size());
    for (const ZDSnippetPtr &snippet : std::as_const(matches))
        relevance.insert(snippet.get(), ranks.relevanceForIdentifier(snippet->UUID()));
    std::stable_sort(matches.begin(), matches.end(), [&](const ZDSnippetPtr &a, const ZDSnippetPtr &b) {
        return relevance.value(a.get()) > relevance.value(b.get());
    });
    if (ranksOut)
        *ranksOut = ranks;
    return matches;
}

ZDSnippetList ZDSearchEngine::snippetsWithKeyword(const QString &keyword, const QList<ZDSearchConstraint> &constraints,
                                                  bool fullText, bool fuzzy, bool matchesCase,
                                                  ZDRankCollection *ranks) const
{
    ZDSnippetList result = mutableOrderedObjectsWithKeyword(keyword, fullText, fuzzy, matchesCase, ranks);
    if (constraints.isEmpty())
        return result;
    ZDSnippetList filtered;
    for (const ZDSnippetPtr &snippet : std::as_const(result)) {
        const bool kept = std::all_of(constraints.begin(), constraints.end(),
                                      [&](const ZDSearchConstraint &constraint) { return constraint.matches(*snippet); });
        if (kept)
            filtered.append(snippet);
    }
    return filtered;
}
