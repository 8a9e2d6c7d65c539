#pragma once

#include "ZDWriteTimer.h"

#include <functional>

/// A write tick that fires only when the test says so (and only while started, as a real timer).
class ZDManualWriteTimer : public ZDWriteTimer
{
public:
    void start(std::function<void()> tick) override
    {
        m_tick = std::move(tick);
        m_active = true;
    }
    void stop() override { m_active = false; }
    bool isActive() const override { return m_active; }
    void fire()
    {
        if (m_active)
            m_tick();
    }

private:
    std::function<void()> m_tick;
    bool m_active = false;
};
