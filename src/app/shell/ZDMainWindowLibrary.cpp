// The main window's side of the library: reloading the sidebar and list, following notices,
// and the commands that change the library.

#include "ZDMainWindow.h"

#include "ZDAnalytics.h"
#include "ZDCategoryNode.h"
#include "ZDCoreIndex.h"
#include "ZDDataCenter.h"
#include "ZDLibraryActions.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSearchEngine.h"
#include "ZDSearchView.h"
#include "ZDSidebarModel.h"
#include "ZDSidebarView.h"
#include "ZDSmartGroupCounts.h"
#include "ZDSmartGroupEditor.h"
#include "ZDSnippet.h"
#include "ZDSnippetCollection.h"
#include "ZDSnippetListModel.h"
#include "ZDSnippetListView.h"
#include "ZDSnippetPasteboard.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"

#include <QApplication>
#include <QClipboard>
#include <QCollator>
#include <QInputDialog>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>

void ZDMainWindow::setDataCenter(ZDDataCenter *center)
{
    m_center = center;
    m_actions.reset(center ? new ZDLibraryActions(*center, this) : nullptr);
    if (!center) {
        setLibraryState(tr("Loading library…"));
        return;
    }
    if (!center->dataCenterHasValidLibrary()) {
        const ZDError error = center->loadError();
        setLibraryState(error.description() + QStringLiteral("\n\n") + error.recoverySuggestion());
        return;
    }
    setLibraryState({});
    reloadSidebar();
    reloadList();
    m_list->setFocus();
}

void ZDMainWindow::scheduleReload(bool sidebarToo)
{
    m_reloadSidebar = m_reloadSidebar || sidebarToo;
    m_reloadTimer->start();
}

QList<ZDCategoryNodePtr> ZDMainWindow::sortedTagNodes() const
{
    QList<ZDCategoryNodePtr> tags = m_center->tagNodes();
    QHash<QString, qint64> counts;
    if (m_counts && m_defaults.tagsSortMethod() == SortBySnippetsCount) {
        for (const ZDIndexResult &tag : m_counts->tags())
            counts.insert(tag.ubiquitousName, tag.count);
    }
    const QCollator collator = ZDSnippetCollection::titleCollator();
    std::stable_sort(tags.begin(), tags.end(), [&](const ZDCategoryNodePtr &a, const ZDCategoryNodePtr &b) {
        if (counts.value(a->UUID()) != counts.value(b->UUID()))
            return counts.value(a->UUID()) > counts.value(b->UUID());
        return collator.compare(a->title(), b->title()) < 0;
    });
    return tags;
}

void ZDMainWindow::reloadSidebar()
{
    if (!m_center || !m_center->dataCenterHasValidLibrary())
        return;
    const QList<ZDCategoryNodePtr> tags = sortedTagNodes();
    m_shownTagUUIDs.clear();
    for (const ZDCategoryNodePtr &tag : tags)
        m_shownTagUUIDs << tag->UUID();
    // The counts come from the counting services, which follow the library on their own.
    m_sidebarModel->setContent(
        {m_center->shortcutNodes(), m_center->rootFolderNodes(), m_center->smartGroupNodes(), tags});
}

void ZDMainWindow::reloadList()
{
    if (!m_center || !m_center->dataCenterHasValidLibrary())
        return;
    if (m_showingSearchResults) {
        runSearch(); // the results follow the library
        return;
    }
    const QStringList selected = [this] {
        QStringList UUIDs;
        for (const ZDSnippetPtr &snippet : m_list->selectedSnippets())
            UUIDs << snippet->UUID();
        return UUIDs;
    }();
    ZDCategoryNodePtr node = m_sidebar->selectedNode();
    if (!node)
        node = ZDCategoryNode::allSnippetsNode();
    QSet<QString> knownFolders;
    const QHash<QString, QString> titles = m_center->folderTitles();
    for (auto it = titles.cbegin(); it != titles.cend(); ++it) {
        if (it.key() != QLatin1String(ZDUncategorizedUUID) && it.key() != QLatin1String(ZDAllSnippetsUUID))
            knownFolders.insert(it.key());
    }
    {
        QSignalBlocker blocker(m_list);
        m_listModel->setSnippets(ZDSnippetCollection::snippetsForNode(*node, m_center->snippets(), knownFolders));
        QItemSelection selection;
        for (const QString &UUID : selected) {
            const int row = m_listModel->rowOfSnippet(UUID);
            if (row >= 0)
                selection.select(m_listModel->index(row), m_listModel->index(row));
        }
        if (selection.isEmpty() && m_listModel->rowCount() > 0)
            selection.select(m_listModel->index(0), m_listModel->index(0));
        m_list->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
        if (!selection.isEmpty())
            m_list->selectionModel()->setCurrentIndex(selection.indexes().first(), QItemSelectionModel::NoUpdate);
    }
    const int count = m_listModel->rowCount();
    m_footer->setText(count == 1 ? tr("1 snippet") : tr("%1 snippets").arg(count));
    showSelectedSnippets();
}

