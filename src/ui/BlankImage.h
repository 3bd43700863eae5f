#pragma once

#include <QImage>

namespace kelp {

/// A picture of which every pixel is about to be painted: its memory is there already, with anything in it.
[[nodiscard]] QImage blankImage(const QSize &pixels, QImage::Format format);

/// A transparent picture of so many points, `density` pixels each, in Format_ARGB32_Premultiplied.
[[nodiscard]] QImage transparentImage(const QSizeF &points, double density);

} // namespace kelp
