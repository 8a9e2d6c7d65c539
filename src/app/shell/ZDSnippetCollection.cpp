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

namespace {
bool sortsByDate(int sortMethod)
{
    return sortMethod == SortByDateModified || sortMethod == SortByDateCreated;
}

// A modification date looks at every part.
qint64 dateKey(const ZDSnippet &snippet, int sortMethod)
{
    return (sortMethod == SortByDateModified ? snippet.canonicalDateModified() : snippet.dateCreated())
        .toMSecsSinceEpoch();
}
} // namespace

void sort(ZDSnippetList &snippets, int sortMethod, int sortOrder)
{
    const bool ascending = sortOrder == SortOrderAscending;
    std::vector<qsizetype> order(size_t(snippets.size()));
    std::iota(order.begin(), order.end(), 0);

    // Keys are computed once per snippet; titles compare through collation keys.
    if (sortsByDate(sortMethod)) {
        std::vector<qint64> keys;
        keys.reserve(order.size());
        for (const ZDSnippetPtr &snippet : snippets)
            keys.push_back(dateKey(*snippet, sortMethod));
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
    const auto inOrder = [ascending](int comparison) { return ascending ? comparison : -comparison; };
    if (sortsByDate(sortMethod)) {
        const qint64 own = dateKey(snippet, sortMethod);
        return bounds([&](const ZDSnippet &s) {
            const qint64 key = dateKey(s, sortMethod);
            return inOrder(int(key > own) - int(key < own));
        });
    }
    const QCollator collator = titleCollator();
    return bounds([&](const ZDSnippet &s) { return inOrder(collator.compare(s.title(), snippet.title())); });
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
