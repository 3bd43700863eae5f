#pragma once

#include "desktop/OneAccount.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

namespace kelp::test::twoAccounts {

using namespace Qt::StringLiterals;

inline const QString robin = u"robin@example.com"_s;
inline const QString mika = u"mika@example.com"_s;

// Names as people give them.
inline const QString withEmoji = u"🎉 Birthdays 👩‍👩‍👧"_s;
inline const QString rightToLeft = u"לוח השנה של הצוות"_s;
inline const QString veryLong =
    u"Everything that anybody on the third floor might want to know about "_s.repeated(3).left(200);

/// What a calendar of this number is called by Google and in Kelp's preferences.
[[nodiscard]] inline QString calendarID(const QString &email, int number)
{
    return number == 0 ? email : u"calendar%1.%2"_s.arg(number).arg(email);
}

[[nodiscard]] inline QString calendarKey(const QString &email, int number)
{
    return email + u'|' + calendarID(email, number);
}

/// An account with a calendar for each name, all of them shown by Google, the first one with these events.
[[nodiscard]] inline QJsonObject account(const QString &email, const QStringList &names, const QJsonArray &events)
{
    QJsonArray calendars;
    for (int number = 0; number < names.size(); ++number) {
        calendars.append(
            QJsonObject{{u"id"_s, calendarID(email, number)},
                        {u"summary"_s, names[number]},
                        {u"primary"_s, number == 0},
                        {u"selected"_s, true},
                        {u"backgroundColor"_s, QStringList{u"#4285f4"_s, u"#0b8043"_s, u"#f4511e"_s}[number % 3]},
                        {u"events"_s, number == 0 ? events : QJsonArray()}});
    }
    return {{u"email"_s, email}, {u"calendars"_s, calendars}};
}

/// Names of a dozen calendars, those at the end of this list last.
[[nodiscard]] inline QStringList dozen(const QString &first, const QStringList &last)
{
    QStringList names{first};
    while (names.size() + last.size() < 12)
        names.append(u"%1 %2"_s.arg(first).arg(names.size()));
    return names + last;
}

/// A sandbox's seed: two accounts with a dozen calendars each, and a meeting each that is hours away.
[[nodiscard]] inline QJsonObject seed()
{
    return {{u"accounts"_s, QJsonArray{account(robin, dozen(u"Robin"_s, {withEmoji, rightToLeft, veryLong}),
                                               {oneAccount::meeting(u"review"_s, u"Design review"_s, 2 * 3600)}),
                                       account(mika, dozen(u"Mika"_s, {u"Team Tide"_s}),
                                               {oneAccount::meeting(u"plans"_s, u"Plans for the week"_s, 3 * 3600)})}}};
}

} // namespace kelp::test::twoAccounts
