#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace kelp::sandbox {

struct SeedAccount;
struct SeedCalendar;

/// "freeBusyReader", "reader", "writer", "owner": what one may do with a calendar, the least first.
[[nodiscard]] const QStringList &accessRoles();

/// 16 hexadecimal digits that depend on nothing but `text`.
[[nodiscard]] QString shortHash(const QString &text);

// What goes over the wire: the members that the seed gives, completed by those that are always there.

/// An entry of the account's calendar list.
[[nodiscard]] QJsonObject calendarListEntry(const SeedCalendar &calendar);
/// The calendar by itself.
[[nodiscard]] QJsonObject calendarRecord(const SeedCalendar &calendar);
/// An event as `account` sees it.
[[nodiscard]] QJsonObject eventRecord(const QJsonObject &seeded, const SeedAccount &account,
                                      const SeedCalendar &calendar);

} // namespace kelp::sandbox
