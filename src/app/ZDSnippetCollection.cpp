#include "ZDSnippetCollection.h"

#include "ZDCategoryNode.h"
#include "ZDPredicate.h"
#include "ZDSnippet.h"
#include "ZDSnippetKeyPaths.h"
#include "ZDUserDefaults.h"

#include <QCollator>
#include <QCollatorSortKey>

#include <algorithm>
#include <numeric>
#include <ranges>
#include <vector>

namespace ZDSnippetCollection {

ZDSnippetList snippetsForNode(const ZDCategoryNode &node, const ZDSnippetList &snippets,
                              const QSet<QString> &knownFolderUUIDs)
{
    ZDSnippetList result;
    auto keep = [&](auto &&predicate) {
        for (const ZDSnippetPtr &snippet : snippets) {
            if (predicate(*snippet))
                result << snippet;
        }
    };
    switch (node.nodeType()) {
    case ZDCategoryNode::AllSnippets:
        return snippets;
    case ZDCategoryNode::Uncategorized:
        keep([&](const ZDSnippet &s) { return !knownFolderUUIDs.contains(s.folderUUID()); });
        break;
    case ZDCategoryNode::Folder:
    case ZDCategoryNode::Shortcut: {
        const QString UUID = node.UUID();
        keep([&](const ZDSnippet &s) { return s.folderUUID() == UUID; });
        break;
    }
    case ZDCategoryNode::Tag: {
        const QString UUID = node.UUID();
        keep([&](const ZDSnippet &s) { return s.tagUUIDs().contains(UUID); });
        break;
    }
    case ZDCategoryNode::SmartGroup: {
        const ZDPredicate predicate = ZDPredicate::fromFormat(node.predicateString());
        if (predicate.isValid())
            keep([&](const ZDSnippet &s) { return ZDSnippetKeyPaths::evaluate(predicate, s); });
        break;
    }
    default:
        break;
    }
    return result;
}

void sort(ZDSnippetList &snippets, int sortMethod, int sortOrder)
{
    const bool ascending = sortOrder == SortOrderAscending;
    std::vector<qsizetype> order(size_t(snippets.size()));
    std::iota(order.begin(), order.end(), 0);

    // Keys are computed once per snippet: a modification date looks at every part, and titles
    // compare through collation keys.
    if (sortMethod == SortByDateModified || sortMethod == SortByDateCreated) {
        std::vector<qint64> keys;
        keys.reserve(order.size());
        for (const ZDSnippetPtr &snippet : snippets) {
            const QDateTime date = sortMethod == SortByDateModified ? snippet->canonicalDateModified()
                                                                    : snippet->dateCreated();
            keys.push_back(date.toMSecsSinceEpoch());
        }
        std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) {
            return ascending ? keys[size_t(a)] < keys[size_t(b)] : keys[size_t(a)] > keys[size_t(b)];
        });
    } else {
        const QCollator collator = titleCollator();
        std::vector<QCollatorSortKey> keys;
        keys.reserve(order.size());
        for (const ZDSnippetPtr &snippet : snippets)
            keys.push_back(collator.sortKey(snippet->title()));
        std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) {
            const int c = keys[size_t(a)].compare(keys[size_t(b)]);
            return ascending ? c < 0 : c > 0;
        });
    }
    ZDSnippetList sorted;
    sorted.reserve(snippets.size());
    for (qsizetype i : order)
        sorted << snippets[i];
    snippets = std::move(sorted);
}

qsizetype sortedRow(const ZDSnippetList &snippets, qsizetype row, const ZDSnippet &snippet, int sortMethod,
                    int sortOrder)
{
    const bool ascending = sortOrder == SortOrderAscending;
    // The rows other than `row`, which are in order: the ones that sort before the snippet come
    // first, then its ties, among which a stable sort keeps it where it was.
    const qsizetype others = row < snippets.size() ? snippets.size() - 1 : snippets.size();
    const auto other = [&](qsizetype index) -> const ZDSnippet & {
        return *snippets[index < row ? index : index + 1];
    };
    const auto bounds = [&](auto compare) { // compare(other, snippet) < 0 when the other sorts first
        const auto indexes = std::views::iota(qsizetype(0), others);
        const auto point = [&](auto sortsFirst) {
            return qsizetype(std::ranges::partition_point(indexes, sortsFirst) - indexes.begin());
        };
        const qsizetype first = point([&](qsizetype i) { return compare(other(i)) < 0; });
        const qsizetype last = point([&](qsizetype i) { return compare(other(i)) <= 0; });
        return std::clamp(row, first, last);
    };
    const auto ordered = [ascending](auto a, auto b) { return ascending ? (a < b ? -1 : a > b) : (a > b ? -1 : a < b); };
    if (sortMethod == SortByDateModified || sortMethod == SortByDateCreated) {
        const auto key = [sortMethod](const ZDSnippet &s) {
            return (sortMethod == SortByDateModified ? s.canonicalDateModified() : s.dateCreated()).toMSecsSinceEpoch();
        };
        const qint64 own = key(snippet);
        return bounds([&](const ZDSnippet &s) { return ordered(key(s), own); });
    }
    const QCollator collator = titleCollator();
    const QCollatorSortKey own = collator.sortKey(snippet.title());
    return bounds([&](const ZDSnippet &s) {
        const int c = collator.sortKey(s.title()).compare(own);
        return ascending ? c : -c;
    });
}

QCollator titleCollator()
{
    // The C locale collates by code point and knows no numeric mode.
    QCollator collator(QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale());
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

QString languagesSummary(const ZDSnippet &snippet)
{
    QStringList names;
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        const QString name = part->language().displayName();
        if (!name.isEmpty() && !names.contains(name))
            names << name;
    }
    return names.join(QStringLiteral(", "));
}

} // namespace ZDSnippetCollection
