#include "ZDLanguageRegistry.h"
#include "ZDLogger.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
QString realTable()
{
    return ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Languages.json");
}

QJsonObject row(const QString &identifier, const QString &name, const QStringList &aliases,
                const QStringList &extensions, const QStringList &utis = {})
{
    return {{QStringLiteral("identifier"), identifier},
            {QStringLiteral("displayName"), name},
            {QStringLiteral("aliases"), QJsonArray::fromStringList(aliases)},
            {QStringLiteral("mimeTypes"), QJsonArray()},
            {QStringLiteral("UTIStrings"), QJsonArray::fromStringList(utis)},
            {QStringLiteral("fileExtensions"), QJsonArray::fromStringList(extensions)}};
}

QStringList identifiers(const QList<ZDLanguage> &languages)
{
    QStringList list;
    for (const ZDLanguage &language : languages)
        list << language.identifier();
    return list;
}

class LanguageGuessTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    ZDUserDefaults defaults{dir.filePath(QStringLiteral("prefs.ini"))};
    std::unique_ptr<ZDLanguageRegistry> registry;

    void SetUp() override
    {
        // A small table where "h" and "inc" are shared and "ObjC" is an alias of two languages.
        QJsonArray table{row(QStringLiteral("TextLexer"), QStringLiteral("Plain Text"), {QStringLiteral("text")}, {QStringLiteral("txt")}, {QStringLiteral("public.plain-text")}),
                         row(QStringLiteral("CLexer"), QStringLiteral("C"), {QStringLiteral("c")}, {QStringLiteral("c"), QStringLiteral("h")}, {QStringLiteral("public.c-source")}),
                         row(QStringLiteral("ObjectiveCLexer"), QStringLiteral("Objective-C"), {QStringLiteral("objc")}, {QStringLiteral("m"), QStringLiteral("h")}),
                         row(QStringLiteral("LogosLexer"), QStringLiteral("Logos"), {QStringLiteral("objc"), QStringLiteral("logos")}, {QStringLiteral("x"), QStringLiteral("h")}),
                         row(QStringLiteral("PhpLexer"), QStringLiteral("PHP"), {QStringLiteral("php")}, {QStringLiteral("php"), QStringLiteral("inc")}),
                         row(QStringLiteral("PovrayLexer"), QStringLiteral("POVRay"), {QStringLiteral("pov")}, {QStringLiteral("pov"), QStringLiteral("INC")})};
        const QString path = dir.filePath(QStringLiteral("Languages.json"));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(table).toJson());
        file.close();
        defaults.setActiveLanguageIdentifiers({QStringLiteral("TextLexer"), QStringLiteral("PhpLexer")});
        registry = std::make_unique<ZDLanguageRegistry>(path, &defaults);
    }
};
} // namespace

TEST(LanguageTable, CoversEveryLexerWithPlainTextAndMarkdown)
{
    ZDLanguageRegistry registry(realTable());
    const QList<ZDLanguage> languages = registry.availableLanguages();
    EXPECT_TRUE(registry.loadError().isNull());
    EXPECT_GT(languages.size(), 500);
    EXPECT_EQ(registry.plainTextLanguage().displayName(), QStringLiteral("Plain Text"));
    EXPECT_TRUE(registry.markdownLanguage().isMarkdown());
    EXPECT_EQ(registry.languageWithIdentifier(QStringLiteral("PythonLexer")).fileExtensions().first(), QStringLiteral("py"));
    EXPECT_EQ(registry.languageWithIdentifier(QStringLiteral("JadeLexer")).identifier(), QStringLiteral("PugLexer"));
    QSet<QString> seen;
    for (const ZDLanguage &language : languages)
        EXPECT_TRUE(!seen.contains(language.identifier()) && (seen.insert(language.identifier()), true));
}

TEST(LanguageTable, UnknownIdentifierFallsBackToPlainTextAndWarnsEveryTime)
{
    QTemporaryDir logs;
    ZDLogger logger(logs.path());
    ZDLogger::install(&logger);
    ZDLanguageRegistry registry(realTable());
    EXPECT_EQ(registry.languageWithIdentifier(QStringLiteral("NoSuchLexer")).identifier(), QStringLiteral("TextLexer"));
    EXPECT_EQ(registry.languageWithIdentifier(QStringLiteral("NoSuchLexer")).identifier(), QStringLiteral("TextLexer"));
    logger.flush();
    ZDLogger::install(nullptr);
    QFile file(logger.currentFilePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll())
                  .count(QStringLiteral("Error: Valid language for identifier NoSuchLexer not found. Falling back to plaintext")),
              2);
}

