// One program per session: a later start hands its arguments to the first.

#include "ZDSingleInstance.h"
#include "ZDTestSupport.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <future>

class TestSingleInstance : public QObject
{
    Q_OBJECT
    QTemporaryDir dir;

    // The second program blocks while it waits for an answer, so it runs on a thread of its own.
    std::future<bool> sendFromAnotherProgram(const QString &name, const QStringList &arguments)
    {
        return std::async(std::launch::async, [=] { return ZDSingleInstance(name).sendToRunningInstance(arguments, 5000); });
    }

private Q_SLOTS:
    void laterStartHandsOverItsArguments()
    {
        const QString name = dir.filePath(QStringLiteral("a.socket"));
        QVERIFY(!ZDSingleInstance(name).sendToRunningInstance({QStringLiteral("x")}, 500)); // nobody runs yet
        ZDSingleInstance first(name);
        QVERIFY(first.listen());
        QSignalSpy received(&first, &ZDSingleInstance::argumentsReceived);

        const QStringList arguments{QStringLiteral("zandrio://snippet/ABC"), QStringLiteral("ünïcode \"quoted\"\n")};
        auto sent = sendFromAnotherProgram(name, arguments);
        QVERIFY(ZDTestSupport::waitFor([&] { return sent.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        QVERIFY(sent.get());
        QCOMPARE(received.count(), 1);
        QCOMPARE(received.at(0).at(0).toStringList(), arguments);

        auto empty = sendFromAnotherProgram(name, {});
        QVERIFY(ZDTestSupport::waitFor([&] { return empty.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        QVERIFY(empty.get());
        QCOMPARE(received.count(), 2);
    }

    void socketLeftByADeadProgramIsTakenOver()
    {
        const QString name = dir.filePath(QStringLiteral("stale.socket"));
        QFile stale(name);
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.close();
        ZDSingleInstance program(name);
        QVERIFY(program.listen());
        QVERIFY(program.isListening());
    }
};

QTEST_MAIN(TestSingleInstance)
#include "test_single_instance.moc"
