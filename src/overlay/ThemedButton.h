#pragma once

#include "themes/Theme.h"
#include "ui/Element.h"

#include <QHash>

namespace kelp {

/// How a button is being used at the moment of painting.
struct ButtonState
{
    double hover = 0; ///< 0…1: how far the pointer's arrival has shown yet
    double scale = 1;
    bool focused = false;
    friend bool operator==(const ButtonState &, const ButtonState &) = default;

    /// Where `scale` is going: pressed wins over hovered.
    [[nodiscard]] static double targetScale(bool pressed, bool hovered)
    {
        return pressed ? 0.96 : hovered ? 1.03 : 1.0;
    }
};

/// The buttons in use, by tag; one that is missing is at rest.
using ButtonStates = QHash<QString, ButtonState>;

/// A button in the theme's look. `symbolName` stands before the label unless it is empty.
[[nodiscard]] Element themedButton(const QString &label, const QString &symbolName, const OverlayTheme &theme,
                                   bool isPrimary, const ButtonState &state);

/// A button that is only a word in the accent colour, in a line of text.
[[nodiscard]] Element plainButton(const QString &label, int size, const OverlayTheme &theme, const ButtonState &state);

/// The colour at that part of its own opacity.
[[nodiscard]] QColor faded(QColor colour, double opacity);

} // namespace kelp
