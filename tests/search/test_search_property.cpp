// For random libraries and random queries the engine finds exactly what a plain scan with the
// predicate evaluator finds: before its indexes are built, once they are, and while announced
// changes are still on their way to them (snippets added or removed without a word included).

#include "ZDSearchTestSupport.h"

#include "ZDMulticastDelegateHandler.h"
#include "ZDPredicate.h"
#include "ZDSearchFolding.h"
#include "ZDTextFolding.h"

#include <QRandomGenerator>

namespace {

const QStringList kFragments = {
    "foo", "Foo", "FOO",    "bar",     "baz",     "café",   "CAFE",     "Café",    "naïve",    "x",
    "X",   "ß",   "Straße", "STRASSE", "ǅemal",   "ﬁle",    "İstanbul", "ΣΊΣΥΦΟΣ", "σίσυφος",  "日本語",
    "42",  "4２", "a.b",    "->",      "foo_bar", "👍",      "e\u0301",  "é",       "Ångström", "return",
    "int", "i",   "ı",      "ω",       "Ω",       "\u00a0", "ﬀ"};
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
        predicates.push_back(ZDPredicate::fromFormat(matchesCase ? QStringLiteral("text CONTAINS[d] %@")
                                                                 : QStringLiteral("text CONTAINS[cd] %@"),
                                                     nullptr, {word}));
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

/// Counts the notices delivered, to know when the engine has had its own.
class NoticeCounter : public ZDLibraryListener
{
public:
    int count = 0;
    void snippetDidAdd(QObject *, const ZDSnippetPtr &) override { ++count; }
    void snippetsDidRemove(QObject *, const ZDSnippetList &) override { ++count; }
    void snippetTitleDidChange(QObject *, const ZDSnippetPtr &) override { ++count; }
    void snippetContentDidChange(QObject *, const ZDSnippetPtr &) override { ++count; }
};

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
            ASSERT_EQ(titles(engine->privateSearchWithKeyword(keyword, fullText, fuzzy, matchesCase)),
                      titles(expected))
                << stage << ": keyword \"" << keyword.toStdString() << "\" fullText " << fullText << " fuzzy "
                << fuzzy << " matchesCase " << matchesCase;
            const ZDSnippetList ordered =
                engine->snippetsWithKeyword(keyword, {}, fullText, fuzzy, matchesCase);
            ASSERT_EQ(QSet<ZDSnippetPtr>(ordered.begin(), ordered.end()),
                      QSet<ZDSnippetPtr>(expected.begin(), expected.end()));
        }
    }
};

TEST_F(SearchPropertyTest, TheEngineFindsWhatAPlainScanFinds)
{
    ZDMulticastDelegateHandler notifier;
    NoticeCounter counter;
    notifier.addDelegate(&counter);
    int posted = 0;
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

        // Edits, which are always announced; additions and removals, which may not be.
        for (int i = 0; i < 15 && !library.isEmpty(); ++i) {
            const ZDSnippetPtr snippet = library[random.bounded(int(library.size()))];
            const bool told = random.bounded(2);
            switch (random.bounded(4)) {
            case 0:
                snippet->setTitle(randomText(random, 3));
                notifier.noteSnippetTitleChanged(snippet, nullptr);
                ++posted;
                break;
            case 1:
                snippet->parts().first()->setContent(randomText(random, 8));
                notifier.noteSnippetContentChanged(snippet, nullptr);
                ++posted;
                break;
            case 2: {
                ZDSnippetPtr added = randomSnippet(random);
                library.append(added);
                if (told) {
                    notifier.noteSnippetAdded(added, nullptr);
                    ++posted;
                }
                break;
            }
            default:
                library.removeOne(snippet);
                if (told) {
                    notifier.noteSnippetsRemoved({snippet}, nullptr);
                    ++posted;
                }
            }
        }
        // Every notice has reached the engine (it is delivered in the same pass as to the
        // counter); the index updates may not have run.
        ASSERT_TRUE(ZDTestSupport::waitFor([&] { return counter.count == posted; }));
        ZDTestSupport::waitFor([] { return false; }, 1);
        expectSameAsPlainScan(random, 60, "while index updates are on their way");
        engine->waitUntilIndexIsIdle();
        expectSameAsPlainScan(random, 150, "after changes");
    }
}

TEST(SearchFolding, EqualsTheRecordsFoldingOnMixedText)
{
    // ASCII beside combining marks, Hangul jamo, ligatures, astral letters and odd case pairs.
    const QList<QPair<char32_t, char32_t>> blocks = {
        {0x20, 0x7e},     {0xc0, 0x24f},    {0x300, 0x36f},   {0x370, 0x3ff},   {0x1100, 0x11ff},
        {0x1e00, 0x1eff}, {0x2100, 0x214f}, {0xac00, 0xac40}, {0xfb00, 0xfb06}, {0x1d400, 0x1d4ff}};
    QRandomGenerator random(99);
    for (int round = 0; round < 3000; ++round) {
        QString text;
        for (int i = random.bounded(12); i > 0; --i) {
            const auto &[first, last] = blocks[random.bounded(int(blocks.size()))];
            text += QString::fromUcs4(
                std::array<char32_t, 1>{char32_t(first + random.bounded(int(last - first + 1)))}.data(), 1);
        }
        const bool caseInsensitive = random.bounded(2);
        ASSERT_EQ(ZDSearchFolding::folded(text, caseInsensitive),
                  ZDTextFolding::folded(text, caseInsensitive, true))
            << text.toStdString();
    }
}
