#include "ZDPackageFormat.h"
#include "ZDPackageLock.h"
#include "ZDPackageStorage.h"
#include "ZDPackageWatcher.h"

#include "ZDTestSupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>

#include <memory>

#include <gtest/gtest.h>

namespace {

constexpr int kSettleMs = 40;

struct WatchedPackage
{
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("main.zandriolibrary"));
    ZDWriteStampRegister ours;
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();

    WatchedPackage() { EXPECT_TRUE(ZDPackageStorage::writePackage(&tree, path, ours)); }

    // Another process's write: same package, a stamp this process does not know.
    QString writeAsSomeoneElse(const QString &snippet)
    {
        ZDWriteStampRegister theirs;
        ZDPackageTree copy;
        EXPECT_TRUE(ZDPackageTree::read(path, &copy));
        copy.setFile(ZDPackageLayout::snippetFilePath(snippet), "theirs");
        EXPECT_TRUE(ZDPackageStorage::writePackage(&copy, path, theirs));
        return theirs.stamp();
    }
};

// Waits long enough for any check the watcher would make.
void settle()
{
    ZDTestSupport::waitFor([] { return false; }, kSettleMs * 8);
}

} // namespace

TEST(PackageWatcher, OurOwnWritesAreIgnoredAndForeignOnesReportedOnce)
{
    WatchedPackage package;
    ZDPackageWatcher watcher(package.path, package.ours, kSettleMs);
    QSignalSpy spy(&watcher, &ZDPackageWatcher::changedBySomeoneElse);

    for (int i = 0; i < 3; ++i) {
        package.tree.setFile(ZDPackageLayout::snippetFilePath(QStringLiteral("OURS%1").arg(i)), "ours");
        ASSERT_TRUE(ZDPackageStorage::writePackage(&package.tree, package.path, package.ours));
        settle();
    }
    EXPECT_EQ(spy.count(), 0);

    const QString foreign = package.writeAsSomeoneElse(QStringLiteral("FOREIGN"));
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return spy.count() == 1; }));
    EXPECT_EQ(spy.at(0).at(0).toString(), foreign);
    settle();
    EXPECT_EQ(spy.count(), 1);

    // Once the store has taken the foreign state in, its stamp is ours and our next write is quiet;
    // the watch survived the replaced "identifier".
    package.ours.setStamp(foreign);
    ZDPackageTree reread;
    ASSERT_TRUE(ZDPackageTree::read(package.path, &reread));
    reread.setFile(QStringLiteral("Database/tags.data"), "x");
    ASSERT_TRUE(ZDPackageStorage::writePackage(&reread, package.path, package.ours));
    settle();
    EXPECT_EQ(spy.count(), 1);
    const QString second = package.writeAsSomeoneElse(QStringLiteral("AGAIN"));
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return spy.count() == 2; }));
    EXPECT_EQ(spy.at(1).at(0).toString(), second);
}

TEST(PackageWatcher, WaitsForTheWriterToReleaseTheLock)
{
    WatchedPackage package;
    ZDPackageWatcher watcher(package.path, package.ours, kSettleMs);
    QSignalSpy spy(&watcher, &ZDPackageWatcher::changedBySomeoneElse);

    auto lock = std::make_unique<ZDPackageLock>(package.path);
    ASSERT_TRUE(lock->isLocked());
    ZDPackageLock second(package.path, ZDPackageLock::Mode::Exclusive, ZDPackageLock::Wait::DontBlock);
    EXPECT_TRUE(second.isBusy());

    // A half-done foreign write: files changed, the old (our) stamp still in place.
    ZDPackageTree copy;
    ASSERT_TRUE(ZDPackageTree::read(package.path, &copy));
    copy.setFile(ZDPackageLayout::snippetFilePath(QStringLiteral("HALF")), "half");
    ASSERT_TRUE(copy.write(package.path));
    copy.setFile(ZDPackageLayout::identifierFile,
                 ZDPackageFormat::encodeWriteStamp(QStringLiteral("THEIRS")));
    ASSERT_TRUE(copy.write(package.path));
    settle();
    EXPECT_EQ(spy.count(), 0);

    lock.reset();
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return spy.count() == 1; }));
    EXPECT_EQ(spy.at(0).at(0).toString(), QStringLiteral("THEIRS"));
}

TEST(PackageWatcher, NoticesAPackageThatAppearsLater)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("main.zandriolibrary"));
    ZDWriteStampRegister ours;
    ZDPackageWatcher watcher(path, ours, kSettleMs);
    QSignalSpy spy(&watcher, &ZDPackageWatcher::changedBySomeoneElse);

    ZDWriteStampRegister theirs;
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();
    ASSERT_TRUE(ZDPackageStorage::writePackage(&tree, path, theirs));
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return spy.count() == 1; }));
}

// The desktop program opens the library on a loader thread and then moves the store, watcher
// included, to the main thread; the loader thread then ends.
TEST(PackageWatcher, KeepsWatchingAfterMovingToAnotherThread)
{
    WatchedPackage package;
    std::unique_ptr<ZDPackageWatcher> watcher;
    QThread loader;
    loader.start();
    QThread *main = QThread::currentThread();
    QObject onLoader;
    onLoader.moveToThread(&loader);
    QMetaObject::invokeMethod(
        &onLoader, [&] {
            watcher = std::make_unique<ZDPackageWatcher>(package.path, package.ours, kSettleMs);
            watcher->moveToThread(main);
        },
        Qt::BlockingQueuedConnection);
    loader.quit();
    loader.wait();
    ASSERT_TRUE(watcher);
    EXPECT_EQ(watcher->thread(), main);

    QSignalSpy spy(watcher.get(), &ZDPackageWatcher::changedBySomeoneElse);
    package.writeAsSomeoneElse(QStringLiteral("FOREIGN"));
    EXPECT_TRUE(ZDTestSupport::waitFor([&] { return spy.count() == 1; }));
}
