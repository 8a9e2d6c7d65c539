#include "ZDMainWindow.h"

#include "ZDCategoryNode.h"
#include "ZDDataCenter.h"
#include "ZDEditorTheme.h"
#include "ZDLibraryActions.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSearchView.h"
#include "ZDSidebarModel.h"
#include "ZDSidebarView.h"
#include "ZDSnippet.h"
#include "ZDSnippetListModel.h"
#include "ZDSnippetListView.h"
#include "ZDUserDefaults.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

namespace {
QSettings windowSettings()
{
    return QSettings(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                         QStringLiteral("/Zandrio/WindowState.ini"),
                     QSettings::IniFormat);
}
} // namespace

ZDMainWindow::ZDMainWindow(ZDUserDefaults &defaults, ZDMulticastDelegateHandler &notifier, QWidget *parent)
    : QMainWindow(parent), m_defaults(defaults), m_notifier(notifier)
{
    setWindowTitle(QStringLiteral("Zandrio"));
    setObjectName(QStringLiteral("mainWindow"));
    m_reloadTimer = new QTimer(this);
    m_reloadTimer->setSingleShot(true);
    m_reloadTimer->setInterval(30);
    connect(m_reloadTimer, &QTimer::timeout, this, [this] {
        const bool sidebar = std::exchange(m_reloadSidebar, false);
        if (sidebar)
            reloadSidebar(); // counts too
        reloadList(!sidebar);
    });
    buildLayout();
    buildMenus();
    applyTheme();
    restoreWindowState();
    connect(&m_defaults, &ZDUserDefaults::valueChanged, this, [this](const QString &key) {
        if (key == ZDPreferenceKeys::EditorTheme)
            applyTheme();
        else if (key == ZDPreferenceKeys::SnippetsSortMethod || key == ZDPreferenceKeys::SnippetsSortOrder)
            m_listModel->setSortDescriptor(m_defaults.snippetsSortMethod(), m_defaults.snippetsSortOrder());
        else if (key == ZDPreferenceKeys::AutoSortFoldersAndSmartGroups)
            m_sidebarModel->setSortsFoldersAndSmartGroups(m_defaults.automaticallySortFoldersAndSmartGroups());
        else if (key == ZDPreferenceKeys::ShowSidebar)
            m_sidebar->setVisible(m_defaults.showSidebar());
    });
    m_notifier.addDelegate(this);
    setLibraryState(tr("Loading library…"));
}

ZDMainWindow::~ZDMainWindow() = default;

void ZDMainWindow::buildLayout()
{
    m_sidebarModel = new ZDSidebarModel(this);
    m_sidebarModel->setSortsFoldersAndSmartGroups(m_defaults.automaticallySortFoldersAndSmartGroups());
    m_sidebar = new ZDSidebarView;
    m_sidebar->setSidebarModel(m_sidebarModel);
    m_sidebar->setVisible(m_defaults.showSidebar());
    connect(m_sidebar, &ZDSidebarView::selectedNodeChanged, this, [this](const ZDCategoryNodePtr &node) {
        if (m_center)
            m_notifier.noteCategorySelectionChanged(node, {}, {}, this);
        if (!m_search->isEmpty())
            m_search->clearContent();
        clearSearchResults();
    });
    connect(m_sidebarModel, &ZDSidebarModel::renameRequested, this,
            [this](const ZDCategoryNodePtr &node, const QString &title) {
                if (m_actions)
                    m_actions->renameNode(node, title);
            });
    connect(m_sidebar, &QTreeView::doubleClicked, this, [this](const QModelIndex &index) {
        if (const ZDCategoryNodePtr node = m_sidebarModel->nodeAtIndex(index); node && node->isSmartGroup())
            editSmartGroup();
    });
    connect(m_sidebarModel, &ZDSidebarModel::dropRequested, this, &ZDMainWindow::applyDrop, Qt::QueuedConnection);

    m_listModel = new ZDSnippetListModel(this);
    m_listModel->setSortDescriptor(m_defaults.snippetsSortMethod(), m_defaults.snippetsSortOrder());
    m_list = new ZDSnippetListView;
    m_list->setListModel(m_listModel);
    connect(m_list, &ZDSnippetListView::selectedSnippetsChanged, this, &ZDMainWindow::showSelectedSnippets);
    connect(m_list, &ZDSnippetListView::deleteRequested, this, &ZDMainWindow::deleteSelection);

    m_stateLabel = new QLabel;
    m_stateLabel->setObjectName(QStringLiteral("libraryState"));
    m_stateLabel->setAlignment(Qt::AlignCenter);
    m_stateLabel->setWordWrap(true);
    m_listStack = new QStackedWidget;
    m_listStack->addWidget(m_list);
    m_listStack->addWidget(m_stateLabel);

    m_search = new ZDSearchView;
    connect(m_search, &ZDSearchView::searchQueryDidChange, this, &ZDMainWindow::runSearch);
    auto *searchHost = new QWidget;
    auto *searchLayout = new QVBoxLayout(searchHost);
    searchLayout->setContentsMargins(8, 8, 8, 6);
    searchLayout->addWidget(m_search);

    m_footer = new QLabel;
    m_footer->setObjectName(QStringLiteral("listFooter"));
    m_footer->setContentsMargins(10, 4, 10, 4);
    m_footer->setAlignment(Qt::AlignCenter);
    QPalette footerPalette = m_footer->palette();
    footerPalette.setColor(QPalette::WindowText, footerPalette.color(QPalette::PlaceholderText));
    m_footer->setPalette(footerPalette);

    auto *middle = new QWidget;
    auto *middleLayout = new QVBoxLayout(middle);
    middleLayout->setContentsMargins(0, 0, 0, 0);
    middleLayout->setSpacing(0);
    middleLayout->addWidget(searchHost);
    middleLayout->addWidget(m_listStack, 1);
    middleLayout->addWidget(m_footer);

    m_editorPlaceholder = new QLabel(tr("No Snippet Selected"));
    m_editorPlaceholder->setAlignment(Qt::AlignCenter);
    m_editorPlaceholder->setObjectName(QStringLiteral("editorPlaceholder"));
    m_editorStack = new QStackedWidget;
    m_editorStack->addWidget(m_editorPlaceholder);

    m_splitter = new QSplitter(Qt::Horizontal);
    m_splitter->setObjectName(QStringLiteral("mainSplitter"));
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(m_sidebar);
    m_splitter->addWidget(middle);
    m_splitter->addWidget(m_editorStack);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 0);
    m_splitter->setStretchFactor(2, 1);
    m_sidebar->setMinimumWidth(150);
    middle->setMinimumWidth(220);
    m_editorStack->setMinimumWidth(300);
    m_splitter->setSizes({250, 320, 630});
    setCentralWidget(m_splitter);
    setTabOrder(m_sidebar, m_search);
    setTabOrder(m_search, m_list);
    setTabOrder(m_list, m_editorStack);
}

