#include "CalendarRecords.h"

#include "Seed.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

void complete(QJsonObject &record, const QJsonObject &defaults)
{
    for (auto member = defaults.begin(); member != defaults.end(); ++member) {
        if (!record.contains(member.key()))
            record.insert(member.key(), member.value());
    }
}

/// Stays the same for as long as the record does.
QString etag(const QJsonObject &record)
{
    return u"\"%1\""_s.arg(shortHash(QString::fromUtf8(QJsonDocument(record).toJson(QJsonDocument::Compact))));
}

QJsonObject person(const QString &email, bool isSelf)
{
    QJsonObject record{{u"email"_s, email}};
    if (isSelf)
        record[u"self"_s] = true;
    return record;
}

/// The service marks the reader's own entry.
QJsonArray withSelf(QJsonArray attendees, const QString &email)
{
    for (qsizetype i = 0; i < attendees.size(); ++i) {
        QJsonObject attendee = attendees[i].toObject();
        if (attendee[u"email"_s] == email && !attendee.contains(u"self"_s)) {
            attendee[u"self"_s] = true;
            attendees.replace(i, attendee);
        }
    }
    return attendees;
}

const QJsonObject &conferenceProperties()
{
    static const QJsonObject properties{{u"allowedConferenceSolutionTypes"_s, QJsonArray{u"hangoutsMeet"_s}}};
    return properties;
}

} // namespace

const QStringList &accessRoles()
{
    static const QStringList roles{u"freeBusyReader"_s, u"reader"_s, u"writer"_s, u"owner"_s};
    return roles;
}

QString shortHash(const QString &text)
{
    return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha256).toHex().left(16));
}

QJsonObject calendarListEntry(const SeedCalendar &calendar)
{
    QJsonObject entry = calendar.entry;
    complete(entry, {{u"kind"_s, u"calendar#calendarListEntry"_s},
                     {u"etag"_s, etag(calendar.entry)},
                     {u"summary"_s, calendar.id},
                     {u"timeZone"_s, QString::fromUtf8(calendar.zone.id())},
                     {u"colorId"_s, u"14"_s},
                     {u"backgroundColor"_s, u"#9fe1e7"_s},
                     {u"foregroundColor"_s, u"#000000"_s},
                     {u"accessRole"_s, calendar.accessRole},
                     {u"defaultReminders"_s, QJsonArray{QJsonObject{{u"method"_s, u"popup"_s}, {u"minutes"_s, 10}}}},
                     {u"conferenceProperties"_s, conferenceProperties()}});
    return entry;
}

QJsonObject calendarRecord(const SeedCalendar &calendar)
{
    return {
        {u"kind"_s, u"calendar#calendar"_s},
        {u"etag"_s, etag(calendar.entry)},
        {u"id"_s, calendar.id},
        {u"summary"_s, calendar.entry.contains(u"summary"_s) ? calendar.entry[u"summary"_s] : QJsonValue(calendar.id)},
        {u"timeZone"_s, QString::fromUtf8(calendar.zone.id())},
        {u"conferenceProperties"_s, conferenceProperties()}};
}

QJsonObject eventRecord(const QJsonObject &seeded, const SeedAccount &account, const SeedCalendar &calendar)
{
    QJsonObject event = seeded;
    const QString id = seeded[u"id"_s].toString();
    const QString seriesId = seeded[u"recurringEventId"_s].toString(id);
    const QString owner = calendar.isPrimary() ? account.email : calendar.id;
    complete(event, {{u"kind"_s, u"calendar#event"_s},
                     {u"etag"_s, etag(seeded)},
                     {u"status"_s, u"confirmed"_s},
                     {u"htmlLink"_s, u"https://example.com/calendar/event?eid="_s + shortHash(id + calendar.id)},
                     {u"created"_s, u"2025-01-06T08:00:00.000Z"_s},
                     {u"updated"_s, u"2025-01-06T08:00:00.000Z"_s},
                     {u"creator"_s, person(account.email, true)},
                     {u"organizer"_s, person(owner, calendar.isPrimary())},
                     {u"iCalUID"_s, seriesId + u"@google.com"_s},
                     {u"sequence"_s, 0},
                     {u"reminders"_s, QJsonObject{{u"useDefault"_s, true}}},
                     {u"eventType"_s, u"default"_s}});
    if (event[u"attendees"_s].isArray())
        event[u"attendees"_s] = withSelf(event[u"attendees"_s].toArray(), account.email);
    return event;
}

} // namespace kelp::sandbox
