#pragma once

#include "base/AtomicFile.h"
#include "base/Result.h"

namespace kelp {

class StatusPictures;

/// What desktops that tint a picture know it by.
inline const QString symbolicSuffix = QStringLiteral("-symbolic");

/// Writes the pictures as <name>.svg and <name>-symbolic.svg into a folder that ends with the session, and returns the
/// folder. All at once and not one when it is needed: hosts keep a list of what is there. Files that are as they should
/// be stay untouched.
[[nodiscard]] Result<QString, FileError> writeStatusIcons(const StatusPictures &pictures);

} // namespace kelp
