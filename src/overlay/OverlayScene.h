#pragma once

#include "overlay/OverlayContent.h"
#include "overlay/ThemedButton.h"
#include "themes/ThemeBackgroundView.h"
#include "ui/Arrangement.h"

#include <QImage>
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
    BackgroundOptions background{};

    /// The card, laid out for a view of `size` logical points. Where that is low, the title shrinks first, and then all
    /// of it.
    [[nodiscard]] Arrangement card(const QSizeF &size, Instant now, const ButtonStates &buttons) const;
    /// What the card's countdown says. Empty without one.
    [[nodiscard]] QString countdown(Instant now) const;
    /// Seconds until it says something else, more than 0; infinite without a countdown.
    [[nodiscard]] double untilNextCountdown(Instant now) const;
    /// Where the card's top left corner lies: in the middle of the view, on whole points.
    [[nodiscard]] static QPointF cardPosition(const QSizeF &size, const Arrangement &card);

    /// Room around the card for what reaches beyond its frame: a glow, a hovered button, a focus ring.
    static constexpr double bleed = 40;

    /// A picture of the laid out card, `density` pixels per point, with its bleed.
    [[nodiscard]] static QImage cardPicture(const Arrangement &card, double density, Instant now);
    /// Paints all of it.
    void paint(QPainter &painter, const QSizeF &size, Instant now, const ButtonStates &buttons = {}) const;

    friend bool operator==(const OverlayScene &, const OverlayScene &) = default;

private:
    [[nodiscard]] std::optional<MeetingCard> meetingCard() const;
};

} // namespace kelp
