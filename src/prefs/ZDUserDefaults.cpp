#include "ZDUserDefaults.h"

#include "ZDLogger.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSettings>
#include <QStandardPaths>

#include <atomic>
#include <cstdlib>

namespace K = ZDPreferenceKeys;

namespace {
std::atomic<ZDUserDefaults *> s_standard{nullptr};

const QString kUncategorizedUUID = QStringLiteral("com.varnok.Zandrio.UUID.Predefined.Uncategorized");

const QHash<QString, ZDUserDefaults::ValueType> &valueTypes()
{
    using T = ZDUserDefaults::ValueType;
    static const QHash<QString, T> types = {
        {K::SnippetsSortMethod, T::Integer}, {K::SnippetsSortOrder, T::Integer}, {K::TagsSortMethod, T::Integer},
        {K::SearchScopeTitleOnly, T::Bool}, {K::FuzzySearch, T::Bool}, {K::SearchArrangeByRelevance, T::Bool},
        {K::SearchIgnoresCase, T::Bool}, {K::LaunchAtLogin, T::Bool}, {K::SendDiagnosticInformation, T::Bool},
        {K::SendCrashLogs, T::Bool}, {K::EnableiCloudSync, T::Bool}, {K::HideDockIcon, T::Bool},
        {K::ShowMenubarIcon, T::Bool}, {K::IndentMethod, T::String}, {K::TabSize, T::Integer},
        {K::WrapIndentSize, T::Integer}, {K::UseSoftWrap, T::Bool}, {K::ShowInvisibles, T::Bool},
        {K::ShowSidebar, T::Bool}, {K::ShowTags, T::Bool}, {K::ShowNotes, T::Bool},
        {K::MarkdownThemeName, T::String}, {K::EnableDetailedLogging, T::Bool},
        {K::EnableAutomaticBackups, T::Bool}, {K::EnableLibraryIntegrityCheck, T::Bool},
        {K::AlfredPopulateModifierSubtitles, T::Bool}, {K::EnableWrapIndent, T::Bool},
        {K::MaximumBackupFiles, T::Integer}, {K::CompactMode, T::Bool}, {K::PrintHeaderAndFooter, T::Bool},
        {K::AutoSortFoldersAndSmartGroups, T::Bool}, {K::AllowInsecureCertificates, T::Bool},
        {K::LaunchCount, T::Integer}, {K::ActiveLanguages, T::StringList}, {K::EditorTheme, T::String},
        {K::EditorFont, T::Data}, {K::EditorLineHeightMultiple, T::Double}, {K::AutoIndentOnReturn, T::Bool},
        {K::AutoCloseBrackets, T::Bool}, {K::AssistantDefaultSnippetsPredicateString, T::String},
        {K::AssistantDefaultSnippetsMode, T::Integer}, {K::AssistantPrimaryAction, T::UnsignedInteger},
        {K::GitHubImportDestFolderUUID, T::String}, {K::AssistantDefaultSnippetsSortMethod, T::Integer},
        {K::OnceDialogSendUsage, T::Bool}, {K::SuppressConfirmIgnoreFeedbackEmail, T::Bool},
        {K::SuppressSmartSearchHelpPopover, T::Bool}, {K::AlfredWorkflowUsedTimes, T::Integer},
        {K::AutomaticallyClearAssistantSearchField, T::Bool}, {K::PreviewerEnabled, T::Bool},
        {K::PreviewerMode, T::Integer}, {K::ScrollSyncEnabled, T::Bool}, {K::TwoWayScrollSyncEnabled, T::Bool},
        {K::AutomaticLinkDetection, T::Bool},
        {K::MenubarShortcut, T::Map}, {K::MainWindowShortcut, T::Map}, {K::LastAutomaticBackupDate, T::Double},
        {K::LastAutomaticBackupHash, T::String}, {K::SidebarModeTags, T::Bool}, {K::AssistantTheme, T::String},
        {K::LibraryURLBookmarkData, T::Data}, {K::DesignatedLibraryPathString, T::String},
        {K::UserEmail, T::String}, {K::SuppressPreviewHelpPopover, T::Bool},
        {K::SuppressAlfredWorkflowForVersion, T::String}, {K::LastWhatsNewVersion, T::String},
    };
    return types;
}

// Reads a value as stored in the INI file (where most values come back as text) as its key's type.
QVariant decodeStored(const QVariant &raw, ZDUserDefaults::ValueType type, bool *ok)
{
    using T = ZDUserDefaults::ValueType;
    *ok = true;
    const QString text = raw.toString().trimmed();
    switch (type) {
    case T::Bool: {
        if (raw.typeId() == QMetaType::Bool)
            return raw;
        const QString lower = text.toLower();
        if (lower == QLatin1String("true") || lower == QLatin1String("yes") || lower == QLatin1String("1"))
            return true;
        if (lower == QLatin1String("false") || lower == QLatin1String("no") || lower == QLatin1String("0"))
            return false;
        break;
    }
    case T::Integer:
    case T::UnsignedInteger: {
        bool converted = false;
        const qlonglong value = text.toLongLong(&converted);
        if (converted)
            return type == T::Integer ? QVariant(int(value)) : QVariant(uint(value));
        break;
    }
    case T::Double: {
        bool converted = false;
        const double value = text.toDouble(&converted);
        if (converted)
            return value;
        break;
    }
    case T::String:
        if (raw.canConvert<QString>() && raw.typeId() != QMetaType::QStringList)
            return raw.toString();
        break;
    case T::StringList: {
        if (raw.typeId() == QMetaType::QStringList)
            return raw;
        const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
        if (document.isArray()) {
            QStringList list;
            for (const QJsonValue &element : document.array()) {
                if (!element.isString())
                    break;
                list << element.toString();
            }
            if (list.size() == document.array().size())
                return list;
        }
        break;
    }
    case T::Data:
        if (raw.typeId() == QMetaType::QByteArray)
            return raw;
        break;
    case T::Map:
        if (raw.typeId() == QMetaType::QVariantMap)
            return raw;
        break;
    }
    *ok = false;
    return {};
}

QVariant encodeForStorage(const QVariant &value)
{
    if (value.typeId() == QMetaType::QStringList)
        return QString::fromUtf8(
            QJsonDocument(QJsonArray::fromStringList(value.toStringList())).toJson(QJsonDocument::Compact));
    return value;
}
} // namespace

