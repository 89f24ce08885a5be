// A clock that stands still; only a pause moves it.
#pragma once

#include "common/seams.h"

#include <functional>

class FixedClock : public Clock
{
public:
    explicit FixedClock(Date now)
        : m_now(now)
    {}

    void setNow(Date now) { m_now = now; }
    [[nodiscard]] Date today() const override { return m_now.midnight(); }
    [[nodiscard]] Date now() const override { return m_now; }
    void pause(double seconds) override
    {
        m_now = Date::fromSerial(m_now.serial() + seconds / 86'400.0);
        if (duringPause)
            duringPause();
    }
    [[nodiscard]] bool stopped() const override { return endsWith && endsWith->ended(); }

    std::function<void()> duringPause; ///< what happens meanwhile
    const Shell *endsWith = nullptr;

private:
    Date m_now;
};
