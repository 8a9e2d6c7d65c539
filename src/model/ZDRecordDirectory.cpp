#include "ZDRecordDirectory.h"

#include <QUuid>

#include <atomic>
#include <mutex>

namespace {
std::atomic<ZDRecordDirectory *> s_directory{nullptr};
std::mutex s_clockMutex;
ZDClock s_clock;
} // namespace

ZDRecordDirectory *ZDRecordDirectory::shared()
{
    return s_directory.load();
}

void ZDRecordDirectory::install(ZDRecordDirectory *directory)
{
    s_directory.store(directory);
}

QDateTime ZDRecordDirectory::now()
{
    ZDClock clock;
    {
        std::lock_guard lock(s_clockMutex);
        clock = s_clock;
    }
    QDateTime date = clock ? clock() : QDateTime::currentDateTimeUtc();
    return date.toUTC();
}

void ZDRecordDirectory::setClock(ZDClock clock)
{
    std::lock_guard lock(s_clockMutex);
    s_clock = std::move(clock);
}

QString zdNewUUIDString()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}
