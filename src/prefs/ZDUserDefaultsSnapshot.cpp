// The printable names of the preference enumerations and the diagnostic snapshot.

#include "ZDUserDefaults.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace K = ZDPreferenceKeys;

QString ZDUserDefaults::stringFromSortMethod(int method)
{
    switch (method) {
    case SortByDateModified: return QStringLiteral("SortByDateModified");
    case SortByDateCreated: return QStringLiteral("SortByDateCreated");
    case SortByName: return QStringLiteral("SortByName");
    case SortBySnippetsCount: return QStringLiteral("SortBySnippetsCount");
    }
    return {};
}

QString ZDUserDefaults::stringFromSortOrder(int order)
{
    switch (order) {
    case SortOrderDescending: return QStringLiteral("Descending");
    case SortOrderAscending: return QStringLiteral("Ascending");
    }
    return {};
}

QString ZDUserDefaults::stringFromDefaultSnippetsMode(int mode)
{
    switch (mode) {
    case DefaultSnippetsModeLatest: return QStringLiteral("Latest");
    case DefaultSnippetsModeCustom: return QStringLiteral("Custom");
    }
    return {};
}

QString ZDUserDefaults::stringFromPrimaryAction(uint action)
{
    switch (action) {
    case PrimaryActionCopyToClipboard: return QStringLiteral("CopyToClipboard");
    case PrimaryActionOpenInMainWindow: return QStringLiteral("OpenInMainWindow");
    }
    return {};
}

QString ZDUserDefaults::stringFromPreviewerMode(int mode)
{
    switch (mode) {
    case PreviewerModePreviewOnly: return QStringLiteral("PreviewOnly");
    case PreviewerModeSideBySide: return QStringLiteral("SideBySide");
    }
    return {};
}

QString ZDUserDefaults::systemAppearanceString() const
{
    return m_darkAppearance && m_darkAppearance() ? QStringLiteral("Dark Aqua") : QStringLiteral("Aqua");
}

namespace {
QString printable(const QVariant &value, ZDUserDefaults::ValueType type, bool decodable)
{
    using T = ZDUserDefaults::ValueType;
    if (!decodable)
        return QStringLiteral("ERROR: cannot decode");
    if (!value.isValid())
        return QStringLiteral("nil");
    switch (type) {
    case T::Bool: return value.toBool() ? QStringLiteral("YES") : QStringLiteral("NO");
    case T::Integer: return QString::number(value.toLongLong());
    case T::UnsignedInteger: return QString::number(value.toULongLong());
    case T::Double: return QString::number(value.toDouble());
    case T::String: return value.toString();
    case T::StringList: return value.toStringList().join(QStringLiteral(", "));
    case T::Data: return QStringLiteral("<") + QString::fromLatin1(value.toByteArray().toHex()) + QStringLiteral(">");
    case T::Map:
        return QString::fromUtf8(
            QJsonDocument(QJsonObject::fromVariantMap(value.toMap())).toJson(QJsonDocument::Compact));
    }
    return QStringLiteral("ERROR: cannot decode");
}

void insertIfNamed(QMap<QString, QString> &snapshot, const QString &key, const QString &name)
{
    if (name.isEmpty())
        snapshot.remove(key);
    else
        snapshot.insert(key, name);
}
} // namespace

QMap<QString, QString> ZDUserDefaults::allPreferences() const
{
    static const QStringList rawKeys = {
        K::EnableiCloudSync, K::HideDockIcon, K::LaunchAtLogin, K::MenubarShortcut, K::MainWindowShortcut,
        K::SendDiagnosticInformation, K::SendCrashLogs, K::UseSoftWrap, K::ShowInvisibles, K::ShowMenubarIcon,
        K::TabSize, K::WrapIndentSize, K::IndentMethod, K::ShowSidebar, K::ShowTags, K::ShowNotes,
        K::MarkdownThemeName, K::EnableDetailedLogging, K::EnableAutomaticBackups,
        K::EnableLibraryIntegrityCheck, K::EnableWrapIndent, K::MaximumBackupFiles, K::CompactMode,
        K::PrintHeaderAndFooter, K::AutoSortFoldersAndSmartGroups, K::AssistantDefaultSnippetsPredicateString,
        K::AllowInsecureCertificates, K::ActiveLanguages, K::EditorTheme, K::EditorLineHeightMultiple,
        K::AutoCloseBrackets, K::AutoIndentOnReturn, K::SearchScopeTitleOnly, K::SearchIgnoresCase,
        K::FuzzySearch, K::SearchArrangeByRelevance, K::AssistantTheme, K::LaunchCount,
        K::AlfredWorkflowUsedTimes, K::AutomaticallyClearAssistantSearchField, K::ScrollSyncEnabled,
        K::TwoWayScrollSyncEnabled, K::AutomaticLinkDetection};

    QMap<QString, QString> snapshot;
    for (const QString &key : rawKeys) {
        bool decodable = true;
        const QVariant value = objectForKey(key, &decodable);
        snapshot.insert(key, printable(value, valueType(key), decodable));
    }

    const ZDFontDescriptor font = editorFont();
    if (!font.family.isEmpty()) {
        snapshot.insert(QStringLiteral("User EditorFont_Name"), font.family);
        snapshot.insert(QStringLiteral("User EditorFont_PointSize"), QString::number(font.pointSize));
    }
    insertIfNamed(snapshot, K::AssistantDefaultSnippetsMode, stringFromDefaultSnippetsMode(assistantDefaultSnippetsMode()));
    insertIfNamed(snapshot, K::AssistantPrimaryAction, stringFromPrimaryAction(assistantPrimaryAction()));
    insertIfNamed(snapshot, K::SnippetsSortOrder, stringFromSortOrder(snippetsSortOrder()));
    insertIfNamed(snapshot, K::SnippetsSortMethod, stringFromSortMethod(snippetsSortMethod()));
    insertIfNamed(snapshot, K::AssistantDefaultSnippetsSortMethod, stringFromSortMethod(assistantDefaultSnippetsSortMethod()));
    insertIfNamed(snapshot, K::TagsSortMethod, stringFromSortMethod(tagsSortMethod()));
    insertIfNamed(snapshot, K::PreviewerMode, stringFromPreviewerMode(previewerMode()));
    snapshot.insert(QStringLiteral("User SystemAppearance"), systemAppearanceString());
    return snapshot;
}
