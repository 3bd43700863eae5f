#pragma once

#include "ui/Fonts.h"

#include <QColor>
#include <QFont>
#include <QString>

#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

namespace kelp {

class Preferences;

/// What fills the screen behind the card.
struct SolidBackground
{
    QColor colour;
    bool grain = false; ///< film grain over it
    friend bool operator==(const SolidBackground &, const SolidBackground &) = default;
};
struct ImageBackground
{
    QString name;   ///< of a built-in picture
    double dim = 0; ///< 0…1, opacity of the black over it
    friend bool operator==(const ImageBackground &, const ImageBackground &) = default;
};
struct BlurBackground ///< the desktop, blurred and darkened
{
    friend bool operator==(const BlurBackground &, const BlurBackground &) = default;
};
struct CustomBackground ///< the user's own picture
{
    friend bool operator==(const CustomBackground &, const CustomBackground &) = default;
};
using ThemeBackground = std::variant<SolidBackground, ImageBackground, BlurBackground, CustomBackground>;

enum class AnimatedKind { Aurora, Starfield, Scanlines, Rain, Synthwave, Fog };

enum class ButtonLook { Pill, Outline, Terminal };

/// How an overlay looks. A plain value; a view keeps its own copy.
struct OverlayTheme
{
    QString id;   ///< what the preference "theme" holds
    QString name; ///< shown to the user
    ThemeBackground background;
    std::optional<AnimatedKind> animation; ///< drawn over the background
    QColor accent;
    QColor accentText; ///< on top of the accent
    QColor text;
    FontDesign font = FontDesign::Default;
    FontDesign countdownFont = FontDesign::Default;
    QFont::Weight titleWeight = QFont::Bold;
    ButtonLook button = ButtonLook::Pill;
    bool glow = false;   ///< the title casts a light in the accent colour
    bool cursor = false; ///< a blinking "_" follows the title

    friend bool operator==(const OverlayTheme &, const OverlayTheme &) = default;

    /// The catalogue, in the order in which it is offered.
    [[nodiscard]] static const std::vector<OverlayTheme> &all();
    /// The first of the catalogue, and the one wherever another cannot be found.
    [[nodiscard]] static const OverlayTheme &midnight();
    /// The theme with exactly this id, else Midnight.
    [[nodiscard]] static OverlayTheme named(const QString &id);
    /// The theme that the preferences ask for. For "random" any but the user's own picture and the one that the last
    /// random choice returned.
    [[nodiscard]] static OverlayTheme forNextOverlay(const Preferences &preferences);
};

/// What the user chose to see on the card. Read once per showing.
struct OverlayOptions
{
    bool ringCountdown = false; ///< a ring instead of the pill
    bool showAttendees = true;
    bool showCalendar = true;
    std::int64_t snoozeMinutes = 1; ///< at least 1
    std::int64_t leadMinutes = 1;

    friend bool operator==(const OverlayOptions &, const OverlayOptions &) = default;

    [[nodiscard]] static OverlayOptions from(const Preferences &preferences);
};

} // namespace kelp
