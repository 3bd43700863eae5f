#pragma once

#include "overlay/OverlayContent.h"
#include "overlay/ThemedButton.h"
#include "themes/Theme.h"
#include "ui/Element.h"

namespace kelp {

/// The card that is shown after a sign-in: what was connected, what comes next, and what the overlay is for.
struct WelcomeCard
{
    WelcomeContent content;
    OverlayTheme theme;

    /// "Connected to ada@example.com · 3 calendars"
    [[nodiscard]] QString connected() const;
    /// "Next meeting: Review at 10:00 (in 12 minutes)"
    [[nodiscard]] QString nextLine(Instant now) const;
    /// Its one button is tagged as the one that dismisses.
    [[nodiscard]] Element element(Instant now, const ButtonStates &buttons) const;
};

} // namespace kelp
