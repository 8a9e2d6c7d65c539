#include "ZDAnalytics.h"
#include "ZDLogger.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
struct ManualClock
{
    QDateTime now = QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC);
    ZDClock clock()
    {
        return [this] { return now; };
    }
};

int sendBurst(AnalyticsSendEventRateLimiter &limiter, const QString &name, int attempts)
{
    int sent = 0;
    for (int i = 0; i < attempts; ++i)
        sent += limiter.shouldSendEvent(name) ? 1 : 0;
    return sent;
}
} // namespace

TEST(RateLimiter, TwentyPerMinutePerName)
{
    ManualClock time;
    AnalyticsSendEventRateLimiter limiter(time.clock());
    EXPECT_EQ(sendBurst(limiter, QStringLiteral("Search"), 25), 20);
    EXPECT_EQ(sendBurst(limiter, QStringLiteral("Import"), 5), 5); // other names have their own counts
    time.now = time.now.addSecs(59);
    EXPECT_FALSE(limiter.shouldSendEvent(QStringLiteral("Search")));
    time.now = time.now.addSecs(2);
    EXPECT_TRUE(limiter.shouldSendEvent(QStringLiteral("Search")));
    EXPECT_EQ(limiter.lastMinuteEvents(QStringLiteral("Search")).size(), 1);
    EXPECT_EQ(limiter.lastHourEvents(QStringLiteral("Search")).size(), 21);
}

TEST(RateLimiter, HundredTwentyPerHour)
{
    ManualClock time;
    AnalyticsSendEventRateLimiter limiter(time.clock());
    int sent = 0;
    for (int minute = 0; minute < 60; ++minute) {
        sent += sendBurst(limiter, QStringLiteral("Probe"), 20);
        time.now = time.now.addSecs(61);
    }
    EXPECT_EQ(sent, 120);
    EXPECT_EQ(limiter.lastHourEvents(QStringLiteral("Probe")).size(), 120);
}

TEST(RateLimiter, TwoHundredEightyEightPerDay)
{
    ManualClock time;
    AnalyticsSendEventRateLimiter limiter(time.clock());
    int sent = 0;
    for (int hour = 0; hour < 24; ++hour) {
        sent += sendBurst(limiter, QStringLiteral("Launch"), 200);
        time.now = time.now.addSecs(3601);
    }
    EXPECT_EQ(sent, 288);
    // A day after the first burst, the first hour's sends have left the window.
    time.now = QDateTime(QDate(2026, 1, 2), QTime(12, 0, 1), Qt::UTC);
    EXPECT_TRUE(limiter.shouldSendEvent(QStringLiteral("Launch")));
}

TEST(AnalyticsRecorder, RecordsLocallyOnlyWithConsent)
{
    QTemporaryDir dir;
    ZDLogger logger(dir.path());
    ZDLogger::install(&logger);
    bool consent = false;
    ZDAnalytics analytics;
    analytics.setConsentProvider([&] { return consent; });

    EXPECT_FALSE(analytics.reportEvent(QStringLiteral("Launch")));
    consent = true;
    EXPECT_TRUE(analytics.reportEvent(QStringLiteral("Import"), {{QStringLiteral("count"), 3}}));
    logger.flush();
    ZDLogger::install(nullptr);

    QFile file(logger.currentFilePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString log = QString::fromUtf8(file.readAll());
    EXPECT_FALSE(log.contains(QStringLiteral("Launch")));
    EXPECT_TRUE(log.contains(QStringLiteral("[analytics] Event Import {\"count\":3}")));
}
