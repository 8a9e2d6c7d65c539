// For random libraries and random queries the engine finds exactly what a plain scan with the
// predicate evaluator finds, whether its indexes are ready, current, or stale because snippets
// changed behind its back.

#include "ZDSearchTestSupport.h"

#include "ZDMulticastDelegateHandler.h"
#include "ZDPredicate.h"

#include <QRandomGenerator>

namespace {

const QStringList kFragments = {
    "foo", "Foo", "FOO", "bar", "baz", "café", "CAFE", "Café", "naïve", "x", "X", "ß", "Straße", "STRASSE",
    "ǅemal", "ﬁle", "İstanbul", "ΣΊΣΥΦΟΣ", "σίσυφος", "日本語", "42", "4２", "a.b", "->", "foo_bar", "👍",
    "e\u0301", "é", "Ångström", "return", "int", "i", "ı", "ω", "Ω", "\u00a0", "ﬀ"};
const QStringList kSeparators = {" ", " ", "  ", ".", "", "\n", "\t", "(", "::"};

QString randomText(QRandomGenerator &random, int maximumPieces)
{
    QString text;
    const int pieces = random.bounded(maximumPieces + 1);
    for (int i = 0; i < pieces; ++i) {
        if (i > 0)
            text += kSeparators[random.bounded(int(kSeparators.size()))];
        text += kFragments[random.bounded(int(kFragments.size()))];
    }
    return text;
}

ZDSnippetPtr randomSnippet(QRandomGenerator &random)
{
    ZDSnippetPtr snippet = ZDSnippet::create(randomText(random, 3));
    QList<ZDSnippetPartPtr> parts;
    const int count = 1 + random.bounded(3);
    for (int i = 0; i < count; ++i) {
        ZDSnippetPartPtr part = ZDSnippetPart::create(QStringLiteral("part"), snippet->UUID());
        part->setNote(randomText(random, 2));
        part->setContent(randomText(random, 8));
        parts.append(part);
    }
    snippet->setParts(parts);
    return snippet;
}

QString randomQuery(QRandomGenerator &random, const ZDSnippetList &library)
{
    switch (random.bounded(4)) {
    case 0: { // a piece of some snippet's text, perhaps in another case
        if (library.isEmpty())
            return QStringLiteral("foo");
        const QString text = library[random.bounded(int(library.size()))]->stringRepresentation();
        const int start = random.bounded(int(text.size()));
        QString piece = text.mid(start, 1 + random.bounded(8));
        return random.bounded(2) ? piece.toUpper() : piece;
    }
    case 1:
        return kFragments[random.bounded(int(kFragments.size()))];
    default:
        return randomText(random, 3);
    }
}

/// The plain scan: every word tested with the predicate evaluator.
ZDSnippetList plainScan(const ZDSnippetList &library, const QString &keyword, bool fullText, bool fuzzy,
                        bool matchesCase)
{
    const QStringList words = ZDSearchEngine::wordsOfKeyword(keyword, fuzzy);
    std::vector<ZDPredicate> predicates;
    for (const QString &word : words) {
        predicates.push_back(ZDPredicate::fromFormat(
            matchesCase ? QStringLiteral("text CONTAINS[d] %@") : QStringLiteral("text CONTAINS[cd] %@"), nullptr,
            {word}));
    }
    ZDSnippetList result;
    for (const ZDSnippetPtr &snippet : library) {
        const QString text = fullText ? snippet->stringRepresentation() : snippet->title();
        const auto resolver = [&](const QString &) { return QVariant(text); };
        if (std::all_of(predicates.begin(), predicates.end(),
                        [&](const ZDPredicate &predicate) { return predicate.evaluate(resolver); }))
            result.append(snippet);
    }
    return result;
}

} // namespace

class SearchPropertyTest : public SearchTest
{
protected:
    void expectSameAsPlainScan(QRandomGenerator &random, int queries, const char *stage)
    {
        for (int q = 0; q < queries; ++q) {
            const QString keyword = randomQuery(random, library);
            const bool fullText = random.bounded(4) != 0;
            const bool fuzzy = random.bounded(2);
            const bool matchesCase = random.bounded(3) == 0;
            const ZDSnippetList expected = plainScan(library, keyword, fullText, fuzzy, matchesCase);
            ASSERT_EQ(titles(engine->privateSearchWithKeyword(keyword, fullText, fuzzy, matchesCase)), titles(expected))
                << stage << ": keyword \"" << keyword.toStdString() << "\" fullText " << fullText << " fuzzy "
                << fuzzy << " matchesCase " << matchesCase;
            const ZDSnippetList ordered = engine->snippetsWithKeyword(keyword, {}, fullText, fuzzy, matchesCase);
            ASSERT_EQ(QSet<ZDSnippetPtr>(ordered.begin(), ordered.end()),
                      QSet<ZDSnippetPtr>(expected.begin(), expected.end()));
        }
    }
};

TEST_F(SearchPropertyTest, TheEngineFindsWhatAPlainScanFinds)
{
    ZDMulticastDelegateHandler notifier;
    for (quint32 seed = 1; seed <= 12; ++seed) {
        QRandomGenerator random(seed);
        library.clear();
        const int size = random.bounded(60);
        for (int i = 0; i < size; ++i)
            library.append(randomSnippet(random));
        makeEngine(&notifier);
        expectSameAsPlainScan(random, 40, "before the first build");
        rebuildAndWait();
        expectSameAsPlainScan(random, 150, "indexed");

        // Changes the engine is told of, and changes it is not.
        for (int i = 0; i < 15 && !library.isEmpty(); ++i) {
            const ZDSnippetPtr snippet = library[random.bounded(int(library.size()))];
            const bool told = random.bounded(2);
            switch (random.bounded(4)) {
            case 0:
                snippet->setTitle(randomText(random, 3));
                if (told)
                    notifier.noteSnippetTitleChanged(snippet, nullptr);
                break;
            case 1:
                snippet->parts().first()->setContent(randomText(random, 8));
                if (told)
                    notifier.noteSnippetContentChanged(snippet, nullptr);
                break;
            case 2: {
                ZDSnippetPtr added = randomSnippet(random);
                library.append(added);
                if (told)
                    notifier.noteSnippetAdded(added, nullptr);
                break;
            }
            default:
                library.removeOne(snippet);
                if (told)
                    notifier.noteSnippetsRemoved({snippet}, nullptr);
            }
        }
        expectSameAsPlainScan(random, 60, "while notices are on their way");
        ZDTestSupport::waitFor([] { return false; }, 20);
        engine->waitUntilIndexIsIdle();
        expectSameAsPlainScan(random, 150, "after changes");
    }
}
