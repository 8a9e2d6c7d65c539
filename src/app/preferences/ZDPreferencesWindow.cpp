#include "ZDPreferencesWindow.h"

#include "ZDDataCenter.h"
#include "ZDEditorTheme.h"
#include "ZDError.h"
#include "ZDLanguageRegistry.h"
#include "ZDLanguagesPane.h"
#include "ZDPlatform.h"
#include "ZDPreferenceBinding.h"
#include "ZDThemePreview.h"
#include "ZDUserDefaults.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

using namespace ZDPreferenceBinding;

namespace {
constexpr QSize ThemePreviewSize(176, 70);

QString libraryLocation(ZDUserDefaults *defaults)
{
    if (ZDDataCenter *center = ZDDataCenter::defaultCenter())
        return center->packagePath();
    if (defaults && !defaults->designatedLibraryPathString().isEmpty())
        return defaults->designatedLibraryPathString();
    return QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
        .filePath(QStringLiteral("main.zandriolibrary"));
}

/// A check box's object name, title, and its preference's getter and setter.
using CheckBoxRow = std::tuple<QString, QString, std::function<bool()>, std::function<void(bool)>>;

QList<QCheckBox *> boundCheckBoxes(const QList<CheckBoxRow> &rows, Refreshers &refreshers, QWidget *parent)
{
    QList<QCheckBox *> boxes;
    for (const auto &[name, title, get, set] : rows) {
        auto *box = new QCheckBox(title, parent);
        box->setObjectName(name);
        bindControl(box, refreshers, get, set);
        boxes << box;
    }
    return boxes;
}

QLabel *noteLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setEnabled(false);
    return label;
}
} // namespace

ZDPreferencesWindow::ZDPreferencesWindow(ZDUserDefaults *defaults, QWidget *parent)
    : QWidget(parent, Qt::Window), m_defaults(defaults)
{
    setWindowTitle(tr("Preferences"));
    setObjectName(QStringLiteral("preferencesWindow"));
    auto *layout = new QVBoxLayout(this);
    m_tabs = new QTabWidget(this);
    m_tabs->setDocumentMode(true);
    m_tabs->addTab(createGeneralPane(), tr("General"));
    m_tabs->addTab(createEditorPane(), tr("Editor"));
    m_tabs->addTab(new ZDLanguagesPane(ZDLanguageRegistry::shared(), m_defaults, this), tr("Languages"));
    m_tabs->addTab(createSearchPane(), tr("Search"));
    layout->addWidget(m_tabs);
    resize(640, 560);

    if (m_defaults)
        connect(m_defaults, &ZDUserDefaults::valueChanged, this, [this] { refresh(); });
    refresh();
}

ZDPreferencesWindow::~ZDPreferencesWindow() = default;

void ZDPreferencesWindow::showPane(Pane pane)
{
    m_tabs->setCurrentIndex(int(pane));
}

void ZDPreferencesWindow::refresh()
{
    if (m_refreshing || !m_defaults)
        return;
    m_refreshing = true;
    for (const auto &refresher : m_refreshers)
        refresher();
    m_refreshing = false;
}

// General ---------------------------------------------------------------------------------------

