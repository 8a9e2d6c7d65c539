#pragma once

#include "ZDClock.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <mutex>

/// Limits how often an event of one name may be sent: at most 20 in the last minute, 120 in the
/// last hour and 288 in the last 24 hours. The send times are kept per event name.
class AnalyticsSendEventRateLimiter
{
public:
    static constexpr int kMaximumPerMinute = 20;
    static constexpr int kMaximumPerHour = 120;
    static constexpr int kMaximumPer24Hours = 288;

    explicit AnalyticsSendEventRateLimiter(ZDClock clock = zdSystemClock());

    /// True when an event of this name may be sent now; the send is then counted.
    bool shouldSendEvent(const QString &name);

    QList<QDateTime> lastMinuteEvents(const QString &name) const;
    QList<QDateTime> lastHourEvents(const QString &name) const;
    QList<QDateTime> last24HourEvents(const QString &name) const;

private:
    struct Windows
    {
        QList<QDateTime> lastMinuteEvents;
        QList<QDateTime> lastHourEvents;
        QList<QDateTime> last24HourEvents;
    };
    ZDClock m_clock;
    mutable std::mutex m_mutex;
    QHash<QString, Windows> m_events;
};

/// Records usage events, locally: an allowed event becomes a line in the log's analytics domain.
/// Nothing is sent over the network. Events are recorded only while the user's choices allow it
/// (the consent callback, which the preferences install) and within the rate limits.
class ZDAnalytics
{
public:
    explicit ZDAnalytics(ZDClock clock = zdSystemClock());

    static ZDAnalytics *shared();
    static void install(ZDAnalytics *analytics);

    void setConsentProvider(std::function<bool()> consent) { m_consent = std::move(consent); }
    /// Returns true when the event was recorded.
    bool reportEvent(const QString &name, const QVariantMap &properties = {});

    AnalyticsSendEventRateLimiter &rateLimiter() { return m_limiter; }

private:
    std::function<bool()> m_consent;
    AnalyticsSendEventRateLimiter m_limiter;
};

/// Reports through the shared recorder, if one is installed.
bool zdReportEvent(const QString &name, const QVariantMap &properties = {});
