#pragma once

#include <QColor>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QTextCharFormat>

#include <memory>
#include <mutex>

class ZDThemeRegistry;
class ZDUserDefaults;

/// Colours of the window's themed parts, for the application shell.
enum class ZDWindowColor
{
    SectionDivider,
    SubsectionDivider,
    ItemDivider,
    ControlAccent,
    CategoryBackground,
    CategoryHighlightInactive,
    CategoryGroupText,
    CategoryBadgeBackground,
    FilelistBackground,
    FilelistHighlightInactive,
    FilelistPrimaryText,
    FilelistSecondaryText,
    FilelistPrimaryTextHighlight,
    FilelistSecondaryTextHighlight,
    ToolbarDividers,
    ControlText,
    InactiveControlText,
    ToolbarBackground,
    ToolbarStandaloneWindowBackground,
    InactiveSegmentBackground,
    ActiveSegmentBackground,
    SnippetTitle,
    TagBorder,
    TagBorderHighlight,
    TagFill,
    TagFillHighlight,
    TagTitle,
    TagTitleHighlight,
    AssistantBackground,
    AssistantHighlightInactive,
    AssistantToolbarBackground,
    AssistantDivider,
    AssistantPreviewOutline,
    SearchTokenNameBackground,
    SearchTokenName,
    SearchTokenValueBackground,
    SearchTokenValue,
    SearchTokenNameBackgroundHighlight,
    SearchTokenNameHighlight,
    SearchTokenValueBackgroundHighlight,
    SearchTokenValueHighlight,
};

/// An editor colour theme: the colour of every Pygments token type, the editor's base colours
/// (background, text, caret, selection, invisibles, gutter, links) and the window's colours.
///
/// A theme's dictionary maps token type names without "Token." ("Comment.Single") to "#RRGGBB"
/// or to "" (no colour of its own). `colorForType` walks up the type's parents until it finds a
/// colour, so a theme colours a family by its root. Themes are immutable and safe to share.
class ZDEditorTheme
{
public:
    virtual ~ZDEditorTheme() = default;

    /// The theme names offered to the user.
    static QStringList availableThemes();
    /// The theme of that exact name, or null.
    static std::shared_ptr<const ZDEditorTheme> themeNamed(const QString &name);
    /// The theme of the preference "User EditorTheme"; the default theme when it names none.
    static std::shared_ptr<const ZDEditorTheme> currentTheme(const ZDUserDefaults &defaults);
    /// Lets the preferences check theme names against this list.
    static const ZDThemeRegistry &registry();
    static void registerWithDefaults(ZDUserDefaults &defaults);

    virtual QString name() const { return QStringLiteral("Invalid name"); }
    virtual bool isDark() const { return false; }
    /// Name of the theme's preview image resource; empty for none.
    virtual QString previewImageName() const { return {}; }
    bool isEqual(const ZDEditorTheme &other) const { return name() == other.name(); }

    // Token colours.
    /// Every known token type mapped to "".
    static const QHash<QString, QString> &baseColorDictionary();
    virtual QHash<QString, QString> colorDictionary() const { return baseColorDictionary(); }
    /// The colour of a token type ("Token.Keyword.Type" or "Keyword.Type"), by its longest
    /// coloured prefix; the foreground colour when none is coloured.
    QColor colorForType(const QString &type) const;
    /// "Keyword.Type" -> "Keyword"; empty when there is no parent.
    static QString parentTypeOfType(const QString &type);

    // Base colours of the editor.
    virtual QColor backgroundColor() const { return QColor(0xFF, 0xFF, 0xFF); }
    virtual QColor foregroundColor() const { return QColor(0, 0, 0); }
    virtual QColor caretColor() const { return foregroundColor(); }
    virtual QColor invisibleCharacterColor() const { return blend(0.3); }
    virtual QColor selectedTextBackgroundColor() const { return blend(0.2); }
    QTextCharFormat selectedTextAttributes() const;
    virtual QColor linkTextColor() const { return editorTintColor(); }
    virtual QColor linkUnderlineColor() const { return linkTextColor(); }
    QTextCharFormat linkTextAttributes() const;
    virtual QColor gutterTextColor() const { return blend(0.45); }
    virtual QColor markdownCodeHighlightBackgroundColor() const { return blend(0.07); }
    virtual QColor printBackgroundColor() const { return QColor(0xFF, 0xFF, 0xFF); }
    virtual QColor editorTintColor() const { return QColor(0x1E, 0x6F, 0xD9); }

    // Window colours.
    virtual QColor windowColor(ZDWindowColor role) const;
    virtual bool allowsSidebarVibrancy() const { return false; }

protected:
    /// The background moved towards the foreground by `amount` (0..1).
    QColor blend(double amount) const;

private:
    mutable std::once_flag m_colorDictOnce;
    mutable QHash<QString, QString> m_colorDict;
};
