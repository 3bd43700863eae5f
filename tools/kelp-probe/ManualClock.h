#pragma once

#include "base/Clock.h"

namespace kelp::probe {

/// A clock that stands where it is set. Nothing is ever woken: a scenario ticks by itself.
class ManualClock final : public Clock
{
public:
    void set(Instant now) { m_now = now; }

    [[nodiscard]] Instant now() const override { return m_now; }
    void after(double, QObject *, std::function<void()>) override {}
    void every(double, QObject *, std::function<void()>) override {}

private:
    Instant m_now;
};

} // namespace kelp::probe
