#pragma once

#include <string>

namespace kelp {

/// A plain file that is open for reading. Whoever puts something else under its name later changes nothing.
class SoundFile
{
public:
    /// Anything but a plain file is not opened; `isOpen` tells.
    explicit SoundFile(const char *path);
    ~SoundFile();
    SoundFile(const SoundFile &) = delete;
    SoundFile &operator=(const SoundFile &) = delete;

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    /// A name under which this process can open the very same file once more.
    [[nodiscard]] std::string path() const;
    /// Copies all of it to a new file, for the user alone, and flushes that to the disk. Nothing is left there on
    /// failure.
    [[nodiscard]] bool copyTo(const char *path) const;

private:
    [[nodiscard]] bool copyTo(int target) const;

    int m_descriptor = -1;
};

} // namespace kelp