void ZDMainWindow::buildMenus()
{
    auto add = [this](QMenu *menu, const QString &text, const QKeySequence &shortcut, auto slot) {
        QAction *action = menu->addAction(text);
        action->setShortcut(shortcut);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };

    QMenu *file = menuBar()->addMenu(tr("&File"));
    QAction *newSnippet = add(file, tr("New &Snippet"), QKeySequence::New, [this] { this->newSnippet(); });
    QAction *newFolder = add(file, tr("New &Folder"), QKeySequence(tr("Ctrl+Shift+N")), [this] { this->newFolder(); });
    add(file, tr("New S&mart Group…"), QKeySequence(tr("Ctrl+Alt+N")), &ZDMainWindow::newSmartGroup);
    add(file, tr("New &Tag…"), QKeySequence(), &ZDMainWindow::newTag);
    add(file, tr("&Edit Smart Group…"), QKeySequence(), &ZDMainWindow::editSmartGroup);
    file->addSeparator();
    add(file, tr("&Close Window"), QKeySequence::Close, [this] { close(); });
    add(file, tr("&Quit"), QKeySequence::Quit, [] { QApplication::quit(); });

    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    auto forward = [](const char *slot) {
        return [slot] {
            if (QWidget *focus = QApplication::focusWidget())
                QMetaObject::invokeMethod(focus, slot);
        };
    };
    add(edit, tr("&Undo"), QKeySequence::Undo, forward("undo"));
    add(edit, tr("&Redo"), QKeySequence::Redo, forward("redo"));
    edit->addSeparator();
    add(edit, tr("Cu&t"), QKeySequence::Cut, [this] { copySnippets(true); });
    add(edit, tr("&Copy"), QKeySequence::Copy, [this] { copySnippets(false); });
    add(edit, tr("&Paste"), QKeySequence::Paste, &ZDMainWindow::pasteSnippets);
    add(edit, tr("&Delete"), QKeySequence(), &ZDMainWindow::deleteSelection);
    add(edit, tr("&Rename"), QKeySequence(Qt::Key_F2), &ZDMainWindow::renameSelection);
    edit->addSeparator();
    add(edit, tr("&Find"), QKeySequence::Find, &ZDMainWindow::focusSearch);
    edit->addSeparator();
    QAction *preferences = add(edit, tr("Pre&ferences…"), QKeySequence(tr("Ctrl+,")), [this] { Q_EMIT preferencesRequested(); });
    preferences->setMenuRole(QAction::PreferencesRole);

    QMenu *view = menuBar()->addMenu(tr("&View"));
    QAction *showSidebar = view->addAction(tr("&Sidebar"));
    showSidebar->setCheckable(true);
    showSidebar->setChecked(m_defaults.showSidebar());
    showSidebar->setShortcut(QKeySequence(tr("Ctrl+Alt+S")));
    connect(showSidebar, &QAction::toggled, this, [this](bool on) { m_defaults.setShowSidebar(on); });
    QMenu *sort = view->addMenu(tr("Sort &By"));
    auto *methods = new QActionGroup(this);
    for (const auto &[method, title] : {std::pair{int(SortByDateModified), tr("Date Modified")},
                                        std::pair{int(SortByDateCreated), tr("Date Created")},
                                        std::pair{int(SortByName), tr("Title")}}) {
        QAction *action = sort->addAction(title);
        action->setCheckable(true);
        action->setChecked(m_defaults.snippetsSortMethod() == method);
        methods->addAction(action);
        connect(action, &QAction::triggered, this, [this, m = method] { m_defaults.setSnippetsSortMethod(m); });
    }
    sort->addSeparator();
    auto *orders = new QActionGroup(this);
    for (const auto &[order, title] : {std::pair{int(SortOrderAscending), tr("Ascending")},
                                       std::pair{int(SortOrderDescending), tr("Descending")}}) {
        QAction *action = sort->addAction(title);
        action->setCheckable(true);
        action->setChecked(m_defaults.snippetsSortOrder() == order);
        orders->addAction(action);
        connect(action, &QAction::triggered, this, [this, o = order] { m_defaults.setSnippetsSortOrder(o); });
    }

    QMenu *help = menuBar()->addMenu(tr("&Help"));
    add(help, tr("&About Zandrio"), QKeySequence(), [this] {
        QMessageBox::about(this, tr("About Zandrio"),
                           tr("<b>Zandrio</b> %1<br>A library of code snippets.").arg(QApplication::applicationVersion()));
    });

    QToolBar *toolbar = addToolBar(tr("Toolbar"));
    toolbar->setObjectName(QStringLiteral("toolbar"));
    toolbar->setMovable(false);
    toolbar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    newSnippet->setIcon(style()->standardIcon(QStyle::SP_FileIcon));
    newFolder->setIcon(style()->standardIcon(QStyle::SP_FileDialogNewFolder));
    toolbar->addAction(newSnippet);
    toolbar->addAction(newFolder);
    toolbar->addSeparator();
    showSidebar->setIcon(style()->standardIcon(QStyle::SP_FileDialogListView));
    toolbar->addAction(showSidebar);
}

