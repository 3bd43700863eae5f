#pragma once

#include <QString>

namespace kelp::bundle {

inline const QString spotify = QStringLiteral("com.spotify.client");
inline const QString appleMusic = QStringLiteral("com.apple.Music");

} // namespace kelp::bundle
