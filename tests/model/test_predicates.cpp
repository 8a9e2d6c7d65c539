#include "ZDDateRelativeRowTemplate.h"
#include "ZDModelTestSupport.h"
#include "ZDPredicate.h"
#include "ZDSnippet.h"
#include "ZDSnippetKeyPaths.h"
#include "ZDTag.h"

namespace {

ZDPredicate parsed(const QString &format, const QVariantList &arguments = {})
{
    ZDError error;
    ZDPredicate predicate = ZDPredicate::fromFormat(format, &error, arguments);
    EXPECT_TRUE(predicate.isValid()) << format.toStdString() << ": " << error.toString().toStdString();
    return predicate;
}

} // namespace

// Stored strings in, canonical strings out; the canonical string parses to the same predicate.
class PredicateFormatTest : public ::testing::TestWithParam<std::pair<const char *, const char *>>
{
};

TEST_P(PredicateFormatTest, PrintsCanonicallyAndRoundTrips)
{
    const auto [input, canonical] = GetParam();
    const ZDPredicate predicate = parsed(QString::fromUtf8(input));
    EXPECT_EQ(predicate.predicateFormat().toStdString(), canonical);
    EXPECT_EQ(parsed(predicate.predicateFormat()), predicate);
}

INSTANTIATE_TEST_SUITE_P(
    Strings, PredicateFormatTest,
    ::testing::Values(
        std::pair{"title CONTAINS[cd] 'café'", "title CONTAINS[cd] \"café\""},
        std::pair{"title = \"a\\\"b\"", "title == \"a\\\"b\""},
        std::pair{"folderUUID == \"com.varnok.Zandrio.UUID.Predefined.Uncategorized\"",
                  "folderUUID == \"com.varnok.Zandrio.UUID.Predefined.Uncategorized\""},
        std::pair{"ANY parts.language.identifier == 'PythonLexer'", "ANY parts.language.identifier == \"PythonLexer\""},
        std::pair{"some tagUUIDs =[dc] 'X'", "ANY tagUUIDs ==[cd] \"X\""},
        std::pair{"a == 1 && b <> 2 || !(c =< 3)", "(a == 1 AND b != 2) OR NOT c <= 3"},
        std::pair{"a == 1 AND (b == 2 OR c == 3)", "a == 1 AND (b == 2 OR c == 3)"},
        std::pair{"NOT (a == 1 AND b == 2)", "NOT (a == 1 AND b == 2)"},
        std::pair{"((tagsCount > 2))", "tagsCount > 2"},
        std::pair{"(partsCount + 1) * 2 >= 4", "(partsCount + 1) * 2 >= 4"},
        std::pair{"a - (b - c) == a - b - c", "a - (b - c) == a - b - c"},
        std::pair{"x BETWEEN {1, 1.5}", "x BETWEEN {1, 1.5}"},
        std::pair{"isGist IN {'Yes', \"No\"}", "isGist IN {\"Yes\", \"No\"}"},
        std::pair{"githubUsername == nil OR githubUsername != NULL", "githubUsername == nil OR githubUsername != nil"},
        std::pair{"hasMultipleParts == TRUE AND flag == no", "hasMultipleParts == YES AND flag == NO"},
        std::pair{"TRUEPREDICATE", "TRUEPREDICATE"},
        std::pair{"NOT FALSEPREDICATE", "NOT FALSEPREDICATE"},
        std::pair{"ALL parts.title LIKE[c] '*.py' AND NONE tags.title MATCHES 'x.*'",
                  "ALL parts.title LIKE[c] \"*.py\" AND NONE tags.title MATCHES \"x.*\""},
        std::pair{"dateCreated > FUNCTION(FUNCTION(now(), 'castObject:toType:', 'NSNumber') - 86401, 'castObject:toType:', 'NSDate')",
                  "dateCreated > CAST(CAST(now(), \"NSNumber\") - 86401, \"NSDate\")"},
        std::pair{"dateModified < CAST(722890800.5, 'NSDate')", "dateModified < CAST(722890800.5, \"NSDate\")"},
        std::pair{"#in.#now == -5", "#in.#now == -5"},
        std::pair{"n == -x", "n == 0 - x"},
        std::pair{"#2.#x == 1", "#2.x == 1"},
        std::pair{"title ENDSWITH 'a\\nb\\t'", "title ENDSWITH \"a\\nb\\t\""}));

