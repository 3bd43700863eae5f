#pragma once

#include "Fault.h"
#include "SeedEvent.h"

#include <QByteArray>
#include <QJsonArray>
#include <QList>

namespace kelp::sandbox {

struct SeedCalendar
{
    QString id;
    QString accessRole; ///< "freeBusyReader", "reader", "writer" or "owner"
    QJsonObject entry;  ///< as listed in the account's calendar list
    QTimeZone zone;
    QList<SeedEvent> events;

    [[nodiscard]] bool isPrimary() const { return entry[QLatin1StringView("primary")].toBool(); }

    /// Reads the entries of "events"; relative times count from `now`. The error says what is wrong.
    [[nodiscard]] Result<QList<SeedEvent>, QString> parseEvents(const QJsonArray &json, Instant now) const;
};

struct SeedAccount
{
    QString email;
    QString refreshToken;          ///< one that is valid from the start, or empty
    QList<SeedCalendar> calendars; ///< in the order of the calendar list

    /// The calendar of that identifier; "primary" stands for the primary one.
    [[nodiscard]] const SeedCalendar *calendar(const QString &id) const;
    [[nodiscard]] SeedCalendar *calendar(const QString &id);
};

/// What the sandbox knows when it starts. tools/sandbox/README.md describes the file.
struct Seed
{
    QString clientId;
    QString clientSecret;
    QList<SeedAccount> accounts;
    QList<Fault> faults;

    /// Relative times count from `now`. The error says what is wrong.
    [[nodiscard]] static Result<Seed, QString> parse(const QByteArray &json, Instant now);
    /// The seed for when there is no file.
    [[nodiscard]] static QByteArray builtIn();
};

/// Reads a list of faults; the error says what is wrong.
[[nodiscard]] Result<QList<Fault>, QString> parseFaults(const QJsonArray &json);

} // namespace kelp::sandbox