ZDUserDefaults::ZDUserDefaults(const QString &iniFilePath, QObject *parent)
    : QObject(parent), m_settings(std::make_unique<QSettings>(iniFilePath, QSettings::IniFormat))
{
    registerDefaultUserDefaults();
    if (ZDLogger *logger = ZDLogger::sharedLogger())
        logger->setDetailedLoggingEnabled(enableDetailedLogging());
}

ZDUserDefaults::~ZDUserDefaults()
{
    if (s_standard.load() == this)
        s_standard.store(nullptr);
    m_settings->sync();
}

QString ZDUserDefaults::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/Zandrio/Zandrio.ini");
}

ZDUserDefaults *ZDUserDefaults::standardUserDefaults()
{
    return s_standard.load();
}

void ZDUserDefaults::install(ZDUserDefaults *defaults)
{
    s_standard.store(defaults);
}

void ZDUserDefaults::registerDefaultUserDefaults()
{
    const QStringList activeLanguages = {
        QStringLiteral("TextLexer"),       QStringLiteral("PhpLexer"),        QStringLiteral("BashLexer"),
        QStringLiteral("JavascriptLexer"), QStringLiteral("SwiftLexer"),      QStringLiteral("MarkdownLexer"),
        QStringLiteral("ObjectiveCLexer"), QStringLiteral("PythonLexer"),     QStringLiteral("HtmlLexer"),
        QStringLiteral("CssLexer")};
    m_defaults = {
        {K::SnippetsSortMethod, int(SortByDateModified)},
        {K::SnippetsSortOrder, int(SortOrderDescending)},
        {K::TagsSortMethod, int(SortByName)},
        {K::SearchScopeTitleOnly, false},
        {K::FuzzySearch, true},
        {K::SearchArrangeByRelevance, true},
        {K::SearchIgnoresCase, true},
        {K::LaunchAtLogin, false},
        {K::SendDiagnosticInformation, false},
        {K::SendCrashLogs, false},
        {K::EnableiCloudSync, false},
        {K::HideDockIcon, false},
        {K::ShowMenubarIcon, true},
        {K::IndentMethod, QStringLiteral("Spaces")},
        {K::TabSize, 4},
        {K::WrapIndentSize, 4},
        {K::UseSoftWrap, true},
        {K::ShowInvisibles, false},
        {K::ShowSidebar, true},
        {K::ShowTags, false},
        {K::ShowNotes, false},
        {K::MarkdownThemeName, QStringLiteral("Bootstrap 3")},
        {K::EnableDetailedLogging, false},
        {K::EnableAutomaticBackups, true},
        {K::EnableLibraryIntegrityCheck, true},
        {K::AlfredPopulateModifierSubtitles, true},
        {K::EnableWrapIndent, false},
        {K::MaximumBackupFiles, 30},
        {K::CompactMode, false},
        {K::PrintHeaderAndFooter, true},
        {K::AutoSortFoldersAndSmartGroups, false},
        {K::AllowInsecureCertificates, false},
        {K::LaunchCount, 0},
        {K::ActiveLanguages, activeLanguages},
        {K::EditorTheme, QStringLiteral("Material Light")},
        {K::EditorFont, QByteArray()}, // computed when read: it depends on the fonts installed
        {K::EditorLineHeightMultiple, 1.0},
        {K::AutoIndentOnReturn, true},
        {K::AutoCloseBrackets, true},
        {K::AssistantDefaultSnippetsPredicateString, QStringLiteral("title CONTAINS ''")},
        {K::AssistantDefaultSnippetsMode, int(DefaultSnippetsModeLatest)},
        {K::AssistantPrimaryAction, uint(PrimaryActionCopyToClipboard)},
        {K::GitHubImportDestFolderUUID, kUncategorizedUUID},
        {K::AssistantDefaultSnippetsSortMethod, int(SortByDateModified)},
        {K::OnceDialogSendUsage, false},
        {K::SuppressConfirmIgnoreFeedbackEmail, false},
        {K::SuppressSmartSearchHelpPopover, false},
        {K::AlfredWorkflowUsedTimes, 0},
        {K::AutomaticallyClearAssistantSearchField, false},
        {K::PreviewerEnabled, false},
        {K::PreviewerMode, int(PreviewerModeSideBySide)},
        {K::ScrollSyncEnabled, true},
        {K::TwoWayScrollSyncEnabled, true},
        {K::AutomaticLinkDetection, true},
    };
    m_defaultsByKey.clear();
    for (const auto &[key, value] : std::as_const(m_defaults))
        m_defaultsByKey.insert(key, value);
}

