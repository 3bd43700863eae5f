#pragma once

#include "calendar/MeetingSource.h"
#include "schedule/ReminderMemory.h"

#include <QObject>
#include <QSet>

#include <functional>
#include <optional>
#include <utility>

namespace kelp {

class AccountSource;
class Clock;
class Preferences;

/// Decides when a meeting's reminder appears.
///
/// Every 300 s the calendars are read; every 5 s the clock is compared with each meeting's show time, so that a new
/// lead time, a snooze or a pause takes effect within one tick and nothing has to be armed again.
///
///     new ──(show time reached)──→ due ──(onDue: true)──→ shown ──(snooze)──→ snoozed ──(its end)──→ due
///                                   └──(paused)──→ shown, silently
class Scheduler : public QObject
{
    Q_OBJECT

public:
    static constexpr double refreshInterval = 300; ///< seconds
    static constexpr double tickInterval = 5;      ///< seconds
    static constexpr double lateCutoff = 300;      ///< seconds after its start that a meeting may still pop up
    static constexpr double lookAhead = 24;        ///< hours

    struct Services
    {
        Preferences &preferences;
        Clock &clock;
        MeetingSource &source;
        AccountSource &accounts;
    };

    struct Popup
    {
        Meeting meeting;
        Instant at;
    };

    explicit Scheduler(Services services, QObject *parent = nullptr);

    /// Shows the meeting and returns true, or returns false to be asked again at the next tick.
    std::function<bool(const Meeting &)> onDue;

    /// Refreshes now and from then on at its intervals.
    void start();
    /// Reads the calendars. `done`, if any, is called when a refresh that began after this call has ended: while one is
    /// under way, another follows it, only one however often it is asked for.
    void refresh(std::function<void()> done = {});
    /// The same after a wake-up of the computer or of its network, which may come in storms: at most one refresh every
    /// 5 s.
    void refreshAfterWake();
    /// Takes over what a refresh brought, without the tick that follows it.
    void apply(const FetchResult &result);
    /// The due check. At most one meeting is offered at each.
    void tick();

    void snooze(const Meeting &meeting, double seconds);
    [[nodiscard]] bool isPaused() const;
    [[nodiscard]] std::optional<Instant> pausedUntil() const { return m_memory.pausedUntil(); }
    void setPausedUntil(std::optional<Instant> until);

    [[nodiscard]] const QList<CalendarInfo> &calendars() const { return m_calendars; }
    [[nodiscard]] const QList<Meeting> &allMeetings() const { return m_allMeetings; }
    [[nodiscard]] const std::optional<QString> &lastError() const { return m_lastError; } ///< a line per account
    [[nodiscard]] std::optional<Instant> lastSync() const { return m_lastSync; }
    [[nodiscard]] bool isRefreshing() const { return m_isRefreshing; }

    /// Those of enabled calendars, and with a link where only these are wanted.
    [[nodiscard]] const QList<Meeting> &meetings() const { return kept().meetings; }
    [[nodiscard]] bool isEnabled(const CalendarInfo &calendar) const;
    void setCalendar(const CalendarInfo &calendar, bool enabled);
    /// The keys of all calendars that are enabled.
    [[nodiscard]] const QSet<QString> &enabledKeys() const { return kept().calendarKeys; }
    [[nodiscard]] int enabledCalendarCount() const;
    /// The first that has not ended.
    [[nodiscard]] std::optional<Meeting> nextMeeting() const;
    /// The reminder that comes next.
    [[nodiscard]] std::optional<Popup> nextPopup() const;
    /// The first `limit` that have not ended, by start, without the one whose identifier `after` has.
    [[nodiscard]] QList<Meeting> upcoming(const std::optional<Meeting> &after, int limit) const;

Q_SIGNALS:
    /// After every tick, and after a refresh that found no account.
    void changed();
    /// Lists, error, pause or the refreshing flag are others now.
    void stateChanged();
    /// A due meeting was marked shown without being shown, because reminders are paused.
    void swallowed(const kelp::Meeting &meeting);

private:
    /// What the preferences let through.
    struct Kept
    {
        QSet<QString> calendarKeys;
        QList<Meeting> meetings;
    };

    [[nodiscard]] const Kept &kept() const;
    void filterAgain() { m_kept.reset(); }
    void finishRefresh(const FetchResult &result);
    void retryLater(bool errorsAreTransient);
    void clear();
    void endPassedPause();
    [[nodiscard]] std::optional<Meeting> takeDue(Instant now);
    [[nodiscard]] bool isCandidate(const Meeting &meeting, Instant now) const;
    [[nodiscard]] Instant baseShowTime(const Meeting &meeting) const; ///< without regard to a snooze
    [[nodiscard]] Instant showTime(const Meeting &meeting) const;

    Services m_services;
    ReminderMemory m_memory;
    QList<CalendarInfo> m_calendars;
    QList<Meeting> m_allMeetings;
    mutable std::optional<Kept> m_kept; ///< none: to be made of both lists when next asked for
    std::optional<QString> m_lastError;
    std::optional<Instant> m_lastSync;
    bool m_isRefreshing = false;
    bool m_refreshAgain = false;
    QList<std::function<void()>> m_waiting; ///< called when the next refresh has ended
    int m_retries = 0;                      ///< quick retries since the last refresh without transient errors
    int m_refreshCount = 0;                 ///< refreshes begun so far
    bool m_wakeRefreshPending = false;
    bool m_wakeRefreshBlocked = false; ///< the last one is less than 5 s ago
};

} // namespace kelp
