#pragma once

#include "ZDError.h"
#include "ZDPackageStorage.h"
#include "ZDWriteTimer.h"

#include <QObject>
#include <QSet>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

struct ZDLibraryContents;
class ZDOutdatedVersionResponder;
class ZDPackageTree;
class ZDPackageWatcher;
class ZDWriteScheduler;
namespace ZDRecordCache {
class Preload;
}

/// The package side of a library store: the package tree held in memory, the edits queued on
/// it and its deferred write (the "Zandrio File System (SFS)" queue and the write tick,
/// ZDWriteScheduler), the write stamps, and the snippet cache of large libraries.
///
/// The store hands it edits of the tree with the paths they touch and takes in the records it
/// reads (ZDLibraryContents); the package holds bytes, never records. It keeps the paths edited
/// since the last successful write, so that a write that finds another process's stamp on disk
/// first takes in what is there and puts those edits on top, and it can watch the package for
/// such writes.
///
/// Lives on the main thread (the thread that made it); the tree belongs to the file-system
/// queue. Its watcher and write schedule are its children, so it moves between threads whole.
class ZDLibraryPackage : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        /// The package directory; nothing there yet reads as the empty package.
        QString packagePath;
        /// Asked once when the package was written by a newer version; null refuses.
        ZDOutdatedVersionResponder *outdatedVersionResponder = nullptr;
        /// The write tick; a 30-second timer when null.
        std::unique_ptr<ZDWriteTimer> writeTimer;
        /// Libraries of at least this many snippets keep a snippet cache (ZDRecordCache); 0 for
        /// every library, a negative number for none.
        int recordCacheMinimumSnippets = 1000;
    };

    explicit ZDLibraryPackage(Options options, QObject *parent = nullptr);
    /// Runs what is queued (writes included) before going away.
    ~ZDLibraryPackage() override;

    QString packagePath() const { return m_options.packagePath; }
    /// A tree was read: edits and writes have something to work on.
    bool hasTree() const { return m_hasTree; }

    // Reading (main thread). Each fills `contents` with the records of the tree it leaves.

    /// The first read. Without a tree, false with the reader's error (110, 112, 126...).
    bool load(ZDLibraryContents *contents, ZDError *error = nullptr);
    /// Waits for the queue, drops the tree and the unwritten edits, and reads again. Without a
    /// tree, false with the reader's error, and `contents` is empty.
    bool reload(ZDLibraryContents *contents, ZDError *error = nullptr);
    /// Reads the package anew and takes it in beneath the unwritten edits. False, with the tree
    /// unchanged, when the read fails or the user refuses a library of a newer version.
    bool takeInLatest();
    /// The records of the tree as it is after every edit queued so far; false without a tree.
    bool readCurrentContents(ZDLibraryContents *contents);

    /// Starts watching the package for writes of other processes: changedBySomeoneElse().
    void watchForExternalChanges(int settleDelayMs);

    // Editing and writing.

    /// Queues an edit of the tree that touches `paths`; the library is dirty once it has run.
    /// Dropped when there is no tree by then.
    void enqueueEdit(const QStringList &paths, std::function<void(ZDPackageTree &)> edit);
    /// Writes now, whatever the tick, and waits. A package not on disk yet is written even
    /// without changes: that creates it. Fails without a tree.
    bool save(ZDError *error = nullptr);
    /// The last write's error; null when the last write succeeded.
    ZDError lastWriteError() const;
    /// The stamp of this process's last write (or of the package as read).
    QString lastWriteUUID() const;
    ZDWriteScheduler &writeScheduler() { return *m_scheduler; }

Q_SIGNALS:
    /// A write finished (delivered on the main thread). `tookInOtherWrites`: the tree took in a
    /// write of another process first, so its records are no longer the ones handed out.
    void writeFinished(bool success, const ZDError &error, bool tookInOtherWrites);
    /// The package on disk holds a write of another process.
    void changedBySomeoneElse();

private:
    bool writeOnQueue();
    /// Where the snippet cache of this library lives; empty when it has none.
    QString recordCachePath() const;
    /// The records of `tree`, through the snippet cache when the library has one; the cache is
    /// refreshed on the queue afterwards. A `preload` of the cache started before the tree was
    /// read saves waiting for its decoding.
    ZDLibraryContents readContents(const ZDPackageTree &tree, ZDRecordCache::Preload *preload = nullptr);

    Options m_options;

    // Main thread.
    bool m_hasTree = false;
    bool m_outdatedVersionPrompted = false;

    // The file-system queue's.
    std::unique_ptr<ZDPackageTree> m_tree;
    /// Paths edited since the last successful write: what a merge with the disk must keep.
    QSet<QString> m_dirtyPaths;
    std::atomic<bool> m_packageOnDisk{false};

    ZDWriteStampRegister m_stamps;
    mutable std::mutex m_writeErrorMutex;
    ZDError m_lastWriteError;

    // Last, so that they go first: queued work and the watcher use everything above.
    std::unique_ptr<ZDWriteScheduler> m_scheduler;
    std::unique_ptr<ZDPackageWatcher> m_watcher;
};
