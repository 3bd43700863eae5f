#pragma once

#include "base/Instant.h"

#include <QHash>
#include <QString>

#include <cstdint>

namespace kelp {

using DateDictionary = QHash<QString, Instant>;
using ChoiceDictionary = QHash<QString, bool>;

/// The key of a preference whose value is a `T`: std::int64_t, bool, double, QString, Instant, DateDictionary or
/// ChoiceDictionary. `fallback` is what a reader gets while nothing is stored.
template<typename T>
struct PreferenceKey
{
    const char *name;
    T fallback{};
};

/// Every preference there is.
namespace preference {

// The user's settings.
inline const PreferenceKey<std::int64_t> leadMinutes{"leadMinutes", 1}; ///< minutes before the start
inline const PreferenceKey<QString> theme{"theme", QStringLiteral("midnight")};
inline const PreferenceKey<QString> sound{"sound", QStringLiteral("Glass")}; ///< "None" = silent
inline const PreferenceKey<std::int64_t> snoozeMinutes{"snoozeMinutes", 1};
inline const PreferenceKey<QString> countdownStyle{"countdownStyle", QStringLiteral("pill")};
inline const PreferenceKey<bool> showAttendees{"showAttendees", true};
inline const PreferenceKey<bool> showCalendar{"showCalendar", true};
inline const PreferenceKey<QString> displays{"displays", QStringLiteral("all")}; ///< "primary" = the first only
inline const PreferenceKey<double> customDim{"customDim", 0.45};                 ///< 0…1
inline const PreferenceKey<double> soundVolume{"soundVolume", 0.8};              ///< 0…1
inline const PreferenceKey<bool> pauseMusic{"pauseMusic", false};
inline const PreferenceKey<bool> doubleSlash{"doubleSlash", true};
inline const PreferenceKey<bool> onlyWithVideo{"onlyWithVideo", false};
inline const PreferenceKey<QString> clientID{"clientID"}; ///< OAuth client of the user's own
inline const PreferenceKey<QString> clientSecret{"clientSecret"};
inline const PreferenceKey<QString> spotifyLink{"spotifyLink"};
inline const PreferenceKey<QString> customSoundName{"customSoundName"}; ///< display name of the user's own sound
inline const PreferenceKey<QString> customSoundPath{"customSoundPath"};
inline const PreferenceKey<QString> customImagePath{"customImagePath"};

// What Kelp keeps for itself.
inline const PreferenceKey<DateDictionary> shownMeetings{"shownMeetings"};       ///< meeting key → its end
inline const PreferenceKey<DateDictionary> snoozedMeetings{"snoozedMeetings"};   ///< meeting key → end of the snooze
inline const PreferenceKey<Instant> pausedUntil{"pausedUntil"};                  ///< absent = not paused
inline const PreferenceKey<ChoiceDictionary> calendarChoices{"calendarChoices"}; ///< calendar key → on

// Left behind by older versions; only read.
inline const PreferenceKey<bool> playSound{"playSound", true};
inline const PreferenceKey<QString> googleEmail{"googleEmail"};

} // namespace preference

} // namespace kelp
