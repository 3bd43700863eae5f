#pragma once

namespace kelp {

class Preferences;

/// How long a snooze lasts, in seconds: the user's minutes, at least one.
[[nodiscard]] double snoozeSeconds(const Preferences &preferences);

} // namespace kelp