TEST(PredicateParseTest, UnreadableStringsAreErrors)
{
    const char *const bad[] = {"", "title", "title ==", "title == 'open", "(title == 'x'", "title == 'x')",
                               "a == 1 AND", "ANY", "title CONTAINS[z] 'x'", "frobnicate(1) == 2", "a == $var",
                               "title == %@", "title === 'x'", "{1, 2", "CAST(1) == 2", "a == 1 b == 2", "#"};
    for (const char *format : bad) {
        ZDError error;
        EXPECT_FALSE(ZDPredicate::fromFormat(QString::fromUtf8(format), &error).isValid()) << format;
        EXPECT_FALSE(error.isNull()) << format;
    }
    // Deep nesting is refused, not recursed into.
    EXPECT_FALSE(ZDPredicate::fromFormat(QString(50000, QLatin1Char('(')) + QStringLiteral("a == 1")).isValid());
    EXPECT_FALSE(ZDPredicate::fromFormat(QStringLiteral("a == ") + QString(50000, QLatin1Char('-')) + QStringLiteral("1")).isValid());
    EXPECT_FALSE(ZDPredicate::fromFormat(QString(50000, QLatin1Char('!')) + QStringLiteral("a == 1")).isValid());
    EXPECT_FALSE(ZDPredicate().evaluate({}));
}

TEST(PredicateParseTest, WhatParsesAtTheNestingLimitPrintsToSomethingThatParses)
{
    for (const QString &format : QStringList{QString(96, QLatin1Char('-')) + QStringLiteral("m / n * o == 1"),
                                  QString(98, QLatin1Char('!')) + QStringLiteral("m == 1"),
                                  QString(300, QLatin1Char('(')) + QStringLiteral("m == 1") + QString(300, QLatin1Char(')'))}) {
        const ZDPredicate predicate = parsed(format);
        EXPECT_EQ(parsed(predicate.predicateFormat()), predicate);
    }
}

TEST(PredicateParseTest, ArgumentsBecomeConstantsAndKeyPaths)
{
    const QDateTime when(QDate(2021, 1, 1), QTime(0, 0), Qt::UTC);
    const ZDPredicate p = parsed(QStringLiteral("%K CONTAINS[cd] %@ AND d > %@ AND t IN %@"),
                                 {QStringLiteral("title"), QStringLiteral("x\"y"), when, QStringList{"a", "b"}});
    EXPECT_EQ(parsed(p.predicateFormat()), p);
    EXPECT_TRUE(p.predicateFormat().startsWith("title CONTAINS[cd] \"x\\\"y\" AND d > CAST("));
    EXPECT_TRUE(p.evaluate([&](const QString &key) -> QVariant {
        if (key == "title")
            return QStringLiteral("X\"Y!");
        if (key == "d")
            return when.addSecs(1);
        return QStringLiteral("b");
    }));
}

// A boolean is the number 0 or 1 wherever a value is used, and stays YES or NO where printed.
TEST(PredicateParseTest, BooleansAreNumbersExceptInPrint)
{
    const ZDKeyPathResolver flagSet = [](const QString &key) {
        return key == "flag" ? QVariant(true) : QVariant();
    };
    for (const char *format : {"flag == 1", "flag != 0", "flag > 0.5", "flag BETWEEN {1, 2}", "flag + 1 == 2",
                               "CAST(flag, 'NSNumber') == 1", "CAST(flag, 'NSString') == '1'",
                               "CAST(flag, 'NSDate') == CAST(1, 'NSDate')"})
        EXPECT_TRUE(parsed(QString::fromUtf8(format)).evaluate(flagSet)) << format;
    EXPECT_EQ(parsed("flag == YES").predicateFormat(), QStringLiteral("flag == YES"));
    EXPECT_NE(parsed("flag == YES"), parsed("flag == 1"));
    EXPECT_EQ(parsed("flag == 1.0"), parsed("flag == 1"));
    EXPECT_EQ(parsed("flag == TRUE"), parsed("flag == YES"));
}

// --- Evaluation over snippets --------------------------------------------------------------

