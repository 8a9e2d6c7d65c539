#pragma once

#include <QDateTime>
#include <functional>

/// The time source of anything that keeps time-dependent state, so that tests can set the time.
using ZDClock = std::function<QDateTime()>;

inline ZDClock zdSystemClock()
{
    return [] { return QDateTime::currentDateTimeUtc(); };
}
