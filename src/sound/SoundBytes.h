#pragma once

#include <QByteArray>
#include <QString>

namespace kelp {

/// A sound in memory that another process can read: an anonymous file, not part of this process's own memory, that
/// never changes and goes with this object.
class SoundBytes
{
public:
    /// Where the system has no memory or no descriptor left, it is not valid.
    explicit SoundBytes(const QByteArray &content);
    ~SoundBytes();
    SoundBytes(const SoundBytes &) = delete;
    SoundBytes &operator=(const SoundBytes &) = delete;

    [[nodiscard]] bool isValid() const { return m_descriptor >= 0; }
    /// A name under which this process can open it for reading.
    [[nodiscard]] QString path() const;

private:
    int m_descriptor;
};

} // namespace kelp
