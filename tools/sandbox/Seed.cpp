#include "Seed.h"

#include "CalendarRecords.h"

#include <QFile>
#include <QJsonDocument>
#include <QSet>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

/// A misspelt member is better refused than ignored.
Result<void, QString> onlyKnown(const QJsonObject &json, const QStringList &known, const QString &where)
{
    for (const QString &name : json.keys()) {
        if (!known.contains(name))
            return Failure(u"%1: \"%2\" is not known"_s.arg(where, name));
    }
    return {};
}

Result<SeedCalendar, QString> parseCalendar(const QJsonObject &json, const QString &email, Instant now)
{
    SeedCalendar calendar;
    calendar.id = json[u"id"_s].toString(email);
    calendar.accessRole = json[u"accessRole"_s].toString(u"owner"_s);
    calendar.zone = QTimeZone(json[u"timeZone"_s].toString(u"UTC"_s).toUtf8());
    const QString where = u"calendar %1"_s.arg(calendar.id);
    if (!accessRoles().contains(calendar.accessRole))
        return Failure(u"%1: \"accessRole\" is one of %2"_s.arg(where, accessRoles().join(u", "_s)));
    if (!calendar.zone.isValid())
        return Failure(u"%1: \"timeZone\" is not known"_s.arg(where));
    calendar.entry = json;
    calendar.entry.remove(u"events"_s);
    calendar.entry[u"id"_s] = calendar.id;
    const auto events = calendar.parseEvents(json[u"events"_s].toArray(), now);
    if (!events)
        return Failure(u"%1: %2"_s.arg(where, events.error()));
    calendar.events = *events;
    return calendar;
}

Result<SeedAccount, QString> parseAccount(const QJsonObject &json, Instant now)
{
    SeedAccount account;
    account.email = json[u"email"_s].toString();
    account.refreshToken = json[u"refreshToken"_s].toString();
    if (account.email.isEmpty())
        return Failure(u"an account needs an \"email\""_s);
    const QString where = u"account %1"_s.arg(account.email);
    if (const auto known = onlyKnown(json, {u"email"_s, u"refreshToken"_s, u"calendars"_s}, where); !known)
        return Failure(known.error());
    QJsonArray calendars = json[u"calendars"_s].toArray();
    if (!json.contains(u"calendars"_s))
        calendars.append(QJsonObject{{u"primary"_s, true}, {u"selected"_s, true}});
    QSet<QString> ids;
    int primaries = 0;
    for (const QJsonValue &value : calendars) {
        const auto calendar = parseCalendar(value.toObject(), account.email, now);
        if (!calendar)
            return Failure(u"%1: %2"_s.arg(where, calendar.error()));
        primaries += calendar->isPrimary();
        if (ids.contains(calendar->id) || primaries > 1)
            return Failure(u"%1: calendar %2 is there twice, or a second primary one"_s.arg(where, calendar->id));
        ids.insert(calendar->id);
        account.calendars.append(*calendar);
    }
    return account;
}

} // namespace

Result<QList<SeedEvent>, QString> SeedCalendar::parseEvents(const QJsonArray &json, Instant now) const
{
    QList<SeedEvent> parsed;
    for (qsizetype i = 0; i < json.size(); ++i) {
        auto event = SeedEvent::parse(json[i].toObject(), now, zone);
        if (!event)
            return Failure(u"event %1: %2"_s.arg(i + 1).arg(event.error()));
        if (!event->hasId())
            event->setId(u"event%1%2"_s.arg(i + 1, 4, 10, QLatin1Char('0')).arg(shortHash(id)));
        parsed.append(*event);
    }
    return parsed;
}

const SeedCalendar *SeedAccount::calendar(const QString &id) const
{
    for (const SeedCalendar &candidate : calendars) {
        if (candidate.id == id || (id == u"primary" && candidate.isPrimary()))
            return &candidate;
    }
    return nullptr;
}

SeedCalendar *SeedAccount::calendar(const QString &id)
{
    for (SeedCalendar &candidate : calendars) {
        if (candidate.id == id || (id == u"primary" && candidate.isPrimary()))
            return &candidate;
    }
    return nullptr;
}

Result<Seed, QString> Seed::parse(const QByteArray &json, Instant now)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (!document.isObject())
        return Failure(u"the seed is no JSON object: %1"_s.arg(error.errorString()));
    const QJsonObject object = document.object();
    if (const auto known = onlyKnown(object, {u"client"_s, u"accounts"_s, u"faults"_s}, u"seed"_s); !known)
        return Failure(known.error());
    const QJsonObject client = object[u"client"_s].toObject();
    Seed seed;
    seed.clientId = client[u"id"_s].toString(u"kelp-sandbox.apps.googleusercontent.com"_s);
    seed.clientSecret = client[u"secret"_s].toString(u"kelp-sandbox-secret"_s);
    QSet<QString> emails;
    for (const QJsonValue &value : object[u"accounts"_s].toArray()) {
        const auto account = parseAccount(value.toObject(), now);
        if (!account)
            return Failure(account.error());
        if (emails.contains(account->email))
            return Failure(u"account %1 is there twice"_s.arg(account->email));
        emails.insert(account->email);
        seed.accounts.append(*account);
    }
    const auto faults = parseFaults(object[u"faults"_s].toArray());
    if (!faults)
        return Failure(faults.error());
    seed.faults = *faults;
    return seed;
}

QByteArray Seed::builtIn()
{
    QFile file(u":/sandbox/default-seed.json"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Result<QList<Fault>, QString> parseFaults(const QJsonArray &json)
{
    QList<Fault> faults;
    for (const QJsonValue &value : json) {
        const auto fault = Fault::parse(value.toObject());
        if (!fault)
            return Failure(u"fault %1: %2"_s.arg(faults.size() + 1).arg(fault.error()));
        faults.append(*fault);
    }
    return faults;
}

} // namespace kelp::sandbox
