#pragma once

#include "base/Clock.h"

#include <QList>
#include <QPointer>

namespace kelp::test {

/// A clock that a test advances by hand.
class FakeClock final : public Clock
{
public:
    explicit FakeClock(Instant now = {1767258000}) : m_now(now) {} ///< 2026-01-01 09:00 UTC

    [[nodiscard]] Instant now() const override { return m_now; }
    void after(double seconds, QObject *context, std::function<void()> action) override;
    void every(double seconds, QObject *context, std::function<void()> action) override;

    /// Lets time pass: runs what falls due, in order, at its own time.
    void advance(double seconds);
    /// How many actions have run so far.
    [[nodiscard]] int wakeUps() const { return m_wakeUps; }
    /// Sets the wall clock; nothing falls due by that.
    void jump(Instant now) { m_now = now; }

private:
    struct Alarm
    {
        double at = 0;     ///< on the monotonic clock
        double period = 0; ///< 0 = once
        int order = 0;     ///< of two at the same time the one asked for first runs first
        QPointer<QObject> context;
        std::function<void()> action;
    };

    void add(double seconds, double period, QObject *context, std::function<void()> action);

    Instant m_now;
    double m_monotonic = 0;
    int m_order = 0;
    int m_wakeUps = 0;
    QList<Alarm> m_alarms;
};

} // namespace kelp::test
