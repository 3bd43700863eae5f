#pragma once

#include <QString>

namespace kelp {

/// What a file name says about the sound in it.
struct SoundFileName
{
    QString base;      ///< without the extension
    QString extension; ///< without the dot; empty for none

    /// `path` may be a path or a name. A dot at the begin or the end of the name makes no extension, and neither does
    /// one that white space or a control character follows.
    [[nodiscard]] static SoundFileName of(const QString &path);
};

} // namespace kelp
