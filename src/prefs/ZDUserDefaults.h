#pragma once

#include "ZDFontDescriptor.h"
#include "ZDPreferenceKeys.h"

#include <QDateTime>
#include <QObject>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>

class QSettings;

enum ZDSortMethod { SortByDateModified = 1, SortByDateCreated = 2, SortByName = 3, SortBySnippetsCount = 4 };
enum ZDSortOrder { SortOrderDescending = 11, SortOrderAscending = 12 };
enum ZDDefaultSnippetsMode { DefaultSnippetsModeLatest = 0, DefaultSnippetsModeCustom = 1 };
enum ZDPrimaryAction { PrimaryActionCopyToClipboard = 1, PrimaryActionOpenInMainWindow = 2 };
enum ZDPreviewerMode { PreviewerModePreviewOnly = 0, PreviewerModeSideBySide = 1 };

/// Resolves theme names for the preferences; the editor's theme list installs one.
class ZDThemeRegistry
{
public:
    virtual ~ZDThemeRegistry() = default;
    virtual bool hasThemeNamed(const QString &name) const = 0;
};

/// The user's settings: typed accessors over a per-user INI file with registered defaults and a
/// few cleaning rules, plus a printable snapshot for diagnostics. Each key reads its stored value
/// when there is one and its registered default otherwise.
class ZDUserDefaults : public QObject
{
    Q_OBJECT
public:
    enum class ValueType { Bool, Integer, UnsignedInteger, Double, String, StringList, Data, Map };

    /// Uses the given INI file; by default "Zandrio/Zandrio.ini" in the XDG config directory.
    explicit ZDUserDefaults(const QString &iniFilePath = defaultFilePath(), QObject *parent = nullptr);
    ~ZDUserDefaults() override;

    static QString defaultFilePath();
    static ZDUserDefaults *standardUserDefaults();
    static void install(ZDUserDefaults *defaults);

    /// Registers the defaults, in their fixed order. The constructor has already done it.
    void registerDefaultUserDefaults();
    /// The registered keys in registration order, with their default values.
    QList<QPair<QString, QVariant>> registeredDefaults() const;
    static ValueType valueType(const QString &key);

    QSettings *userDefaults() const { return m_settings.get(); }
    /// The stored value, else the registered default, else an invalid value. A stored value that
    /// cannot be read as the key's type is returned invalid with `decodable` false.
    QVariant objectForKey(const QString &key, bool *decodable = nullptr) const;
    bool hasStoredValue(const QString &key) const;
    void setObject(const QVariant &value, const QString &key);
    void removeObjectForKey(const QString &key);
    void synchronize();

    // Installed hooks.
    void setThemeRegistry(const ZDThemeRegistry *registry) { m_themeRegistry = registry; }
    void setFontCatalog(ZDFontCatalog catalog) { m_fontCatalog = std::move(catalog); }
    void setCloudSwitchHandler(std::function<void(bool)> handler) { m_cloudSwitchHandler = std::move(handler); }
    void setDarkAppearanceProvider(std::function<bool()> provider) { m_darkAppearance = std::move(provider); }

    // Sorting.
    int snippetsSortMethod() const { return intForKey(ZDPreferenceKeys::SnippetsSortMethod); }
    void setSnippetsSortMethod(int value) { setObject(value, ZDPreferenceKeys::SnippetsSortMethod); }
    int snippetsSortOrder() const { return intForKey(ZDPreferenceKeys::SnippetsSortOrder); }
    void setSnippetsSortOrder(int value) { setObject(value, ZDPreferenceKeys::SnippetsSortOrder); }
    int tagsSortMethod() const { return intForKey(ZDPreferenceKeys::TagsSortMethod); }
    void setTagsSortMethod(int value) { setObject(value, ZDPreferenceKeys::TagsSortMethod); }