void ZDMainWindow::showSearchResults(const ZDSnippetList &snippets, bool keepOrder)
{
    m_showingSearchResults = true;
    m_listModel->setSnippets(snippets, keepOrder);
    if (m_listModel->rowCount() > 0)
        m_list->selectionModel()->setCurrentIndex(m_listModel->index(0), QItemSelectionModel::ClearAndSelect);
    const int count = m_listModel->rowCount();
    m_footer->setText(count == 1 ? tr("1 result") : tr("%1 results").arg(count));
}

void ZDMainWindow::clearSearchResults()
{
    m_showingSearchResults = false;
    scheduleReload(false);
}

void ZDMainWindow::showSelectedSnippets()
{
    const ZDSnippetList selected = m_list->selectedSnippets();
    const ZDSnippetPtr snippet = selected.size() == 1 ? selected.first() : nullptr;
    if (snippet == m_shownSnippet && (snippet || m_editorStack->currentWidget() == m_editorPlaceholder))
        return;
    m_shownSnippet = snippet;
    if (m_center && !selected.isEmpty())
        m_notifier.noteSnippetSelectionChanged(selected, {}, this);
    if (m_editor && m_showSnippet) {
        m_showSnippet(snippet);
        m_editorStack->setCurrentWidget(snippet ? m_editor : static_cast<QWidget *>(m_editorPlaceholder));
    } else {
        m_editorStack->setCurrentWidget(m_editorPlaceholder);
    }
    m_editorPlaceholder->setText(selected.size() > 1 ? tr("%1 Snippets Selected").arg(selected.size())
                                                      : tr("No Snippet Selected"));
}

void ZDMainWindow::revealSnippet(const QString &snippetUUID)
{
    if (m_listModel->rowOfSnippet(snippetUUID) < 0 && !m_showingSearchResults) {
        m_sidebar->selectNode(ZDCategoryNode::AllSnippets, QLatin1String(ZDAllSnippetsUUID));
        reloadList();
    }
    m_list->selectSnippet(snippetUUID);
}

// Notices.

void ZDMainWindow::snippetDidAdd(QObject *sender, const ZDSnippetPtr &snippet)
{
    scheduleReload(false);
    if (sender == this) {
        // Our own new snippet: show it at once, selected, so the user can type its title.
        m_reloadTimer->stop();
        reloadList();
        revealSnippet(snippet->UUID());
    }
}

void ZDMainWindow::snippetContentDidChange(QObject *, const ZDSnippetPtr &snippet)
{
    m_listModel->snippetChanged(snippet->UUID());
}

void ZDMainWindow::snippetTitleDidChange(QObject *, const ZDSnippetPtr &snippet)
{
    m_listModel->snippetChanged(snippet->UUID());
}

void ZDMainWindow::snippetsLanguageDidChange(QObject *, const ZDSnippetList &snippets)
{
    for (const ZDSnippetPtr &snippet : snippets)
        m_listModel->snippetChanged(snippet->UUID());
}

void ZDMainWindow::snippetsDidRemove(QObject *, const ZDSnippetList &snippets)
{
    QStringList UUIDs;
    for (const ZDSnippetPtr &snippet : snippets)
        UUIDs << snippet->UUID();
    m_listModel->removeSnippets(UUIDs);
    scheduleReload(false);
}

void ZDMainWindow::categorySelectionDidChange(QObject *sender, const ZDCategoryNodePtr &category,
                                              const QString &designatedSnippetUUID, const QString &)
{
    if (sender == this || !category)
        return;
    // Someone else (the quick panel, a link) asks for a node and perhaps a snippet in it.
    m_sidebar->selectNode(category->nodeType(), category->UUID());
    if (!designatedSnippetUUID.isEmpty()) {
        reloadList();
        revealSnippet(designatedSnippetUUID);
    }
}

