#include "ZDTestSupport.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>
#include <QThread>

#include <cstdlib>
#include <memory>

namespace {
std::unique_ptr<QTemporaryDir> s_home;
}

namespace ZDTestSupport {

void isolateUserDirectories()
{
    if (s_home)
        return;
    s_home = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/zandrio-test-XXXXXX"));
    const QString home = s_home->path();
    for (const char *sub : {"config", "data", "cache", "runtime"})
        QDir(home).mkpath(QString::fromLatin1(sub));
    QFile::setPermissions(home + QStringLiteral("/runtime"), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("HOME", home.toUtf8());
    qputenv("XDG_CONFIG_HOME", (home + QStringLiteral("/config")).toUtf8());
    qputenv("XDG_DATA_HOME", (home + QStringLiteral("/data")).toUtf8());
    qputenv("XDG_CACHE_HOME", (home + QStringLiteral("/cache")).toUtf8());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

QString isolatedHome()
{
    return s_home ? s_home->path() : QString();
}

bool waitFor(const std::function<bool()> &condition, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
    return true;
}

QString sourceResourcesDirectory()
{
    return QStringLiteral(ZANDRIO_TEST_RESOURCE_DIR);
}

} // namespace ZDTestSupport