    // Search.
    bool searchScopeTitleOnly() const { return boolForKey(ZDPreferenceKeys::SearchScopeTitleOnly); }
    void setSearchScopeTitleOnly(bool value) { setObject(value, ZDPreferenceKeys::SearchScopeTitleOnly); }
    bool searchUsesFuzzy() const { return boolForKey(ZDPreferenceKeys::FuzzySearch); }
    void setSearchUsesFuzzy(bool value) { setObject(value, ZDPreferenceKeys::FuzzySearch); }
    bool searchArrangeByRelevance() const { return boolForKey(ZDPreferenceKeys::SearchArrangeByRelevance); }
    void setSearchArrangeByRelevance(bool value) { setObject(value, ZDPreferenceKeys::SearchArrangeByRelevance); }
    bool searchIgnoresCase() const { return boolForKey(ZDPreferenceKeys::SearchIgnoresCase); }
    void setSearchIgnoresCase(bool value) { setObject(value, ZDPreferenceKeys::SearchIgnoresCase); }

    // Application.
    bool launchAtLogin() const { return boolForKey(ZDPreferenceKeys::LaunchAtLogin); }
    void setLaunchAtLogin(bool value) { setObject(value, ZDPreferenceKeys::LaunchAtLogin); }
    bool sendUsage() const { return boolForKey(ZDPreferenceKeys::SendDiagnosticInformation); }
    void setSendUsage(bool value) { setObject(value, ZDPreferenceKeys::SendDiagnosticInformation); }
    bool sendCrashLogs() const { return boolForKey(ZDPreferenceKeys::SendCrashLogs); }
    void setSendCrashLogs(bool value) { setObject(value, ZDPreferenceKeys::SendCrashLogs); }
    bool enableiCloud() const { return boolForKey(ZDPreferenceKeys::EnableiCloudSync); }
    void setEnableiCloud(bool value);
    bool hideDockIcon() const { return boolForKey(ZDPreferenceKeys::HideDockIcon); }
    void setHideDockIcon(bool value) { setObject(value, ZDPreferenceKeys::HideDockIcon); }
    bool showMenubarIcon() const { return boolForKey(ZDPreferenceKeys::ShowMenubarIcon); }
    void setShowMenubarIcon(bool value) { setObject(value, ZDPreferenceKeys::ShowMenubarIcon); }
    bool enableDetailedLogging() const { return boolForKey(ZDPreferenceKeys::EnableDetailedLogging); }
    void setEnableDetailedLogging(bool value);
    bool enableAutomaticBackups() const { return boolForKey(ZDPreferenceKeys::EnableAutomaticBackups); }
    void setEnableAutomaticBackups(bool value) { setObject(value, ZDPreferenceKeys::EnableAutomaticBackups); }
    bool enableLibraryIntegrityCheck() const { return boolForKey(ZDPreferenceKeys::EnableLibraryIntegrityCheck); }
    void setEnableLibraryIntegrityCheck(bool value) { setObject(value, ZDPreferenceKeys::EnableLibraryIntegrityCheck); }
    bool alfredPopulateModifierSubtitles() const { return boolForKey(ZDPreferenceKeys::AlfredPopulateModifierSubtitles); }
    int maximumBackupFiles() const;
    void setMaximumBackupFiles(int value) { setObject(value, ZDPreferenceKeys::MaximumBackupFiles); }
    bool compactMode() const { return boolForKey(ZDPreferenceKeys::CompactMode); }
    void setCompactMode(bool value) { setObject(value, ZDPreferenceKeys::CompactMode); }
    bool printWithHeaderAndFooter() const { return boolForKey(ZDPreferenceKeys::PrintHeaderAndFooter); }
    bool automaticallySortFoldersAndSmartGroups() const { return boolForKey(ZDPreferenceKeys::AutoSortFoldersAndSmartGroups); }
    void setAutomaticallySortFoldersAndSmartGroups(bool value) { setObject(value, ZDPreferenceKeys::AutoSortFoldersAndSmartGroups); }
    bool allowInsecureCertificates() const { return boolForKey(ZDPreferenceKeys::AllowInsecureCertificates); }
    void setAllowInsecureCertificates(bool value) { setObject(value, ZDPreferenceKeys::AllowInsecureCertificates); }
    int launchCount() const { return intForKey(ZDPreferenceKeys::LaunchCount); }
    void setLaunchCount(int value) { setObject(value, ZDPreferenceKeys::LaunchCount); }
    QString githubImportDestFolderUUID() const { return stringForKey(ZDPreferenceKeys::GitHubImportDestFolderUUID); }
    void setGithubImportDestFolderUUID(const QString &value) { setObject(value, ZDPreferenceKeys::GitHubImportDestFolderUUID); }