QList<QPair<QString, QVariant>> ZDUserDefaults::registeredDefaults() const
{
    QList<QPair<QString, QVariant>> defaults = m_defaults;
    for (auto &entry : defaults) {
        if (entry.first == K::EditorFont)
            entry.second = defaultFontData();
    }
    return defaults;
}

ZDUserDefaults::ValueType ZDUserDefaults::valueType(const QString &key)
{
    return valueTypes().value(key, ValueType::String);
}

QVariant ZDUserDefaults::objectForKey(const QString &key, bool *decodable) const
{
    if (decodable)
        *decodable = true;
    const QVariant raw = m_settings->value(key);
    if (raw.isValid()) {
        bool ok = false;
        const QVariant value = decodeStored(raw, valueType(key), &ok);
        if (decodable)
            *decodable = ok;
        return value;
    }
    if (key == K::EditorFont)
        return defaultFontData();
    return m_defaultsByKey.value(key);
}

bool ZDUserDefaults::hasStoredValue(const QString &key) const
{
    return m_settings->contains(key);
}

void ZDUserDefaults::setObject(const QVariant &value, const QString &key)
{
    if (!value.isValid()) {
        removeObjectForKey(key);
        return;
    }
    m_settings->setValue(key, encodeForStorage(value));
    Q_EMIT valueChanged(key);
}

