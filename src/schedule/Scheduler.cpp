#include "schedule/Scheduler.h"

#include "auth/AccountSource.h"
#include "base/Clock.h"
#include "base/Logging.h"
#include "preferences/Preferences.h"

#include <algorithm>
#include <array>

namespace kelp {

namespace {

constexpr double memoryOfPast = 86400; ///< seconds that entries are kept after their date
constexpr std::array retryDelays{5.0, 15.0, 30.0,
                                 60.0}; ///< seconds, after refreshes whose errors may pass by themselves
constexpr double wakeRefreshGap = 5;    ///< seconds

void callAll(const QList<std::function<void()>> &functions)
{
    for (const auto &function : functions)
        function();
}

/// Whether the user wants reminders of this calendar: their choice, else what Google shows.
bool isChosen(const CalendarInfo &calendar, const ChoiceDictionary &choices)
{
    for (const QString &key : {calendar.key(), calendar.googleID}) {
        if (const auto choice = choices.constFind(key); choice != choices.constEnd())
            return *choice;
    }
    return calendar.googleSelected || calendar.isPrimary;
}

} // namespace

Scheduler::Scheduler(Services services, QObject *parent)
    : QObject(parent), m_services(services), m_memory(services.preferences)
{
    m_services.preferences.observe(preference::calendarChoices, this, [this] { filterAgain(); });
    m_services.preferences.observe(preference::onlyWithVideo, this, [this] { filterAgain(); });
}

void Scheduler::start()
{
    m_services.clock.every(refreshInterval, this, [this] { refresh(); });
    m_services.clock.every(tickInterval, this, [this] { tick(); });
    refresh();
}

void Scheduler::refresh(std::function<void()> done)
{
    if (done)
        m_waiting.append(std::move(done));
    if (m_isRefreshing) {
        m_refreshAgain = true;
        return;
    }
    ++m_refreshCount;
    const auto waiting = std::exchange(m_waiting, {});
    if (m_services.accounts.accounts().isEmpty()) {
        clear();
        callAll(waiting);
        return;
    }
    m_isRefreshing = true;
    Q_EMIT stateChanged();
    m_services.source.fetch(
        lookAhead, [this](const CalendarInfo &calendar) { return isEnabled(calendar); }, this,
        [this, waiting](const FetchResult &result) {
            finishRefresh(result);
            callAll(waiting);
        });
}

void Scheduler::clear()
{
    m_calendars.clear();
    m_allMeetings.clear();
    filterAgain();
    m_lastError.reset();
    m_retries = 0;
    Q_EMIT stateChanged();
    Q_EMIT changed();
}

void Scheduler::finishRefresh(const FetchResult &result)
{
    apply(result);
    tick();
    m_isRefreshing = false;
    retryLater(result.errorsAreTransient);
    Q_EMIT stateChanged();
    // Not within the refresh that has just ended, but in one of its own.
    if (std::exchange(m_refreshAgain, false))
        m_services.clock.after(0, this, [this] { refresh(); });
}

void Scheduler::apply(const FetchResult &result)
{
    m_allMeetings = result.meetings;
    m_calendars = result.calendars;
    filterAgain();
    m_lastSync = m_services.clock.now();
    m_memory.forgetUpTo(*m_lastSync - memoryOfPast);
    endPassedPause();
    m_lastError = result.errors.isEmpty() ? std::nullopt : std::optional(result.errors.join(u'\n'));
    if (m_lastError)
        qCInfo(logSchedule) << "the refresh failed for" << result.errors.size() << "account(s)";
}

void Scheduler::retryLater(bool errorsAreTransient)
{
    if (!errorsAreTransient) {
        m_retries = 0;
        return;
    }
    if (m_retries == static_cast<int>(retryDelays.size()))
        return;
    const double delay = retryDelays[static_cast<std::size_t>(m_retries++)];
    // A refresh for any other reason takes the retry's place.
    m_services.clock.after(delay, this, [this, count = m_refreshCount] {
        if (count == m_refreshCount)
            refresh();
    });
}

void Scheduler::refreshAfterWake()
{
    if (m_wakeRefreshBlocked) {
        m_wakeRefreshPending = true;
        return;
    }
    m_wakeRefreshBlocked = true;
    m_retries = 0;
    refresh();
    m_services.clock.after(wakeRefreshGap, this, [this] {
        m_wakeRefreshBlocked = false;
        if (std::exchange(m_wakeRefreshPending, false))
            refreshAfterWake();
    });
}

void Scheduler::tick()
{
    endPassedPause();
    const std::optional<Meeting> due = takeDue(m_services.clock.now());
    if (due && onDue && onDue(*due))
        m_memory.markShown(*due);
    Q_EMIT changed();
}

std::optional<Meeting> Scheduler::takeDue(Instant now)
{
    const QList<Meeting> candidates = meetings(); // whoever hears of a swallowed one may change the list
    for (const Meeting &meeting : candidates) {
        // Most of a day's meetings are far away: the comparison of times comes before the look-ups.
        if (baseShowTime(meeting) > now || now >= meeting.end)
            continue;
        if (!isCandidate(meeting, now) || showTime(meeting) > now)
            continue;
        if (!isPaused())
            return meeting;
        m_memory.markShown(meeting);
        Q_EMIT swallowed(meeting);
    }
    return {};
}

bool Scheduler::isCandidate(const Meeting &meeting, Instant now) const
{
    if (m_memory.isShown(meeting) || now >= meeting.end)
        return false;
    return m_memory.snoozedUntil(meeting) || now <= meeting.start + lateCutoff;
}

Instant Scheduler::baseShowTime(const Meeting &meeting) const
{
    return meeting.start - static_cast<double>(m_services.preferences.get(preference::leadMinutes)) * 60;
}

Instant Scheduler::showTime(const Meeting &meeting) const
{
    const Instant base = baseShowTime(meeting);
    return std::max(base, m_memory.snoozedUntil(meeting).value_or(base));
}

void Scheduler::snooze(const Meeting &meeting, double seconds)
{
    m_memory.snooze(meeting, m_services.clock.now() + seconds);
}

bool Scheduler::isPaused() const
{
    return pausedUntil() && *pausedUntil() > m_services.clock.now();
}

void Scheduler::setPausedUntil(std::optional<Instant> until)
{
    m_memory.setPausedUntil(until);
    Q_EMIT stateChanged();
}

void Scheduler::endPassedPause()
{
    if (pausedUntil() && !isPaused())
        setPausedUntil({});
}

/// Asked for three times at every tick, and seldom another one.
const Scheduler::Kept &Scheduler::kept() const
{
    if (m_kept)
        return *m_kept;
    const ChoiceDictionary choices = m_services.preferences.get(preference::calendarChoices);
    const bool onlyWithVideo = m_services.preferences.get(preference::onlyWithVideo);
    m_kept.emplace();
    for (const CalendarInfo &calendar : m_calendars) {
        if (isChosen(calendar, choices))
            m_kept->calendarKeys.insert(calendar.key());
    }
    std::copy_if(m_allMeetings.begin(), m_allMeetings.end(), std::back_inserter(m_kept->meetings),
                 [&](const Meeting &meeting) {
                     return m_kept->calendarKeys.contains(meeting.calendarID) && (!onlyWithVideo || meeting.joinURL);
                 });
    return *m_kept;
}

bool Scheduler::isEnabled(const CalendarInfo &calendar) const
{
    return isChosen(calendar, m_services.preferences.get(preference::calendarChoices));
}

void Scheduler::setCalendar(const CalendarInfo &calendar, bool enabled)
{
    ChoiceDictionary choices = m_services.preferences.get(preference::calendarChoices);
    choices.insert(calendar.key(), enabled);
    m_services.preferences.set(preference::calendarChoices, choices);
    Q_EMIT stateChanged();
    refresh();
}

int Scheduler::enabledCalendarCount() const
{
    return static_cast<int>(std::count_if(m_calendars.begin(), m_calendars.end(),
                                          [this](const CalendarInfo &calendar) { return isEnabled(calendar); }));
}

std::optional<Meeting> Scheduler::nextMeeting() const
{
    const Instant now = m_services.clock.now();
    const auto next =
        std::find_if(meetings().begin(), meetings().end(), [&](const Meeting &meeting) { return meeting.end > now; });
    return next == meetings().end() ? std::nullopt : std::optional(*next);
}

std::optional<Scheduler::Popup> Scheduler::nextPopup() const
{
    const Instant now = m_services.clock.now();
    std::optional<Popup> next;
    for (const Meeting &meeting : meetings()) {
        if (isCandidate(meeting, now) && (!next || showTime(meeting) < next->at))
            next = Popup{meeting, showTime(meeting)};
    }
    return next;
}

QList<Meeting> Scheduler::upcoming(const std::optional<Meeting> &after, int limit) const
{
    const Instant now = m_services.clock.now();
    QList<Meeting> ahead = meetings();
    ahead.removeIf([&](const Meeting &meeting) { return meeting.end <= now || (after && meeting.id == after->id); });
    std::stable_sort(ahead.begin(), ahead.end(), [](const Meeting &a, const Meeting &b) { return a.start < b.start; });
    return ahead.first(std::min<qsizetype>(std::max(limit, 0), ahead.size()));
}

} // namespace kelp