    // Window.
    bool showSidebar() const { return boolForKey(ZDPreferenceKeys::ShowSidebar); }
    void setShowSidebar(bool value) { setObject(value, ZDPreferenceKeys::ShowSidebar); }
    bool showTags() const { return boolForKey(ZDPreferenceKeys::ShowTags); }
    void setShowTags(bool value) { setObject(value, ZDPreferenceKeys::ShowTags); }
    bool showNotes() const { return boolForKey(ZDPreferenceKeys::ShowNotes); }
    void setShowNotes(bool value) { setObject(value, ZDPreferenceKeys::ShowNotes); }
    QString markdownTheme() const { return stringForKey(ZDPreferenceKeys::MarkdownThemeName); }
    bool sidebarModeIsTags() const { return boolForKey(ZDPreferenceKeys::SidebarModeTags); }
    void setSidebarModeIsTags(bool value) { setObject(value, ZDPreferenceKeys::SidebarModeTags); }

    // Editor.
    QString indentMethod() const { return stringForKey(ZDPreferenceKeys::IndentMethod); }
    void setIndentMethod(const QString &value) { setObject(value, ZDPreferenceKeys::IndentMethod); }
    int tabSize() const { return intForKey(ZDPreferenceKeys::TabSize); }
    void setTabSize(int value);
    int wrapIndentSize() const { return intForKey(ZDPreferenceKeys::WrapIndentSize); }
    void setWrapIndentSize(int value) { setObject(value, ZDPreferenceKeys::WrapIndentSize); }
    bool useSoftWrap() const { return boolForKey(ZDPreferenceKeys::UseSoftWrap); }
    void setUseSoftWrap(bool value) { setObject(value, ZDPreferenceKeys::UseSoftWrap); }
    bool showInvisibles() const { return boolForKey(ZDPreferenceKeys::ShowInvisibles); }
    void setShowInvisibles(bool value) { setObject(value, ZDPreferenceKeys::ShowInvisibles); }
    bool enableWrapIndent() const { return boolForKey(ZDPreferenceKeys::EnableWrapIndent); }
    void setEnableWrapIndent(bool value) { setObject(value, ZDPreferenceKeys::EnableWrapIndent); }
    /// The stored theme name when the theme registry knows it; empty when it names no theme.
    QString editorTheme() const;
    void setEditorTheme(const QString &themeName) { setObject(themeName, ZDPreferenceKeys::EditorTheme); }
    ZDFontDescriptor editorFont() const;
    void setEditorFont(const ZDFontDescriptor &font) { setObject(font.archived(), ZDPreferenceKeys::EditorFont); }
    QByteArray defaultFontData() const;
    double editorLineHeightMultiple() const { return objectForKey(ZDPreferenceKeys::EditorLineHeightMultiple).toDouble(); }
    void setEditorLineHeightMultiple(double value) { setObject(value, ZDPreferenceKeys::EditorLineHeightMultiple); }
    bool automaticallyIndentOnReturn() const { return boolForKey(ZDPreferenceKeys::AutoIndentOnReturn); }
    void setAutomaticallyIndentOnReturn(bool value) { setObject(value, ZDPreferenceKeys::AutoIndentOnReturn); }
    bool automaticallyCloseBrackets() const { return boolForKey(ZDPreferenceKeys::AutoCloseBrackets); }
    void setAutomaticallyCloseBrackets(bool value) { setObject(value, ZDPreferenceKeys::AutoCloseBrackets); }
    bool automaticLinkDetection() const { return boolForKey(ZDPreferenceKeys::AutomaticLinkDetection); }
    void setAutomaticLinkDetection(bool value) { setObject(value, ZDPreferenceKeys::AutomaticLinkDetection); }

