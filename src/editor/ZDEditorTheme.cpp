#include "ZDEditorTheme.h"

#include "ZDEditorThemes.h"
#include "ZDUserDefaults.h"

#include <QBrush>

namespace {
class ThemeRegistry : public ZDThemeRegistry
{
public:
    bool hasThemeNamed(const QString &name) const override
    {
        return ZDEditorTheme::themeNamed(name) != nullptr;
    }
};

const QString kDefaultThemeName = QStringLiteral("Material Light");
} // namespace

QStringList ZDEditorTheme::availableThemes()
{
    QStringList names{QStringLiteral("Xcode"),
                      QStringLiteral("Tomorrow"),
                      QStringLiteral("Tomorrow Night"),
                      QStringLiteral("Tomorrow Night 80s"),
                      QStringLiteral("Solarized Light"),
                      QStringLiteral("Solarized Dark"),
                      QStringLiteral("Spacegray"),
                      QStringLiteral("CodeRunner"),
                      QStringLiteral("Dusk"),
                      QStringLiteral("Monokai"),
                      QStringLiteral("Material Light"),
                      QStringLiteral("One Dark")};
    if (MojaveDarkEditorTheme::isSupported())
        names.append(QStringLiteral("Mojave Dark"));
    return names;
}

std::shared_ptr<const ZDEditorTheme> ZDEditorTheme::themeNamed(const QString &name)
{
    static const QHash<QString, std::function<std::shared_ptr<const ZDEditorTheme>()>> factories{
        {QStringLiteral("Xcode"), [] { return std::make_shared<ZDXcodeEditorTheme>(); }},
        {QStringLiteral("Tomorrow"), [] { return std::make_shared<ZDTomorrowEditorTheme>(); }},
        {QStringLiteral("Tomorrow Night"), [] { return std::make_shared<ZDTomorrowNightEditorTheme>(); }},
        {QStringLiteral("Tomorrow Night 80s"),
         [] { return std::make_shared<ZDTomorrowNightEightiesEditorTheme>(); }},
        {QStringLiteral("Solarized Light"), [] { return std::make_shared<ZDSolarizedLightEditorTheme>(); }},
        {QStringLiteral("Solarized Dark"), [] { return std::make_shared<ZDSolarizedDarkEditorTheme>(); }},
        {QStringLiteral("Spacegray"), [] { return std::make_shared<ZDSpaceGrayEditorTheme>(); }},
        {QStringLiteral("CodeRunner"), [] { return std::make_shared<ZDCodeRunnerEditorTheme>(); }},
        {QStringLiteral("Dusk"), [] { return std::make_shared<ZDDuskEditorTheme>(); }},
        {QStringLiteral("Monokai"), [] { return std::make_shared<ZDMonokaiEditorTheme>(); }},
        {QStringLiteral("Material Light"), [] { return std::make_shared<ZDMaterialEditorTheme>(); }},
        {QStringLiteral("One Dark"), [] { return std::make_shared<ZDOneDarkEditorTheme>(); }},
        {QStringLiteral("Mojave Dark"),
         []() -> std::shared_ptr<const ZDEditorTheme> {
             if (MojaveDarkEditorTheme::isSupported())
                 return std::make_shared<MojaveDarkEditorTheme>();
             return std::make_shared<ZDOneDarkEditorTheme>();
         }},
    };
    const auto factory = factories.constFind(name);
    return factory == factories.constEnd() ? nullptr : factory.value()();
}

std::shared_ptr<const ZDEditorTheme> ZDEditorTheme::currentTheme(const ZDUserDefaults &defaults)
{
    if (auto theme = themeNamed(defaults.editorTheme()))
        return theme;
    return themeNamed(kDefaultThemeName);
}

const ZDThemeRegistry &ZDEditorTheme::registry()
{
    static const ThemeRegistry registry;
    return registry;
}

