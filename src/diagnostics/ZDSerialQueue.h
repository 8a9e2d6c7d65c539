#pragma once

#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class QThread;

/// A serial work queue: one named worker thread runs the queued tasks one at a time, in the
/// order they were queued. It can be suspended and resumed, its pending (not yet started) tasks
/// can be cancelled, and a caller can wait until it has nothing left to do.
///
/// Destroying the queue lets the tasks already queued run, then stops the thread.
class ZDSerialQueue
{
public:
    explicit ZDSerialQueue(const QString &label);
    ~ZDSerialQueue();
    ZDSerialQueue(const ZDSerialQueue &) = delete;
    ZDSerialQueue &operator=(const ZDSerialQueue &) = delete;

    QString label() const { return m_label; }

    void async(std::function<void()> task);
    /// Runs the task on the queue and waits for it; runs it at once when called from the queue.
    void sync(const std::function<void()> &task);

    void suspend();
    void resume();
    bool isSuspended() const;

    /// Drops the tasks that have not started; returns how many were dropped.
    int cancelPending();
    int pendingCount() const;

    /// Returns when no task is queued or running. Must not be called on a suspended queue that
    /// still holds tasks, nor from the queue's own thread.
    void waitUntilEmpty();

    bool isCurrentThread() const;
    QThread *thread() const { return m_thread.get(); }

private:
    void run();

    QString m_label;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::deque<std::function<void()>> m_tasks;
    bool m_running = false;
    bool m_suspended = false;
    bool m_stopping = false;
    std::unique_ptr<QThread> m_thread;
};
