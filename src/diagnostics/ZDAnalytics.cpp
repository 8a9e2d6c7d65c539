#include "ZDAnalytics.h"

#include "ZDLogger.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <atomic>

namespace {
std::atomic<ZDAnalytics *> s_shared{nullptr};

void dropOlderThan(QList<QDateTime> &times, const QDateTime &limit)
{
    times.removeIf([&](const QDateTime &time) { return time <= limit; });
}
} // namespace

AnalyticsSendEventRateLimiter::AnalyticsSendEventRateLimiter(ZDClock clock) : m_clock(std::move(clock))
{
}

bool AnalyticsSendEventRateLimiter::shouldSendEvent(const QString &name)
{
    const QDateTime now = m_clock();
    std::lock_guard lock(m_mutex);
    Windows &windows = m_events[name];
    dropOlderThan(windows.lastMinuteEvents, now.addSecs(-60));
    dropOlderThan(windows.lastHourEvents, now.addSecs(-3600));
    dropOlderThan(windows.last24HourEvents, now.addSecs(-24 * 3600));
    if (windows.lastMinuteEvents.size() >= kMaximumPerMinute || windows.lastHourEvents.size() >= kMaximumPerHour
        || windows.last24HourEvents.size() >= kMaximumPer24Hours)
        return false;
    windows.lastMinuteEvents.append(now);
    windows.lastHourEvents.append(now);
    windows.last24HourEvents.append(now);
    return true;
}

QList<QDateTime> AnalyticsSendEventRateLimiter::lastMinuteEvents(const QString &name) const
{
    std::lock_guard lock(m_mutex);
    return m_events.value(name).lastMinuteEvents;
}

QList<QDateTime> AnalyticsSendEventRateLimiter::lastHourEvents(const QString &name) const
{
    std::lock_guard lock(m_mutex);
    return m_events.value(name).lastHourEvents;
}

QList<QDateTime> AnalyticsSendEventRateLimiter::last24HourEvents(const QString &name) const
{
    std::lock_guard lock(m_mutex);
    return m_events.value(name).last24HourEvents;
}

ZDAnalytics::ZDAnalytics(ZDClock clock) : m_limiter(std::move(clock))
{
}

ZDAnalytics *ZDAnalytics::shared()
{
    return s_shared.load();
}

void ZDAnalytics::install(ZDAnalytics *analytics)
{
    s_shared.store(analytics);
}

bool ZDAnalytics::reportEvent(const QString &name, const QVariantMap &properties)
{
    if (!m_consent || !m_consent())
        return false;
    if (!m_limiter.shouldSendEvent(name))
        return false;
    QString line = QStringLiteral("Event ") + name;
    if (!properties.isEmpty())
        line += QLatin1Char(' ')
                + QString::fromUtf8(QJsonDocument(QJsonObject::fromVariantMap(properties)).toJson(QJsonDocument::Compact));
    zdLog(ZDLogLevel::Info, ZDLogDomain::Analytics, line);
    return true;
}

bool zdReportEvent(const QString &name, const QVariantMap &properties)
{
    if (ZDAnalytics *analytics = ZDAnalytics::shared())
        return analytics->reportEvent(name, properties);
    return false;
}
