#pragma once

#include <QPalette>

#include <optional>

namespace kelp {

/// Kelp's own palette, for desktops that have none for Qt.
[[nodiscard]] QPalette ownPalette(bool dark, const std::optional<QColor> &accent);

/// Whether `palette` is one of the desktop's own, and of the kind that is wanted.
[[nodiscard]] bool isPaletteFor(const QPalette &palette, std::optional<bool> dark);

/// Gives the application the palette of a desktop that wants dark windows, light ones, or says nothing of it. A palette
/// that the desktop itself has for Qt stays, unless it is of the other kind.
void applyDesktopPalette(std::optional<bool> dark, const std::optional<QColor> &accent);

} // namespace kelp
