#include "ZDUserDefaults.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace K = ZDPreferenceKeys;

namespace {
class UserDefaultsTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("Zandrio.ini"));
    ZDUserDefaults defaults{path};

    // Writes a raw value into the file behind the preferences, as a damaged or foreign file would hold it.
    void storeRaw(const QString &key, const QVariant &value)
    {
        defaults.userDefaults()->setValue(key, value);
    }
};

struct NamedThemes : ZDThemeRegistry
{
    bool hasThemeNamed(const QString &name) const override { return name == QLatin1String("Xcode"); }
};
} // namespace

TEST_F(UserDefaultsTest, RegistersTheFiftyFourDefaultsInOrder)
{
    const auto registered = defaults.registeredDefaults();
    ASSERT_EQ(registered.size(), 54);
    EXPECT_EQ(registered.first().first, K::SnippetsSortMethod);
    EXPECT_EQ(registered.at(33).first, K::ActiveLanguages);
    EXPECT_EQ(registered.last().first, K::AutomaticLinkDetection);

    EXPECT_TRUE(defaults.searchUsesFuzzy());
    EXPECT_TRUE(defaults.searchIgnoresCase());
    EXPECT_EQ(defaults.indentMethod(), QStringLiteral("Spaces"));
    EXPECT_EQ(defaults.snippetsSortOrder(), SortOrderDescending);
    EXPECT_EQ(defaults.assistantPrimaryAction(), uint(PrimaryActionCopyToClipboard));
    EXPECT_EQ(defaults.githubImportDestFolderUUID(), QStringLiteral("com.varnok.Zandrio.UUID.Predefined.Uncategorized"));
    EXPECT_EQ(defaults.activeLanguageIdentifiers().size(), 10);
    EXPECT_EQ(defaults.assistantDefaultSnippetsCustomPredicateString(), QStringLiteral("title CONTAINS ''"));
    EXPECT_FALSE(defaults.lastAutomaticBackupDate().has_value());
}

TEST_F(UserDefaultsTest, ValuesSurviveANewInstanceIncludingListsOfOneOrNone)
{
    defaults.setTabSize(2);
    defaults.setSearchUsesFuzzy(false);
    defaults.setActiveLanguageIdentifiers({QStringLiteral("PythonLexer")});
    defaults.setLastAutomaticBackupDate(815000000.5);
    defaults.setMenubarShortcut({{QStringLiteral("keyCode"), 49}});
    defaults.synchronize();

    ZDUserDefaults reopened(path);
    EXPECT_EQ(reopened.tabSize(), 2);
    EXPECT_FALSE(reopened.searchUsesFuzzy());
    EXPECT_EQ(reopened.activeLanguageIdentifiers(), QStringList{QStringLiteral("PythonLexer")});
    EXPECT_DOUBLE_EQ(reopened.lastAutomaticBackupDate().value(), 815000000.5);
    EXPECT_EQ(reopened.menubarShortcut().value(QStringLiteral("keyCode")).toInt(), 49);

    reopened.setActiveLanguageIdentifiers({});
    reopened.synchronize();
    EXPECT_TRUE(ZDUserDefaults(path).activeLanguageIdentifiers().isEmpty());
}

TEST_F(UserDefaultsTest, CleaningRules)
{
    for (int stored : {40, 0, -5, 31}) {
        defaults.setMaximumBackupFiles(stored);
        EXPECT_EQ(defaults.maximumBackupFiles(), 30) << stored;
    }
    for (int allowed : {20, 50, 100}) {
        defaults.setMaximumBackupFiles(allowed);
        EXPECT_EQ(defaults.maximumBackupFiles(), allowed);
    }
    defaults.setTabSize(-8);
    EXPECT_EQ(defaults.tabSize(), 8);
}

TEST_F(UserDefaultsTest, EditorFontFallsBackToTheFirstInstalledCandidateWhenDamaged)
{
    defaults.setFontCatalog({[](const QString &family) { return family == QLatin1String("Courier"); },
                             [] { return ZDFontDescriptor{QStringLiteral("DejaVu Sans Mono"), 10}; }});
    storeRaw(K::EditorFont, QByteArray("\x01garbage"));
    EXPECT_EQ(defaults.editorFont(), (ZDFontDescriptor{QStringLiteral("Courier"), 12}));

    defaults.setFontCatalog({[](const QString &) { return false; },
                             [] { return ZDFontDescriptor{QStringLiteral("DejaVu Sans Mono"), 10}; }});
    EXPECT_EQ(defaults.editorFont(), (ZDFontDescriptor{QStringLiteral("DejaVu Sans Mono"), 12}));

    defaults.setEditorFont({QStringLiteral("Hack"), 15});
    EXPECT_EQ(defaults.editorFont(), (ZDFontDescriptor{QStringLiteral("Hack"), 15}));
}

