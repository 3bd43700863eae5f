#pragma once

#include "calendar/Meeting.h"

#include <optional>

namespace kelp {

/// What becomes of a meeting that is due while the overlay may already be up.
struct DueDecision
{
    bool show = false;               ///< false: keep what is on screen, the meeting is offered again
    std::optional<Meeting> previous; ///< what the user is leaving, still running
};

/// `onScreen` is the meeting that the overlay shows now; nothing where it is hidden or shows no meeting.
/// A meeting that starts later takes the screen over; the one it replaces is still mentioned unless it has ended.
[[nodiscard]] DueDecision decideDue(const Meeting &due, const std::optional<Meeting> &onScreen, Instant now);

} // namespace kelp
