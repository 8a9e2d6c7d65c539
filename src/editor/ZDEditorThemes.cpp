// The editor's themes. Each colours a few roots of the token tree and lets the rest inherit;
// the palettes are those of the public colour schemes of the same names.
#include "ZDEditorThemes.h"

#include <QGuiApplication>
#include <QPalette>

namespace {
QColor rgb(const char *hex)
{
    return QColor::fromString(QLatin1String(hex));
}

using Tokens = QList<QPair<QString, QString>>;

Tokens tokens(std::initializer_list<std::pair<const char *, const char *>> entries)
{
    Tokens list;
    for (const auto &[type, color] : entries)
        list.append({QString::fromLatin1(type), QString::fromLatin1(color)});
    return list;
}

ZDEditorThemeDescription describe(const char *name, bool dark, const char *image, const char *background,
                                  const char *foreground, const char *selection, const char *invisibles,
                                  const char *tint, Tokens tokenColors)
{
    ZDEditorThemeDescription d;
    d.name = QString::fromLatin1(name);
    d.dark = dark;
    d.previewImageName = QString::fromLatin1(image);
    d.background = rgb(background);
    d.foreground = rgb(foreground);
    d.caret = d.foreground;
    d.selection = rgb(selection);
    d.invisibles = rgb(invisibles);
    d.gutterText = d.invisibles;
    d.tint = rgb(tint);
    d.tokenColors = std::move(tokenColors);
    return d;
}

// The Tomorrow family shares one mapping over its eight-colour palettes.
Tokens tomorrowTokens(const char *comment, const char *red, const char *orange, const char *yellow,
                      const char *green, const char *aqua, const char *blue, const char *purple,
                      const char *foreground)
{
    return tokens({{"Text", foreground},
                   {"Comment", comment},
                   {"Keyword", purple},
                   {"Keyword.Constant", orange},
                   {"Keyword.Namespace", aqua},
                   {"Keyword.Type", yellow},
                   {"Operator", aqua},
                   {"Punctuation", foreground},
                   {"Name", foreground},
                   {"Name.Attribute", blue},
                   {"Name.Class", yellow},
                   {"Name.Constant", red},
                   {"Name.Decorator", aqua},
                   {"Name.Exception", red},
                   {"Name.Function", blue},
                   {"Name.Namespace", yellow},
                   {"Name.Tag", aqua},
                   {"Name.Variable", red},
                   {"Number", orange},
                   {"Literal", orange},
                   {"Literal.Number", orange},
                   {"Literal.String", green},
                   {"Literal.String.Escape", orange},
                   {"Literal.String.Doc", comment},
                   {"Generic.Deleted", red},
                   {"Generic.Inserted", green},
                   {"Generic.Heading", blue},
                   {"Generic.Subheading", aqua},
                   {"Generic.Emph", purple},
                   {"Generic.Strong", orange},
                   {"Generic.Prompt", comment},
                   {"Error", red}});
}

Tokens solarizedTokens(const char *comment, const char *body, const char *operatorColor)
{
    return tokens({{"Text", body},
                   {"Comment", comment},
                   {"Comment.Preproc", "#D33682"},
                   {"Comment.PreprocFile", comment},
                   {"Keyword", "#859900"},
                   {"Keyword.Constant", "#2AA198"},
                   {"Keyword.Declaration", "#2AA198"},
                   {"Keyword.Namespace", "#CB4B16"},
                   {"Keyword.Type", "#B58900"},
                   {"Operator", operatorColor},
                   {"Operator.Word", "#859900"},
                   {"Name", body},
                   {"Name.Builtin", "#268BD2"},
                   {"Name.Class", "#268BD2"},
                   {"Name.Constant", "#268BD2"},
                   {"Name.Decorator", "#268BD2"},
                   {"Name.Entity", "#268BD2"},
                   {"Name.Exception", "#268BD2"},
                   {"Name.Function", "#268BD2"},
                   {"Name.Label", "#268BD2"},
                   {"Name.Namespace", "#268BD2"},
                   {"Name.Tag", "#268BD2"},
                   {"Name.Variable", "#268BD2"},
                   {"Number", "#2AA198"},
                   {"Literal.Number", "#2AA198"},
                   {"Literal.String", "#2AA198"},
                   {"Literal.String.Doc", comment},
                   {"Literal.String.Regex", "#CB4B16"},
                   {"Generic.Deleted", "#DC322F"},
                   {"Generic.Error", "#DC322F"},
                   {"Generic.Inserted", "#859900"},
                   {"Generic.Heading", "#268BD2"},
                   {"Generic.Strong", "#CB4B16"},
                   {"Generic.Emph", "#6C71C4"},
                   {"Generic.Prompt", "#268BD2"},
                   {"Error", "#DC322F"}});
}

Tokens oneDarkTokens()
{
    return tokens({{"Text", "#ABB2BF"},
                   {"Comment", "#7F848E"},
                   {"Keyword", "#C678DD"},
                   {"Keyword.Constant", "#E5C07B"},
                   {"Keyword.Type", "#E5C07B"},
                   {"Operator", "#56B6C2"},
                   {"Punctuation", "#ABB2BF"},
                   {"Name", "#E06C75"},
                   {"Name.Builtin", "#E5C07B"},
                   {"Name.Class", "#E5C07B"},
                   {"Name.Function", "#61AFEF"},
                   {"Name.Decorator", "#61AFEF"},
                   {"Name.Namespace", "#ABB2BF"},
                   {"Number", "#D19A66"},
                   {"Literal", "#D19A66"},
                   {"Literal.Number", "#D19A66"},
                   {"Literal.String", "#98C379"},
                   {"Literal.String.Escape", "#56B6C2"},
                   {"Generic.Deleted", "#E06C75"},
                   {"Generic.Inserted", "#98C379"},
                   {"Generic.Heading", "#E06C75"},
                   {"Generic.Emph", "#C678DD"},
                   {"Generic.Strong", "#D19A66"},
                   {"Error", "#E06C75"}});
}
} // namespace

