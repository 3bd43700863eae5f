#pragma once

#include <ctime>

namespace kelp::test {

/// Milliseconds that the processors have spent on this process, all its threads together. Unlike a clock it does not
/// count what other programs of the machine take away.
inline double computingTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

} // namespace kelp::test
