#pragma once

#include "ZDCategoryNode.h"
#include "ZDError.h"
#include "ZDLibraryRepair.h"
#include "ZDPackageStorage.h"
#include "ZDRecordDirectory.h"
#include "ZDRecordTypes.h"
#include "ZDWriteTimer.h"

#include <QHash>
#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <mutex>

struct ZDLibraryContents;
class ZDLanguage;
class ZDMulticastDelegateHandler;
class ZDOutdatedVersionResponder;
class ZDUserDefaults;
class ZDWriteScheduler;

/// The library store: owns the in-memory library (snippets, folder tree, shortcuts, smart
/// groups, tags) of one package on disk, applies every mutation to the lists and to the
/// in-memory package tree at once, and leaves the disk write to the serial file-system queue
/// "Zandrio File System (SFS)" on the 30-second write tick (first change written at once).
///
/// Lists and mutations belong to the main thread (the thread that made the store). Callers change
/// the library through the operations, which check, change and post the detailed notice on the
/// notifier; the list mutations beneath them announce nothing, and the store itself announces
/// only wholesale changes (noteApplicationLibraryChanged).
///
/// Another process writing the same package (zandrio-cli beside the desktop program) is seen by
/// a file watcher and told from our own writes by the "identifier" stamp; a write takes the
/// package lock and, when the stamp on disk is not ours, first takes in what is on disk and puts
/// our unwritten edits on top, so neither side's changes are lost.
///
/// Also the records' directory (tag list, folder titles, default languages) while installed.
class ZDDataCenter : public QObject, public ZDRecordDirectory
{
    Q_OBJECT
public:
    struct Options
    {
        /// The package directory. Nothing there yet: the store holds the empty package, which
        /// the first save writes.
        QString packagePath;
        /// Preferences (integrity check, repair switch); the standard ones when null.
        ZDUserDefaults *defaults = nullptr;
        /// Asked once when the package was written by a newer version; null refuses.
        ZDOutdatedVersionResponder *outdatedVersionResponder = nullptr;
        /// The notifier wholesale changes are posted on; the global one when null.
        ZDMulticastDelegateHandler *notifier = nullptr;
        /// The write tick; a 30-second timer when null.
        std::unique_ptr<ZDWriteTimer> writeTimer;
        /// Watch the package for changes made by other processes.
        bool watchForExternalChanges = true;
        /// Keep a copy of the snippets in the user's cache folder (ZDRecordCache) for libraries of
        /// at least this many snippets, so that they load without unarchiving every file; 0 for
        /// every library, a negative number for none.
        int recordCacheMinimumSnippets = 1000;
        /// Run the repair pass after loading (a check that only reports turns it off).
        bool repairOnLoad = true;
        int watcherSettleDelayMs = 500;
        /// Shows a user-facing error (a modal alert in the desktop program). Mutations refused
        /// without a library, failed writes and the load error (one second after start) come
        /// here. When empty, errors are only logged.
        std::function<void(const ZDError &)> errorPresenter;
    };

    /// Loads the package at `options.packagePath` (the folder list, shortcuts, snippets, tags
    /// and smart groups) and runs the repair pass. Without a package tree the store stays
    /// empty and invalid with loadError() (104).
    explicit ZDDataCenter(Options options, QObject *parent = nullptr);
    /// Runs what is queued (writes included) before going away.
    ~ZDDataCenter() override;

    // Store access.

    /// The program's store, installed at start-up; null before.
    static ZDDataCenter *defaultCenter();
    static bool defaultCenterInitialized();
    /// Makes `center` the program's store and the records' directory (null removes both).
    static void install(ZDDataCenter *center);
    /// The program's store exists and loaded a package tree.
    static bool hasValidLibrary();
    bool dataCenterHasValidLibrary() const;
    /// Why the store is invalid (104); null when it is valid.
    ZDError loadError() const;

    /// "<application data>/main.zandriolibrary", the folder made when missing.
    static QString defaultLocalPackagePath(ZDError *error = nullptr);
    QString packagePath() const;
    /// The package's file name ("main.zandriolibrary" for the default location).
    QString packageFilename() const;

    /// Checks a package on disk before it is opened or put in place of the current library
    /// (errors 119-149); passes everything when the integrity-check preference is off.
    static bool validateFilePackageAtPath(const QString &packagePath, ZDUserDefaults &defaults,
                                          ZDError *error = nullptr);

    // Reading (main thread).

