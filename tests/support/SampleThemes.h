#pragma once

#include "themes/Theme.h"

namespace kelp::sample {

/// Dark and calm, with light around everything in its accent colour.
[[nodiscard]] inline OverlayTheme glowing()
{
    return {.id = QStringLiteral("glowing"),
            .name = QStringLiteral("Glowing"),
            .background = SolidBackground{QColor(0x05, 0x08, 0x12)},
            .animation = {},
            .accent = QColor(0x73, 0xFF, 0xC7),
            .accentText = Qt::black,
            .text = Qt::white,
            .font = FontDesign::Rounded,
            .countdownFont = FontDesign::Rounded,
            .titleWeight = QFont::Bold,
            .button = ButtonLook::Pill,
            .glow = true,
            .cursor = false};
}

/// Green on black, edged, with a cursor.
[[nodiscard]] inline OverlayTheme terminal()
{
    return {.id = QStringLiteral("terminal"),
            .name = QStringLiteral("Terminal"),
            .background = SolidBackground{QColor(3, 10, 5)},
            .animation = {},
            .accent = QColor(76, 255, 115),
            .accentText = Qt::black,
            .text = QColor(76, 255, 115),
            .font = FontDesign::Monospaced,
            .countdownFont = FontDesign::Monospaced,
            .titleWeight = QFont::Medium,
            .button = ButtonLook::Terminal,
            .glow = true,
            .cursor = true};
}

} // namespace kelp::sample
