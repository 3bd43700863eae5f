#pragma once

#include <QColor>

class QPalette;

namespace kelp {

/// The colours of Kelp's ordinary windows, made from the desktop's palette: they follow its light and dark, its accent
/// and its contrast. Texts have a contrast of at least 4.5 to 1 on both `window` and `group` (WCAG 2.1, 1.4.3),
/// wherever the palette's own text has.
struct DesktopColours
{
    bool dark;
    QColor window;
    QColor group;    ///< of rows that belong together, on the window
    QColor field;    ///< of what is typed into or chosen from
    QColor hairline; ///< between rows and around groups; translucent
    QColor outline;  ///< of controls: it has to be found
    QColor primary;
    QColor secondary;
    QColor hover;      ///< over a row that the pointer is on: primary at 0.08
    QColor iconHover;  ///< the same for a symbol: primary at 0.1
    QColor accent;     ///< areas
    QColor accentText; ///< on `accent`
    QColor accentInk;  ///< texts and symbols
    QColor danger;     ///< areas of what cannot be undone
    QColor dangerText; ///< on `danger`
    QColor dangerInk;  ///< errors
    QColor warningInk; ///< what the user may want to put right
    QColor trackOff;   ///< of a switch that is off

    [[nodiscard]] static DesktopColours of(const QPalette &palette);
};

/// The contrast ratio of two opaque colours, 1 to 21 (WCAG 2.1).
[[nodiscard]] double contrast(const QColor &a, const QColor &b);

} // namespace kelp