QWidget *ZDPreferencesWindow::createGeneralPane()
{
    ZDUserDefaults *d = m_defaults;
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);

    auto *library = new QGroupBox(tr("Library"), pane);
    auto *libraryLayout = new QVBoxLayout(library);
    auto *location = new QLabel(library);
    location->setObjectName(QStringLiteral("libraryLocationLabel"));
    location->setTextInteractionFlags(Qt::TextSelectableByMouse);
    location->setWordWrap(true);
    auto *reveal = new QPushButton(tr("Show in File Manager"), library);
    auto *locationRow = new QHBoxLayout;
    locationRow->addWidget(location, 1);
    locationRow->addWidget(reveal);
    libraryLayout->addLayout(locationRow);
    m_refreshers.push_back(
        [location, d] { location->setText(QDir::toNativeSeparators(libraryLocation(d))); });
    connect(reveal, &QPushButton::clicked, this, [d] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(libraryLocation(d)).absolutePath()));
    });
    auto *integrity = new QCheckBox(tr("Check the library’s integrity when it opens"), library);
    bindControl(
        integrity, m_refreshers, [d] { return d->enableLibraryIntegrityCheck(); },
        [d](bool v) { d->setEnableLibraryIntegrityCheck(v); });
    libraryLayout->addWidget(integrity);
    layout->addWidget(library);

    auto *backups = new QGroupBox(tr("Backups"), pane);
    auto *backupsLayout = new QFormLayout(backups);
    auto *automatic = new QCheckBox(tr("Back up the library automatically"), backups);
    automatic->setObjectName(QStringLiteral("automaticBackupsBox"));
    bindControl(
        automatic, m_refreshers, [d] { return d->enableAutomaticBackups(); },
        [d](bool v) { d->setEnableAutomaticBackups(v); });
    auto *keep = new QComboBox(backups);
    keep->setObjectName(QStringLiteral("maximumBackupsBox"));
    for (int count : {20, 30, 50, 100})
        keep->addItem(tr("%1 backups").arg(count), count);
    bindControl(
        keep, m_refreshers, [d] { return QVariant(d->maximumBackupFiles()); },
        [d](const QVariant &v) { d->setMaximumBackupFiles(v.toInt()); });
    connect(automatic, &QCheckBox::toggled, keep, &QWidget::setEnabled);
    m_refreshers.push_back([keep, d] { keep->setEnabled(d->enableAutomaticBackups()); });
    backupsLayout->addRow(automatic);
    backupsLayout->addRow(tr("Keep at most:"), keep);
    layout->addWidget(backups);

    auto *startup = new QGroupBox(tr("Start-up and Tray"), pane);
    auto *startupLayout = new QVBoxLayout(startup);
    auto *login = new QCheckBox(tr("Launch Zandrio at login"), startup);
    login->setObjectName(QStringLiteral("launchAtLoginBox"));
    auto *loginProblem = new QLabel(startup);
    loginProblem->setObjectName(QStringLiteral("launchAtLoginProblem"));
    loginProblem->setWordWrap(true);
    loginProblem->hide();
    bindControl(
        login, m_refreshers, [d] { return d->launchAtLogin(); },
        [d, login, loginProblem](bool v) {
            ZDError error(0, tr("Launching at login is not available on this desktop."));
            ZDPlatform *platform = ZDPlatform::shared();
            if (platform && platform->setLaunchesAtLogin(v, &error)) {
                d->setLaunchAtLogin(v);
                loginProblem->hide();
                return;
            }
            // The box shows the stored preference again, and the pane says why it stays.
            const QSignalBlocker blocker(login);
            login->setChecked(d->launchAtLogin());
            QString text = error.description();
            if (!error.recoverySuggestion().isEmpty())
                text += QLatin1Char(' ') + error.recoverySuggestion();
            loginProblem->setText(text);
            loginProblem->setToolTip(error.toString());
            loginProblem->show();
        });
    auto *tray = new QCheckBox(tr("Show the Zandrio icon in the system tray"), startup);
    tray->setObjectName(QStringLiteral("trayIconBox"));
    bindControl(
        tray, m_refreshers, [d] { return d->showMenubarIcon(); }, [d](bool v) { d->setShowMenubarIcon(v); });
    auto *keepRunning = new QCheckBox(tr("Keep running in the tray when the main window closes"), startup);
    bindControl(
        keepRunning, m_refreshers, [d] { return d->hideDockIcon(); }, [d](bool v) { d->setHideDockIcon(v); });
    connect(tray, &QCheckBox::toggled, keepRunning, &QWidget::setEnabled);
    m_refreshers.push_back([keepRunning, d] { keepRunning->setEnabled(d->showMenubarIcon()); });
    startupLayout->addWidget(login);
    startupLayout->addWidget(loginProblem);
    startupLayout->addWidget(tray);
    startupLayout->addWidget(keepRunning);
    layout->addWidget(startup);

    auto *diagnostics = new QGroupBox(tr("Diagnostics"), pane);
    auto *diagnosticsLayout = new QVBoxLayout(diagnostics);
    auto *usage = new QCheckBox(tr("Record anonymous usage events in the log"), diagnostics);
    bindControl(
        usage, m_refreshers, [d] { return d->sendUsage(); }, [d](bool v) { d->setSendUsage(v); });
    auto *detailed = new QCheckBox(tr("Detailed logging"), diagnostics);
    bindControl(
        detailed, m_refreshers, [d] { return d->enableDetailedLogging(); },
        [d](bool v) { d->setEnableDetailedLogging(v); });
    diagnosticsLayout->addWidget(usage);
    diagnosticsLayout->addWidget(detailed);
    diagnosticsLayout->addWidget(noteLabel(tr("Nothing is ever sent anywhere."), diagnostics));
    layout->addWidget(diagnostics);
    layout->addStretch(1);
    return pane;
}

// Editor ----------------------------------------------------------------------------------------

