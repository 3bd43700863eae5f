#pragma once

#include <sys/types.h>

namespace kelp {

// What a process does to itself before it opens files that may have been made to harm it.

/// Ends this process when its parent does. False where `parent` is gone already; 0 stands for any.
[[nodiscard]] bool endWithParent(pid_t parent);
/// From here on: no core files, and no program that this process starts gains rights.
void renounceRights();
/// From here on: no more memory and, where `seconds` is above 0, no more computing time than a decoder needs.
void limitResources(unsigned seconds);

} // namespace kelp
