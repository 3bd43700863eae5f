#pragma once

#include "support/PrivateDesktop.h"
#include "support/Sandbox.h"

#include <QDateTime>
#include <QJsonArray>

namespace kelp::test::oneAccount {

using namespace Qt::StringLiterals;

inline const QString email = u"robin@example.com"_s;
inline const QString refreshToken = u"1//robin"_s;
inline const QString joinLink = u"https://meet.google.com/abc-defg-hij?authuser=0&note=a%2Fb%20c#top"_s;

/// A meeting of half an hour with `joinLink`.
[[nodiscard]] inline QJsonObject meeting(const QString &id, const QString &title, int startsIn)
{
    return {{u"id"_s, id}, {u"summary"_s, title}, {u"startsIn"_s, startsIn}, {u"hangoutLink"_s, joinLink}};
}

/// The same at a time that does not move with the sandbox's clock.
[[nodiscard]] inline QJsonObject meeting(const QString &id, const QString &title, const QDateTime &start)
{
    return {
        {u"id"_s, id}, {u"summary"_s, title}, {u"start"_s, start.toString(Qt::ISODate)}, {u"hangoutLink"_s, joinLink}};
}

/// A sandbox's seed: one account with a primary calendar of `events` and two further ones, of which Google shows one.
[[nodiscard]] inline QJsonObject seed(const QJsonArray &events = {})
{
    const QJsonObject primary{{u"id"_s, email},     {u"summary"_s, email}, {u"summaryOverride"_s, u"Robin"_s},
                              {u"primary"_s, true}, {u"selected"_s, true}, {u"events"_s, events}};
    const QJsonObject holidays{{u"id"_s, u"en.german#holiday@group.v.calendar.google.com"_s},
                               {u"summary"_s, u"Holidays"_s},
                               {u"selected"_s, true},
                               {u"accessRole"_s, u"reader"_s}};
    const QJsonObject notChosen{{u"id"_s, u"away@group.calendar.google.com"_s}, {u"summary"_s, u"Not chosen"_s}};
    const QJsonObject account{{u"email"_s, email},
                              {u"refreshToken"_s, refreshToken},
                              {u"calendars"_s, QJsonArray{primary, holidays, notChosen}}};
    return {{u"accounts"_s, QJsonArray{account}}};
}

/// Kelp's preferences with the client of the sandbox.
[[nodiscard]] inline QJsonObject preferences()
{
    return {{u"clientID"_s, Sandbox::clientId()}, {u"clientSecret"_s, Sandbox::clientSecret()}};
}

/// Makes Kelp find itself signed in.
inline void signIn(PrivateDesktop &desktop)
{
    desktop.writePreferences(preferences());
    desktop.writeAccount(email, refreshToken);
}

/// How often `sandbox` was asked for the calendars: once per refresh.
[[nodiscard]] inline qsizetype refreshes(const Sandbox &sandbox)
{
    const QList<LoggedRequest> requests = sandbox.requests();
    return std::count_if(requests.begin(), requests.end(),
                         [](const LoggedRequest &each) { return each.path.endsWith("/calendarList"_L1); });
}

} // namespace kelp::test::oneAccount