void ZDEditorTheme::registerWithDefaults(ZDUserDefaults &defaults)
{
    defaults.setThemeRegistry(&registry());
}

// Token colours ---------------------------------------------------------------------------------

const QHash<QString, QString> &ZDEditorTheme::baseColorDictionary()
{
    static const QHash<QString, QString> dictionary = [] {
        QHash<QString, QString> types;
        for (const char *type : {"Text",
                                 "Whitespace",
                                 "Error",
                                 "Other",
                                 "Comment",
                                 "Comment.Multiline",
                                 "Comment.Preproc",
                                 "Comment.PreprocFile",
                                 "Comment.Single",
                                 "Comment.Special",
                                 "Keyword",
                                 "Keyword.Constant",
                                 "Keyword.Declaration",
                                 "Keyword.Namespace",
                                 "Keyword.Pseudo",
                                 "Keyword.Reserved",
                                 "Keyword.Type",
                                 "Operator",
                                 "Operator.Word",
                                 "Punctuation",
                                 "Name",
                                 "Name.Attribute",
                                 "Name.Builtin",
                                 "Name.Builtin.Pseudo",
                                 "Name.Class",
                                 "Name.Constant",
                                 "Name.Decorator",
                                 "Name.Entity",
                                 "Name.Exception",
                                 "Name.Function",
                                 "Name.Property",
                                 "Name.Label",
                                 "Name.Namespace",
                                 "Name.Other",
                                 "Name.Tag",
                                 "Name.Variable",
                                 "Name.Variable.Class",
                                 "Name.Variable.Global",
                                 "Name.Variable.Instance",
                                 "Number",
                                 "Number.Float",
                                 "Number.Hex",
                                 "Number.Integer",
                                 "Number.Integer.Long",
                                 "Number.Oct",
                                 "Literal",
                                 "Literal.Date",
                                 "Literal.Number",
                                 "Literal.Number.Integer",
                                 "Literal.String",
                                 "Literal.String.Regex",
                                 "Literal.String.Escape",
                                 "Literal.String.Backtick",
                                 "Literal.String.Heredoc",
                                 "Literal.String.Symbol",
                                 "Literal.String.Char",
                                 "Literal.String.Doc",
                                 "Literal.String.Interpol",
                                 "Literal.String.Double",
                                 "Literal.String.Single",
                                 "Literal.String.Other",
                                 "Generic",
                                 "Generic.Deleted",
                                 "Generic.Emph",
                                 "Generic.Error",
                                 "Generic.Heading",
                                 "Generic.Inserted",
                                 "Generic.Output",
                                 "Generic.Prompt",
                                 "Generic.Strong",
                                 "Generic.Subheading",
                                 "Generic.Traceback"})
            types.insert(QString::fromLatin1(type), QString());
        return types;
    }();
    return dictionary;
}

QString ZDEditorTheme::parentTypeOfType(const QString &type)
{
    const qsizetype dot = type.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : type.left(dot);
}

QColor ZDEditorTheme::colorForType(const QString &type) const
{
    std::call_once(m_colorDictOnce, [this] { m_colorDict = colorDictionary(); });
    QString name = type;
    name.remove(QStringLiteral("Token."));
    while (!name.isEmpty()) {
        const QString value = m_colorDict.value(name);
        if (!value.isEmpty())
            return QColor::fromString(value);
        name = parentTypeOfType(name);
    }
    return foregroundColor();
}

// Base and window colours -----------------------------------------------------------------------

QColor ZDEditorTheme::blend(double amount) const
{
    const QColor from = backgroundColor();
    const QColor to = foregroundColor();
    auto mix = [amount](int a, int b) { return int(a + (b - a) * amount + 0.5); };
    return QColor(mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue()));
}

QTextCharFormat ZDEditorTheme::selectedTextAttributes() const
{
    QTextCharFormat format;
    format.setBackground(selectedTextBackgroundColor());
    return format;
}

