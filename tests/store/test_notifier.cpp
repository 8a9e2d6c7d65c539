#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippet.h"

#include "ZDTestSupport.h"

#include <QCoreApplication>
#include <QThread>

#include <thread>

#include <gtest/gtest.h>

namespace {

struct Delivery
{
    QString notice;
    QObject *sender = nullptr;
    bool onMainThread = false;
};

class RecordingListener : public QObject, public ZDLibraryListener
{
public:
    explicit RecordingListener(QList<Delivery> *log) : m_log(log) {}

    void snippetsDidRemove(QObject *sender, const ZDSnippetList &snippets) override
    {
        record(QStringLiteral("removed %1").arg(snippets.size()), sender);
    }
    void snippetTitleDidChange(QObject *sender, const ZDSnippetPtr &snippet) override
    {
        record(QStringLiteral("title %1").arg(snippet->UUID()), sender);
    }
    void applicationLibraryDidChange(QObject *sender) override { record(QStringLiteral("library"), sender); }

private:
    void record(const QString &notice, QObject *sender)
    {
        m_log->append({notice, sender, QThread::currentThread() == QCoreApplication::instance()->thread()});
    }
    QList<Delivery> *m_log;
};

} // namespace

TEST(Notifier, NoticesArriveOnTheMainThreadAfterThePostingCodeReturns)
{
    ZDMulticastDelegateHandler handler;
    QList<Delivery> log;
    RecordingListener listener(&log);
    QObject poster;
    handler.addDelegate(&listener);
    handler.addDelegate(&listener); // registered once

    handler.noteSnippetsRemoved(ZDSnippetList{nullptr, nullptr}, &poster);
    QThread::msleep(50); // the walk has run by now, but the main thread has not returned
    EXPECT_TRUE(log.isEmpty());
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return !log.isEmpty(); }));
    EXPECT_EQ(log[0].notice, QStringLiteral("removed 2"));
    EXPECT_EQ(log[0].sender, &poster);
    EXPECT_TRUE(log[0].onMainThread);

    std::thread([&] { handler.noteApplicationLibraryChanged(nullptr); }).join();
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return log.size() == 2; }));
    EXPECT_TRUE(log[1].onMainThread);
    ZDTestSupport::waitFor([] { return false; }, 50);
    EXPECT_EQ(log.size(), 2);
}

TEST(Notifier, TheSenderReceivesItsOwnNotice)
{
    ZDMulticastDelegateHandler handler;
    QList<Delivery> log;
    RecordingListener listener(&log);
    handler.addDelegate(&listener);
    handler.noteApplicationLibraryChanged(&listener);
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return !log.isEmpty(); }));
    EXPECT_EQ(log[0].sender, &listener);
}

TEST(Notifier, ReleasedOrRemovedListenersReceiveNothing)
{
    ZDMulticastDelegateHandler handler;
    QList<Delivery> log;
    auto released = std::make_unique<RecordingListener>(&log);
    RecordingListener removed(&log);
    QList<Delivery> keptLog;
    RecordingListener kept(&keptLog);
    handler.addDelegate(released.get());
    handler.addDelegate(&removed);
    handler.addDelegate(&kept);
    handler.removeDelegate(&removed);

    for (int i = 0; i < 20; ++i)
        handler.noteApplicationLibraryChanged(nullptr);
    QThread::msleep(50); // deliveries to the released listener are queued by now
    released.reset();
    EXPECT_EQ(handler.delegateCount(), 1);
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return keptLog.size() == 20; }));
    EXPECT_TRUE(log.isEmpty());

    // A sender destroyed before delivery arrives as null.
    auto sender = std::make_unique<QObject>();
    handler.noteApplicationLibraryChanged(sender.get());
    sender.reset();
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return keptLog.size() == 21; }));
    EXPECT_EQ(keptLog.last().sender, nullptr);

    handler.removeAllDelegates();
    handler.noteApplicationLibraryChanged(nullptr);
    ZDTestSupport::waitFor([] { return false; }, 50);
    EXPECT_EQ(keptLog.size(), 21);
}

TEST(Notifier, NoticesArriveInPostingOrderWhicheverThreadPosts)
{
    ZDMulticastDelegateHandler handler;
    QList<Delivery> log;
    RecordingListener first(&log);
    QList<Delivery> otherLog;
    RecordingListener second(&otherLog);
    handler.addDelegate(&first);
    handler.addDelegate(&second);

    // A burst from the main thread, then one from another thread, then the main thread again:
    // every listener sees them exactly in that order.
    QStringList expected;
    const auto postTitle = [&](int n) {
        const auto snippet = ZDSnippet::create(QStringLiteral("s"));
        handler.noteSnippetTitleChanged(snippet, nullptr);
        return QStringLiteral("title %1").arg(snippet->UUID());
    };
    for (int n = 0; n < 200; ++n)
        expected << postTitle(n);
    std::thread([&] {
        for (int n = 0; n < 200; ++n)
            expected << postTitle(n);
    }).join();
    handler.noteApplicationLibraryChanged(nullptr);
    expected << QStringLiteral("library");

    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return otherLog.size() == expected.size(); }));
    QStringList seen, otherSeen;
    for (const Delivery &delivery : std::as_const(log))
        seen << delivery.notice;
    for (const Delivery &delivery : std::as_const(otherLog))
        otherSeen << delivery.notice;
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(otherSeen, expected);
}

TEST(Notifier, AListenerRemovedBeforeDeliveryReceivesNothingMore)
{
    ZDMulticastDelegateHandler handler;
    QList<Delivery> log;
    RecordingListener removed(&log);
    QList<Delivery> keptLog;
    RecordingListener kept(&keptLog);
    handler.addDelegate(&removed);
    handler.addDelegate(&kept);
    handler.noteApplicationLibraryChanged(nullptr);
    handler.removeDelegate(&removed); // posted, not yet delivered
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return keptLog.size() == 1; }));
    EXPECT_TRUE(log.isEmpty());
}
