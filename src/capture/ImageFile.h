#pragma once

#include <QString>

class QImage;

namespace kelp {

/// Writes a picture, in the form that the file's name ends with, and replaces what is there; a folder that is missing
/// is made. `quality` is 0…100 for JPEG. False when it cannot be written, and then what was there is still there.
bool saveImage(const QImage &image, const QString &path, int quality = -1);

} // namespace kelp
