#pragma once

#include <QList>
#include <QRect>

namespace kelp {

/// Plugs in screens of the offscreen platform and unplugs all others. A screen that keeps its place in the list and was
/// there before changes its geometry.
void setOffscreenScreens(const QList<QRect> &geometries);

} // namespace kelp
