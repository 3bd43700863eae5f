#pragma once

#include "shell/MenuBarIcon.h"

#include <QList>
#include <QPainterPath>

namespace kelp::MenuBarIcon {

/// A part of the icon: filled, `opacity` 0…1.
struct IconShape
{
    QPainterPath path;
    double opacity = 1;
};

/// The icon's parts, in the order of painting, in a square of `pixels` × `pixels` with the origin at the top left.
[[nodiscard]] QList<IconShape> iconShapes(const Content &content, double pixels);

} // namespace kelp::MenuBarIcon