QTextCharFormat ZDEditorTheme::linkTextAttributes() const
{
    QTextCharFormat format;
    format.setForeground(linkTextColor());
    format.setFontUnderline(true);
    format.setUnderlineColor(linkUnderlineColor());
    format.setAnchor(true);
    return format;
}

QColor ZDEditorTheme::windowColor(ZDWindowColor role) const
{
    // Derived from the editor's own colours so every theme gets a consistent window.
    const QColor accent = editorTintColor();
    const QColor onAccent = QColor(0xFF, 0xFF, 0xFF);
    switch (role) {
    case ZDWindowColor::SectionDivider:
        return blend(0.18);
    case ZDWindowColor::SubsectionDivider:
        return blend(0.12);
    case ZDWindowColor::ItemDivider:
        return blend(0.08);
    case ZDWindowColor::ControlAccent:
        return accent;
    case ZDWindowColor::CategoryBackground:
        return blend(0.05);
    case ZDWindowColor::CategoryHighlightInactive:
        return blend(0.15);
    case ZDWindowColor::CategoryGroupText:
        return blend(0.5);
    case ZDWindowColor::CategoryBadgeBackground:
        return blend(0.2);
    case ZDWindowColor::FilelistBackground:
        return backgroundColor();
    case ZDWindowColor::FilelistHighlightInactive:
        return blend(0.12);
    case ZDWindowColor::FilelistPrimaryText:
        return foregroundColor();
    case ZDWindowColor::FilelistSecondaryText:
        return blend(0.55);
    case ZDWindowColor::FilelistPrimaryTextHighlight:
        return onAccent;
    case ZDWindowColor::FilelistSecondaryTextHighlight:
        return onAccent;
    case ZDWindowColor::ToolbarDividers:
        return blend(0.15);
    case ZDWindowColor::ControlText:
        return foregroundColor();
    case ZDWindowColor::InactiveControlText:
        return blend(0.45);
    case ZDWindowColor::ToolbarBackground:
        return blend(0.04);
    case ZDWindowColor::ToolbarStandaloneWindowBackground:
        return blend(0.06);
    case ZDWindowColor::InactiveSegmentBackground:
        return blend(0.1);
    case ZDWindowColor::ActiveSegmentBackground:
        return blend(0.22);
    case ZDWindowColor::SnippetTitle:
        return foregroundColor();
    case ZDWindowColor::TagBorder:
        return blend(0.3);
    case ZDWindowColor::TagBorderHighlight:
        return accent;
    case ZDWindowColor::TagFill:
        return blend(0.08);
    case ZDWindowColor::TagFillHighlight:
        return accent;
    case ZDWindowColor::TagTitle:
        return foregroundColor();
    case ZDWindowColor::TagTitleHighlight:
        return onAccent;
    case ZDWindowColor::AssistantBackground:
        return backgroundColor();
    case ZDWindowColor::AssistantHighlightInactive:
        return blend(0.12);
    case ZDWindowColor::AssistantToolbarBackground:
        return blend(0.05);
    case ZDWindowColor::AssistantDivider:
        return blend(0.15);
    case ZDWindowColor::AssistantPreviewOutline:
        return blend(0.2);
    case ZDWindowColor::SearchTokenNameBackground:
        return blend(0.25);
    case ZDWindowColor::SearchTokenName:
        return foregroundColor();
    case ZDWindowColor::SearchTokenValueBackground:
        return blend(0.12);
    case ZDWindowColor::SearchTokenValue:
        return foregroundColor();
    case ZDWindowColor::SearchTokenNameBackgroundHighlight:
        return accent.darker(120);
    case ZDWindowColor::SearchTokenNameHighlight:
        return onAccent;
    case ZDWindowColor::SearchTokenValueBackgroundHighlight:
        return accent;
    case ZDWindowColor::SearchTokenValueHighlight:
        return onAccent;
    }
    return foregroundColor();
}