    ZDSnippetList snippets() const;
    /// The snippet with `UUID`, or null.
    ZDSnippetPtr snippetWithUUID(const QString &UUID) const;
    ZDTagList tags() const;
    QStringList tagNames() const;
    /// The tags as sidebar nodes.
    QList<ZDCategoryNodePtr> tagNodes() const;
    QList<ZDCategoryNodePtr> rootFolderNodes() const;
    QList<ZDCategoryNodePtr> shortcutNodes() const;
    QList<ZDCategoryNodePtr> smartGroupNodes() const;
    /// Every folder's title by UUID, and the Uncategorized and All Snippets nodes' titles.
    QHash<QString, QString> folderTitles() const;
    QHash<QString, QString> folderDefaultLanguageIdentifiers() const;
    /// The folder with `UUID` anywhere in the folder tree, or null.
    ZDCategoryNodePtr folderNodeWithUUID(const QString &UUID) const;
    QString defaultLanguageIdentifierForFolderWithUUID(const QString &UUID) const;
    /// Snippets by canonicalDateModified, newest first, cut to `limit` (0: all).
    ZDSnippetList recentModifiedSnippetsOfLimit(int limit) const;
    /// UUIDs of the snippets removed since the library was loaded.
    QStringList deletedUUIDs() const;

    // ZDRecordDirectory (any thread).
    ZDTagList allTags() const override;
    /// The folder's title for `UUID`, else the title of the smart group with that UUID;
    /// "(null)" for a null UUID.
    QString titleForShortcutNodeWithUUID(const QString &UUID, const QString &requester) const override;
    QString defaultLanguageIdentifierForFolderUUID(const QString &UUID) const override;

    // Mutations (main thread). Each changes the lists at once and queues the package edit.
    // Without a package tree nothing changes: the error (its code in ZDStoreErrors) goes to
    // `error` and to the error presenter, and false is returned.

