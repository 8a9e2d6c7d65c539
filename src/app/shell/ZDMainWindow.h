#pragma once

#include "ZDLibraryListener.h"
#include "ZDRecordTypes.h"

#include <QMainWindow>

#include <functional>
#include <memory>

class QLabel;
class QSplitter;
class QStackedWidget;
class QTimer;
class ZDCoreIndex;
class ZDDataCenter;
class ZDLibraryActions;
class ZDMulticastDelegateHandler;
class ZDSidebarModel;
class ZDSidebarView;
class ZDSnippetListModel;
class ZDSnippetListView;
class ZDSearchEngine;
class ZDSearchView;
class ZDUserDefaults;
struct ZDSidebarDrop;

/// The main window: sidebar, snippet list with the search field above it, and the snippet
/// editor. Until a library is handed over it shows the loading state; it never blocks on the
/// library. Changes go through `ZDLibraryActions`; the window follows the library's notices.
class ZDMainWindow : public QMainWindow, public ZDLibraryListener
{
    Q_OBJECT
public:
    ZDMainWindow(ZDUserDefaults &defaults, ZDMulticastDelegateHandler &notifier, QWidget *parent = nullptr);
    ~ZDMainWindow() override;

    /// Shows `message` where the list goes, while the library loads or when it failed.
    void setLibraryState(const QString &message);
    /// Shows the library; null goes back to the loading state.
    void setDataCenter(ZDDataCenter *center);
    ZDDataCenter *dataCenter() const { return m_center; }
    /// The pane where the snippet editor goes (it replaces the placeholder).
    void setEditorWidget(QWidget *editor, std::function<void(const ZDSnippetPtr &)> showSnippet);
    /// The engine that answers the search field and the counts its "in:" proposals come from.
    void setSearchServices(ZDSearchEngine *engine, ZDCoreIndex *counts);
    /// Shows `snippets` in the list instead of the selected node's, in their order when
    /// `keepOrder`.
    void showSearchResults(const ZDSnippetList &snippets, bool keepOrder);
    /// Back to the selected node's snippets.
    void clearSearchResults();
    /// Runs the field's query now.
    void runSearch();

    ZDSidebarView *sidebar() const { return m_sidebar; }
    ZDSnippetListView *snippetList() const { return m_list; }
    ZDSearchView *searchField() const { return m_search; }
    ZDLibraryActions *actions() const { return m_actions.get(); }

    /// Selects the snippet in the list, switching the sidebar to All Snippets when the selected
    /// node does not list it.
    void revealSnippet(const QString &snippetUUID);

    // Commands of the menus, also used by the scripted run.
    ZDCategoryNodePtr newFolder(const QString &title = {});
    ZDSnippetPtr newSnippet();
    void focusSearch();

Q_SIGNALS:
    void preferencesRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

    // ZDLibraryListener
    void folderDidAdd(QObject *, const ZDCategoryNodePtr &, const ZDCategoryNodePtr &, int) override { scheduleReload(true); }
    void folderDidRename(QObject *, const ZDCategoryNodePtr &) override { scheduleReload(true); }
    void foldersDidRemove(QObject *, const QList<ZDCategoryNodePtr> &) override { scheduleReload(true); }
    void foldersDidReorder(QObject *, const QList<ZDCategoryNodePtr> &) override { scheduleReload(true); }
    void smartGroupDidRename(QObject *, const ZDCategoryNodePtr &) override { scheduleReload(true); }
    void tagDidRename(QObject *, const ZDTagPtr &) override { scheduleReload(true); }
    void tagsDidRemove(QObject *, const ZDTagList &) override { scheduleReload(true); }
    void snippetDidAdd(QObject *sender, const ZDSnippetPtr &snippet) override;
    void snippetContentDidChange(QObject *, const ZDSnippetPtr &snippet) override;
    void snippetTitleDidChange(QObject *, const ZDSnippetPtr &snippet) override;
    void snippetsTagsDidChange(QObject *, const ZDSnippetList &) override { scheduleReload(true); }
    void snippetsDidRemove(QObject *, const ZDSnippetList &snippets) override;
    void snippetsCategoryDidChange(QObject *, const ZDSnippetList &) override { scheduleReload(true); }
    void snippetsLanguageDidChange(QObject *, const ZDSnippetList &snippets) override;
    void applicationLibraryDidChange(QObject *) override { scheduleReload(true); }
    void categorySelectionDidChange(QObject *sender, const ZDCategoryNodePtr &category,
                                    const QString &designatedSnippetUUID, const QString &fragmentUUID) override;

private:
    void buildLayout();
    void buildMenus();
    void applyTheme();
    void restoreWindowState();
    void saveWindowState();

    void scheduleReload(bool sidebarToo);
    void reloadSidebar();
    /// Lists the selected node's snippets again; the sidebar's counts first unless just counted.
    void reloadList(bool recountFirst = true);
    void recount();
    void showSelectedSnippets();

    void deleteSelection();
    void renameSelection();
    void newSmartGroup();
    void editSmartGroup();
    void newTag();
    void copySnippets(bool cut);
    void pasteSnippets();
    void applyDrop(const ZDSidebarDrop &drop);
    bool confirm(const QString &text, const QString &informative, const QString &button);

    ZDUserDefaults &m_defaults;
    ZDMulticastDelegateHandler &m_notifier;
    ZDDataCenter *m_center = nullptr;
    std::unique_ptr<ZDLibraryActions> m_actions;

    QSplitter *m_splitter = nullptr;
    ZDSidebarModel *m_sidebarModel = nullptr;
    ZDSidebarView *m_sidebar = nullptr;
    ZDSnippetListModel *m_listModel = nullptr;
    ZDSnippetListView *m_list = nullptr;
    QStackedWidget *m_listStack = nullptr;
    QLabel *m_stateLabel = nullptr;
    QLabel *m_footer = nullptr;
    ZDSearchView *m_search = nullptr;
    ZDSearchEngine *m_engine = nullptr;
    ZDCoreIndex *m_counts = nullptr;
    QStackedWidget *m_editorStack = nullptr;
    QLabel *m_editorPlaceholder = nullptr;
    QWidget *m_editor = nullptr;
    std::function<void(const ZDSnippetPtr &)> m_showSnippet;
    QTimer *m_reloadTimer = nullptr;
    bool m_reloadSidebar = false;
    bool m_showingSearchResults = false;
    QHash<QString, int> m_folderCounts;
    QHash<QString, int> m_tagCounts;
    int m_totalCount = 0;
    ZDSnippetPtr m_shownSnippet;
};
