#pragma once

#include <QFont>

namespace kelp {

/// The designs that a theme chooses from. Each stands for a family that Kelp depends on and what comes closest to it
/// where that is not installed.
enum class FontDesign { Default, Rounded, Serif, Monospaced };

/// A font of that design, `size` logical points (pixels of the layout) high.
[[nodiscard]] QFont designFont(FontDesign design, int size, QFont::Weight weight = QFont::Normal);

} // namespace kelp
