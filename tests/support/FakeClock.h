#pragma once

#include "base/Clock.h"

#include <QPointer>

#include <cstdint>
#include <functional>
#include <vector>

class QObject;

namespace kelp {

/// A clock that stands still until a test moves it. The wall clock and the monotonic one can be moved apart.
class FakeClock final : public Clock
{
public:
    explicit FakeClock(Instant now) : m_now(now) {}

    [[nodiscard]] Instant now() const override { return m_now; }
    void after(double seconds, QObject *context, std::function<void()> action) override;
    void every(double seconds, QObject *context, std::function<void()> action) override;

    /// Lets time go by on both clocks. Actions run when they are due, in the order of their times, those of the same
    /// time in the order in which they were asked for; what they ask for in turn runs too.
    void advance(double seconds);
    /// Sets the wall clock; the monotonic one, and with it what is due, stays.
    void jump(Instant to) { m_now = to; }

private:
    struct Action
    {
        double due; ///< on the monotonic clock
        std::uint64_t order;
        double period; ///< 0 = once
        QPointer<QObject> context;
        std::function<void()> run;
    };

    void add(double seconds, double period, QObject *context, std::function<void()> action);

    Instant m_now;
    double m_monotonic = 0;
    std::uint64_t m_order = 0;
    std::vector<Action> m_actions;
};

} // namespace kelp
