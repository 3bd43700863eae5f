#include "schedule/SnoozePolicy.h"

#include "preferences/Preferences.h"

#include <algorithm>

namespace kelp {

double snoozeSeconds(const Preferences &preferences)
{
    return 60.0 * static_cast<double>(std::max<std::int64_t>(preferences.get(preference::snoozeMinutes), 1));
}

} // namespace kelp