TEST_F(UserDefaultsTest, ThemesResolveThroughTheRegistry)
{
    NamedThemes themes;
    defaults.setThemeRegistry(&themes);
    EXPECT_EQ(defaults.editorTheme(), QString()); // "Material Light" is not in this registry
    defaults.setEditorTheme(QStringLiteral("Xcode"));
    EXPECT_EQ(defaults.editorTheme(), QStringLiteral("Xcode"));

    EXPECT_TRUE(defaults.assistantTheme().isEmpty());
    defaults.setAssistantTheme(QStringLiteral("Xcode"));
    EXPECT_EQ(defaults.assistantTheme(), QStringLiteral("Xcode"));
    defaults.setAssistantTheme({});
    EXPECT_FALSE(defaults.hasStoredValue(K::AssistantTheme));
}

TEST_F(UserDefaultsTest, CloudSwitchTellsTheStoreBeforeStoring)
{
    bool storedWhenTold = true;
    defaults.setCloudSwitchHandler([&](bool on) { storedWhenTold = defaults.enableiCloud() == on; });
    defaults.setEnableiCloud(true);
    EXPECT_FALSE(storedWhenTold);
    EXPECT_TRUE(defaults.enableiCloud());
}

TEST(UserDefaultsNames, EnumerationNamesAndUnknownValues)
{
    EXPECT_EQ(ZDUserDefaults::stringFromSortMethod(SortBySnippetsCount), QStringLiteral("SortBySnippetsCount"));
    EXPECT_EQ(ZDUserDefaults::stringFromSortOrder(12), QStringLiteral("Ascending"));
    EXPECT_EQ(ZDUserDefaults::stringFromDefaultSnippetsMode(1), QStringLiteral("Custom"));
    EXPECT_EQ(ZDUserDefaults::stringFromPrimaryAction(2), QStringLiteral("OpenInMainWindow"));
    EXPECT_EQ(ZDUserDefaults::stringFromPreviewerMode(0), QStringLiteral("PreviewOnly"));
    EXPECT_TRUE(ZDUserDefaults::stringFromSortMethod(0).isNull());
    EXPECT_TRUE(ZDUserDefaults::stringFromSortOrder(1).isNull());
}

TEST_F(UserDefaultsTest, SnapshotPrintsRawValuesThenDerivedNames)
{
    defaults.setFontCatalog({[](const QString &f) { return f == QLatin1String("Consolas"); }, {}});
    storeRaw(K::WrapIndentSize, QStringLiteral("not a number"));
    defaults.setSnippetsSortMethod(SortByName);
    defaults.setAssistantPrimaryAction(9);
    const QMap<QString, QString> snapshot = defaults.allPreferences();

    EXPECT_EQ(snapshot.value(K::MenubarShortcut), QStringLiteral("nil"));
    EXPECT_EQ(snapshot.value(K::AssistantTheme), QStringLiteral("nil"));
    EXPECT_EQ(snapshot.value(K::UseSoftWrap), QStringLiteral("YES"));
    EXPECT_EQ(snapshot.value(K::LaunchAtLogin), QStringLiteral("NO"));
    EXPECT_EQ(snapshot.value(K::TabSize), QStringLiteral("4"));
    EXPECT_EQ(snapshot.value(K::EditorLineHeightMultiple), QStringLiteral("1"));
    EXPECT_EQ(snapshot.value(K::WrapIndentSize), QStringLiteral("ERROR: cannot decode"));
    EXPECT_TRUE(snapshot.value(K::ActiveLanguages).startsWith(QStringLiteral("TextLexer, PhpLexer, BashLexer")));
    EXPECT_EQ(snapshot.value(QStringLiteral("User EditorFont_Name")), QStringLiteral("Consolas"));
    EXPECT_EQ(snapshot.value(QStringLiteral("User EditorFont_PointSize")), QStringLiteral("12"));
    EXPECT_EQ(snapshot.value(K::SnippetsSortMethod), QStringLiteral("SortByName"));
    EXPECT_EQ(snapshot.value(K::SnippetsSortOrder), QStringLiteral("Descending"));
    EXPECT_EQ(snapshot.value(K::PreviewerMode), QStringLiteral("SideBySide"));
    EXPECT_FALSE(snapshot.contains(K::AssistantPrimaryAction)); // 9 has no name
    EXPECT_EQ(snapshot.value(QStringLiteral("User SystemAppearance")), QStringLiteral("Aqua"));
    EXPECT_EQ(snapshot.size(), 43 + 2 + 6 + 1);
}
