#include "base/Json.h"
#include "fuzz/FuzzTarget.h"
#include "preferences/Preferences.h"
#include "schedule/SnoozePolicy.h"

#include <QJsonDocument>

#include <cmath>

using namespace kelp;
using namespace kelp::preference;

namespace {

/// Every preference; `visit` is called with each key.
template<typename Visit>
void forEachKey(Visit visit)
{
    const auto all = [&](const auto &...keys) { (visit(keys), ...); };
    all(leadMinutes, theme, sound, snoozeMinutes, countdownStyle, showAttendees, showCalendar, displays, customDim,
        soundVolume, pauseMusic, doubleSlash, onlyWithVideo, clientID, clientSecret, spotifyLink, customSoundName,
        customSoundPath, customImagePath, shownMeetings, snoozedMeetings, pausedUntil, calendarChoices, playSound,
        googleEmail);
}

/// A value that was read and is stored again reads as before.
template<typename T>
void checkStoring(Preferences &preferences, const PreferenceKey<T> &key)
{
    const auto value = preferences.get(key);
    preferences.set(key, value);
    const auto again = preferences.get(key);
    if constexpr (std::is_same_v<T, double>)
        FUZZ_EXPECT(std::isfinite(value));
    if constexpr (std::is_same_v<T, Instant>) {
        FUZZ_EXPECT(value.has_value() == again.has_value());
    } else if constexpr (std::is_same_v<T, DateDictionary>) {
        FUZZ_EXPECT(value.keys() == again.keys()); // the dates to the millisecond: see the dates' own target
    } else {
        FUZZ_EXPECT(value == again);
    }
    const QJsonObject stored = preferences.values();
    preferences.set(key, again);
    FUZZ_EXPECT(preferences.values() == stored);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto json = parseJson(test::inputBytes(data, size));
    if (!json || !json->isObject())
        return 0;
    Preferences preferences(json->toObject());
    FUZZ_EXPECT(snoozeSeconds(preferences) >= 60 && std::isfinite(snoozeSeconds(preferences)));
    forEachKey([&](const auto &key) { checkStoring(preferences, key); });

    const QByteArray file = QJsonDocument(preferences.values()).toJson();
    const Preferences read(QJsonDocument::fromJson(file).object());
    FUZZ_EXPECT(read.values() == preferences.values());
    forEachKey([&](const auto &key) { FUZZ_EXPECT(read.get(key) == preferences.get(key)); });

    forEachKey([&](const auto &key) { preferences.remove(key); });
    FUZZ_EXPECT(preferences.get(leadMinutes) == leadMinutes.fallback && !preferences.contains(theme));
    return 0;
}