QHash<QString, QString> ZDDescribedEditorTheme::colorDictionary() const
{
    QHash<QString, QString> dictionary = baseColorDictionary();
    for (const auto &[type, color] : m_d.tokenColors)
        dictionary.insert(type, color);
    return dictionary;
}

ZDXcodeEditorTheme::ZDXcodeEditorTheme()
    : ZDDescribedEditorTheme(describe("Xcode", false, "ThemePreviewXcode", "#FFFFFF", "#000000", "#B4D8FD",
                                      "#BFBFBF", "#0E0EFF", {}))
{
}

QHash<QString, QString> ZDXcodeEditorTheme::colorDictionary() const
{
    static const QHash<QString, QString> dictionary = [] {
        QHash<QString, QString> d = baseColorDictionary();
        const QList<QPair<QString, QStringList>> colored{
            {"#000000", {"Text", "Error", "Other", "Operator", "Punctuation", "Name", "Name.Function"}},
            {"#008312", {"Comment", "Literal.String.Doc"}},
            {"#77492D", {"Comment.Preproc"}},
            {"#CF3125", {"Comment.PreprocFile", "Literal.String"}},
            {"#2934D4", {"Comment.Special", "Number", "Literal", "Literal.Number", "Literal.String.Char"}},
            {"#B833A1", {"Keyword", "Name.Builtin", "Name.Tag", "Generic.Heading"}},
            {"#957D3A", {"Name.Attribute"}},
            {"#6F41A7", {"Name.Builtin.Pseudo", "Name.Variable", "Generic.Emph"}},
            {"#508187", {"Name.Class"}},
            {"#3D237F", {"Name.Label", "Generic.Strong"}},
        };
        for (const auto &[color, types] : colored) {
            for (const QString &type : types)
                d.insert(type, color);
        }
        return d;
    }();
    return dictionary;
}

ZDTomorrowEditorTheme::ZDTomorrowEditorTheme()
    : ZDDescribedEditorTheme(describe("Tomorrow", false, "ThemePreviewTomorrow", "#FFFFFF", "#4D4D4C",
                                      "#D6D6D6", "#D6D6D6", "#4271AE",
                                      tomorrowTokens("#8E908C", "#C82829", "#F5871F", "#EAB700", "#718C00",
                                                     "#3E999F", "#4271AE", "#8959A8", "#4D4D4C")))
{
}

