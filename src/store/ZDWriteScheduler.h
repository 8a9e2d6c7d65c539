#pragma once

#include "ZDSerialQueue.h"
#include "ZDWriteTimer.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>

/// The deferred, coalesced write of the library package, and the serial queue "Zandrio File
/// System (SFS)" that runs every package edit and every write in the order queued.
///
/// A change noted after a quiet period starts the repeating tick and is written at once (behind
/// the edits already queued); later changes wait for the next tick, so a burst costs one write
/// per interval. A failed write leaves the library dirty and is retried at every tick; the tick
/// stops at the first one that finds nothing to write.
///
/// Lives on the main thread; noteFilePackageContentChanged() may be called from any thread.
class ZDWriteScheduler : public QObject
{
    Q_OBJECT
public:
    static inline const QString queueLabel = QStringLiteral("Zandrio File System (SFS)");

    /// `write` runs on the queue and returns whether the package reached disk.
    explicit ZDWriteScheduler(std::function<bool()> write, std::unique_ptr<ZDWriteTimer> timer = nullptr,
                              QObject *parent = nullptr);
    /// Lets queued operations finish.
    ~ZDWriteScheduler() override;

    /// Queues a package edit; the library is dirty once it has run.
    void enqueuePackageEdit(std::function<void()> edit);
    /// Queues any other operation on the file-system queue.
    void enqueue(std::function<void()> operation);

    /// Marks the library dirty and, after a quiet period, starts the tick with an immediate write.
    void noteFilePackageContentChanged();

    bool needsWrite() const { return m_needsWrite; }
    /// Dirty, or the queue holds an operation.
    bool hasPendingChanges() const { return m_needsWrite || m_operations > 0; }
    bool isTimerRunning() const { return m_timer->isActive(); }

    /// Queues a write that runs only if the library is still dirty then.
    void enqueueWriteOperationIfNeeded();
    /// Queues a write that runs in any case.
    void enqueueWriteOperationRegardless();
    /// Blocks until the queue is empty. Not on the queue itself.
    void waitUntilAllOperationsAreFinished();

    /// The queue itself, for suspending and resuming it. Queue work with enqueue() or
    /// enqueuePackageEdit(): hasPendingChanges() counts only what went through them.
    ZDSerialQueue &queue() { return *m_queue; }

private:
    void tick();
    void write();
    void stopTimerIfQuiet();
    void startTimerIfNeeded();

    std::function<bool()> m_write;
    std::unique_ptr<ZDWriteTimer> m_timer;
    std::unique_ptr<ZDSerialQueue> m_queue;
    std::atomic<bool> m_needsWrite{false};
    std::atomic<quint64> m_changes{0};
    std::atomic<int> m_operations{0};
};
