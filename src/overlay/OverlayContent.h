#pragma once

#include "calendar/Meeting.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <variant>

namespace kelp {

/// A reminder.
struct MeetingContent
{
    Meeting meeting;
    std::optional<Meeting> previous; ///< still running while the new one is about to start
    friend bool operator==(const MeetingContent &, const MeetingContent &) = default;
};

/// What is shown once after the first sign-in.
struct WelcomeContent
{
    std::optional<QString> email;
    std::int64_t calendarCount = 0;
    std::optional<Meeting> next; ///< only where it starts within 24 hours
    friend bool operator==(const WelcomeContent &, const WelcomeContent &) = default;
};

using OverlayContent = std::variant<MeetingContent, WelcomeContent>;

} // namespace kelp
