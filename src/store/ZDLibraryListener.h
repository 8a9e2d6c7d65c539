#pragma once

#include "ZDRecordTypes.h"

#include <QList>
#include <QString>

#include <memory>

class QObject;

/// Receives the library's change notices (ZDMulticastDelegateHandler), always on the main thread,
/// after the code that posted them has returned, and in the order they were posted. Every method has an empty
/// default, so a listener overrides only what it cares about. `sender` is whoever posted the notice; it is
/// not skipped, so a listener that posts must ignore its own notices where that matters.
///
/// Listeners are held weakly: one that is destroyed receives nothing more and need not
/// unregister. Destroy listeners on the main thread.
class ZDLibraryListener
{
public:
    ZDLibraryListener();
    virtual ~ZDLibraryListener();
    ZDLibraryListener(const ZDLibraryListener &) = delete;
    ZDLibraryListener &operator=(const ZDLibraryListener &) = delete;

    virtual void categorySelectionDidChange(QObject *sender, const ZDCategoryNodePtr &category,
                                            const QString &designatedSnippetUUID, const QString &fragmentUUID)
    {
    }
    virtual void snippetSelectionDidChange(QObject *sender, const ZDSnippetList &snippets,
                                           const QString &designatedFragmentUUID)
    {
    }
    virtual void folderDidAdd(QObject *sender, const ZDCategoryNodePtr &folder,
                              const ZDCategoryNodePtr &parentNode, int index)
    {
    }
    virtual void folderDidRename(QObject *sender, const ZDCategoryNodePtr &folder) {}
    virtual void foldersDidRemove(QObject *sender, const QList<ZDCategoryNodePtr> &folders) {}
    virtual void foldersDidReorder(QObject *sender, const QList<ZDCategoryNodePtr> &folders) {}
    virtual void smartGroupDidRename(QObject *sender, const ZDCategoryNodePtr &smartGroup) {}
    virtual void tagDidRename(QObject *sender, const ZDTagPtr &tag) {}
    virtual void tagsDidRemove(QObject *sender, const ZDTagList &tags) {}
    virtual void snippetDidAdd(QObject *sender, const ZDSnippetPtr &snippet) {}
    virtual void snippetContentDidChange(QObject *sender, const ZDSnippetPtr &snippet) {}
    virtual void snippetTitleDidChange(QObject *sender, const ZDSnippetPtr &snippet) {}
    virtual void snippetsTagsDidChange(QObject *sender, const ZDSnippetList &snippets) {}
    virtual void snippetsDidRemove(QObject *sender, const ZDSnippetList &snippets) {}
    virtual void snippetsCategoryDidChange(QObject *sender, const ZDSnippetList &snippets) {}
    virtual void snippetsLanguageDidChange(QObject *sender, const ZDSnippetList &snippets) {}
    /// The whole library was replaced or reloaded: drop every record held.
    virtual void applicationLibraryDidChange(QObject *sender) {}
    virtual void applicationDidFinishInitializing(QObject *sender) {}

private:
    friend class ZDMulticastDelegateHandler;
    struct Anchor
    {
        ZDLibraryListener *listener;
    };
    /// The handler keeps weak references to this; it dies with the listener.
    std::shared_ptr<Anchor> m_anchor;
};