    // Languages: the stored identifiers. The language objects come from the language registry.
    QStringList activeLanguageIdentifiers() const { return objectForKey(ZDPreferenceKeys::ActiveLanguages).toStringList(); }
    void setActiveLanguageIdentifiers(const QStringList &identifiers) { setObject(identifiers, ZDPreferenceKeys::ActiveLanguages); }

    // Quick panel.
    QString assistantDefaultSnippetsCustomPredicateString() const { return stringForKey(ZDPreferenceKeys::AssistantDefaultSnippetsPredicateString); }
    void setAssistantDefaultSnippetsCustomPredicateString(const QString &value) { setObject(value, ZDPreferenceKeys::AssistantDefaultSnippetsPredicateString); }
    int assistantDefaultSnippetsMode() const { return intForKey(ZDPreferenceKeys::AssistantDefaultSnippetsMode); }
    void setAssistantDefaultSnippetsMode(int value) { setObject(value, ZDPreferenceKeys::AssistantDefaultSnippetsMode); }
    uint assistantPrimaryAction() const { return objectForKey(ZDPreferenceKeys::AssistantPrimaryAction).toUInt(); }
    void setAssistantPrimaryAction(uint value) { setObject(value, ZDPreferenceKeys::AssistantPrimaryAction); }
    int assistantDefaultSnippetsSortMethod() const { return intForKey(ZDPreferenceKeys::AssistantDefaultSnippetsSortMethod); }
    void setAssistantDefaultSnippetsSortMethod(int value) { setObject(value, ZDPreferenceKeys::AssistantDefaultSnippetsSortMethod); }
    /// The panel's own theme name, or empty when the panel follows the editor theme.
    QString assistantTheme() const;
    void setAssistantTheme(const QString &themeName);
    bool automaticallyClearAssistantSearchField() const { return boolForKey(ZDPreferenceKeys::AutomaticallyClearAssistantSearchField); }
    void setAutomaticallyClearAssistantSearchField(bool value) { setObject(value, ZDPreferenceKeys::AutomaticallyClearAssistantSearchField); }
    QVariantMap menubarShortcut() const { return objectForKey(ZDPreferenceKeys::MenubarShortcut).toMap(); }
    void setMenubarShortcut(const QVariantMap &value) { setObject(value, ZDPreferenceKeys::MenubarShortcut); }
    QVariantMap mainWindowShortcut() const { return objectForKey(ZDPreferenceKeys::MainWindowShortcut).toMap(); }
    void setMainWindowShortcut(const QVariantMap &value) { setObject(value, ZDPreferenceKeys::MainWindowShortcut); }

    // Preview.
    bool enablesPreviewer() const { return boolForKey(ZDPreferenceKeys::PreviewerEnabled); }
    void setEnablesPreviewer(bool value) { setObject(value, ZDPreferenceKeys::PreviewerEnabled); }
    int previewerMode() const { return intForKey(ZDPreferenceKeys::PreviewerMode); }
    void setPreviewerMode(int value) { setObject(value, ZDPreferenceKeys::PreviewerMode); }
    bool enablesScrollSync() const { return boolForKey(ZDPreferenceKeys::ScrollSyncEnabled); }
    void setEnablesScrollSync(bool value) { setObject(value, ZDPreferenceKeys::ScrollSyncEnabled); }
    bool enablesTwoWayScrollSync() const { return boolForKey(ZDPreferenceKeys::TwoWayScrollSyncEnabled); }
    void setEnablesTwoWayScrollSync(bool value) { setObject(value, ZDPreferenceKeys::TwoWayScrollSyncEnabled); }

