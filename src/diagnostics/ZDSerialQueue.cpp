#include "ZDSerialQueue.h"

#include <QThread>

ZDSerialQueue::ZDSerialQueue(const QString &label) : m_label(label)
{
    m_thread.reset(QThread::create([this] { run(); }));
    m_thread->setObjectName(label);
    m_thread->start();
}

ZDSerialQueue::~ZDSerialQueue()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_suspended = false;
    }
    m_wake.notify_all();
    m_thread->wait();
}

void ZDSerialQueue::async(std::function<void()> task)
{
    {
        std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    m_wake.notify_one();
}

void ZDSerialQueue::sync(const std::function<void()> &task)
{
    if (isCurrentThread()) {
        task();
        return;
    }
    std::mutex doneMutex;
    std::condition_variable doneSignal;
    bool done = false;
    async([&] {
        task();
        std::lock_guard lock(doneMutex);
        done = true;
        doneSignal.notify_all();
    });
    std::unique_lock lock(doneMutex);
    doneSignal.wait(lock, [&] { return done; });
}

void ZDSerialQueue::suspend()
{
    std::lock_guard lock(m_mutex);
    m_suspended = true;
}

void ZDSerialQueue::resume()
{
    {
        std::lock_guard lock(m_mutex);
        m_suspended = false;
    }
    m_wake.notify_all();
}

bool ZDSerialQueue::isSuspended() const
{
    std::lock_guard lock(m_mutex);
    return m_suspended;
}

int ZDSerialQueue::cancelPending()
{
    std::deque<std::function<void()>> dropped;
    {
        std::lock_guard lock(m_mutex);
        dropped.swap(m_tasks);
    }
    m_idle.notify_all();
    // The dropped tasks are destroyed here, outside the lock, in case their captures do work.
    return int(dropped.size());
}

int ZDSerialQueue::pendingCount() const
{
    std::lock_guard lock(m_mutex);
    return int(m_tasks.size());
}

void ZDSerialQueue::waitUntilEmpty()
{
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return m_tasks.empty() && !m_running; });
}

bool ZDSerialQueue::isCurrentThread() const
{
    return QThread::currentThread() == m_thread.get();
}

void ZDSerialQueue::run()
{
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || (!m_suspended && !m_tasks.empty()); });
            if (m_tasks.empty() || m_suspended) {
                if (m_stopping)
                    return;
                continue;
            }
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
            m_running = true;
        }
        task();
        task = nullptr;
        {
            std::lock_guard lock(m_mutex);
            m_running = false;
        }
        m_idle.notify_all();
    }
}
