#include "overlay/FramePacer.h"

#include "base/Clock.h"
#include "themes/KelpClock.h"

#include <algorithm>
#include <utility>

namespace kelp {

namespace {

constexpr qint64 manyPixels = 4'000'000;

} // namespace

double FramePacer::interval(const QSize &pixels, std::size_t views)
{
    return views > 1 || qint64{pixels.width()} * pixels.height() > manyPixels ? 1.0 / 20 : 1.0 / 30;
}

FramePacer::FramePacer(Clock &clock, double seconds, std::function<void(Instant)> frame, QObject *parent)
    : QObject(parent), m_clock(clock), m_seconds(seconds), m_frame(std::move(frame))
{
    m_due = clock.now().secondsSince1970;
    next();
}

/// Each wait is measured from when the frame was due, so that late timers do not lower the rate.
void FramePacer::next()
{
    const double now = m_clock.now().secondsSince1970;
    m_due += m_seconds;
    if (m_due < now || m_due > now + m_seconds) // frames were missed, or the clock was set
        m_due = now + m_seconds;
    m_clock.after(m_due - now, this, [this] {
        m_frame(KelpClock::shown(m_clock.now()));
        next();
    });
}

} // namespace kelp
