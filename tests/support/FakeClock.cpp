#include "support/FakeClock.h"

#include <QObject>

#include <algorithm>
#include <tuple>
#include <utility>

namespace kelp {

void FakeClock::after(double seconds, QObject *context, std::function<void()> action)
{
    add(seconds, 0, context, std::move(action));
}

void FakeClock::every(double seconds, QObject *context, std::function<void()> action)
{
    Q_ASSERT(seconds > 0);
    add(seconds, seconds, context, std::move(action));
}

void FakeClock::add(double seconds, double period, QObject *context, std::function<void()> action)
{
    m_actions.push_back({m_monotonic + seconds, m_order++, period, context, std::move(action)});
}

void FakeClock::advance(double seconds)
{
    const double until = m_monotonic + seconds;
    const auto moveTo = [this](double monotonic) {
        m_now = m_now + (monotonic - m_monotonic);
        m_monotonic = monotonic;
    };
    for (;;) {
        const auto next = std::min_element(m_actions.begin(), m_actions.end(), [](const Action &a, const Action &b) {
            return std::tie(a.due, a.order) < std::tie(b.due, b.order);
        });
        if (next == m_actions.end() || next->due > until)
            break;
        Action action = std::move(*next);
        m_actions.erase(next);
        if (!action.context)
            continue;
        moveTo(std::max(action.due, m_monotonic));
        if (action.period > 0)
            m_actions.push_back({action.due + action.period, m_order++, action.period, action.context, action.run});
        action.run();
    }
    moveTo(until);
}

} // namespace kelp
