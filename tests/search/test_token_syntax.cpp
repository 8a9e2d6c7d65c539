#include "ZDSearchTestSupport.h"

#include "ZDCoreIndex.h"
#include "ZDSearchTokenSyntax.h"
#include "ZDSnippetKeyPaths.h"

#include <QRandomGenerator>
#include <QSignalSpy>

using namespace ZDSearchTokenSyntax;

namespace {
const QString token = QString(tokenCharacter);
}

TEST(TokenSyntax, TheCompletionWordStartsAfterASpaceTabOrToken)
{
    EXPECT_EQ(completionRange(QStringLiteral("foo in:sw"), 9), (Range{4, 5}));
    EXPECT_EQ(completionRange(QStringLiteral("foo\tin:sw"), 6), (Range{4, 2}));
    EXPECT_EQ(completionRange(token + QStringLiteral("in:py"), 6), (Range{1, 5}));
    EXPECT_EQ(completionRange(QStringLiteral("in:"), 3), (Range{0, 3}));
    EXPECT_EQ(completionRange(QStringLiteral("abc "), 4), (Range{4, 0}));
    EXPECT_EQ(completionRange(QStringLiteral("abc"), -1), Range{});

    EXPECT_EQ(completionKeyword(QStringLiteral("foo in:Sw"), 9), QStringLiteral("Sw"));
    EXPECT_EQ(completionKeyword(QStringLiteral("in:"), 3), QStringLiteral(""));
    EXPECT_FALSE(completionKeyword(QStringLiteral("in:"), 3).isNull()); // the list opens, with nothing
    EXPECT_TRUE(completionKeyword(QStringLiteral("in:sw foo"), 9).isNull()); // left the word: closes
    EXPECT_TRUE(completionKeyword(QStringLiteral("xin:sw"), 6).isNull());
}

TEST(TokenSyntax, KeywordsCopiesAndPastes)
{
    EXPECT_EQ(searchKeyword(token + QStringLiteral(" foo")), QStringLiteral(" foo"));
    EXPECT_EQ(searchKeyword(QStringLiteral("a") + token + token + QStringLiteral("b ")), QStringLiteral("ab "));
    EXPECT_EQ(copiedText(token + QStringLiteral("x")), QStringLiteral("x"));
    EXPECT_EQ(pastedText(QStringLiteral("a\nb\r\nc")), QStringLiteral("a b  c"));
}

TEST(SearchConstraint, PredicatesDisplayAndEquality)
{
    const ZDSearchConstraint folder(ZDSearchConstraint::folderKind, QStringLiteral("Work"), QStringLiteral("F1"), 1);
    EXPECT_EQ(folder.description(), QStringLiteral("folderUUID == \"F1\""));
    EXPECT_EQ(folder.displayString(), QStringLiteral("Work  (1 snippet)"));
    EXPECT_EQ(ZDSearchConstraint(ZDSearchConstraint::tagKind, "t", "x", 0).countString(), QStringLiteral("(0 snippet)"));
    EXPECT_EQ(ZDSearchConstraint(ZDSearchConstraint::tagKind, "t", "x", 2).countString(), QStringLiteral("(2 snippets)"));
    // Equal by underlying value alone.
    EXPECT_EQ(folder, ZDSearchConstraint(ZDSearchConstraint::tagKind, QStringLiteral("other"), QStringLiteral("F1"), 9));
    EXPECT_NE(folder, ZDSearchConstraint(ZDSearchConstraint::folderKind, QStringLiteral("Work"), QStringLiteral("F2"), 1));
    EXPECT_EQ(ZDSearchConstraint(QStringLiteral("COLOR"), "c", "v", 1).predicateValue(), ZDPredicate::truePredicate());
}

