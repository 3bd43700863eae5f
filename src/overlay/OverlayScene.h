#pragma once

#include "overlay/OverlayContent.h"
#include "overlay/ThemedButton.h"
#include "themes/Theme.h"
#include "ui/Arrangement.h"

namespace kelp {

/// What an overlay shows, as a value: the same picture whether it is a live window, a preview or a still.
struct OverlayScene
{
    OverlayContent content;
    OverlayTheme theme;
    OverlayOptions options;

    /// The card, laid out for a view of `size` logical points.
    [[nodiscard]] Arrangement card(const QSizeF &size, Instant now, const ButtonStates &buttons) const;
    /// Where the card's top left corner lies: in the middle of the view, on whole points.
    [[nodiscard]] static QPointF cardPosition(const QSizeF &size, const Arrangement &card);

    /// Room around the card for what reaches beyond its frame: a hovered button, a focus ring.
    static constexpr double bleed = 24;

    /// Paints all of it.
    void paint(QPainter &painter, const QSizeF &size, Instant now, const ButtonStates &buttons = {}) const;
};

} // namespace kelp
