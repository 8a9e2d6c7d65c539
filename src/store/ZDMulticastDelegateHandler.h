#pragma once

#include "ZDLibraryListener.h"

#include <QObject>

#include <functional>
#include <memory>

/// The process-wide change notifier. Whoever changed the library posts a notice here; every
/// registered listener receives it on the main thread, asynchronously, after the posting code
/// has returned, and in the order the notices were posted: a notice is one queued call on the
/// main thread that walks the listener table as it stands then. Notices and registration are
/// safe from any thread; a QCoreApplication must exist for notices to arrive.
class ZDMulticastDelegateHandler
{
public:
    ZDMulticastDelegateHandler();
    /// Notices already posted still arrive, to the listeners registered at that time.
    ~ZDMulticastDelegateHandler();
    ZDMulticastDelegateHandler(const ZDMulticastDelegateHandler &) = delete;
    ZDMulticastDelegateHandler &operator=(const ZDMulticastDelegateHandler &) = delete;

    /// The program's notifier, made on first use.
    static ZDMulticastDelegateHandler &globalHandler();

    void addDelegate(ZDLibraryListener *listener);
    void removeDelegate(ZDLibraryListener *listener);
    void removeAllDelegates();
    int delegateCount() const;

    void noteCategorySelectionChanged(const ZDCategoryNodePtr &category, const QString &designatedSnippetUUID,
                                      const QString &fragmentUUID, QObject *sender);
    void noteSnippetSelectionChanged(const ZDSnippetList &snippets, const QString &designatedFragmentUUID,
                                     QObject *sender);
    void noteFolderAdded(const ZDCategoryNodePtr &folder, const ZDCategoryNodePtr &parentNode, int index,
                         QObject *sender);
    void noteFolderRenamed(const ZDCategoryNodePtr &folder, QObject *sender);
    void noteFoldersRemoved(const QList<ZDCategoryNodePtr> &folders, QObject *sender);
    void noteFoldersReordered(const QList<ZDCategoryNodePtr> &folders, QObject *sender);
    void noteSmartGroupRenamed(const ZDCategoryNodePtr &smartGroup, QObject *sender);
    void noteTagRenamed(const ZDTagPtr &tag, QObject *sender);
    void noteTagsRemoved(const ZDTagList &tags, QObject *sender);
    void noteSnippetAdded(const ZDSnippetPtr &snippet, QObject *sender);
    void noteSnippetContentChanged(const ZDSnippetPtr &snippet, QObject *sender);
    void noteSnippetTitleChanged(const ZDSnippetPtr &snippet, QObject *sender);
    void noteSnippetsTagsChanged(const ZDSnippetList &snippets, QObject *sender);
    void noteSnippetsRemoved(const ZDSnippetList &snippets, QObject *sender);
    void noteSnippetsCategoryChanged(const ZDSnippetList &snippets, QObject *sender);
    void noteSnippetsLanguageChanged(const ZDSnippetList &snippets, QObject *sender);
    void noteApplicationLibraryChanged(QObject *sender);
    void noteApplicationInitialized(QObject *sender);

    /// Delivers `call` to every listener (the general form of the notices above). `sender` is
    /// tracked so that a sender destroyed before delivery is passed as null.
    void post(QObject *sender, std::function<void(ZDLibraryListener &, QObject *sender)> call);

private:
    struct Table;
    /// Shared with the notices on their way, which may outlive the handler.
    std::shared_ptr<Table> m_table;
};