ZDTomorrowNightEditorTheme::ZDTomorrowNightEditorTheme()
    : ZDDescribedEditorTheme(describe("Tomorrow Night", true, "ThemePreviewTomorrowNight", "#1D1F21",
                                      "#C5C8C6", "#373B41", "#4B4E55", "#81A2BE",
                                      tomorrowTokens("#969896", "#CC6666", "#DE935F", "#F0C674", "#B5BD68",
                                                     "#8ABEB7", "#81A2BE", "#B294BB", "#C5C8C6")))
{
}

ZDTomorrowNightEightiesEditorTheme::ZDTomorrowNightEightiesEditorTheme()
    : ZDDescribedEditorTheme(describe("Tomorrow Night 80s", true, "ThemePreviewTomorrowNight80s", "#2D2D2D",
                                      "#CCCCCC", "#515151", "#515151", "#6699CC",
                                      tomorrowTokens("#999999", "#F2777A", "#F99157", "#FFCC66", "#99CC99",
                                                     "#66CCCC", "#6699CC", "#CC99CC", "#CCCCCC")))
{
}

ZDSolarizedLightEditorTheme::ZDSolarizedLightEditorTheme()
    : ZDDescribedEditorTheme(describe("Solarized Light", false, "ThemePreviewSolarizedLight", "#FDF6E3",
                                      "#657B83", "#EEE8D5", "#93A1A1", "#268BD2",
                                      solarizedTokens("#93A1A1", "#657B83", "#93A1A1")))
{
}

ZDSolarizedDarkEditorTheme::ZDSolarizedDarkEditorTheme()
    : ZDDescribedEditorTheme(describe("Solarized Dark", true, "ThemePreviewSolarizedDark", "#002B36",
                                      "#839496", "#073642", "#586E75", "#268BD2",
                                      solarizedTokens("#586E75", "#839496", "#586E75")))
{
}

ZDSpaceGrayEditorTheme::ZDSpaceGrayEditorTheme()
    : ZDDescribedEditorTheme(describe("Spacegray", true, "ThemePreviewSpacegray", "#2B303B", "#C0C5CE",
                                      "#4F5B66", "#65737E", "#8FA1B3",
                                      tokens({{"Text", "#C0C5CE"},
                                              {"Comment", "#65737E"},
                                              {"Keyword", "#B48EAD"},
                                              {"Keyword.Constant", "#D08770"},
                                              {"Keyword.Type", "#EBCB8B"},
                                              {"Operator", "#C0C5CE"},
                                              {"Punctuation", "#C0C5CE"},
                                              {"Name", "#C0C5CE"},
                                              {"Name.Attribute", "#D08770"},
                                              {"Name.Builtin", "#96B5B4"},
                                              {"Name.Class", "#EBCB8B"},
                                              {"Name.Constant", "#D08770"},
                                              {"Name.Decorator", "#8FA1B3"},
                                              {"Name.Function", "#8FA1B3"},
                                              {"Name.Tag", "#BF616A"},
                                              {"Name.Variable", "#BF616A"},
                                              {"Number", "#D08770"},
                                              {"Literal", "#D08770"},
                                              {"Literal.Number", "#D08770"},
                                              {"Literal.String", "#A3BE8C"},
                                              {"Literal.String.Escape", "#96B5B4"},
                                              {"Literal.String.Regex", "#96B5B4"},
                                              {"Generic.Deleted", "#BF616A"},
                                              {"Generic.Inserted", "#A3BE8C"},
                                              {"Generic.Heading", "#8FA1B3"},
                                              {"Generic.Emph", "#B48EAD"},
                                              {"Generic.Strong", "#D08770"},
                                              {"Error", "#BF616A"}})))
{
}

