#include "ZDMulticastDelegateHandler.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <mutex>

ZDLibraryListener::ZDLibraryListener() : m_anchor(std::make_shared<Anchor>(Anchor{this})) {}

ZDLibraryListener::~ZDLibraryListener()
{
    m_anchor->listener = nullptr;
}

ZDMulticastDelegateHandler::ZDMulticastDelegateHandler()
{
    m_pool.setObjectName(queueLabel);
    m_pool.setMaxThreadCount(std::max(2, QThread::idealThreadCount()));
}

ZDMulticastDelegateHandler::~ZDMulticastDelegateHandler()
{
    m_pool.waitForDone();
}

ZDMulticastDelegateHandler &ZDMulticastDelegateHandler::globalHandler()
{
    static ZDMulticastDelegateHandler handler;
    return handler;
}

void ZDMulticastDelegateHandler::addDelegate(ZDLibraryListener *listener)
{
    if (!listener)
        return;
    std::unique_lock lock(m_tableLock);
    // Entries of listeners that went away are dropped on the way.
    std::erase_if(m_listeners, [](const auto &entry) { return entry.expired(); });
    const bool present = std::any_of(m_listeners.begin(), m_listeners.end(),
                                     [&](const auto &entry) { return entry.lock() == listener->m_anchor; });
    if (!present)
        m_listeners.push_back(listener->m_anchor);
}

void ZDMulticastDelegateHandler::removeDelegate(ZDLibraryListener *listener)
{
    if (!listener)
        return;
    std::unique_lock lock(m_tableLock);
    std::erase_if(m_listeners, [&](const auto &entry) {
        const auto anchor = entry.lock();
        return !anchor || anchor == listener->m_anchor;
    });
}

void ZDMulticastDelegateHandler::removeAllDelegates()
{
    std::unique_lock lock(m_tableLock);
    m_listeners.clear();
}

int ZDMulticastDelegateHandler::delegateCount() const
{
    std::shared_lock lock(m_tableLock);
    return int(std::count_if(m_listeners.begin(), m_listeners.end(),
                             [](const auto &entry) { return !entry.expired(); }));
}

void ZDMulticastDelegateHandler::post(QObject *sender,
                                      std::function<void(ZDLibraryListener &, QObject *)> call)
{
    QPointer<QObject> trackedSender(sender);
    auto shared =
        std::make_shared<const std::function<void(ZDLibraryListener &, QObject *)>>(std::move(call));
    m_pool.start([this, trackedSender, shared] {
        QThread::currentThread()->setObjectName(queueLabel);
        std::vector<std::weak_ptr<ZDLibraryListener::Anchor>> listeners;
        {
            std::shared_lock lock(m_tableLock);
            listeners = m_listeners;
        }
        QCoreApplication *application = QCoreApplication::instance();
        if (!application)
            return;
        for (const auto &entry : listeners) {
            // The listener is looked up again on the main thread: it may be gone by then.
            QMetaObject::invokeMethod(
                application,
                [entry, trackedSender, shared] {
                    const auto anchor = entry.lock();
                    if (anchor && anchor->listener)
                        (*shared)(*anchor->listener, trackedSender.data());
                },
                Qt::QueuedConnection);
        }
    });
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
