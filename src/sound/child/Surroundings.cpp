#include "sound/child/Surroundings.h"

#include <csignal>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kelp {

namespace {

void limit(int resource, rlim_t most)
{
    const rlimit both{most, most};
    setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

} // namespace

bool endWithParent(pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // It may have ended before the call.
    return parent == 0 || getppid() == parent;
}

void renounceRights()
{
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    limit(RLIMIT_CORE, 0);
}

void limitResources([[maybe_unused]] unsigned seconds)
{
#ifndef KELP_SANITIZED // a sanitizer reserves terabytes of addresses
    limit(RLIMIT_AS, rlim_t{1} << 30);
#endif
    if (seconds > 0)
        limit(RLIMIT_CPU, seconds);
}

} // namespace kelp
