#include "ZDEditorThemes.h"
#include "ZDUserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
QString hex(const QColor &color)
{
    return color.name(QColor::HexRgb).toUpper();
}
} // namespace

TEST(EditorThemeTest, XcodeColoursAndInheritance)
{
    const ZDXcodeEditorTheme xcode;
    EXPECT_EQ(xcode.colorDictionary().size(), 72);
    EXPECT_EQ(hex(xcode.backgroundColor()), QStringLiteral("#FFFFFF"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Token.Comment"))), QStringLiteral("#008312"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Token.Comment.Single"))), QStringLiteral("#008312"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Token.Comment.PreprocFile"))),
              QStringLiteral("#CF3125"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Keyword.Type"))), QStringLiteral("#B833A1"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Token.Literal.String.Escape"))),
              QStringLiteral("#CF3125"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Token.Literal.String.Char"))),
              QStringLiteral("#2934D4"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Token.Literal.Number.Float"))),
              QStringLiteral("#2934D4"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Token.Name.Variable.Instance"))),
              QStringLiteral("#6F41A7"));
    EXPECT_EQ(hex(xcode.colorForType(QStringLiteral("Token.Generic.Strong"))), QStringLiteral("#3D237F"));
}

TEST(EditorThemeTest, ColourOfATypeFallsBackThroughItsParents)
{
    const ZDOneDarkEditorTheme theme; // colours Name and Name.Function differently
    EXPECT_EQ(hex(theme.colorForType(QStringLiteral("Token.Name.Function.Magic"))),
              QStringLiteral("#61AFEF"));
    EXPECT_EQ(hex(theme.colorForType(QStringLiteral("Token.Name.Unknown"))), QStringLiteral("#E06C75"));
    EXPECT_EQ(theme.colorForType(QStringLiteral("Token")), theme.foregroundColor());
    EXPECT_EQ(theme.colorForType(QStringLiteral("Nothing.Known")), theme.foregroundColor());
    EXPECT_EQ(ZDEditorTheme::parentTypeOfType(QStringLiteral("Keyword.Type")), QStringLiteral("Keyword"));
    EXPECT_EQ(ZDEditorTheme::parentTypeOfType(QStringLiteral("Keyword")), QString());

    const ZDEditorTheme base; // no colours at all
    EXPECT_EQ(base.name(), QStringLiteral("Invalid name"));
    EXPECT_EQ(base.colorForType(QStringLiteral("Token.Keyword")), base.foregroundColor());
}

TEST(EditorThemeTest, EveryThemeIsCompleteAndReadable)
{
    const QStringList names = ZDEditorTheme::availableThemes();
    EXPECT_EQ(names.size(), 12); // no desktop palette in this test program
    EXPECT_FALSE(names.contains(QStringLiteral("Mojave Dark")));
    for (const QString &name : names) {
        SCOPED_TRACE(name.toStdString());
        const auto theme = ZDEditorTheme::themeNamed(name);
        ASSERT_TRUE(theme);
        EXPECT_EQ(theme->name(), name);
        const QHash<QString, QString> dictionary = theme->colorDictionary();
        for (auto it = ZDEditorTheme::baseColorDictionary().cbegin();
             it != ZDEditorTheme::baseColorDictionary().cend(); ++it)
            EXPECT_TRUE(dictionary.contains(it.key())) << it.key().toStdString();
        for (auto it = dictionary.cbegin(); it != dictionary.cend(); ++it) {
            if (!it.value().isEmpty()) {
                EXPECT_TRUE(QColor::fromString(it.value()).isValid()) << it.key().toStdString();
            }
        }
        // Text must stand out from the background, and the theme's darkness must be true.
        const int background = theme->backgroundColor().lightness();
        EXPECT_GT(std::abs(background - theme->foregroundColor().lightness()), 100);
        EXPECT_GT(std::abs(background - theme->colorForType(QStringLiteral("Token.Keyword")).lightness()),
                  40);
        EXPECT_EQ(theme->isDark(), background < 128);
        EXPECT_TRUE(theme->windowColor(ZDWindowColor::SearchTokenValueHighlight).isValid());
    }
    EXPECT_FALSE(ZDEditorTheme::themeNamed(QStringLiteral("xcode")));
    EXPECT_EQ(ZDEditorTheme::themeNamed(QStringLiteral("Mojave Dark"))->name(), QStringLiteral("One Dark"));
}

TEST(EditorThemeTest, CurrentThemeFollowsThePreferences)
{
    QTemporaryDir dir;
    ZDUserDefaults defaults(dir.filePath(QStringLiteral("prefs.ini")));
    ZDEditorTheme::registerWithDefaults(defaults);
    EXPECT_EQ(ZDEditorTheme::currentTheme(defaults)->name(), QStringLiteral("Material Light"));
    defaults.setEditorTheme(QStringLiteral("Monokai"));
    EXPECT_EQ(ZDEditorTheme::currentTheme(defaults)->name(), QStringLiteral("Monokai"));
    defaults.setEditorTheme(QStringLiteral("No Such Theme"));
    EXPECT_EQ(defaults.editorTheme(), QString());
    EXPECT_EQ(ZDEditorTheme::currentTheme(defaults)->name(), QStringLiteral("Material Light"));
}
