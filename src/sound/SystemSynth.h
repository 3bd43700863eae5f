#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace kelp {

/// Kelp's own sounds under the names that users know from their desktops, so that each of them is heard on every
/// machine: most desktops have no sound of such a name.
struct SystemSynth
{
    /// In the order in which they are offered.
    [[nodiscard]] static const QStringList &names();
    /// The bytes of a WAV file: mono, 16 bits, 44100 Hz, below 2 s, the same every time. Nothing for any other name.
    [[nodiscard]] static std::optional<QByteArray> wav(const QString &name);

    SystemSynth() = delete;
};

} // namespace kelp
