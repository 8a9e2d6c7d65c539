#pragma once

#include "ZDLibraryListener.h"

#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <shared_mutex>
#include <vector>

/// The process-wide change notifier. Whoever changed the library posts a notice here; every
/// registered listener receives it on the main thread, asynchronously, after the posting code
/// has returned. The table is walked on the notifier's concurrent queue, so two notices posted
/// close together may arrive in either order. Registration changes are exclusive of walks.
///
/// Notices may be posted from any thread; a QCoreApplication must exist.
class ZDMulticastDelegateHandler
{
public:
    static inline const QString queueLabel = QStringLiteral("com.varnok.Zandrio.NotificationCenter");

    ZDMulticastDelegateHandler();
    /// Waits for walks in progress; notices not yet delivered to the main thread still arrive.
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
    mutable std::shared_mutex m_tableLock;
    std::vector<std::weak_ptr<ZDLibraryListener::Anchor>> m_listeners;
    QThreadPool m_pool;
};
