#pragma once

#include <QImage>
#include <QSize>

namespace kelp {

class SoftImage;

/// The desktop behind themes that blur it.
namespace Backdrop {

/// Fills `soft`, prepared for a target of `size` pixels, with `picture`: filling it, blurred (radius 40 points) and
/// darkened.
void soften(SoftImage &soft, const QImage &picture, const QSize &size, double density);

/// What a blurred desktop comes to on the whole, grey and darkened; a strip to repeat sideways.
[[nodiscard]] QImage plain(int height);

} // namespace Backdrop

} // namespace kelp
