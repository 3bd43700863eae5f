#include "themes/Theme.h"

#include "preferences/Preferences.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kelp {

const std::vector<OverlayTheme> &OverlayTheme::all()
{
    static const std::vector<OverlayTheme> themes{
        {.id = u"midnight"_s,
         .name = u"Midnight"_s,
         .background = BlurBackground{},
         .animation = {},
         .accent = Qt::white,
         .accentText = Qt::black,
         .text = Qt::white,
         .font = FontDesign::Default,
         .countdownFont = FontDesign::Rounded,
         .titleWeight = QFont::Bold,
         .button = ButtonLook::Pill,
         .glow = false,
         .cursor = false},
    };
    return themes;
}

const OverlayTheme &OverlayTheme::midnight()
{
    return all().front();
}

OverlayTheme OverlayTheme::named(const QString &id)
{
    const auto found =
        std::find_if(all().begin(), all().end(), [&](const OverlayTheme &each) { return each.id == id; });
    return found == all().end() ? midnight() : *found;
}

OverlayTheme OverlayTheme::forNextOverlay(const Preferences &preferences)
{
    return named(preferences.get(preference::theme));
}

OverlayOptions OverlayOptions::from(const Preferences &preferences)
{
    return {.ringCountdown = preferences.get(preference::countdownStyle) == u"ring",
            .showAttendees = preferences.get(preference::showAttendees),
            .showCalendar = preferences.get(preference::showCalendar),
            .snoozeMinutes = std::max<std::int64_t>(1, preferences.get(preference::snoozeMinutes)),
            .leadMinutes = preferences.get(preference::leadMinutes)};
}

} // namespace kelp
