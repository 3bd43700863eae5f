#pragma once

#include "calendar/Meeting.h"

namespace kelp {

/// The meeting that captures show: "Weekly design review", half an hour from `start`, to be joined by video.
[[nodiscard]] Meeting sampleMeeting(const QString &id, Instant start);

} // namespace kelp
