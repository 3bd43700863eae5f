#pragma once

#include "base/Instant.h"

#include <QObject>
#include <QSize>

#include <functional>

namespace kelp {

class Clock;

/// Asks for new frames of what moves, while it is alive.
class FramePacer final : public QObject
{
    Q_OBJECT

public:
    /// Seconds between two frames of a view of `pixels` when `views` of them are shown: 1/30, and 1/20 where each
    /// frame costs more, above 4 million pixels or with several views.
    [[nodiscard]] static double interval(const QSize &pixels, std::size_t views);

    /// Calls `frame` with the time to be shown every `seconds`.
    FramePacer(Clock &clock, double seconds, std::function<void(Instant)> frame, QObject *parent = nullptr);

private:
    void next();

    Clock &m_clock;
    double m_seconds;
    double m_due = 0; ///< seconds since 1970, of the coming frame
    std::function<void(Instant)> m_frame;
};

} // namespace kelp
