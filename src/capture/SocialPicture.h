#pragma once

#include <QImage>

namespace kelp {

/// What other sites show of Kelp when they link to it: 1200 × 630, with logo, name, promise and address.
[[nodiscard]] QImage socialPicture();

} // namespace kelp
