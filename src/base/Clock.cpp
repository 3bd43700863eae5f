#include "base/Clock.h"

#include <QTimer>

#include <chrono>
#include <cmath>
#include <utility>

namespace kelp {

namespace {

std::chrono::milliseconds milliseconds(double seconds)
{
    return std::chrono::milliseconds(static_cast<std::int64_t>(std::llround(seconds * 1000)));
}

} // namespace

Instant SystemClock::now() const
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(sinceEpoch).count()};
}

void SystemClock::after(double seconds, QObject *context, std::function<void()> action)
{
    QTimer::singleShot(milliseconds(seconds), context, std::move(action));
}

void SystemClock::every(double seconds, QObject *context, std::function<void()> action)
{
    auto *timer = new QTimer(context);
    timer->setTimerType(Qt::CoarseTimer);
    QObject::connect(timer, &QTimer::timeout, context, std::move(action));
    timer->start(milliseconds(seconds));
}

} // namespace kelp