QWidget *ZDPreferencesWindow::createEditorPane()
{
    ZDUserDefaults *d = m_defaults;
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);

    layout->addWidget(new QLabel(tr("Theme:"), pane));
    auto *themes = new QListWidget(pane);
    themes->setObjectName(QStringLiteral("themeList"));
    themes->setViewMode(QListView::IconMode);
    themes->setIconSize(ThemePreviewSize);
    themes->setGridSize(ThemePreviewSize + QSize(16, themes->fontMetrics().height() + 14));
    themes->setResizeMode(QListView::Adjust);
    themes->setMovement(QListView::Static);
    themes->setWrapping(true);
    themes->setSpacing(2);
    themes->setUniformItemSizes(true);
    const qreal ratio = devicePixelRatioF();
    for (const QString &name : ZDEditorTheme::availableThemes()) {
        const auto theme = ZDEditorTheme::themeNamed(name);
        if (!theme)
            continue;
        // The preview keeps its own colours when selected; the name shows the selection.
        const QPixmap preview = zdThemePreview(*theme, ThemePreviewSize, ratio);
        QIcon icon(preview);
        icon.addPixmap(preview, QIcon::Selected);
        auto *item = new QListWidgetItem(icon, name, themes);
        item->setData(Qt::UserRole, name);
        item->setToolTip(theme->isDark() ? tr("%1 (dark)").arg(name) : name);
    }
    themes->setMinimumHeight(2 * themes->gridSize().height() + 8);
    m_refreshers.push_back([themes, d] {
        const QSignalBlocker blocker(themes);
        const QString current = ZDEditorTheme::currentTheme(*d)->name();
        for (int row = 0; row < themes->count(); ++row)
            if (themes->item(row)->data(Qt::UserRole).toString() == current)
                themes->setCurrentRow(row);
    });
    connect(themes, &QListWidget::currentItemChanged, this, [d](QListWidgetItem *item) {
        if (item)
            d->setEditorTheme(item->data(Qt::UserRole).toString());
    });
    layout->addWidget(themes, 1);

    auto *form = new QFormLayout;
    auto *fontRow = new QHBoxLayout;
    auto *family = new QFontComboBox(pane);
    family->setObjectName(QStringLiteral("fontFamilyBox"));
    family->setFontFilters(QFontComboBox::MonospacedFonts);
    auto *size = new QDoubleSpinBox(pane);
    size->setObjectName(QStringLiteral("fontSizeBox"));
    size->setRange(6, 72);
    size->setDecimals(1);
    size->setSuffix(tr(" pt"));
    fontRow->addWidget(family, 1);
    fontRow->addWidget(size);
    m_refreshers.push_back([family, size, d] {
        const ZDFontDescriptor font = d->editorFont();
        const QSignalBlocker familyBlocker(family);
        const QSignalBlocker sizeBlocker(size);
        family->setCurrentFont(QFont(font.family));
        size->setValue(font.pointSize);
    });
    const auto storeFont = [family, size, d] {
        d->setEditorFont(ZDFontDescriptor{family->currentFont().family(), size->value()});
    };
    connect(family, &QFontComboBox::currentFontChanged, this, storeFont);
    connect(size, &QDoubleSpinBox::valueChanged, this, storeFont);
    form->addRow(tr("Font:"), fontRow);

    auto *lineHeight = new QDoubleSpinBox(pane);
    lineHeight->setRange(0.8, 3.0);
    lineHeight->setSingleStep(0.1);
    lineHeight->setDecimals(1);
    bindControl(
        lineHeight, m_refreshers, [d] { return d->editorLineHeightMultiple(); },
        [d](double v) { d->setEditorLineHeightMultiple(v); });
    form->addRow(tr("Line height:"), lineHeight);

    auto *tabSize = new QSpinBox(pane);
    tabSize->setObjectName(QStringLiteral("tabSizeBox"));
    tabSize->setRange(1, 16); // never 0: the tab arithmetic divides by it
    bindControl(
        tabSize, m_refreshers, [d] { return d->tabSize(); }, [d](int v) { d->setTabSize(v); });
    form->addRow(tr("Tab width:"), tabSize);

    auto *indent = new QComboBox(pane);
    indent->setObjectName(QStringLiteral("indentMethodBox"));
    indent->addItem(tr("Spaces"), QStringLiteral("Spaces"));
    indent->addItem(tr("Tabs"), QStringLiteral("Tabs"));
    bindControl(
        indent, m_refreshers, [d] { return QVariant(d->indentMethod()); },
        [d](const QVariant &v) { d->setIndentMethod(v.toString()); });
    form->addRow(tr("Indent using:"), indent);

    auto *wrapRow = new QHBoxLayout;
    auto *softWrap = new QCheckBox(tr("Wrap long lines"), pane);
    softWrap->setObjectName(QStringLiteral("softWrapBox"));
    bindControl(
        softWrap, m_refreshers, [d] { return d->useSoftWrap(); }, [d](bool v) { d->setUseSoftWrap(v); });
    auto *wrapIndent = new QCheckBox(tr("Indent wrapped lines by"), pane);
    bindControl(
        wrapIndent, m_refreshers, [d] { return d->enableWrapIndent(); },
        [d](bool v) { d->setEnableWrapIndent(v); });
    auto *wrapIndentSize = new QSpinBox(pane);
    wrapIndentSize->setRange(0, 16);
    wrapIndentSize->setSuffix(tr(" spaces"));
    bindControl(
        wrapIndentSize, m_refreshers, [d] { return d->wrapIndentSize(); },
        [d](int v) { d->setWrapIndentSize(v); });
    m_refreshers.push_back([wrapIndent, wrapIndentSize, d] {
        wrapIndent->setEnabled(d->useSoftWrap());
        wrapIndentSize->setEnabled(d->useSoftWrap() && d->enableWrapIndent());
    });
    wrapRow->addWidget(softWrap);
    wrapRow->addSpacing(12);
    wrapRow->addWidget(wrapIndent);
    wrapRow->addWidget(wrapIndentSize);
    wrapRow->addStretch(1);
    form->addRow(tr("Wrapping:"), wrapRow);
    layout->addLayout(form);

    const QList<CheckBoxRow> checks{
        {QStringLiteral("invisiblesBox"), tr("Show invisible characters"),
         [d] { return d->showInvisibles(); }, [d](bool v) { d->setShowInvisibles(v); }},
        {QStringLiteral("autoIndentBox"), tr("Indent new lines like the line before"),
         [d] { return d->automaticallyIndentOnReturn(); },
         [d](bool v) { d->setAutomaticallyIndentOnReturn(v); }},
        {QStringLiteral("autoCloseBox"), tr("Close brackets and quotes automatically"),
         [d] { return d->automaticallyCloseBrackets(); },
         [d](bool v) { d->setAutomaticallyCloseBrackets(v); }},
        {QStringLiteral("linkDetectionBox"), tr("Detect web and mail addresses as links"),
         [d] { return d->automaticLinkDetection(); }, [d](bool v) { d->setAutomaticLinkDetection(v); }},
    };
    for (QCheckBox *box : boundCheckBoxes(checks, m_refreshers, pane))
        layout->addWidget(box);
    return pane;
}

