#pragma once

#include "base/AtomicFile.h"

#include <functional>

namespace kelp::test {

/// The real system calls, except that one chosen call fails instead of being made, and that everyone may look on.
class FaultyFileOperations final : public FileOperations
{
public:
    enum class Call { Open, Write, Sync, Close, Rename, Unlink, MakeFolder };

    /// Lets the `number`th call of this kind from now on (1 = the next) fail with `error`. A failing close does close.
    void failOn(Call call, int error, int number = 1)
    {
        m_failing = call;
        m_error = error;
        m_countdown = number;
    }
    /// Whether the chosen call has failed by now.
    [[nodiscard]] bool hasFailed() const { return m_countdown == 0; }

    /// Called after each successful open with its path, flags and descriptor.
    std::function<void(const char *path, int flags, int descriptor)> opened;
    /// Called after each successful creation of a folder.
    std::function<void(const char *path)> folderMade;
    /// Called with the descriptor before each write.
    std::function<void(int descriptor)> writing;
    /// What a write does instead of writing everything: returns how many bytes to write, or -1 after setting errno.
    std::function<long(unsigned long size)> writeLimit;

    int open(const char *path, int flags, unsigned mode) override;
    long write(int descriptor, const char *bytes, unsigned long size) override;
    int sync(int descriptor) override { return fails(Call::Sync) ? -1 : FileOperations::sync(descriptor); }
    int close(int descriptor) override;
    int rename(const char *from, const char *to) override;
    int unlink(const char *path) override { return fails(Call::Unlink) ? -1 : FileOperations::unlink(path); }
    int makeFolder(const char *path, unsigned mode) override;

private:
    [[nodiscard]] bool fails(Call call);

    Call m_failing = Call::Open;
    int m_error = 0;
    int m_countdown = -1; ///< -1: nothing fails
};

} // namespace kelp::test
