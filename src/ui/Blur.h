#pragma once

#include <QImage>

namespace kelp {

/// The picture softened: three box passes each way, which come close to a Gaussian. `radius` is in pixels of the
/// picture, twice the standard deviation. Beyond its edges the picture counts as transparent, and what is carried
/// there is lost. Format_Alpha8 and Format_ARGB32_Premultiplied only.
[[nodiscard]] QImage blurred(const QImage &image, double radius);

/// How many pixels far a pixel's colour is carried at most.
[[nodiscard]] int blurReach(double radius);

} // namespace kelp
