#pragma once

#include "overlay/OverlayContent.h"
#include "overlay/ThemedButton.h"
#include "themes/Theme.h"
#include "ui/Arrangement.h"

#include <QString>

#include <optional>

namespace kelp {

struct MeetingCard;

/// What an overlay shows, as a value: the same picture whether it is a live window, a preview or a still.
struct OverlayScene
{
    OverlayContent content;
    OverlayTheme theme;
    OverlayOptions options;

    /// The card, laid out for a view of `size` logical points.
    [[nodiscard]] Arrangement card(const QSizeF &size, Instant now, const ButtonStates &buttons) const;
    /// What the card's countdown says; a card that says something else has to be laid out again. Empty without one.
    [[nodiscard]] QString countdown(Instant now) const;
    /// Seconds until then, more than 0; infinite without a countdown.
    [[nodiscard]] double untilNextCountdown(Instant now) const;
    /// Where the card's top left corner lies: in the middle of the view, on whole points.
    [[nodiscard]] static QPointF cardPosition(const QSizeF &size, const Arrangement &card);

    /// Room around the card for what reaches beyond its frame: a glow, a hovered button, a focus ring.
    static constexpr double bleed = 40;

    /// Paints all of it.
    void paint(QPainter &painter, const QSizeF &size, Instant now, const ButtonStates &buttons = {}) const;

private:
    [[nodiscard]] std::optional<MeetingCard> meetingCard() const;
};

} // namespace kelp