    /// Re-adding a snippet (same UUID) replaces it and moves it to the end.
    bool addSnippet(const ZDSnippetPtr &snippet, ZDError *error = nullptr);
    bool addSnippetsFromArray(const ZDSnippetList &snippets, ZDError *error = nullptr);
    bool removeSnippetsFromArray(const ZDSnippetList &snippets, ZDError *error = nullptr);
    /// The snippets were changed in place: rewrites their files (on the write tick, as every change).
    bool setSnippetsUpdated(const ZDSnippetList &snippets, ZDError *error = nullptr);
    /// Also rebuilds the folder tables.
    bool setRootFolderNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error = nullptr);
    bool setShortcutNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error = nullptr);
    bool setSmartGroupNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error = nullptr);
    bool setTags(const ZDTagList &tags, ZDError *error = nullptr);
    /// Each node becomes a tag with its title and UUID.
    bool setTagNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error = nullptr);

    // Operations (main thread): the changes callers make, each in one call. An operation checks
    // first, then changes the records through the mutations above, then posts its notice on the
    // notifier with `sender` as the sender (after the change, once). A refused operation changes
    // no record and no list and returns false (or null) with its error: without a package tree
    // the error of the mutation it would have used, presented as theirs are; for bad arguments
    // (an unknown record, an empty title, a folder moved into itself...) an error of
    // ZDOperationErrors, which is not presented. An operation that finds nothing to change
    // returns true and posts nothing. Records are named by UUID; the library's own objects are
    // the ones changed.
    //
    // Positions (`index`) count among the list once the moved nodes are out of it; -1, or a
    // position past the end, is the end.

    /// Adds new snippets filed in one of the library's folders (or Uncategorized) and tagged
    /// with the library's tags; a UUID the library holds already is refused. noteSnippetAdded
    /// for each.
    bool addSnippets(const ZDSnippetList &snippets, QObject *sender, ZDError *error = nullptr);
    /// noteSnippetsRemoved.
    bool removeSnippets(const QStringList &snippetUUIDs, QObject *sender, ZDError *error = nullptr);
    /// Files the snippets in a folder, a shortcut's folder or Uncategorized;
    /// noteSnippetsCategoryChanged with those that moved.
    bool moveSnippetsToFolder(const QStringList &snippetUUIDs, const QString &folderUUID, QObject *sender,
                              ZDError *error = nullptr);
    /// Any title, an empty one too; noteSnippetTitleChanged.
    bool setSnippetTitle(const QString &snippetUUID, const QString &title, QObject *sender,
                         ZDError *error = nullptr);
    /// Makes `names` the snippet's tags, in that order. A name is trimmed and matched with the
    /// tag-name equivalence; a name no tag has becomes a new tag. Empty and repeated names are
    /// dropped. noteSnippetsTagsChanged.
    bool setSnippetTagNames(const QString &snippetUUID, const QStringList &names, QObject *sender,
                            ZDError *error = nullptr);
    /// Adds a tag at the end of the snippets' tags where it is missing; noteSnippetsTagsChanged
    /// with those that changed.
    bool addTagToSnippets(const QStringList &snippetUUIDs, const QString &tagUUID, QObject *sender,
                          ZDError *error = nullptr);

    /// Parts. Each posts noteSnippetContentChanged, a language change noteSnippetsLanguageChanged.
    /// A new empty part at `index` (clamped), in `language` when it is valid.
    ZDSnippetPartPtr addPart(const QString &snippetUUID, int index, const QString &title,
                             const ZDLanguage &language, QObject *sender, ZDError *error = nullptr);
    /// A snippet keeps at least one part.
    bool removePart(const QString &snippetUUID, const QString &partUUID, QObject *sender,
                    ZDError *error = nullptr);
    bool movePart(const QString &snippetUUID, int from, int to, QObject *sender, ZDError *error = nullptr);
    bool setPartTitle(const QString &snippetUUID, const QString &partUUID, const QString &title,
                      QObject *sender, ZDError *error = nullptr);
    /// Sets a part's content and note, saves the snippet and announces it, even when the part
    /// holds that text already: the editor shows typing in the record at once and commits it
    /// here when typing pauses.
    bool setPartText(const QString &snippetUUID, const QString &partUUID, const QString &content,
                     const QString &note, QObject *sender, ZDError *error = nullptr);
    struct PartText
    {
        QString partUUID;
        QString content;
        QString note;
    };
    /// The same for several parts of one snippet: one save and one notice. Refused as a whole
    /// when one of the parts is not the snippet's.
    bool setPartTexts(const QString &snippetUUID, const QList<PartText> &texts, QObject *sender,
                      ZDError *error = nullptr);
    bool setPartLanguage(const QString &snippetUUID, const QString &partUUID, const ZDLanguage &language,
                         QObject *sender, ZDError *error = nullptr);

    /// A new folder among `parentUUID`'s children (the top level when empty); noteFolderAdded
    /// with its parent and position.
    ZDCategoryNodePtr createFolder(const QString &title, const QString &parentUUID, int index,
                                   QObject *sender, ZDError *error = nullptr);
    /// noteFolderRenamed.
    bool renameFolder(const QString &folderUUID, const QString &title, QObject *sender,
                      ZDError *error = nullptr);
    /// Moves folders (dropped or reordered) into `parentUUID` (the top level when empty), never
    /// into one of them or their subfolders; noteFoldersReordered.
    bool moveFolders(const QStringList &folderUUIDs, const QString &parentUUID, int index, QObject *sender,
                     ZDError *error = nullptr);
    /// Deletes folders with their subfolders, the snippets filed in any of them and the
    /// shortcuts to them; noteSnippetsRemoved (when there were snippets), then noteFoldersRemoved.
    bool deleteFolders(const QStringList &folderUUIDs, QObject *sender, ZDError *error = nullptr);
    /// The snippets deleteFolders would delete with these folders.
    ZDSnippetList snippetsInFolders(const QStringList &folderUUIDs) const;

    /// Shortcuts, named by their folder's UUID. Each posts noteFoldersReordered with the
    /// shortcuts added, moved or deleted. A folder that has a shortcut gets no second one.
    bool addShortcuts(const QStringList &folderUUIDs, int index, QObject *sender, ZDError *error = nullptr);
    bool moveShortcuts(const QStringList &folderUUIDs, int index, QObject *sender, ZDError *error = nullptr);
    bool deleteShortcuts(const QStringList &folderUUIDs, QObject *sender, ZDError *error = nullptr);

    /// A new smart group at the end; its query must parse. noteFoldersReordered (the smart
    /// group list changed; there is no notice of its own for a new group).
    ZDCategoryNodePtr addSmartGroup(const QString &title, const QString &predicateString, QObject *sender,
                                    ZDError *error = nullptr);
    /// noteFoldersReordered.
    bool moveSmartGroups(const QStringList &UUIDs, int index, QObject *sender, ZDError *error = nullptr);
    /// noteSmartGroupRenamed.
    bool renameSmartGroup(const QString &UUID, const QString &title, QObject *sender,
                          ZDError *error = nullptr);
    /// The query must parse. noteSmartGroupRenamed: the group's definition changed.
    bool setSmartGroupPredicate(const QString &UUID, const QString &predicateString, QObject *sender,
                                ZDError *error = nullptr);
    /// noteFoldersRemoved.
    bool deleteSmartGroups(const QStringList &UUIDs, QObject *sender, ZDError *error = nullptr);

    /// The tag whose name is equivalent to `name` (ignoring case and diacritics), or null.
    ZDTagPtr tagWithName(const QString &name) const;
    /// A new tag; a name equivalent to an existing tag's is refused. noteTagRenamed (a title
    /// appeared in the tag list; there is no notice of its own for a new tag).
    ZDTagPtr addTag(const QString &title, QObject *sender, ZDError *error = nullptr);
    /// noteTagRenamed. A name equivalent to another tag's merges this tag into that one, which
    /// takes the new name: as mergeTags, then noteTagRenamed for it when its title changed.
    bool renameTag(const QString &tagUUID, const QString &title, QObject *sender, ZDError *error = nullptr);
    /// Replaces the tags by `intoTagUUID` on every snippet (each keeps one, where the first of
    /// them was) and deletes them; noteSnippetsTagsChanged (when snippets changed), then
    /// noteTagsRemoved.
    bool mergeTags(const QStringList &tagUUIDs, const QString &intoTagUUID, QObject *sender,
                   ZDError *error = nullptr);
    /// Deletes tags and takes them off their snippets; noteSnippetsTagsChanged (when snippets
    /// changed), then noteTagsRemoved.
    bool deleteTags(const QStringList &tagUUIDs, QObject *sender, ZDError *error = nullptr);

    /// Imports: appends folders, shortcuts and smart groups, adds the snippets and makes
    /// `replaceTags` the whole tag list; then posts the library-changed notice with the store as
    /// sender. All or nothing: refused (127 without a tree) before anything changes when a
    /// record is missing or a folder is one the library holds already.
    bool addFolderNodes(const QList<ZDCategoryNodePtr> &folderNodes, const QList<ZDCategoryNodePtr> &shortcutNodes,
                        const QList<ZDCategoryNodePtr> &smartGroups, const ZDSnippetList &snippets,
                        const ZDTagList &replaceTags, ZDError *error = nullptr);
    /// Imports that replace the library: every list is replaced; then the library-changed
    /// notice. All or nothing, as addFolderNodes.
    bool replaceFolderNodes(const QList<ZDCategoryNodePtr> &folderNodes, const QList<ZDCategoryNodePtr> &shortcutNodes,
                            const QList<ZDCategoryNodePtr> &smartGroups, const ZDTagList &tags,
                            const ZDSnippetList &snippets, ZDError *error = nullptr);

