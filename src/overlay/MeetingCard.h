#pragma once

#include "calendar/Meeting.h"
#include "overlay/ThemedButton.h"
#include "themes/Theme.h"
#include "ui/Element.h"

#include <QString>
#include <QStringList>

#include <limits>
#include <optional>

namespace kelp {

/// The card of a reminder. A value: everything it shows follows from its fields, the time and the buttons' states.
struct MeetingCard
{
    Meeting meeting;
    std::optional<Meeting> previous;
    OverlayTheme theme;
    OverlayOptions options;
    /// Where the screen is low, the title shrinks to take no more than that, as far as it may; in points.
    double titleHeight = std::numeric_limits<double>::infinity();

    /// "Starts in 4:05", "Starting now", "Started 1:30 ago".
    [[nodiscard]] static QString countdown(Instant start, Instant now);
    /// Seconds from `now` until `countdown` reads differently, more than 0.
    [[nodiscard]] static double untilNextCountdown(Instant start, Instant now);

    /// What the countdown says, be it the pill's words or the ring's.
    [[nodiscard]] QString countdownWords(Instant now) const;
    /// Seconds from `now` until `countdownWords` reads differently, more than 0.
    [[nodiscard]] double untilNextWords(Instant now) const;
    /// "10:00 – 10:30  ·  5 people  ·  Work"
    [[nodiscard]] QString details() const;
    [[nodiscard]] Element title() const;
    /// The pill or the ring, under its tag.
    [[nodiscard]] Element countdownElement(Instant now) const;
    [[nodiscard]] Element element(Instant now, const ButtonStates &buttons) const;

private:
    [[nodiscard]] QStringList detailItems() const;
    [[nodiscard]] Element pill(Instant now) const;
    [[nodiscard]] Element ring(Instant now) const;
    [[nodiscard]] Element buttonRow(const ButtonStates &buttons) const;
    [[nodiscard]] Element previousRow(const ButtonState &joinButton) const;
    [[nodiscard]] Element hint() const;
};

} // namespace kelp
