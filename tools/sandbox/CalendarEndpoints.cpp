#include "CalendarEndpoints.h"

#include "CalendarRecords.h"
#include "EventsQuery.h"

#include <algorithm>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

QJsonArray defaultReminders()
{
    return {QJsonObject{{u"method"_s, u"popup"_s}, {u"minutes"_s, 10}}};
}

} // namespace

QString CalendarEndpoints::name(const QStringList &segments)
{
    if (segments.mid(0, 2) != QStringList{u"calendar"_s, u"v3"_s})
        return {};
    const QStringList rest = segments.mid(2);
    if (rest == QStringList{u"users"_s, u"me"_s, u"calendarList"_s})
        return u"calendarList"_s;
    if (rest.value(0) != u"calendars" || rest.value(1).isEmpty())
        return {};
    if (rest.size() == 2)
        return u"primary"_s;
    return rest.size() == 3 && rest[2] == u"events" ? u"events"_s : QString();
}

Answer CalendarEndpoints::answer(const Request &request) const
{
    const SeedAccount *account = authorizedAccount(request);
    if (account == nullptr) {
        const bool isMissing = request.header("authorization").isEmpty();
        return Answer::apiError(401, isMissing ? u"required"_s : u"authError"_s,
                                isMissing ? u"Login Required."_s : u"Invalid Credentials"_s);
    }
    if (request.method != "GET") // the only scope that the sandbox grants is to read
        return Answer::apiError(403, u"insufficientPermissions"_s,
                                u"Request had insufficient authentication scopes."_s);
    const QString endpoint = name(request.segments);
    if (endpoint == u"calendarList")
        return calendarList(*account, request.query);
    const SeedCalendar *calendar = account->calendar(request.segments[3]);
    if (calendar == nullptr)
        return Answer::apiError(404, u"notFound"_s, u"Not Found"_s);
    return endpoint == u"events" ? events(*account, *calendar, request.query)
                                 : Answer::json(200, calendarRecord(*calendar));
}

SeedAccount *CalendarEndpoints::authorizedAccount(const Request &request) const
{
    const QByteArray header = request.header("authorization");
    if (!header.startsWith("Bearer "))
        return nullptr;
    const auto email = m_state.grants.accountOfAccessToken(QString::fromUtf8(header.mid(7)), m_now);
    return email ? m_state.account(*email) : nullptr;
}

Answer CalendarEndpoints::calendarList(const SeedAccount &account, const Parameters &query) const
{
    const QString minimum = query.find(u"minAccessRole"_s).value_or(u"freeBusyReader"_s);
    const qsizetype minimumRank = accessRoles().indexOf(minimum);
    if (minimumRank < 0)
        return invalidValue(u"minAccessRole"_s, minimum);
    const auto showHidden = flag(query, u"showHidden"_s);
    if (!showHidden)
        return showHidden.error();
    const auto page = PageRequest::read(query, 100, 250);
    if (!page)
        return page.error();
    QJsonArray entries;
    for (const SeedCalendar &calendar : account.calendars) {
        const bool isHidden = calendar.entry[u"hidden"_s].toBool() && !*showHidden;
        if (!isHidden && accessRoles().indexOf(calendar.accessRole) >= minimumRank)
            entries.append(calendarListEntry(calendar));
    }
    return Answer::json(200, page->cut({{u"kind"_s, u"calendar#calendarList"_s}}, entries));
}

Answer CalendarEndpoints::events(const SeedAccount &account, const SeedCalendar &calendar,
                                 const Parameters &query) const
{
    const auto wanted = EventsQuery::read(query);
    if (!wanted)
        return wanted.error();
    QList<Occurrence> occurrences;
    for (const SeedEvent &event : calendar.events)
        occurrences += wanted->singleEvents ? event.expanded(wanted->window) : event.unexpanded(wanted->window);
    if (wanted->orderByStart) {
        std::stable_sort(occurrences.begin(), occurrences.end(),
                         [](const Occurrence &a, const Occurrence &b) { return a.start < b.start; });
    }
    QJsonArray items;
    for (const Occurrence &occurrence : occurrences)
        items.append(eventRecord(occurrence.members, account, calendar));
    const QJsonObject record = calendarRecord(calendar);
    return Answer::json(200, wanted->page.cut({{u"kind"_s, u"calendar#events"_s},
                                               {u"summary"_s, record[u"summary"_s]},
                                               {u"description"_s, QString()},
                                               {u"updated"_s, m_now.toIso8601Milliseconds()},
                                               {u"timeZone"_s, record[u"timeZone"_s]},
                                               {u"accessRole"_s, calendar.accessRole},
                                               {u"defaultReminders"_s, defaultReminders()}},
                                              items));
}

} // namespace kelp::sandbox