class PredicateSnippetTest : public ModelTest
{
protected:
    void SetUp() override
    {
        ModelTest::SetUp();
        directory.tags = {std::make_shared<ZDTag>(QStringLiteral("Café"), QStringLiteral("T1")),
                          std::make_shared<ZDTag>(QStringLiteral("Work"), QStringLiteral("T2"))};
        directory.folderTitles.insert(QStringLiteral("F1"), QStringLiteral("Scripts"));
        snippet = ZDSnippet::create(QStringLiteral("Résumé parser"), QStringLiteral("F1"));
        snippet->setTagUUIDs({QStringLiteral("T1"), QStringLiteral("T2")});
        auto first = snippet->parts().first();
        first->setTitle(QStringLiteral("parse.py"));
        first->setContent(QStringLiteral("import json"));
        first->setNote(QStringLiteral("Reads CV files"));
        first->setLanguage(registry.languageWithIdentifier(QStringLiteral("PythonLexer")));
        auto second = ZDSnippetPart::create(QStringLiteral("notes.md"), snippet->UUID());
        second->setLanguage(registry.markdownLanguage());
        snippet->setParts({first, second});
        snippet->setGithubUsername(QStringLiteral("octocat"));
    }

    bool matches(const char *format)
    {
        return ZDSnippetKeyPaths::evaluate(parsed(QString::fromUtf8(format)), *snippet);
    }

    ZDSnippetPtr snippet;
};

TEST_F(PredicateSnippetTest, SmartGroupKeys)
{
    EXPECT_TRUE(matches("title CONTAINS[cd] 'resume'"));
    EXPECT_FALSE(matches("title CONTAINS 'resume'"));
    EXPECT_TRUE(matches("title BEGINSWITH[c] 'rÉsumé'"));
    EXPECT_TRUE(matches("title CONTAINS[c] 'ÉSUMÉ P' AND title ENDSWITH[c] 'PARSER'"));
    EXPECT_FALSE(matches("title CONTAINS[c] 'esume'")) << "accents count without [d]";
    EXPECT_TRUE(matches("title ENDSWITH[cd] 'SUME PARSER'"));
    EXPECT_TRUE(matches("ANY parts.content CONTAINS[c] 'IMPORT JSON'"));
    EXPECT_TRUE(matches("localizedCategory == 'Scripts'"));
    EXPECT_TRUE(matches("ANY tags.title ==[cd] 'cafe'"));
    EXPECT_FALSE(matches("ANY tags.title == 'cafe'"));
    EXPECT_TRUE(matches("tags.title CONTAINS 'Work'")) << "a to-many path without ANY tests membership";
    EXPECT_TRUE(matches("tagsCount == 2 AND partsCount == 2"));
    EXPECT_TRUE(matches("tags.@count == 2 AND parts.@count > 1"));
    EXPECT_TRUE(matches("ANY parts.title ENDSWITH '.md'"));
    EXPECT_TRUE(matches("ANY parts.note CONTAINS[c] 'cv'"));
    EXPECT_TRUE(matches("ANY parts.content LIKE 'import *'"));
    EXPECT_TRUE(matches("ANY parts.language.displayName == 'Markdown'"));
    EXPECT_TRUE(matches("isGist == 'Yes' AND githubUsername == 'octocat'"));
    EXPECT_FALSE(matches("githubUsername == nil"));
    EXPECT_TRUE(matches("ALL parts.title MATCHES '[a-z]+\\\\.(py|md)'"));
    EXPECT_FALSE(matches("NONE parts.language.identifier == 'MarkdownLexer'"));
    EXPECT_TRUE(matches("NOT title IN {'a', 'b'} AND 'pars' IN title"));
    EXPECT_TRUE(matches("partsCount BETWEEN {2, 3}"));
    EXPECT_FALSE(matches("title CONTAINS '' OR title BEGINSWITH ''")) << "the empty string is found nowhere";
    EXPECT_FALSE(matches("title MATCHES '(unclosed'")) << "a bad regular expression matches nothing";
}