TEST(LanguageTable, MissingOrCorruptTableLeavesTheListEmptyWithItsError)
{
    QTemporaryDir dir;
    ZDError presented;
    ZDLanguageRegistry missing(dir.filePath(QStringLiteral("absent.json")));
    missing.setErrorPresenter([&](const ZDError &error) { presented = error; });
    EXPECT_TRUE(missing.availableLanguages().isEmpty());
    EXPECT_EQ(presented.code(), 227);
    EXPECT_EQ(presented.description(), QStringLiteral("Couldn’t load syntaxes data from application bundle"));
    EXPECT_EQ(presented.recoverySuggestion(), QStringLiteral("An error occurred when accessing required resources."));
    EXPECT_EQ(missing.languageWithIdentifier(QStringLiteral("PythonLexer")).identifier(), QStringLiteral("TextLexer"));

    QFile file(dir.filePath(QStringLiteral("corrupt.json")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[{\"identifier\": ");
    file.close();
    ZDLanguageRegistry corrupt(file.fileName());
    EXPECT_TRUE(corrupt.availableLanguages().isEmpty());
    EXPECT_EQ(corrupt.loadError().code(), 226);
    EXPECT_EQ(corrupt.loadError().description(), QStringLiteral("Couldn’t load languages data"));
    EXPECT_EQ(corrupt.loadError().information().value(QStringLiteral("JSON Length")).toInt(), 16);
    EXPECT_EQ(corrupt.plainTextLanguage().identifier(), QStringLiteral("TextLexer"));
}

TEST(LanguageTable, RowsLackingAKeyAreSkipped)
{
    QTemporaryDir dir;
    QJsonObject incomplete = row(QStringLiteral("CLexer"), QStringLiteral("C"), {}, {QStringLiteral("c")});
    incomplete.remove(QStringLiteral("mimeTypes"));
    QFile file(dir.filePath(QStringLiteral("t.json")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(QJsonArray{incomplete, row(QStringLiteral("TextLexer"), QStringLiteral("Plain Text"), {}, {})}).toJson());
    file.close();
    ZDLanguageRegistry registry(file.fileName());
    EXPECT_EQ(identifiers(registry.availableLanguages()), QStringList{QStringLiteral("TextLexer")});
}

TEST_F(LanguageGuessTest, TypeIdentifierOrDisplayNameEndTheSearchAtOnce)
{
    EXPECT_EQ(identifiers(registry->languagesFromLanguageName({}, QStringLiteral("php"), QStringLiteral("PUBLIC.C-SOURCE"))),
              QStringList{QStringLiteral("CLexer")});
    EXPECT_EQ(identifiers(registry->languagesFromLanguageName(QStringLiteral("objective-c"), QStringLiteral("php"), {})),
              QStringList{QStringLiteral("ObjectiveCLexer")});
}

TEST_F(LanguageGuessTest, AliasesAndExtensionsAddUpAndActivenessBreaksTies)
{
    // "objc" alias + "h" extension: Objective-C and Logos score 2 each, C scores 1.
    const QStringList byAlias = identifiers(registry->languagesFromLanguageName(QStringLiteral("OBJC"), QStringLiteral("h"), {}));
    ASSERT_EQ(byAlias.size(), 3);
    EXPECT_EQ(byAlias.last(), QStringLiteral("CLexer"));

    // A shared extension ranks the active language first, whatever the table order.
    EXPECT_EQ(identifiers(registry->languagesFromLanguageName({}, QStringLiteral("inc"), {})),
              (QStringList{QStringLiteral("PhpLexer"), QStringLiteral("PovrayLexer")}));
    defaults.setActiveLanguageIdentifiers({QStringLiteral("PovrayLexer")});
    EXPECT_EQ(registry->languagesFromLanguageName({}, QStringLiteral("inc"), {}).first().identifier(),
              QStringLiteral("PovrayLexer"));

    EXPECT_TRUE(registry->languagesFromLanguageName(QStringLiteral("cobol"), QStringLiteral("cbl"), {}).isEmpty());
}

TEST_F(LanguageGuessTest, ActiveLanguagesDropUnknownIdentifiersButKeepThemStored)
{
    defaults.setActiveLanguageIdentifiers({QStringLiteral("PhpLexer"), QStringLiteral("GoneLexer"), QStringLiteral("CLexer")});
    EXPECT_EQ(identifiers(registry->activeLanguages()), (QStringList{QStringLiteral("PhpLexer"), QStringLiteral("CLexer")}));

    registry->setActiveStateForLanguage(registry->languageWithIdentifier(QStringLiteral("LogosLexer")), true);
    registry->setActiveStateForLanguage(registry->languageWithIdentifier(QStringLiteral("PhpLexer")), false);
    EXPECT_EQ(identifiers(registry->activeLanguages()), (QStringList{QStringLiteral("CLexer"), QStringLiteral("LogosLexer")}));
    EXPECT_EQ(defaults.activeLanguageIdentifiers(),
              (QStringList{QStringLiteral("GoneLexer"), QStringLiteral("CLexer"), QStringLiteral("LogosLexer")}));
}
