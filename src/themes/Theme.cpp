#include "themes/Theme.h"

#include "preferences/Preferences.h"

#include <QRandomGenerator>

#include <algorithm>
#include <random>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

QColor rgb(float red, float green, float blue)
{
    return QColor::fromRgbF(red, green, blue);
}

const QColor paperColour = rgb(0.96F, 0.94F, 0.89F);
const QColor inkColour = rgb(0.13F, 0.12F, 0.11F);

/// What the last random choice was, so that the next one is another.
std::optional<QString> lastRandom;

OverlayTheme randomTheme()
{
    std::vector<OverlayTheme> candidates;
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        if (theme.id != u"custom" && theme.id != lastRandom)
            candidates.push_back(theme);
    }
    if (candidates.empty())
        candidates.push_back(OverlayTheme::midnight());
    std::uniform_int_distribution<std::size_t> index(0, candidates.size() - 1);
    const OverlayTheme &chosen = candidates[index(*QRandomGenerator64::system())];
    lastRandom = chosen.id;
    return chosen;
}

} // namespace

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
        {.id = u"aurora"_s,
         .name = u"Aurora"_s,
         .background = SolidBackground{rgb(0.02F, 0.03F, 0.07F)},
         .animation = AnimatedKind::Aurora,
         .accent = rgb(0.45F, 1, 0.78F),
         .accentText = Qt::black,
         .text = Qt::white,
         .font = FontDesign::Rounded,
         .countdownFont = FontDesign::Rounded,
         .titleWeight = QFont::Bold,
         .button = ButtonLook::Pill,
         .glow = true,
         .cursor = false},
        {.id = u"synthwave"_s,
         .name = u"Synthwave"_s,
         .background = SolidBackground{rgb(0.05F, 0.01F, 0.12F)},
         .animation = AnimatedKind::Synthwave,
         .accent = rgb(1, 0.22F, 0.68F),
         .accentText = Qt::white,
         .text = Qt::white,
         .font = FontDesign::Default,
         .countdownFont = FontDesign::Monospaced,
         .titleWeight = QFont::ExtraBold,
         .button = ButtonLook::Outline,
         .glow = true,
         .cursor = false},
        {.id = u"paper"_s,
         .name = u"Paper"_s,
         .background = SolidBackground{paperColour, true},
         .animation = {},
         .accent = inkColour,
         .accentText = paperColour,
         .text = inkColour,
         .font = FontDesign::Serif,
         .countdownFont = FontDesign::Serif,
         .titleWeight = QFont::DemiBold,
         .button = ButtonLook::Pill,
         .glow = false,
         .cursor = false},
        {.id = u"terminal"_s,
         .name = u"Terminal"_s,
         .background = SolidBackground{rgb(0.01F, 0.04F, 0.02F)},
         .animation = AnimatedKind::Scanlines,
         .accent = rgb(0.3F, 1, 0.45F),
         .accentText = Qt::black,
         .text = rgb(0.3F, 1, 0.45F),
         .font = FontDesign::Monospaced,
         .countdownFont = FontDesign::Monospaced,
         .titleWeight = QFont::Medium,
         .button = ButtonLook::Terminal,
         .glow = true,
         .cursor = true},
        {.id = u"zen"_s,
         .name = u"Zen"_s,
         .background = ImageBackground{u"zen"_s, 0.12},
         .animation = AnimatedKind::Fog,
         .accent = rgb(0.93F, 0.9F, 0.84F),
         .accentText = rgb(0.15F, 0.15F, 0.17F),
         .text = Qt::white,
         .font = FontDesign::Serif,
         .countdownFont = FontDesign::Serif,
         .titleWeight = QFont::Normal,
         .button = ButtonLook::Pill,
         .glow = false,
         .cursor = false},
        {.id = u"space"_s,
         .name = u"Deep Space"_s,
         .background = ImageBackground{u"space"_s, 0.2},
         .animation = AnimatedKind::Starfield,
         .accent = rgb(0.72F, 0.76F, 1),
         .accentText = Qt::black,
         .text = Qt::white,
         .font = FontDesign::Default,
         .countdownFont = FontDesign::Rounded,
         .titleWeight = QFont::Light,
         .button = ButtonLook::Pill,
         .glow = true,
         .cursor = false},
        {.id = u"lofi"_s,
         .name = u"Lo-fi Rain"_s,
         .background = ImageBackground{u"lofi"_s, 0.2},
         .animation = AnimatedKind::Rain,
         .accent = rgb(1, 0.72F, 0.42F),
         .accentText = Qt::black,
         .text = Qt::white,
         .font = FontDesign::Rounded,
         .countdownFont = FontDesign::Rounded,
         .titleWeight = QFont::Bold,
         .button = ButtonLook::Pill,
         .glow = false,
         .cursor = false},
        {.id = u"custom"_s,
         .name = u"Your image"_s,
         .background = CustomBackground{},
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
    const QString chosen = preferences.get(preference::theme);
    return chosen == u"random" ? randomTheme() : named(chosen);
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
