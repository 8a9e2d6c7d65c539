#include "ZDWriteScheduler.h"

#include <QCoreApplication>
#include <QThread>

ZDWriteScheduler::ZDWriteScheduler(std::function<bool()> write, std::unique_ptr<ZDWriteTimer> timer,
                                   QObject *parent)
    : QObject(parent), m_write(std::move(write)),
      m_timer(timer ? std::move(timer) : std::make_unique<ZDQtWriteTimer>()),
      m_queue(std::make_unique<ZDSerialQueue>(queueLabel))
{
}

ZDWriteScheduler::~ZDWriteScheduler()
{
    m_timer->stop();
    m_queue.reset(); // runs what is queued; their hops back to this object are dropped
}

void ZDWriteScheduler::enqueue(std::function<void()> operation)
{
    ++m_operations;
    m_queue->async([this, operation = std::move(operation)] {
        operation();
        --m_operations;
    });
}

void ZDWriteScheduler::enqueuePackageEdit(std::function<void()> edit)
{
    enqueue([this, edit = std::move(edit)] {
        edit();
        noteFilePackageContentChanged();
    });
}

void ZDWriteScheduler::noteFilePackageContentChanged()
{
    // The flag is set here, not after the hop, so that a write queued behind this edit sees it.
    ++m_changes;
    m_needsWrite = true;
    if (QThread::currentThread() == thread())
        startTimerIfNeeded();
    else
        QMetaObject::invokeMethod(this, &ZDWriteScheduler::startTimerIfNeeded, Qt::QueuedConnection);
}

void ZDWriteScheduler::startTimerIfNeeded()
{
    if (m_timer->isActive())
        return;
    m_timer->start([this] { tick(); });
    tick();
}

void ZDWriteScheduler::tick()
{
    enqueue([this] {
        if (m_needsWrite)
            write();
        else
            QMetaObject::invokeMethod(this, &ZDWriteScheduler::stopTimerIfQuiet, Qt::QueuedConnection);
    });
}

void ZDWriteScheduler::stopTimerIfQuiet()
{
    // A change may have come in since the queue found nothing to write; then keep ticking.
    if (!m_needsWrite)
        m_timer->stop();
}

// On the queue. The flag is cleared only when the write succeeded and no change was noted
// while it ran.
void ZDWriteScheduler::write()
{
    const quint64 changesBefore = m_changes;
    if (m_write() && m_changes == changesBefore)
        m_needsWrite = false;
}

void ZDWriteScheduler::enqueueWriteOperationIfNeeded()
{
    enqueue([this] {
        if (m_needsWrite)
            write();
    });
}

void ZDWriteScheduler::enqueueWriteOperationRegardless()
{
    enqueue([this] { write(); });
}

void ZDWriteScheduler::waitUntilAllOperationsAreFinished()
{
    m_queue->waitUntilEmpty();
}