void ZDMainWindow::applyTheme()
{
    const auto theme = ZDEditorTheme::currentTheme(m_defaults);
    if (!theme)
        return;
    m_sidebar->applyTheme(*theme);
    m_list->applyTheme(*theme);
    m_search->applyTheme(*theme);
    for (QWidget *pane : {static_cast<QWidget *>(m_stateLabel), static_cast<QWidget *>(m_editorPlaceholder)}) {
        QPalette palette = pane->palette();
        palette.setColor(QPalette::Window, theme->windowColor(ZDWindowColor::FilelistBackground));
        palette.setColor(QPalette::WindowText, theme->windowColor(ZDWindowColor::FilelistSecondaryText));
        pane->setPalette(palette);
        pane->setAutoFillBackground(true);
    }
}

void ZDMainWindow::restoreWindowState()
{
    QSettings settings = windowSettings();
    if (!restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray())) {
        // A first start: most of the screen, at most a comfortable size.
        const QRect screen = QApplication::primaryScreen() ? QApplication::primaryScreen()->availableGeometry()
                                                           : QRect(0, 0, 1280, 800);
        resize(std::min(1200, screen.width() * 9 / 10), std::min(760, screen.height() * 9 / 10));
        move(screen.center() - rect().center());
    }
    m_splitter->restoreState(settings.value(QStringLiteral("splitter")).toByteArray());
}

void ZDMainWindow::saveWindowState()
{
    QSettings settings = windowSettings();
    settings.setValue(QStringLiteral("geometry"), saveGeometry());
    settings.setValue(QStringLiteral("splitter"), m_splitter->saveState());
}

void ZDMainWindow::closeEvent(QCloseEvent *event)
{
    saveWindowState();
    QMainWindow::closeEvent(event);
}

void ZDMainWindow::setLibraryState(const QString &message)
{
    m_stateLabel->setText(message);
    m_listStack->setCurrentWidget(message.isEmpty() ? static_cast<QWidget *>(m_list) : m_stateLabel);
    if (!message.isEmpty())
        m_footer->clear();
}

void ZDMainWindow::setEditorWidget(QWidget *editor, std::function<void(const ZDSnippetPtr &)> showSnippet)
{
    if (m_editor) {
        m_editorStack->removeWidget(m_editor);
        if (editor)
            m_editor->deleteLater();
        else
            delete m_editor; // shutting down: the editor goes before the library does
    }
    m_editor = editor;
    m_showSnippet = std::move(showSnippet);
    if (editor)
        m_editorStack->addWidget(editor);
    m_shownSnippet.reset();
    showSelectedSnippets();
}

void ZDMainWindow::focusSearch()
{
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
}
