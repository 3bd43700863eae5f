#include "support/FaultyFileOperations.h"

#include <algorithm>
#include <cerrno>

namespace kelp::test {

bool FaultyFileOperations::fails(Call call)
{
    if (call != m_failing || m_countdown <= 0 || --m_countdown > 0)
        return false;
    errno = m_error;
    return true;
}

int FaultyFileOperations::open(const char *path, int flags, unsigned mode)
{
    if (fails(Call::Open))
        return -1;
    const int descriptor = FileOperations::open(path, flags, mode);
    if (descriptor >= 0 && opened)
        opened(path, flags, descriptor);
    return descriptor;
}

long FaultyFileOperations::write(int descriptor, const char *bytes, unsigned long size)
{
    if (writing)
        writing(descriptor);
    if (fails(Call::Write))
        return m_error == 0 ? 0 : -1;
    if (!writeLimit)
        return FileOperations::write(descriptor, bytes, size);
    const long limit = writeLimit(size);
    if (limit < 0)
        return -1;
    return FileOperations::write(descriptor, bytes, std::min(size, static_cast<unsigned long>(limit)));
}

int FaultyFileOperations::close(int descriptor)
{
    const int result = FileOperations::close(descriptor);
    return fails(Call::Close) ? -1 : result;
}

int FaultyFileOperations::rename(const char *from, const char *to)
{
    return fails(Call::Rename) ? -1 : FileOperations::rename(from, to);
}

int FaultyFileOperations::makeFolder(const char *path, unsigned mode)
{
    if (fails(Call::MakeFolder))
        return -1;
    const int result = FileOperations::makeFolder(path, mode);
    if (result == 0 && folderMade)
        folderMade(path);
    return result;
}

} // namespace kelp::test
