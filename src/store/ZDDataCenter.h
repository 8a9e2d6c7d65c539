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
class ZDMulticastDelegateHandler;
class ZDOutdatedVersionResponder;
class ZDPackageWatcher;
class ZDUserDefaults;
class ZDWriteScheduler;
namespace ZDRecordCache {
class Preload;
}

/// The library store: owns the in-memory library (snippets, folder tree, shortcuts, smart
/// groups, tags) of one package on disk, applies every mutation to the lists and to the
/// in-memory package tree at once, and leaves the disk write to the serial file-system queue
/// "Zandrio File System (SFS)" on the 30-second write tick (first change written at once).
///
/// Lists and mutations belong to the main thread (the thread that made the store). The store
/// announces only wholesale changes (noteApplicationLibraryChanged); whoever calls a mutation
/// posts the detailed notice on the notifier.
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
    /// The snippets were changed in place: rewrites their files. `updateImmediately` changes
    /// nothing about what is written or when.
    bool setSnippetsUpdated(const ZDSnippetList &snippets, bool updateImmediately = false, ZDError *error = nullptr);
    /// Also rebuilds the folder tables.
    bool setRootFolderNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error = nullptr);
    bool setShortcutNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error = nullptr);
    bool setSmartGroupNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error = nullptr);
    bool setTags(const ZDTagList &tags, ZDError *error = nullptr);
    /// Each node becomes a tag with its title and UUID.
    bool setTagNodes(const QList<ZDCategoryNodePtr> &nodes, ZDError *error = nullptr);

    /// Imports: appends folders, shortcuts and smart groups, adds the snippets and makes
    /// `replaceTags` the whole tag list; then posts the library-changed notice.
    bool addFolderNodes(const QList<ZDCategoryNodePtr> &folderNodes, const QList<ZDCategoryNodePtr> &shortcutNodes,
                        const QList<ZDCategoryNodePtr> &smartGroups, const ZDSnippetList &snippets,
                        const ZDTagList &replaceTags, ZDError *error = nullptr);
    /// Imports that replace the library: every list is replaced; then the library-changed notice.
    bool replaceFolderNodes(const QList<ZDCategoryNodePtr> &folderNodes, const QList<ZDCategoryNodePtr> &shortcutNodes,
                            const QList<ZDCategoryNodePtr> &smartGroups, const ZDTagList &tags,
                            const ZDSnippetList &snippets, ZDError *error = nullptr);

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
