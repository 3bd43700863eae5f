#include "base/Memory.h"

#include <cstdint>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

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

void memory::populate(void *memory, std::size_t bytes)
{
#ifdef MADV_POPULATE_WRITE
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (address + page - 1) / page * page;
    const std::uintptr_t end = (address + bytes) / page * page;
    if (first >= end)
        return;
    char *const start = static_cast<char *>(memory) + (first - address);
    // A row of a picture as wide as a large screen is some pages long: what is painted down a few rows would have each
    // of them looked up.
    ::madvise(start, end - first, MADV_HUGEPAGE);
    ::madvise(start, end - first, MADV_POPULATE_WRITE);
#else
    static_cast<void>(memory);
    static_cast<void>(bytes);
#endif
}

} // namespace kelp
