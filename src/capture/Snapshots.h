#pragma once

#include "base/Instant.h"

#include <QImage>
#include <QString>

namespace kelp::Snapshots {

/// Writes into `folder`, which is made where it is missing, as PNG:
///
/// - for each theme <id>.png and <id>-ring.png, the overlay at 1440 × 900 with either countdown, for a meeting that
///   starts 47 s after `now`; `customPicture` is the one behind the user's own theme;
/// - menubar-light.png and menubar-dark.png, the tray icon 36 points high, and menubar-big.png, 288 points high.
///
/// The same arguments give the same bytes in the same zone and locale. A file that cannot be written is left out.
void render(const QString &folder, Instant now, const QImage &customPicture);

} // namespace kelp::Snapshots