private:
    enum class StoredList
    {
        Folders,
        Shortcuts,
        SmartGroups,
        Tags
    };
    /// Writes a list again after one of its records was changed in place (a rename, a query).
    void rewriteList(StoredList list);

public:
    // Repair.

    /// What the repair pass would change now, without changing anything.
    ZDLibraryRepair::Report inspectInternalInconsistency() const;
    /// Moves snippets of unknown folders to Uncategorized, drops unknown tag UUIDs and dangling
    /// shortcuts (through the setters, so the fixes are saved), reports "LibraryRepair" when
    /// anything was fixed. Skipped when "ZDDisableRepairInternalInconsistencyIfNeeded" is set.
    ZDLibraryRepair::Report repairInternalInconsistencyIfNeeded();
    /// The same pass whatever the preference says (an explicit request to repair).
    ZDLibraryRepair::Report repairInternalInconsistency();

    // Writing and reloading.

    /// Called by every queued package edit (any thread): the library is dirty.
    void noteFilePackageContentChanged();
    bool needsWrite() const;
    /// Dirty, or the file-system queue holds an operation.
    bool hasPendingChanges() const;
    void enqueueWriteOperationIfNeeded();
    void enqueueWriteOperationRegardless();
    /// Blocks until the file-system queue is empty.
    void waitUntilAllOperationsAreFinished();
    /// Writes now, whatever the tick, and waits: for programs that exit after a change.
    bool save(ZDError *error = nullptr);
    /// The last write's error; null when the last write succeeded.
    ZDError lastWriteError() const;
    /// The stamp of this process's last write (or of the package as loaded).
    QString lastWriteUUID() const;
    /// Drops everything and loads the package again (135 when that fails; the store is then
    /// empty and invalid).
    bool forceReloadFromDisk(ZDError *error = nullptr);
    /// Reads the package anew and, only if that works, takes it in (keeping edits not yet
    /// written), reloads the lists and posts the library-changed notice.
    void updateDataWithLatestPackageWrapper();

    /// The write schedule (timer state, queue), for tests and the quit path.
    ZDWriteScheduler &writeScheduler();

Q_SIGNALS:
    /// A write finished on the queue (delivered on the main thread).
    void libraryWritten(bool success);

private:
    struct Private;
    void takeContents(ZDLibraryContents &&contents);
    void updateFolderTables();
    bool refuseWithoutTree(int code, ZDError *error);
    /// Queues an edit of the package tree that touches `paths`.
    void enqueueEdit(const QStringList &paths, std::function<void(ZDPackageTree &)> edit);
    /// Takes in the records of the package tree as it is now; posts the library-changed notice.
    void reloadFromTree();
    void presentError(const ZDError &error);

    std::unique_ptr<Private> d;
};
