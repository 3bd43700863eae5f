#include "base/Memory.h"

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace kelp {

void memory::keepPicturesApart()
{
#ifdef __GLIBC__
    constexpr int smallestPicture = 1024 * 1024; // bytes
    mallopt(M_MMAP_THRESHOLD, smallestPicture);
#endif
}

void memory::giveBack()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

} // namespace kelp
