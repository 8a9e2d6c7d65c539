#pragma once

#include <QTimer>

#include <functional>

/// The repeating tick of the write schedule. The program uses ZDQtWriteTimer; tests drive a
/// manual one so that they do not wait for real intervals.
class ZDWriteTimer
{
public:
    virtual ~ZDWriteTimer() = default;
    /// Starts ticking at the timer's interval, calling `tick` on the main thread.
    virtual void start(std::function<void()> tick) = 0;
    virtual void stop() = 0;
    virtual bool isActive() const = 0;
};

/// A QTimer-backed tick; 30 seconds unless told otherwise.
class ZDQtWriteTimer : public ZDWriteTimer
{
public:
    static constexpr int kDefaultIntervalMs = 30000;

    explicit ZDQtWriteTimer(int intervalMs = kDefaultIntervalMs) { m_timer.setInterval(intervalMs); }

    void start(std::function<void()> tick) override
    {
        m_timer.disconnect();
        QObject::connect(&m_timer, &QTimer::timeout, std::move(tick));
        m_timer.start();
    }
    void stop() override { m_timer.stop(); }
    bool isActive() const override { return m_timer.isActive(); }

private:
    QTimer m_timer;
};