// Search ----------------------------------------------------------------------------------------

QWidget *ZDPreferencesWindow::createSearchPane()
{
    ZDUserDefaults *d = m_defaults;
    auto *pane = new QWidget(this);
    auto *layout = new QFormLayout(pane);
    auto *scope = new QComboBox(pane);
    scope->setObjectName(QStringLiteral("searchScopeBox"));
    scope->addItem(tr("Titles, text and notes"), false);
    scope->addItem(tr("Titles only"), true);
    bindControl(
        scope, m_refreshers, [d] { return QVariant(d->searchScopeTitleOnly()); },
        [d](const QVariant &v) { d->setSearchScopeTitleOnly(v.toBool()); });
    layout->addRow(tr("Search in:"), scope);
    const QList<CheckBoxRow> checks{
        {QStringLiteral("fuzzyBox"), tr("Match words approximately (fuzzy search)"),
         [d] { return d->searchUsesFuzzy(); }, [d](bool v) { d->setSearchUsesFuzzy(v); }},
        {QStringLiteral("ignoreCaseBox"), tr("Ignore case"), [d] { return d->searchIngoresCase(); },
         [d](bool v) { d->setSearchIngoresCase(v); }},
        {QStringLiteral("relevanceBox"), tr("Arrange results by relevance"),
         [d] { return d->searchArrangeByRelevance(); }, [d](bool v) { d->setSearchArrangeByRelevance(v); }},
    };
    for (QCheckBox *box : boundCheckBoxes(checks, m_refreshers, pane))
        layout->addRow(box);
    layout->addRow(
        noteLabel(tr("Results of a search replace the snippet list; arranged by relevance, the best "
                     "matches come first, otherwise the list keeps its sort order."),
                  pane));
    return pane;
}