void ZDUserDefaults::removeObjectForKey(const QString &key)
{
    m_settings->remove(key);
    Q_EMIT valueChanged(key);
}

void ZDUserDefaults::synchronize()
{
    m_settings->sync();
}

void ZDUserDefaults::setEnableiCloud(bool value)
{
    if (m_cloudSwitchHandler)
        m_cloudSwitchHandler(value);
    setObject(value, K::EnableiCloudSync);
}

void ZDUserDefaults::setEnableDetailedLogging(bool value)
{
    setObject(value, K::EnableDetailedLogging);
    if (ZDLogger *logger = ZDLogger::sharedLogger())
        logger->setDetailedLoggingEnabled(value);
}

int ZDUserDefaults::maximumBackupFiles() const
{
    const int stored = intForKey(K::MaximumBackupFiles);
    switch (stored) {
    case 20:
    case 30:
    case 50:
    case 100:
        return stored;
    default:
        return 30;
    }
}

void ZDUserDefaults::setTabSize(int value)
{
    setObject(std::abs(value), K::TabSize);
}

QString ZDUserDefaults::editorTheme() const
{
    const QString name = stringForKey(K::EditorTheme);
    if (m_themeRegistry && !m_themeRegistry->hasThemeNamed(name))
        return {};
    return name;
}

QString ZDUserDefaults::assistantTheme() const
{
    if (!hasStoredValue(K::AssistantTheme))
        return {};
    const QString name = stringForKey(K::AssistantTheme);
    if (m_themeRegistry && !m_themeRegistry->hasThemeNamed(name))
        return {};
    return name;
}

void ZDUserDefaults::setAssistantTheme(const QString &themeName)
{
    if (themeName.isEmpty())
        removeObjectForKey(K::AssistantTheme);
    else
        setObject(themeName, K::AssistantTheme);
}

QByteArray ZDUserDefaults::defaultFontData() const
{
    static const QStringList candidates = {QStringLiteral("Menlo-Regular"), QStringLiteral("Consolas"),
                                           QStringLiteral("Monaco"), QStringLiteral("Courier"),
                                           QStringLiteral("Courier New")};
    if (m_fontCatalog.fontExists) {
        for (const QString &family : candidates) {
            if (m_fontCatalog.fontExists(family))
                return ZDFontDescriptor{family, 12.0}.archived();
        }
    }
    ZDFontDescriptor system{QStringLiteral("Monospace"), 12.0};
    if (m_fontCatalog.systemFixedFont) {
        system.family = m_fontCatalog.systemFixedFont().family;
    }
    return system.archived();
}

ZDFontDescriptor ZDUserDefaults::editorFont() const
{
    if (hasStoredValue(K::EditorFont)) {
        if (auto font = ZDFontDescriptor::unarchive(objectForKey(K::EditorFont).toByteArray()))
            return *font;
    }
    return ZDFontDescriptor::unarchive(defaultFontData()).value_or(ZDFontDescriptor{QStringLiteral("Monospace"), 12.0});
}

std::optional<double> ZDUserDefaults::lastAutomaticBackupDate() const
{
    bool decodable = false;
    const QVariant value = objectForKey(K::LastAutomaticBackupDate, &decodable);
    if (!value.isValid() || !decodable)
        return std::nullopt;
    return value.toDouble();
}
