#include "schedule/ReminderMemory.h"

#include "preferences/Preferences.h"

namespace kelp {

ReminderMemory::ReminderMemory(Preferences &preferences)
    : m_preferences(preferences),
      m_shown(preferences.get(preference::shownMeetings)),
      m_snoozed(preferences.get(preference::snoozedMeetings)),
      m_pausedUntil(preferences.get(preference::pausedUntil))
{
}

QString ReminderMemory::key(const Meeting &meeting)
{
    return meeting.id + u'@' + QString::number(meeting.start.wholeSeconds());
}

std::optional<Instant> ReminderMemory::snoozedUntil(const Meeting &meeting) const
{
    const auto entry = m_snoozed.constFind(key(meeting));
    return entry == m_snoozed.constEnd() ? std::nullopt : std::optional(*entry);
}

void ReminderMemory::markShown(const Meeting &meeting)
{
    m_shown.insert(key(meeting), meeting.end);
    m_snoozed.remove(key(meeting));
    save();
}

void ReminderMemory::snooze(const Meeting &meeting, Instant until)
{
    m_shown.remove(key(meeting));
    m_snoozed.insert(key(meeting), until);
    save();
}

void ReminderMemory::setPausedUntil(std::optional<Instant> until)
{
    m_pausedUntil = until;
    m_preferences.set(preference::pausedUntil, until);
}

void ReminderMemory::forgetUpTo(Instant cutoff)
{
    const auto isOld = [cutoff](const DateDictionary::iterator &entry) { return entry.value() <= cutoff; };
    const bool shownChanged = m_shown.removeIf(isOld) > 0;
    const bool snoozedChanged = m_snoozed.removeIf(isOld) > 0;
    if (shownChanged || snoozedChanged)
        save();
}

void ReminderMemory::save()
{
    m_preferences.update([this] {
        m_preferences.set(preference::shownMeetings, m_shown);
        m_preferences.set(preference::snoozedMeetings, m_snoozed);
    });
}

} // namespace kelp