// Commands.

bool ZDMainWindow::confirm(const QString &text, const QString &informative, const QString &button)
{
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Zandrio"), text, QMessageBox::Cancel, this);
    box.setInformativeText(informative);
    QPushButton *ok = box.addButton(button, QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    return box.clickedButton() == ok;
}

ZDCategoryNodePtr ZDMainWindow::newFolder(const QString &title)
{
    if (!m_actions)
        return nullptr;
    ZDCategoryNodePtr parent = m_sidebar->selectedNode();
    if (!parent || !parent->isFolder())
        parent = nullptr;
    ZDCategoryNodePtr folder = m_actions->addFolder(title.isEmpty() ? tr("untitled folder") : title, parent);
    if (!folder)
        return nullptr;
    reloadSidebar();
    m_sidebar->selectNode(ZDCategoryNode::Folder, folder->UUID());
    if (title.isEmpty())
        m_sidebar->edit(m_sidebar->currentIndex());
    return folder;
}

ZDSnippetPtr ZDMainWindow::newSnippet()
{
    if (!m_actions)
        return nullptr;
    ZDCategoryNodePtr node = m_sidebar->selectedNode();
    if (node && node->isSmartGroup())
        node = nullptr; // a new snippet may not match the query; it goes to Uncategorized
    return m_actions->createSnippet(node);
}

void ZDMainWindow::newSmartGroup()
{
    if (!m_actions)
        return;
    ZDSmartGroupEditor editor(tr("untitled smart group"), QStringLiteral("title CONTAINS[cd] \"\""), this);
    if (editor.exec() != QDialog::Accepted || editor.title().isEmpty())
        return;
    if (ZDCategoryNodePtr group = m_actions->addSmartGroup(editor.title(), editor.predicateString())) {
        reloadSidebar();
        m_sidebar->selectNode(ZDCategoryNode::SmartGroup, group->UUID());
    }
}

void ZDMainWindow::editSmartGroup()
{
    const ZDCategoryNodePtr group = m_sidebar->selectedNode();
    if (!m_actions || !group || !group->isSmartGroup())
        return;
    ZDSmartGroupEditor editor(group->title(), group->predicateString(), this);
    if (editor.exec() != QDialog::Accepted)
        return;
    if (!editor.title().isEmpty() && editor.title() != group->title())
        m_actions->renameNode(group, editor.title());
    m_actions->setSmartGroupPredicate(group, editor.predicateString());
    scheduleReload(true);
}

void ZDMainWindow::newTag()
{
    if (!m_actions)
        return;
    bool ok = false;
    const QString title = QInputDialog::getText(this, tr("New Tag"), tr("Name:"), QLineEdit::Normal, {}, &ok).trimmed();
    if (!ok || title.isEmpty())
        return;
    if (ZDTagPtr tag = m_actions->tagNamed(title)) {
        reloadSidebar();
        m_sidebar->selectNode(ZDCategoryNode::Tag, tag->UUID());
    }
}

void ZDMainWindow::renameSelection()
{
    const ZDCategoryNodePtr node = m_sidebar->selectedNode();
    if (node && node->isRenamable()) {
        m_sidebar->setFocus();
        m_sidebar->edit(m_sidebar->currentIndex());
    }
}

void ZDMainWindow::deleteSelection()
{
    if (!m_actions)
        return;
    if (m_sidebar->hasFocus()) {
        const ZDCategoryNodePtr node = m_sidebar->selectedNode();
        if (!node || !node->isDeletable())
            return;
        QString informative = tr("You can’t undo this action.");
        if (node->isFolder()) {
            const int count = int(m_actions->snippetsInFolders({node}).size());
            if (count > 0)
                informative = tr("The %n snippet(s) in it will be deleted too. You can’t undo this action.", nullptr, count);
        }
        if (confirm(tr("Delete “%1”?").arg(node->title()), informative, tr("Delete")))
            m_actions->deleteNodes({node});
        return;
    }
    const ZDSnippetList snippets = m_list->selectedSnippets();
    if (snippets.isEmpty())
        return;
    const QString text = snippets.size() == 1 ? tr("Delete “%1”?").arg(snippets.first()->title())
                                               : tr("Delete %1 snippets?").arg(snippets.size());
    if (confirm(text, tr("You can’t undo this action."), tr("Delete")))
        m_actions->deleteSnippets(snippets);
}

void ZDMainWindow::copySnippets(bool cut)
{
    QWidget *focus = QApplication::focusWidget();
    if (focus != m_list) {
        if (focus)
            QMetaObject::invokeMethod(focus, cut ? "cut" : "copy");
        return;
    }
    const ZDSnippetList snippets = m_list->selectedSnippets();
    if (snippets.isEmpty())
        return;
    auto *mime = new QMimeData;
    ZDSnippetPasteboard::writeSnippets(mime, snippets);
    QStringList texts;
    for (const ZDSnippetPtr &snippet : snippets) {
        for (const ZDSnippetPartPtr &part : snippet->parts())
            texts << part->content();
    }
    mime->setText(texts.join(QStringLiteral("\n\n")));
    QApplication::clipboard()->setMimeData(mime);
    if (cut && m_actions)
        m_actions->deleteSnippets(snippets);
}

void ZDMainWindow::pasteSnippets()
{
    QWidget *focus = QApplication::focusWidget();
    const QMimeData *mime = QApplication::clipboard()->mimeData();
    if (focus != m_list && focus != m_sidebar) {
        if (focus)
            QMetaObject::invokeMethod(focus, "paste");
        return;
    }
    if (!m_actions || !mime || !ZDSnippetPasteboard::canReadSnippets(mime))
        return;
    const ZDSnippetList added = m_actions->pasteSnippets(ZDSnippetPasteboard::readSnippets(mime),
                                                         ZDLibraryActions::folderUUIDForNode(m_sidebar->selectedNode()));
    if (!added.isEmpty()) {
        reloadList();
        m_list->selectSnippet(added.first()->UUID());
    }
}

void ZDMainWindow::applyDrop(const ZDSidebarDrop &drop)
{
    if (m_actions)
        m_actions->applyDrop(drop);
}

// Searching.

void ZDMainWindow::setSmartGroupCounts(ZDSmartGroupCounts *counts)
{
    m_smartGroupCounts = counts;
    m_sidebarModel->setCountSources(m_counts, m_smartGroupCounts);
}

void ZDMainWindow::setSearchServices(ZDSearchEngine *engine, ZDCoreIndex *counts)
{
    if (m_counts)
        disconnect(m_counts, nullptr, this, nullptr);
    m_engine = engine;
    m_counts = counts;
    m_sidebarModel->setCountSources(m_counts, m_smartGroupCounts);
    if (counts) {
        // Tags sorted by count move when their counts change.
        connect(counts, &ZDCoreIndex::indexDidChange, this, [this] {
            if (!m_center || !m_center->dataCenterHasValidLibrary() ||
                m_defaults.tagsSortMethod() != SortBySnippetsCount)
                return;
            QStringList order;
            for (const ZDCategoryNodePtr &tag : sortedTagNodes())
                order << tag->UUID();
            if (order != m_shownTagUUIDs)
                scheduleReload(true);
        });
    }
    m_search->setProposalProvider([this](ZDSearchView *view, const QString &keyword) {
        if (!m_counts)
            return QList<ZDSearchProposalSection>();
        return zdSearchProposals(keyword, view->searchConstraints(), m_counts->folders(), m_counts->tags(),
                                 m_counts->languages());
    });
}

void ZDMainWindow::runSearch()
{
    const QString keyword = m_search->searchKeyword();
    const QList<ZDSearchConstraint> constraints = m_search->searchConstraints();
    if (!m_engine || !m_center || (keyword.trimmed().isEmpty() && constraints.isEmpty())) {
        if (m_showingSearchResults)
            clearSearchResults();
        return;
    }
    const ZDSnippetList results = m_engine->snippetsWithKeyword(keyword, constraints, !m_defaults.searchScopeTitleOnly(),
                                                                m_defaults.searchUsesFuzzy(), !m_defaults.searchIgnoresCase());
    zdReportEvent(QStringLiteral("Search"), {});
    showSearchResults(results, m_defaults.searchArrangeByRelevance() && !keyword.trimmed().isEmpty());
}
