#include "ZDSerialQueue.h"

#include <QThread>

#include <atomic>
#include <vector>

#include <gtest/gtest.h>

TEST(SerialQueue, RunsTasksOneAtATimeInOrderOnItsNamedThread)
{
    ZDSerialQueue queue(QStringLiteral("com.varnok.Zandrio.Test"));
    std::vector<int> order;
    std::atomic<int> concurrent{0};
    bool overlapped = false;
    QString threadName;
    for (int i = 0; i < 100; ++i) {
        queue.async([&, i] {
            if (++concurrent > 1)
                overlapped = true;
            order.push_back(i);
            threadName = QThread::currentThread()->objectName();
            --concurrent;
        });
    }
    queue.waitUntilEmpty();
    EXPECT_FALSE(overlapped);
    ASSERT_EQ(order.size(), 100u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(order[size_t(i)], i);
    EXPECT_EQ(threadName, QStringLiteral("com.varnok.Zandrio.Test"));
}

TEST(SerialQueue, SuspendHoldsTasksAndCancelDropsThem)
{
    ZDSerialQueue queue(QStringLiteral("suspend"));
    std::atomic<int> ran{0};
    queue.suspend();
    for (int i = 0; i < 5; ++i)
        queue.async([&] { ++ran; });
    QThread::msleep(20);
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(queue.cancelPending(), 5);
    queue.async([&] { ++ran; });
    queue.resume();
    queue.waitUntilEmpty();
    EXPECT_EQ(ran, 1);
}

TEST(SerialQueue, SyncFromInsideTheQueueDoesNotDeadlock)
{
    ZDSerialQueue queue(QStringLiteral("sync"));
    int value = 0;
    queue.sync([&] { queue.sync([&] { value = 7; }); });
    EXPECT_EQ(value, 7);
}
