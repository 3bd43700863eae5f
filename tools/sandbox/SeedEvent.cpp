#include "SeedEvent.h"

#include <QDateTime>
#include <QJsonArray>

#include <algorithm>
#include <cmath>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

constexpr double secondsPerDay = 86400;
constexpr double defaultDuration = 1800;
/// As many instances of an endless event as the service expands when the query has no end.
constexpr qint64 instancesWithoutEnd = 730;

QString rule(double every, std::optional<int> count)
{
    struct Unit
    {
        double seconds;
        QString name;
    };
    const QList<Unit> units{{7 * secondsPerDay, u"WEEKLY"_s},
                            {secondsPerDay, u"DAILY"_s},
                            {3600, u"HOURLY"_s},
                            {60, u"MINUTELY"_s},
                            {1, u"SECONDLY"_s}};
    const auto unit = std::find_if(units.begin(), units.end() - 1,
                                   [every](const Unit &candidate) { return std::fmod(every, candidate.seconds) == 0; });
    QString text = u"RRULE:FREQ="_s + unit->name;
    if (const auto interval = static_cast<qint64>(every / unit->seconds); interval != 1)
        text += u";INTERVAL=%1"_s.arg(interval);
    if (count)
        text += u";COUNT=%1"_s.arg(*count);
    return text;
}

} // namespace

Result<SeedEvent, QString> SeedEvent::parse(const QJsonObject &json, Instant now, const QTimeZone &zone)
{
    SeedEvent event;
    event.m_zone = zone;
    event.m_members = json;
    for (const QString &own : {u"startsIn"_s, u"lasts"_s, u"date"_s, u"days"_s, u"repeats"_s})
        event.m_members.remove(own);
    // The wire has whole seconds only.
    if (const auto read = event.readTimes(json, {std::floor(now.secondsSince1970)}); !read)
        return Failure(read.error());
    if (const auto read = event.readRepetition(json); !read)
        return Failure(read.error());
    return event;
}

void SeedEvent::setId(const QString &id)
{
    m_members[u"id"_s] = id;
}

Result<void, QString> SeedEvent::readTimes(const QJsonObject &json, Instant now)
{
    const bool relative = json.contains(u"startsIn"_s);
    const bool allDay = json.contains(u"date"_s);
    const bool absolute = json.contains(u"start"_s) || json.contains(u"end"_s);
    if (relative + allDay + absolute > 1)
        return Failure(u"\"startsIn\", \"date\" and \"start\" exclude each other"_s);
    if (allDay)
        return readAllDay(json, now);
    const QJsonValue lasts = json[u"lasts"_s];
    if (!lasts.isUndefined() && (!lasts.isDouble() || !(relative || json[u"start"_s].isString())))
        return Failure(u"\"lasts\" is a number of seconds beside \"startsIn\" or \"start\""_s);
    if (absolute)
        return readAbsolute(json);
    if (!relative)
        return {};
    if (!json[u"startsIn"_s].isDouble())
        return Failure(u"\"startsIn\" is a number of seconds"_s);
    const Instant start = now + json[u"startsIn"_s].toDouble();
    m_span = Span{start, start + lasts.toDouble(defaultDuration)};
    m_members[u"start"_s] = wireTime(m_span->start, false);
    m_members[u"end"_s] = wireTime(m_span->end, false);
    return {};
}

Result<void, QString> SeedEvent::readAllDay(const QJsonObject &json, Instant now)
{
    const QJsonValue date = json[u"date"_s];
    const int days = json[u"days"_s].toInt(1);
    const QDate day =
        date.isDouble() ? now.toLocalDateTime().toTimeZone(m_zone).date().addDays(static_cast<qint64>(date.toDouble()))
                        : QDate::fromString(date.toString(), u"yyyy-MM-dd"_s);
    if (!day.isValid() || days < 1)
        return Failure(u"\"date\" is \"yyyy-mm-dd\" or a number of days from today, \"days\" at least 1"_s);
    m_span = Span{Instant::fromDateTime(day.startOfDay(m_zone)),
                  Instant::fromDateTime(day.addDays(days).startOfDay(m_zone)), true};
    m_members[u"start"_s] = wireTime(m_span->start, true);
    m_members[u"end"_s] = wireTime(m_span->end, true);
    return {};
}

/// Texts are instants; objects go over the wire as they are, readable or not, so that odd times can be seeded.
Result<void, QString> SeedEvent::readAbsolute(const QJsonObject &json)
{
    const auto read = [&](const QString &name) -> std::optional<Instant> {
        const QJsonValue value = json[name];
        return Instant::parse(value.isObject() ? value[u"dateTime"_s].toString() : value.toString());
    };
    const std::optional<Instant> start = read(u"start"_s);
    std::optional<Instant> end = read(u"end"_s);
    if (start && !json.contains(u"end"_s))
        end = *start + json[u"lasts"_s].toDouble(defaultDuration);
    for (const QString &name : {u"start"_s, u"end"_s}) {
        if (json[name].isString() && !read(name))
            return Failure(u"\"%1\" is no RFC 3339 time with an offset"_s.arg(name));
        if (json[name].isString())
            m_members[name] = QJsonObject{{u"dateTime"_s, json[name]}, {u"timeZone"_s, QString::fromUtf8(m_zone.id())}};
    }
    if (json[u"start"_s].isString() && !json.contains(u"end"_s))
        m_members[u"end"_s] = wireTime(*end, false);
    if (start && end)
        m_span = Span{*start, *end};
    return {};
}

