#pragma once

#include <QString>

/// The keys of the user's preferences, exactly as they are stored.
namespace ZDPreferenceKeys {
inline const QString SnippetsSortMethod = QStringLiteral("User SnippetsSortMethod");
inline const QString SnippetsSortOrder = QStringLiteral("User SnippetsSortOrder");
inline const QString TagsSortMethod = QStringLiteral("User TagsSortMethod");
inline const QString SearchScopeTitleOnly = QStringLiteral("User SearchScopeTitleOnly");
inline const QString FuzzySearch = QStringLiteral("User FuzzySearch");
inline const QString SearchArrangeByRelevance = QStringLiteral("User SearchArrangeByRelevance");
inline const QString SearchIgnoresCase = QStringLiteral("User SearchIgnoresCase");
inline const QString LaunchAtLogin = QStringLiteral("Preferences LaunchAtLogin");
inline const QString SendDiagnosticInformation = QStringLiteral("Preferences SendDiagnosticInformation");
inline const QString SendCrashLogs = QStringLiteral("ZDDefaultSendCrashLogs");
inline const QString EnableiCloudSync = QStringLiteral("Preferences EnableiCloudSync");
inline const QString HideDockIcon = QStringLiteral("Preferences HideDockIcon");
inline const QString ShowMenubarIcon = QStringLiteral("Preferences ShowMenubarIcon");
inline const QString IndentMethod = QStringLiteral("Preferences IndentMethod");
inline const QString TabSize = QStringLiteral("Preferences TabSize");
inline const QString WrapIndentSize = QStringLiteral("Preferences WrapIndentSize");
inline const QString UseSoftWrap = QStringLiteral("Preferences UseSoftWrap");
inline const QString ShowInvisibles = QStringLiteral("Preferences ShowInvisibles");
inline const QString ShowSidebar = QStringLiteral("Preferences ShowSidebar");
inline const QString ShowTags = QStringLiteral("Preferences ShowTags");
inline const QString ShowNotes = QStringLiteral("Preferences ShowNotes");
inline const QString MarkdownThemeName = QStringLiteral("Preferences MarkdownThemeName");
inline const QString EnableDetailedLogging = QStringLiteral("Preferences EnableDetailedLogging");
inline const QString EnableAutomaticBackups = QStringLiteral("Preferences EnableAutomaticBackups");
inline const QString EnableLibraryIntegrityCheck = QStringLiteral("Preferences EnableLibraryIntegrityCheck");
inline const QString AlfredPopulateModifierSubtitles = QStringLiteral("Preferences AlfredPopulateModifierSubtitles");
inline const QString EnableWrapIndent = QStringLiteral("Preferences EnableWrapIndent");
inline const QString MaximumBackupFiles = QStringLiteral("Preferences MaximumBackupFiles");
inline const QString CompactMode = QStringLiteral("Preferences CompactMode");
inline const QString PrintHeaderAndFooter = QStringLiteral("Preferences PrintHeaderAndFooter");
inline const QString AutoSortFoldersAndSmartGroups = QStringLiteral("Preferences AutoSortFoldersAndSmartGroups");
inline const QString AllowInsecureCertificates = QStringLiteral("Preferences AllowInsecureCertificates");
inline const QString LaunchCount = QStringLiteral("User LCServices");
inline const QString ActiveLanguages = QStringLiteral("User ActiveLanguages");
inline const QString EditorTheme = QStringLiteral("User EditorTheme");
inline const QString EditorFont = QStringLiteral("User EditorFont");
inline const QString EditorLineHeightMultiple = QStringLiteral("User EditorLineHeightMultiple");
inline const QString AutoIndentOnReturn = QStringLiteral("User AutoIndentOnReturn");
inline const QString AutoCloseBrackets = QStringLiteral("User AutoCloseBrackets");
inline const QString AssistantDefaultSnippetsPredicateString = QStringLiteral("Preferences AssistantDefaultSnippetsPredicateString");
inline const QString AssistantDefaultSnippetsMode = QStringLiteral("Preferences AssistantDefaultSnippetsMode");
inline const QString AssistantPrimaryAction = QStringLiteral("User AssistantPrimaryAction");
inline const QString GitHubImportDestFolderUUID = QStringLiteral("User GitHubImportDestFolderUUID");
inline const QString AssistantDefaultSnippetsSortMethod = QStringLiteral("Preferences AssistantDefaultSnippetsSortMethod");
inline const QString OnceDialogSendUsage = QStringLiteral("OnceDialog SendUsage");
inline const QString SuppressConfirmIgnoreFeedbackEmail = QStringLiteral("SuppressDialog ConfirmIgnoreFeedbackEmail");
inline const QString SuppressSmartSearchHelpPopover = QStringLiteral("SuppressDialog SmartSearchHelpPopover");
inline const QString AlfredWorkflowUsedTimes = QStringLiteral("ZDAlfredWorkflowUsedTimes");
inline const QString AutomaticallyClearAssistantSearchField = QStringLiteral("ZDAutomaticallyClearAssistantSearchField");
inline const QString PreviewerEnabled = QStringLiteral("ZDPreviewerEnabled");
inline const QString PreviewerMode = QStringLiteral("ZDPreviewerMode");
inline const QString ScrollSyncEnabled = QStringLiteral("ZDScrollSyncEnabled");
inline const QString TwoWayScrollSyncEnabled = QStringLiteral("ZDTwoWayScrollSyncEnabled");
inline const QString AutomaticLinkDetection = QStringLiteral("ZDAutomaticLinkDetection");

// Keys with no registered default.
inline const QString MenubarShortcut = QStringLiteral("Preferences MenubarShortcut");
inline const QString MainWindowShortcut = QStringLiteral("Preferences MainWindowShortcut");
inline const QString LastAutomaticBackupDate = QStringLiteral("Preferences LastAutomaticBackupDate");
inline const QString LastAutomaticBackupHash = QStringLiteral("Preferences LastAutomaticBackupHash");
inline const QString SidebarModeTags = QStringLiteral("Preferences SidebarModeTags");
inline const QString AssistantTheme = QStringLiteral("User AssistantTheme");
inline const QString LibraryURLBookmarkData = QStringLiteral("User LibraryURLBookmarkData");
inline const QString DesignatedLibraryPathString = QStringLiteral("User DesignatedLibraryPathString");
inline const QString UserEmail = QStringLiteral("User Email");
inline const QString SuppressPreviewHelpPopover = QStringLiteral("ZDSuppressPreviewHelpPopover");
inline const QString SuppressAlfredWorkflowForVersion = QStringLiteral("ZDSuppressAlfredWorkflowForVersion");
inline const QString LastWhatsNewVersion = QStringLiteral("OnceDialog LastWhatsNewVersion");
} // namespace ZDPreferenceKeys
