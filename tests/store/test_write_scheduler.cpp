#include "ZDManualWriteTimer.h"
#include "ZDWriteScheduler.h"

#include "ZDTestSupport.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

namespace {

struct Schedule
{
    ZDManualWriteTimer *timer = new ZDManualWriteTimer;
    std::atomic<int> writes{0};
    std::atomic<bool> failing{false};
    ZDWriteScheduler scheduler{[this] {
                                   ++writes;
                                   return !failing.load();
                               },
                               std::unique_ptr<ZDWriteTimer>(timer)};

    // Lets the queue run and the hops back to the main thread arrive.
    void settle()
    {
        scheduler.waitUntilAllOperationsAreFinished();
        QCoreApplication::processEvents();
        scheduler.waitUntilAllOperationsAreFinished();
        QCoreApplication::processEvents();
    }
    void edit()
    {
        scheduler.enqueuePackageEdit([] {});
        settle();
    }
};

} // namespace

TEST(WriteScheduler, TenEditsInOneIntervalGiveTwoWritesAndAQuietTickStopsTheTimer)
{
    Schedule s;
    EXPECT_EQ(s.scheduler.queue().label(), QStringLiteral("Zandrio File System (SFS)"));
    for (int i = 0; i < 10; ++i)
        s.edit();
    EXPECT_EQ(s.writes, 1) << "the first change after a quiet period is written at once";
    EXPECT_TRUE(s.scheduler.hasPendingChanges());
    EXPECT_TRUE(s.scheduler.isTimerRunning());

    s.timer->fire();
    s.settle();
    EXPECT_EQ(s.writes, 2);
    EXPECT_FALSE(s.scheduler.hasPendingChanges());
    EXPECT_TRUE(s.scheduler.isTimerRunning());

    s.timer->fire();
    s.settle();
    EXPECT_EQ(s.writes, 2);
    EXPECT_FALSE(s.scheduler.isTimerRunning());

    s.edit(); // quiet again: written at once
    EXPECT_EQ(s.writes, 3);
}

TEST(WriteScheduler, FailedWriteStaysPendingAndIsRetriedAtEveryTick)
{
    Schedule s;
    s.failing = true;
    s.edit();
    EXPECT_EQ(s.writes, 1);
    EXPECT_TRUE(s.scheduler.hasPendingChanges());
    s.timer->fire();
    s.settle();
    EXPECT_EQ(s.writes, 2);
    EXPECT_TRUE(s.scheduler.hasPendingChanges());
    EXPECT_TRUE(s.scheduler.isTimerRunning());

    s.failing = false;
    s.timer->fire();
    s.settle();
    EXPECT_EQ(s.writes, 3);
    EXPECT_FALSE(s.scheduler.hasPendingChanges());
}

TEST(WriteScheduler, ExplicitWritesRespectTheDirtyFlag)
{
    Schedule s;
    s.scheduler.enqueueWriteOperationIfNeeded();
    s.settle();
    EXPECT_EQ(s.writes, 0);
    s.scheduler.enqueueWriteOperationRegardless();
    s.settle();
    EXPECT_EQ(s.writes, 1);

    // A change noted from another thread while the queue is held shows as pending at once.
    s.scheduler.queue().suspend();
    std::thread([&] { s.scheduler.noteFilePackageContentChanged(); }).join();
    EXPECT_TRUE(s.scheduler.needsWrite());
    s.scheduler.queue().resume();
    s.settle();
    EXPECT_EQ(s.writes, 2);
    s.scheduler.enqueueWriteOperationIfNeeded();
    s.settle();
    EXPECT_EQ(s.writes, 2);
}

TEST(WriteScheduler, RealTimerTicksAtItsInterval)
{
    std::atomic<int> writes{0};
    ZDWriteScheduler scheduler([&] { return ++writes > 0; }, std::make_unique<ZDQtWriteTimer>(20));
    scheduler.enqueuePackageEdit([] {});
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return writes == 1 && !scheduler.hasPendingChanges(); }));
    scheduler.enqueuePackageEdit([] {});
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return writes == 2; }));
    EXPECT_TRUE(ZDTestSupport::waitFor([&] { return !scheduler.isTimerRunning(); }));
    EXPECT_EQ(writes, 2);
}
