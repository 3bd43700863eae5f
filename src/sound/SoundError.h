#pragma once

#include <QString>

namespace kelp {

/// Why a file of the user's cannot be their sound.
struct SoundError
{
    enum class Kind {
        corruptFile, ///< not a sound that can be played, or no file at all
        folder,      ///< Kelp's folder cannot be made
        copy         ///< the copy cannot be written
    };

    Kind kind = Kind::corruptFile;

    [[nodiscard]] QString description() const;
    friend bool operator==(const SoundError &, const SoundError &) = default;
};

} // namespace kelp