TEST_F(PredicateSnippetTest, ConstraintKeys)
{
    EXPECT_TRUE(matches("folderUUID == 'F1'"));
    EXPECT_TRUE(matches("ANY parts.language.identifier == 'PythonLexer'"));
    EXPECT_FALSE(matches("ANY parts.language.identifier == 'RubyLexer'"));
    EXPECT_TRUE(matches("ANY tagUUIDs == 'T2'"));
    EXPECT_FALSE(matches("ANY tagUUIDs == 't2'"));
}

TEST_F(PredicateSnippetTest, DatesCompareAgainstTheRecordsClock)
{
    advance(3 * 86400 * 1000LL);
    snippet->parts().first()->setContent(QStringLiteral("changed"));
    advance(1000);
    EXPECT_FALSE(matches("dateCreated > CAST(CAST(now(), \"NSNumber\") - 172802, \"NSDate\")"));
    EXPECT_TRUE(matches("canonicalDateModified > CAST(CAST(now(), \"NSNumber\") - 172802, \"NSDate\")"));
    EXPECT_TRUE(matches("dateCreated < now()"));
    const double created = (snippet->dateCreated().toMSecsSinceEpoch() - 978307200000LL) / 1000.0;
    EXPECT_TRUE(ZDSnippetKeyPaths::evaluate(
        parsed(QStringLiteral("dateCreated == CAST(%1, 'NSDate')").arg(created, 0, 'f', 3)), *snippet));
}

// --- Relative-date rows -------------------------------------------------------------------

TEST(DateRelativeRowTest, WritesTheStoredShape)
{
    using T = ZDDateRelativeRowTemplate;
    const ZDPredicate twoDays = T::predicateForRow({QStringLiteral("dateCreated"), ZDPredicate::Greater, 2, T::Days});
    EXPECT_EQ(twoDays.predicateFormat(), "dateCreated > CAST(CAST(now(), \"NSNumber\") - 172802, \"NSDate\")");
    EXPECT_EQ(T::intervalForValue(3, T::Minutes), 183);
    EXPECT_EQ(T::intervalForValue(1, T::Months), 2627425);
    EXPECT_EQ(T::intervalForValue(1, T::Years), 31536001);
    EXPECT_EQ(T::intervalForValue(5, 6), 0);
    EXPECT_EQ(T::intervalForValue(5, -1), 0);
}

TEST(DateRelativeRowTest, ReadsBackTheLargestWholeUnit)
{
    using T = ZDDateRelativeRowTemplate;
    struct Case { qint64 seconds; qint64 value; T::Unit unit; };
    const Case cases[] = {{172802, 2, T::Days}, {604807, 7, T::Days}, {604801, 1, T::Weeks},
                          {1209602, 2, T::Weeks}, {3601 * 5, 5, T::Hours}, {61, 1, T::Minutes},
                          {31536001, 1, T::Years}, {0, 0, T::Years}};
    for (const Case &c : cases) {
        const auto row = T::rowForPredicate(ZDPredicate::fromFormat(
            QStringLiteral("canonicalDateModified < CAST(CAST(now(), 'NSNumber') - %1, 'NSDate')").arg(c.seconds)));
        ASSERT_TRUE(row) << c.seconds;
        EXPECT_EQ(row->value, c.value) << c.seconds;
        EXPECT_EQ(row->unit, c.unit) << c.seconds;
        EXPECT_EQ(row->keyPath, "canonicalDateModified");
        EXPECT_EQ(row->op, ZDPredicate::Less);
    }
}

TEST(DateRelativeRowTest, OtherShapesAreNotClaimed)
{
    for (const char *format : {"dateCreated > now()", "dateCreated > CAST(CAST(now(), 'NSNumber') + 61, 'NSDate')",
                               "dateCreated > CAST(CAST(now(), 'NSString') - 61, 'NSDate')",
                               "dateCreated > CAST(CAST(now(), 'NSNumber') - 7, 'NSDate')",
                               "dateCreated > CAST(CAST(now(), 'NSNumber') - 61.5, 'NSDate')",
                               "ANY dateCreated > CAST(CAST(now(), 'NSNumber') - 61, 'NSDate')",
                               "dateCreated > CAST(CAST(now(), 'NSNumber') - x, 'NSDate')"}) {
        EXPECT_FALSE(ZDDateRelativeRowTemplate::rowForPredicate(ZDPredicate::fromFormat(QLatin1String(format))))
            << format;
    }
}
