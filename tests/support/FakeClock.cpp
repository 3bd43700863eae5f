#include "support/FakeClock.h"

#include <QObject>

#include <algorithm>
#include <tuple>

namespace kelp::test {

void FakeClock::after(double seconds, QObject *context, std::function<void()> action)
{
    add(seconds, 0, context, std::move(action));
}

void FakeClock::every(double seconds, QObject *context, std::function<void()> action)
{
    add(seconds, seconds, context, std::move(action));
}

void FakeClock::add(double seconds, double period, QObject *context, std::function<void()> action)
{
    m_alarms.append({m_monotonic + seconds, period, m_order++, context, std::move(action)});
}

void FakeClock::advance(double seconds)
{
    const double target = m_monotonic + seconds;
    const auto passTo = [this](double time) {
        m_now = m_now + (time - m_monotonic);
        m_monotonic = time;
    };
    for (;;) {
        m_alarms.removeIf([](const Alarm &alarm) { return !alarm.context; });
        const auto next = std::min_element(m_alarms.begin(), m_alarms.end(), [](const Alarm &a, const Alarm &b) {
            return std::tie(a.at, a.order) < std::tie(b.at, b.order);
        });
        if (next == m_alarms.end() || next->at > target)
            break;
        const Alarm alarm = *next;
        m_alarms.erase(next);
        passTo(std::max(alarm.at, m_monotonic));
        if (alarm.period > 0)
            add(alarm.period, alarm.period, alarm.context, alarm.action);
        ++m_wakeUps;
        alarm.action();
    }
    passTo(target);
}

} // namespace kelp::test