TEST_F(SearchTest, AConstraintMatchesWhatItsPredicateSays)
{
    QRandomGenerator random(7);
    const QStringList values = {"A", "B", "C", "PythonLexer", "TextLexer", "RustLexer"};
    for (int i = 0; i < 200; ++i) {
        ZDSnippetPtr snippet = ZDSnippet::create(QStringLiteral("s"), values[random.bounded(3)]);
        snippet->setTagUUIDs(random.bounded(2) ? QStringList{values[random.bounded(3)]} : QStringList());
        QList<ZDSnippetPartPtr> parts;
        for (int p = random.bounded(3); p >= 0; --p) {
            ZDSnippetPartPtr part = ZDSnippetPart::create(QStringLiteral("p"), snippet->UUID());
            part->setLanguage(registry.languageWithIdentifier(values[3 + random.bounded(3)]));
            parts.append(part);
        }
        snippet->setParts(parts);
        for (const QString &kind : {ZDSearchConstraint::folderKind, ZDSearchConstraint::tagKind,
                                    ZDSearchConstraint::languageKind}) {
            const ZDSearchConstraint constraint(kind, QStringLiteral("x"), values[random.bounded(int(values.size()))], 1);
            ASSERT_EQ(constraint.matches(*snippet), ZDSnippetKeyPaths::evaluate(constraint.predicateValue(), *snippet))
                << constraint.description().toStdString();
        }
    }
}

TEST(SearchProposals, OneBestProposalPerKindAndNoneForAnEmptyKeyword)
{
    const QList<ZDIndexResult> folders = {{"Swift scratch", "F1", 40}, {"sw", "F2", 2}, {"Shell", "F3", 90},
                                          {"Swap", "F4", 0}};
    const QList<ZDIndexResult> tags = {{"swing", "T1", 3}, {"sweet", "T2", 5}};
    const QList<ZDIndexResult> languages = {{"Swift", "SwiftLexer", 12}, {"Python", "PythonLexer", 99}};

    EXPECT_TRUE(zdSearchProposals(QStringLiteral(""), {}, folders, tags, languages).isEmpty());

    const QList<ZDSearchProposalSection> sections = zdSearchProposals(QStringLiteral("SW"), {}, folders, tags, languages);
    ASSERT_EQ(sections.size(), 3);
    EXPECT_EQ(sections[0].title, QStringLiteral("Folder"));
    ASSERT_EQ(sections[0].proposals.size(), 1);
    // The folder named exactly "sw" beats a more populous one that only contains it.
    EXPECT_EQ(sections[0].proposals[0].constraintUnderlyingValue(), QStringLiteral("F2"));
    EXPECT_EQ(sections[1].title, QStringLiteral("Tags"));
    EXPECT_EQ(sections[1].proposals[0].constraintDisplayValue(), QStringLiteral("sweet"));
    EXPECT_EQ(sections[1].proposals[0].constriantTargetCount(), 5);
    EXPECT_EQ(sections[2].proposals[0].constraintName(), ZDSearchConstraint::languageKind);

    // A constraint already in the field is not proposed again; empty records never are; a
    // section with nothing left goes.
    const ZDSearchConstraint present(ZDSearchConstraint::tagKind, "sweet", "T2", 5);
    const QList<ZDSearchProposalSection> again =
        zdSearchProposals(QStringLiteral("swe"), {present}, folders, tags, languages);
    EXPECT_TRUE(again.isEmpty());
    EXPECT_TRUE(zdSearchProposals(QStringLiteral("swap"), {}, folders, tags, languages).isEmpty());
}

TEST(SearchQueryChangeTimer, OneCharacterAtOnceLongerTextAfterThePause)
{
    ZDSearchQueryChangeTimer timer;
    QSignalSpy changed(&timer, &ZDSearchQueryChangeTimer::searchQueryDidChange);
    timer.noteQueryChanged(QStringLiteral("f"), true);
    EXPECT_EQ(changed.size(), 1);

    timer.noteQueryChanged(QStringLiteral("fo"), true);
    timer.noteQueryChanged(QStringLiteral("foo"), true);
    EXPECT_EQ(changed.size(), 1);
    EXPECT_TRUE(timer.isPending());
    ASSERT_TRUE(changed.wait(2000));
    ZDTestSupport::waitFor([] { return false; }, ZDSearchQueryChangeTimer::delayMs + 50);
    EXPECT_EQ(changed.size(), 2); // the earlier one was cancelled

    timer.noteQueryChanged(QStringLiteral("foo bar"), true);
    timer.noteQueryChanged(QStringLiteral(""), true); // cleared: at once, and nothing left pending
    EXPECT_EQ(changed.size(), 3);
    EXPECT_FALSE(timer.isPending());
    timer.noteQueryChanged(QStringLiteral("long text"), false);
    EXPECT_EQ(changed.size(), 4);
}
