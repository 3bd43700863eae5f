#include "sound/child/SoundFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelp {

SoundFile::SoundFile(const char *path)
{
    // Opening a pipe would wait for its writer otherwise.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    struct stat about;
    if (descriptor >= 0 && fstat(descriptor, &about) == 0 && S_ISREG(about.st_mode))
        m_descriptor = descriptor;
    else if (descriptor >= 0)
        close(descriptor);
}

SoundFile::~SoundFile()
{
    if (isOpen())
        close(m_descriptor);
}

std::string SoundFile::path() const
{
    return "/proc/self/fd/" + std::to_string(m_descriptor);
}

bool SoundFile::copyTo(const char *path) const
{
    const int target = open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (target < 0)
        return false;
    const bool copied = copyTo(target) && fsync(target) == 0;
    const bool closed = close(target) == 0;
    if (!copied || !closed)
        unlink(path);
    return copied && closed;
}

bool SoundFile::copyTo(int target) const
{
    char buffer[1 << 16];
    off_t position = 0;
    for (;;) {
        const ssize_t got = pread(m_descriptor, buffer, sizeof buffer, position);
        if (got == 0)
            return true;
        if (got < 0 && errno != EINTR)
            return false;
        for (ssize_t done = 0; done < got;) {
            const ssize_t written = write(target, buffer + done, static_cast<size_t>(got - done));
            if (written < 0 && errno != EINTR)
                return false;
            done += written > 0 ? written : 0;
        }
        position += got > 0 ? got : 0;
    }
}

} // namespace kelp