ZDCodeRunnerEditorTheme::ZDCodeRunnerEditorTheme()
    : ZDDescribedEditorTheme(describe("CodeRunner", false, "ThemePreviewCodeRunner", "#FFFFFF", "#000000",
                                      "#B5D5FF", "#C0C0C0", "#0000FF",
                                      tokens({{"Text", "#000000"},
                                              {"Comment", "#8E8E93"},
                                              {"Comment.Preproc", "#A8577F"},
                                              {"Keyword", "#3E4FD6"},
                                              {"Keyword.Type", "#6B3FA0"},
                                              {"Operator", "#000000"},
                                              {"Name", "#000000"},
                                              {"Name.Builtin", "#6B3FA0"},
                                              {"Name.Class", "#2A7F8E"},
                                              {"Name.Function", "#1D6A96"},
                                              {"Name.Tag", "#3E4FD6"},
                                              {"Name.Attribute", "#8A5A1E"},
                                              {"Name.Variable", "#2A7F8E"},
                                              {"Number", "#1C00CF"},
                                              {"Literal", "#1C00CF"},
                                              {"Literal.Number", "#1C00CF"},
                                              {"Literal.String", "#C41A16"},
                                              {"Literal.String.Doc", "#8E8E93"},
                                              {"Generic.Heading", "#3E4FD6"},
                                              {"Generic.Emph", "#6B3FA0"},
                                              {"Generic.Strong", "#3E4FD6"},
                                              {"Generic.Deleted", "#C41A16"},
                                              {"Generic.Inserted", "#007400"},
                                              {"Error", "#C41A16"}})))
{
}

ZDDuskEditorTheme::ZDDuskEditorTheme()
    : ZDDescribedEditorTheme(describe("Dusk", true, "ThemePreviewDusk", "#1E2028", "#FFFFFF", "#4F5B93",
                                      "#5B6074", "#4EB0CC",
                                      tokens({{"Text", "#FFFFFF"},
                                              {"Comment", "#41B645"},
                                              {"Comment.Preproc", "#C67C48"},
                                              {"Comment.PreprocFile", "#DB2C38"},
                                              {"Keyword", "#B21889"},
                                              {"Operator", "#FFFFFF"},
                                              {"Name", "#FFFFFF"},
                                              {"Name.Builtin", "#00A0BE"},
                                              {"Name.Class", "#00A0BE"},
                                              {"Name.Function", "#83C057"},
                                              {"Name.Attribute", "#C67C48"},
                                              {"Name.Tag", "#B21889"},
                                              {"Name.Variable", "#83C057"},
                                              {"Number", "#786DC4"},
                                              {"Literal", "#786DC4"},
                                              {"Literal.Number", "#786DC4"},
                                              {"Literal.String", "#DB2C38"},
                                              {"Literal.String.Char", "#8B84CF"},
                                              {"Literal.String.Doc", "#41B645"},
                                              {"Generic.Heading", "#B21889"},
                                              {"Generic.Emph", "#00A0BE"},
                                              {"Generic.Strong", "#C67C48"},
                                              {"Error", "#DB2C38"}})))
{
}

ZDMonokaiEditorTheme::ZDMonokaiEditorTheme()
    : ZDDescribedEditorTheme(describe("Monokai", true, "ThemePreviewMonokai", "#272822", "#F8F8F2", "#49483E",
                                      "#75715E", "#A6E22E",
                                      tokens({{"Text", "#F8F8F2"},
                                              {"Error", "#960050"},
                                              {"Comment", "#75715E"},
                                              {"Keyword", "#66D9EF"},
                                              {"Keyword.Namespace", "#F92672"},
                                              {"Operator", "#F92672"},
                                              {"Punctuation", "#F8F8F2"},
                                              {"Name", "#F8F8F2"},
                                              {"Name.Attribute", "#A6E22E"},
                                              {"Name.Class", "#A6E22E"},
                                              {"Name.Constant", "#66D9EF"},
                                              {"Name.Decorator", "#A6E22E"},
                                              {"Name.Exception", "#A6E22E"},
                                              {"Name.Function", "#A6E22E"},
                                              {"Name.Other", "#A6E22E"},
                                              {"Name.Tag", "#F92672"},
                                              {"Number", "#AE81FF"},
                                              {"Literal", "#AE81FF"},
                                              {"Literal.Number", "#AE81FF"},
                                              {"Literal.Date", "#E6DB74"},
                                              {"Literal.String", "#E6DB74"},
                                              {"Literal.String.Escape", "#AE81FF"},
                                              {"Generic.Deleted", "#F92672"},
                                              {"Generic.Inserted", "#A6E22E"},
                                              {"Generic.Output", "#66D9EF"},
                                              {"Generic.Prompt", "#F92672"},
                                              {"Generic.Subheading", "#75715E"}})))
{
}