    // Backups and library location.
    /// Seconds since 2001-01-01 00:00 UTC, or nothing.
    std::optional<double> lastAutomaticBackupDate() const;
    void setLastAutomaticBackupDate(double secondsSinceReferenceDate) { setObject(secondsSinceReferenceDate, ZDPreferenceKeys::LastAutomaticBackupDate); }
    QString lastAutomaticBackupHash() const { return stringForKey(ZDPreferenceKeys::LastAutomaticBackupHash); }
    void setLastAutomaticBackupHash(const QString &value) { setObject(value, ZDPreferenceKeys::LastAutomaticBackupHash); }
    QByteArray libraryURLBookmarkData() const { return objectForKey(ZDPreferenceKeys::LibraryURLBookmarkData).toByteArray(); }
    void setLibraryURLBookmarkData(const QByteArray &value) { setObject(value, ZDPreferenceKeys::LibraryURLBookmarkData); }
    QString designatedLibraryPathString() const { return stringForKey(ZDPreferenceKeys::DesignatedLibraryPathString); }
    void setDesignatedLibraryPathString(const QString &value) { setObject(value, ZDPreferenceKeys::DesignatedLibraryPathString); }

    // Dialogs and the rest.
    bool suppressDialogShouldSendUsage() const { return boolForKey(ZDPreferenceKeys::OnceDialogSendUsage); }
    void setSuppressDialogShouldSendUsage(bool value) { setObject(value, ZDPreferenceKeys::OnceDialogSendUsage); }
    bool suppressDialogConfirmIgnoreFeedbackEmail() const { return boolForKey(ZDPreferenceKeys::SuppressConfirmIgnoreFeedbackEmail); }
    bool suppressSmartSearchHelpPopover() const { return boolForKey(ZDPreferenceKeys::SuppressSmartSearchHelpPopover); }
    void setSuppressSmartSearchHelpPopover(bool value) { setObject(value, ZDPreferenceKeys::SuppressSmartSearchHelpPopover); }
    bool suppressPreviewHelpPopover() const { return boolForKey(ZDPreferenceKeys::SuppressPreviewHelpPopover); }
    void setSuppressPreviewHelpPopover(bool value) { setObject(value, ZDPreferenceKeys::SuppressPreviewHelpPopover); }
    int alfredWorkflowUsedTimes() const { return intForKey(ZDPreferenceKeys::AlfredWorkflowUsedTimes); }
    void setAlfredWorkflowUsedTimes(int value) { setObject(value, ZDPreferenceKeys::AlfredWorkflowUsedTimes); }
    QString suppressAlfredWorkflowUpdatePromptForVersion() const { return stringForKey(ZDPreferenceKeys::SuppressAlfredWorkflowForVersion); }
    void setSuppressAlfredWorkflowUpdatePromptForVersion(const QString &value) { setObject(value, ZDPreferenceKeys::SuppressAlfredWorkflowForVersion); }
    QString lastWhatsNewVersionDisplayed() const { return stringForKey(ZDPreferenceKeys::LastWhatsNewVersion); }
    void setLastWhatsNewVersionDisplayed(const QString &value) { setObject(value, ZDPreferenceKeys::LastWhatsNewVersion); }
    QString userEmail() const { return stringForKey(ZDPreferenceKeys::UserEmail); }
    void setUserEmail(const QString &value) { setObject(value, ZDPreferenceKeys::UserEmail); }

    // Printable forms.
    static QString stringFromSortMethod(int method);
    static QString stringFromSortOrder(int order);
    static QString stringFromDefaultSnippetsMode(int mode);
    static QString stringFromPrimaryAction(uint action);
    static QString stringFromPreviewerMode(int mode);
    QString systemAppearanceString() const;
    /// Every setting worth attaching to a diagnostic report, as printable strings.
    QMap<QString, QString> allPreferences() const;

Q_SIGNALS:
    void valueChanged(const QString &key);

private:
    bool boolForKey(const QString &key) const { return objectForKey(key).toBool(); }
    int intForKey(const QString &key) const { return objectForKey(key).toInt(); }
    QString stringForKey(const QString &key) const { return objectForKey(key).toString(); }

    std::unique_ptr<QSettings> m_settings;
    QList<QPair<QString, QVariant>> m_defaults;
    QHash<QString, QVariant> m_defaultsByKey;
    const ZDThemeRegistry *m_themeRegistry = nullptr;
    ZDFontCatalog m_fontCatalog;
    std::function<void(bool)> m_cloudSwitchHandler;
    std::function<bool()> m_darkAppearance;
};
