#pragma once

#include "themes/Theme.h"

namespace kelp::sample {

/// A theme of the catalogue without its moving layer, so that pictures differ only in what a test changes.
[[nodiscard]] inline OverlayTheme still(const QString &id)
{
    OverlayTheme theme = OverlayTheme::named(id);
    theme.animation.reset();
    return theme;
}

/// Dark and calm, with light around everything in its accent colour.
[[nodiscard]] inline OverlayTheme glowing()
{
    return still(QStringLiteral("aurora"));
}

/// Green on black, edged, with a cursor.
[[nodiscard]] inline OverlayTheme terminal()
{
    return still(QStringLiteral("terminal"));
}

} // namespace kelp::sample
