#pragma once

#include "base/Instant.h"
#include "calendar/Meeting.h"
#include "preferences/PreferenceKeys.h"

#include <optional>

namespace kelp {

class Preferences;

/// What the scheduler remembers across restarts: which meetings were shown, which are snoozed until when, and until
/// when reminders are paused. Loaded once; every change is written at once.
class ReminderMemory
{
public:
    explicit ReminderMemory(Preferences &preferences);

    [[nodiscard]] bool isShown(const Meeting &meeting) const { return m_shown.contains(key(meeting)); }
    /// The end of the meeting's snooze, also when it has passed; nothing for a meeting that was not snoozed.
    [[nodiscard]] std::optional<Instant> snoozedUntil(const Meeting &meeting) const;
    [[nodiscard]] std::optional<Instant> pausedUntil() const { return m_pausedUntil; }

    void markShown(const Meeting &meeting);
    void snooze(const Meeting &meeting, Instant until);
    void setPausedUntil(std::optional<Instant> until);
    /// Forgets entries whose date is not after `cutoff`.
    void forgetUpTo(Instant cutoff);

private:
    /// The meeting's identifier, "@", its start in whole seconds since 1970.
    [[nodiscard]] static QString key(const Meeting &meeting);
    void save();

    Preferences &m_preferences;
    DateDictionary m_shown;   ///< meeting key → the meeting's end
    DateDictionary m_snoozed; ///< meeting key → end of the snooze
    std::optional<Instant> m_pausedUntil;
};

} // namespace kelp
