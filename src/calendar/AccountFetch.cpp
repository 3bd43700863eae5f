#include "calendar/AccountFetch.h"

#include "auth/AccountSource.h"
#include "base/Clock.h"
#include "base/HttpClient.h"
#include "base/Uri.h"
#include "calendar/CalendarError.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double lookBack = 3600; ///< seconds: meetings that began within the last hour are still of interest
constexpr int largestPage = 150;  ///< events read of one calendar; further pages are not asked for

CalendarInfo calendarInfo(const GCalendarList::Entry &entry, const QString &email)
{
    return {.googleID = entry.id,
            .accountEmail = email,
            .name = entry.summaryOverride ? *entry.summaryOverride : entry.summary.value_or(entry.id),
            .isPrimary = entry.primary == true,
            .googleSelected = entry.selected == true,
            .color = entry.backgroundColor};
}

/// By code points; QString compares code units, which differs beyond U+FFFF.
bool codePointLess(const QString &a, const QString &b)
{
    const QList<uint> left = a.toUcs4();
    const QList<uint> right = b.toUcs4();
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end());
}

bool calendarLess(const CalendarInfo &a, const CalendarInfo &b)
{
    if (a.isPrimary != b.isPrimary)
        return a.isPrimary;
    return codePointLess(a.name.toLower(), b.name.toLower());
}

} // namespace

AccountFetch::AccountFetch(Services services, Account account, double hours, MeetingSource::CalendarFilter isEnabled,
                           QObject *parent)
    : QObject(parent),
      m_services(std::move(services)),
      m_account(std::move(account)),
      m_hours(hours),
      m_isEnabled(std::move(isEnabled)),
      m_started(m_services.clock.now())
{
}

void AccountFetch::start()
{
    get(m_services.base + u"/users/me/calendarList?minAccessRole=reader"_s, true, &AccountFetch::takeCalendars);
}

void AccountFetch::get(const QString &url, bool retry, BodyHandler handler)
{
    const auto answer = [=, this](const Result<HttpResponse, HttpError> &response) {
        if (!response)
            fail(response.error().description(), response.error().isTransient());
        else if (response->status == 401 && retry)
            get(url, false, handler);
        else if (response->status != 200)
            fail(CalendarError{response->status, response->body}.description(),
                 CalendarError{response->status, {}}.isTransient());
        else
            (this->*handler)(response->body);
    };
    const auto send = [=, this](const Result<QString, AuthError> &token) {
        if (!token) {
            fail(token.error().description(), token.error().transient);
            return;
        }
        m_services.http.send({.method = "GET",
                              .url = QUrl(url, QUrl::StrictMode),
                              .headers = {{"Authorization", "Bearer " + token->toUtf8()}},
                              .body = {}},
                             this, answer);
    };
    // The second attempt is made with a token that is certainly new.
    m_services.accounts.validAccessToken(m_account, !retry, this, send);
}

void AccountFetch::takeCalendars(const QByteArray &body)
{
    const auto list = decodeCalendarList(body);
    if (!list) {
        fail(list.error().description(), false);
        return;
    }
    const QList<GCalendarList::Entry> entries = list->items.value_or(QList<GCalendarList::Entry>());
    repairEmail(entries);
    for (const GCalendarList::Entry &entry : entries)
        m_calendars.append(calendarInfo(entry, m_account.email));
    std::stable_sort(m_calendars.begin(), m_calendars.end(), calendarLess);
    m_started = m_services.clock.now();
    readNextCalendar();
}

void AccountFetch::repairEmail(const QList<GCalendarList::Entry> &entries)
{
    // The primary calendar's identifier is the account's address.
    const auto primary = std::find_if(entries.begin(), entries.end(),
                                      [](const GCalendarList::Entry &each) { return each.primary == true; });
    if (primary == entries.end() || primary->id == m_account.email)
        return;
    m_services.accounts.rename(m_account, primary->id);
    m_account.email = primary->id;
}

void AccountFetch::readNextCalendar()
{
    while (m_next < m_calendars.size() && !m_isEnabled(m_calendars[m_next]))
        ++m_next;
    if (m_next == m_calendars.size())
        Q_EMIT finished({m_account.email, m_calendars, m_meetings, {}});
    else
        get(eventsUrl(m_calendars[m_next]), true, &AccountFetch::takeEvents);
}

void AccountFetch::takeEvents(const QByteArray &body)
{
    const auto list = decodeEventList(body);
    if (!list) {
        fail(list.error().description(), false);
        return;
    }
    const CalendarInfo &calendar = m_calendars[m_next];
    for (const GEvent &event : list->items.value_or(QList<GEvent>())) {
        if (auto meeting = Meeting::fromEvent(event, calendar.name, calendar.googleID)) {
            // Two accounts may share a calendar; its key tells them apart.
            meeting->calendarID = calendar.key();
            m_meetings.append(*std::move(meeting));
        }
    }
    ++m_next;
    readNextCalendar();
}

void AccountFetch::fail(const QString &text, bool transient)
{
    Q_EMIT finished({m_account.email, {}, {}, Error{text, transient}});
}

QString AccountFetch::eventsUrl(const CalendarInfo &calendar) const
{
    return m_services.base + u"/calendars/"_s + QString::fromLatin1(percentEncoded(calendar.googleID, "@")) +
           u"/events?timeMin="_s + (m_started - lookBack).toIso8601() + u"&timeMax="_s +
           (m_started + m_hours * 3600).toIso8601() + u"&singleEvents=true&orderBy=startTime&maxResults="_s +
           QString::number(largestPage);
}

} // namespace kelp
