#pragma once

#include <QRectF>
#include <QRegion>

#include <vector>

namespace kelp {

/// A region of few rectangles that covers all these frames as far as they lie within `view`, all in points. It may
/// cover a little more: an exact one of many tall frames would fall into thousands of pieces.
[[nodiscard]] QRegion bandedRegion(const std::vector<QRectF> &frames, const QRect &view);

} // namespace kelp