ZDMaterialEditorTheme::ZDMaterialEditorTheme()
    : ZDDescribedEditorTheme(describe("Material Light", false, "ThemePreviewMaterialLight", "#FAFAFA",
                                      "#546E7A", "#CCEAE7", "#B0BEC5", "#00BCD4",
                                      tokens({{"Text", "#546E7A"},
                                              {"Error", "#E53935"},
                                              {"Comment", "#90A4AE"},
                                              {"Keyword", "#7C4DFF"},
                                              {"Keyword.Constant", "#39ADB5"},
                                              {"Keyword.Namespace", "#39ADB5"},
                                              {"Keyword.Pseudo", "#39ADB5"},
                                              {"Operator", "#39ADB5"},
                                              {"Punctuation", "#39ADB5"},
                                              {"Name", "#546E7A"},
                                              {"Name.Attribute", "#7C4DFF"},
                                              {"Name.Builtin", "#6182B8"},
                                              {"Name.Builtin.Pseudo", "#39ADB5"},
                                              {"Name.Class", "#E2931D"},
                                              {"Name.Decorator", "#6182B8"},
                                              {"Name.Exception", "#E2931D"},
                                              {"Name.Function", "#6182B8"},
                                              {"Name.Namespace", "#E2931D"},
                                              {"Name.Property", "#E2931D"},
                                              {"Name.Tag", "#E53935"},
                                              {"Name.Variable", "#39ADB5"},
                                              {"Number", "#F76D47"},
                                              {"Literal", "#91B859"},
                                              {"Literal.Number", "#F76D47"},
                                              {"Literal.String", "#91B859"},
                                              {"Literal.String.Doc", "#90A4AE"},
                                              {"Literal.String.Escape", "#546E7A"},
                                              {"Literal.String.Regex", "#39ADB5"},
                                              {"Literal.String.Interpol", "#39ADB5"},
                                              {"Generic.Deleted", "#E53935"},
                                              {"Generic.Inserted", "#91B859"},
                                              {"Generic.Heading", "#91B859"},
                                              {"Generic.Subheading", "#39ADB5"},
                                              {"Generic.Emph", "#39ADB5"},
                                              {"Generic.Strong", "#E53935"},
                                              {"Generic.Prompt", "#E2931D"}})))
{
}

ZDOneDarkEditorTheme::ZDOneDarkEditorTheme()
    : ZDDescribedEditorTheme(describe("One Dark", true, "ThemePreviewOneDark", "#282C34", "#ABB2BF",
                                      "#3E4451", "#4B5263", "#61AFEF", oneDarkTokens()))
{
}

namespace {
ZDEditorThemeDescription desktopDescription()
{
    ZDEditorThemeDescription d = describe("Mojave Dark", true, "ThemePreviewMojaveDark", "#1E1E1E", "#DFDFDF",
                                          "#3F638B", "#5A5A5A", "#0A84FF", oneDarkTokens());
    if (MojaveDarkEditorTheme::isSupported()) {
        const QPalette palette = QGuiApplication::palette();
        d.background = palette.color(QPalette::Base);
        d.foreground = palette.color(QPalette::Text);
        d.caret = d.foreground;
        d.selection = palette.color(QPalette::Highlight);
        d.invisibles = palette.color(QPalette::PlaceholderText);
        d.gutterText = d.invisibles;
        d.tint = palette.color(QPalette::Highlight);
        d.tokenColors.prepend({QStringLiteral("Text"), d.foreground.name(QColor::HexRgb)});
    }
    return d;
}
} // namespace

MojaveDarkEditorTheme::MojaveDarkEditorTheme() : ZDDescribedEditorTheme(desktopDescription()) {}

bool MojaveDarkEditorTheme::isSupported()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr;
}