Result<void, QString> SeedEvent::readRepetition(const QJsonObject &json)
{
    if (!json.contains(u"repeats"_s))
        return {};
    const QJsonObject repeats = json[u"repeats"_s].toObject();
    const QJsonValue every = repeats[u"every"_s];
    const QJsonValue count = repeats[u"count"_s];
    Repetition repetition;
    if (every == u"daily"_s)
        repetition.every = secondsPerDay;
    else if (every == u"weekly"_s)
        repetition.every = 7 * secondsPerDay;
    else
        repetition.every = std::floor(every.toDouble());
    if (repetition.every < 1 || !m_span)
        return Failure(
            u"\"repeats\" needs \"every\" (seconds, \"daily\" or \"weekly\") and an event with readable times"_s);
    if (m_span->isAllDay && std::fmod(repetition.every, secondsPerDay) != 0)
        return Failure(u"an all-day event repeats every so many days"_s);
    if (!count.isUndefined() && count.toInt() < 1)
        return Failure(u"\"count\" is a number of instances, at least 1"_s);
    if (!count.isUndefined())
        repetition.count = count.toInt();
    m_repetition = repetition;
    m_members[u"recurrence"_s] = QJsonArray{rule(repetition.every, repetition.count)};
    return {};
}

SeedEvent::Span SeedEvent::instance(qint64 index) const
{
    const double shift = static_cast<double>(index) * (m_repetition ? m_repetition->every : 0);
    if (!m_span->isAllDay)
        return {m_span->start + shift, m_span->end + shift, false};
    // A day may have 23 or 25 hours.
    const auto moved = [&](Instant instant) {
        const QDate day = instant.toLocalDateTime().toTimeZone(m_zone).date();
        return Instant::fromDateTime(day.addDays(static_cast<qint64>(shift / secondsPerDay)).startOfDay(m_zone));
    };
    return {moved(m_span->start), moved(m_span->end), true};
}

QList<qint64> SeedEvent::instancesIn(const Window &window, qint64 limit) const
{
    const qint64 count = !m_repetition ? 1 : m_repetition->count.value_or(std::numeric_limits<int>::max());
    qint64 index = 0;
    if (m_repetition && window.from && *window.from > m_span->end) // one less than needed, for days of 23 hours
        index = std::max<qint64>(0, static_cast<qint64>((*window.from - m_span->end) / m_repetition->every) - 1);
    QList<qint64> found;
    for (; index < count && found.size() < limit; ++index) {
        const Span span = instance(index);
        if (window.to && span.start >= *window.to)
            break;
        if (!window.from || span.end > *window.from)
            found.append(index);
    }
    return found;
}

QList<Occurrence> SeedEvent::expanded(const Window &window) const
{
    if (!m_repetition)
        return unexpanded(window);
    QList<Occurrence> occurrences;
    for (const qint64 index : instancesIn(window, instancesWithoutEnd)) {
        const Span span = instance(index);
        occurrences.append({span.start, instanceMembers(span)});
    }
    return occurrences;
}

QList<Occurrence> SeedEvent::unexpanded(const Window &window) const
{
    if (!m_span)
        return {{std::nullopt, m_members}};
    if (instancesIn(window, 1).isEmpty())
        return {};
    return {{m_span->start, m_members}};
}

QJsonObject SeedEvent::wireTime(Instant instant, bool isAllDay) const
{
    const QDateTime time = instant.toLocalDateTime().toTimeZone(m_zone);
    if (isAllDay)
        return {{u"date"_s, time.date().toString(u"yyyy-MM-dd"_s)}};
    return {{u"dateTime"_s, time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate)},
            {u"timeZone"_s, QString::fromUtf8(m_zone.id())}};
}

/// An instance has an identifier of its own, made of the event's and of its start, and names the event.
QJsonObject SeedEvent::instanceMembers(const Span &span) const
{
    QJsonObject members = m_members;
    members.remove(u"recurrence"_s);
    const QJsonObject start = wireTime(span.start, span.isAllDay);
    QString suffix = span.isAllDay ? start[u"date"_s].toString() : span.start.toIso8601();
    suffix.remove(u'-').remove(u':');
    members[u"id"_s] = m_members[u"id"_s].toString() + u'_' + suffix;
    members[u"recurringEventId"_s] = m_members[u"id"_s];
    members[u"originalStartTime"_s] = start;
    members[u"start"_s] = start;
    members[u"end"_s] = wireTime(span.end, span.isAllDay);
    return members;
}

} // namespace kelp::sandbox
