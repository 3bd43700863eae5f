#include "schedule/DuePolicy.h"

namespace kelp {

DueDecision decideDue(const Meeting &due, const std::optional<Meeting> &onScreen, Instant now)
{
    if (!onScreen)
        return {true, {}};
    if (onScreen->start >= due.start)
        return {false, {}};
    return {true, onScreen->end > now ? onScreen : std::nullopt};
}

} // namespace kelp
