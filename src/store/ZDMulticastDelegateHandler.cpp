#include "ZDMulticastDelegateHandler.h"

#include <QCoreApplication>
#include <QPointer>

#include <algorithm>
#include <mutex>
#include <vector>

ZDLibraryListener::ZDLibraryListener() : m_anchor(std::make_shared<Anchor>(Anchor{this})) {}

ZDLibraryListener::~ZDLibraryListener()
{
    m_anchor->listener = nullptr;
}

struct ZDMulticastDelegateHandler::Table
{
    mutable std::mutex lock;
    std::vector<std::weak_ptr<ZDLibraryListener::Anchor>> listeners;

    std::vector<std::weak_ptr<ZDLibraryListener::Anchor>> snapshot() const
    {
        std::lock_guard guard(lock);
        return listeners;
    }
};

ZDMulticastDelegateHandler::ZDMulticastDelegateHandler() : m_table(std::make_shared<Table>()) {}

ZDMulticastDelegateHandler::~ZDMulticastDelegateHandler() = default;

ZDMulticastDelegateHandler &ZDMulticastDelegateHandler::globalHandler()
{
    static ZDMulticastDelegateHandler handler;
    return handler;
}

void ZDMulticastDelegateHandler::addDelegate(ZDLibraryListener *listener)
{
    if (!listener)
        return;
    std::lock_guard guard(m_table->lock);
    auto &listeners = m_table->listeners;
    // Entries of listeners that went away are dropped on the way.
    std::erase_if(listeners, [](const auto &entry) { return entry.expired(); });
    const bool present = std::any_of(listeners.begin(), listeners.end(),
                                     [&](const auto &entry) { return entry.lock() == listener->m_anchor; });
    if (!present)
        listeners.push_back(listener->m_anchor);
}

void ZDMulticastDelegateHandler::removeDelegate(ZDLibraryListener *listener)
{
    if (!listener)
        return;
    std::lock_guard guard(m_table->lock);
    std::erase_if(m_table->listeners, [&](const auto &entry) {
        const auto anchor = entry.lock();
        return !anchor || anchor == listener->m_anchor;
    });
}

void ZDMulticastDelegateHandler::removeAllDelegates()
{
    std::lock_guard guard(m_table->lock);
    m_table->listeners.clear();
}

int ZDMulticastDelegateHandler::delegateCount() const
{
    std::lock_guard guard(m_table->lock);
    return int(std::count_if(m_table->listeners.begin(), m_table->listeners.end(),
                             [](const auto &entry) { return !entry.expired(); }));
}

void ZDMulticastDelegateHandler::post(QObject *sender,
                                      std::function<void(ZDLibraryListener &, QObject *)> call)
{
    QCoreApplication *application = QCoreApplication::instance();
    if (!application)
        return;
    // One queued call per notice: the main thread's event queue keeps the posting order, whichever
    // thread posts. The table is read at delivery, so a listener removed or destroyed in between
    // receives nothing.
    QMetaObject::invokeMethod(
        application,
        [table = m_table, trackedSender = QPointer<QObject>(sender), call = std::move(call)] {
            for (const auto &entry : table->snapshot()) {
                // A listener called earlier in this walk may have destroyed this one.
                const auto anchor = entry.lock();
                if (anchor && anchor->listener)
                    call(*anchor->listener, trackedSender.data());
            }
        },
        Qt::QueuedConnection);
}

void ZDMulticastDelegateHandler::noteCategorySelectionChanged(const ZDCategoryNodePtr &category,
                                                              const QString &designatedSnippetUUID,
                                                              const QString &fragmentUUID, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) {
        l.categorySelectionDidChange(s, category, designatedSnippetUUID, fragmentUUID);
    });
}

void ZDMulticastDelegateHandler::noteSnippetSelectionChanged(const ZDSnippetList &snippets,
                                                             const QString &designatedFragmentUUID,
                                                             QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) {
        l.snippetSelectionDidChange(s, snippets, designatedFragmentUUID);
    });
}

void ZDMulticastDelegateHandler::noteFolderAdded(const ZDCategoryNodePtr &folder,
                                                 const ZDCategoryNodePtr &parentNode, int index,
                                                 QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.folderDidAdd(s, folder, parentNode, index); });
}

void ZDMulticastDelegateHandler::noteFolderRenamed(const ZDCategoryNodePtr &folder, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.folderDidRename(s, folder); });
}

void ZDMulticastDelegateHandler::noteFoldersRemoved(const QList<ZDCategoryNodePtr> &folders, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.foldersDidRemove(s, folders); });
}

void ZDMulticastDelegateHandler::noteFoldersReordered(const QList<ZDCategoryNodePtr> &folders,
                                                      QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.foldersDidReorder(s, folders); });
}

void ZDMulticastDelegateHandler::noteSmartGroupRenamed(const ZDCategoryNodePtr &smartGroup, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.smartGroupDidRename(s, smartGroup); });
}

void ZDMulticastDelegateHandler::noteTagRenamed(const ZDTagPtr &tag, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.tagDidRename(s, tag); });
}

void ZDMulticastDelegateHandler::noteTagsRemoved(const ZDTagList &tags, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.tagsDidRemove(s, tags); });
}

void ZDMulticastDelegateHandler::noteSnippetAdded(const ZDSnippetPtr &snippet, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.snippetDidAdd(s, snippet); });
}

void ZDMulticastDelegateHandler::noteSnippetContentChanged(const ZDSnippetPtr &snippet, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.snippetContentDidChange(s, snippet); });
}

void ZDMulticastDelegateHandler::noteSnippetTitleChanged(const ZDSnippetPtr &snippet, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.snippetTitleDidChange(s, snippet); });
}

void ZDMulticastDelegateHandler::noteSnippetsTagsChanged(const ZDSnippetList &snippets, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.snippetsTagsDidChange(s, snippets); });
}

void ZDMulticastDelegateHandler::noteSnippetsRemoved(const ZDSnippetList &snippets, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.snippetsDidRemove(s, snippets); });
}

void ZDMulticastDelegateHandler::noteSnippetsCategoryChanged(const ZDSnippetList &snippets, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.snippetsCategoryDidChange(s, snippets); });
}

void ZDMulticastDelegateHandler::noteSnippetsLanguageChanged(const ZDSnippetList &snippets, QObject *sender)
{
    post(sender, [=](ZDLibraryListener &l, QObject *s) { l.snippetsLanguageDidChange(s, snippets); });
}

void ZDMulticastDelegateHandler::noteApplicationLibraryChanged(QObject *sender)
{
    post(sender, [](ZDLibraryListener &l, QObject *s) { l.applicationLibraryDidChange(s); });
}

void ZDMulticastDelegateHandler::noteApplicationInitialized(QObject *sender)
{
    post(sender, [](ZDLibraryListener &l, QObject *s) { l.applicationDidFinishInitializing(s); });
}
