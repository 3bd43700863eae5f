#include "calendar/WireRecords.h"

#include "base/Json.h"

#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// Reads the members of one JSON value and remembers the first that is not what it has to be. Once something is
/// wrong, everything reads as absent.
class Decoder
{
public:
    [[nodiscard]] const std::optional<QString> &error() const { return m_error; }

    std::optional<QString> string(const QJsonObject &object, const QString &path, QLatin1StringView name)
    {
        const std::optional<QJsonValue> value = member(object, name);
        if (value && !value->isString())
            return wrong(path, name, u"a string"_s);
        return value ? std::optional(value->toString()) : std::nullopt;
    }

    std::optional<bool> boolean(const QJsonObject &object, const QString &path, QLatin1StringView name)
    {
        const std::optional<QJsonValue> value = member(object, name);
        if (value && !value->isBool())
            return wrong(path, name, u"true or false"_s);
        return value ? std::optional(value->toBool()) : std::nullopt;
    }

    template<typename T>
    using Read = T (Decoder::*)(const QJsonObject &, const QString &);

    template<typename T>
    std::optional<T> record(const QJsonObject &object, const QString &path, QLatin1StringView name, Read<T> read)
    {
        const std::optional<QJsonValue> value = member(object, name);
        if (value && !value->isObject())
            return wrong(path, name, u"an object"_s);
        return value ? std::optional((this->*read)(value->toObject(), path + name + u'.')) : std::nullopt;
    }

    template<typename T>
    std::optional<QList<T>> list(const QJsonObject &object, const QString &path, QLatin1StringView name, Read<T> read)
    {
        const std::optional<QJsonValue> value = member(object, name);
        if (value && !value->isArray())
            return wrong(path, name, u"an array"_s);
        if (!value)
            return {};
        QList<T> records;
        const QJsonArray array = value->toArray();
        records.reserve(array.size());
        for (const QJsonValue &element : array) {
            const QString elementName = name + u'[' + QString::number(records.size()) + u']';
            if (!element.isObject())
                return wrong(path, elementName, u"an object"_s);
            records.append((this->*read)(element.toObject(), path + elementName + u'.'));
            if (m_error)
                return {};
        }
        return records;
    }

    GEvent::When when(const QJsonObject &object, const QString &path)
    {
        return {string(object, path, "dateTime"_L1), string(object, path, "date"_L1)};
    }

    GEvent::EntryPoint entryPoint(const QJsonObject &object, const QString &path)
    {
        return {string(object, path, "entryPointType"_L1), string(object, path, "uri"_L1)};
    }

    GEvent::Conference conference(const QJsonObject &object, const QString &path)
    {
        return {list(object, path, "entryPoints"_L1, &Decoder::entryPoint)};
    }

    GEvent::Attendee attendee(const QJsonObject &object, const QString &path)
    {
        return {string(object, path, "email"_L1), string(object, path, "responseStatus"_L1),
                boolean(object, path, "self"_L1), boolean(object, path, "resource"_L1)};
    }

    GEvent event(const QJsonObject &object, const QString &path)
    {
        return {.id = string(object, path, "id"_L1),
                .iCalUID = string(object, path, "iCalUID"_L1),
                .status = string(object, path, "status"_L1),
                .summary = string(object, path, "summary"_L1),
                .description = string(object, path, "description"_L1),
                .location = string(object, path, "location"_L1),
                .start = record(object, path, "start"_L1, &Decoder::when),
                .end = record(object, path, "end"_L1, &Decoder::when),
                .transparency = string(object, path, "transparency"_L1),
                .eventType = string(object, path, "eventType"_L1),
                .hangoutLink = string(object, path, "hangoutLink"_L1),
                .conferenceData = record(object, path, "conferenceData"_L1, &Decoder::conference),
                .attendees = list(object, path, "attendees"_L1, &Decoder::attendee)};
    }

    GCalendarList::Entry calendar(const QJsonObject &object, const QString &path)
    {
        const std::optional<QString> id = string(object, path, "id"_L1);
        if (!id)
            wrong(path, "id"_L1, u"a string"_s);
        return {.id = id.value_or(QString()),
                .summary = string(object, path, "summary"_L1),
                .summaryOverride = string(object, path, "summaryOverride"_L1),
                .selected = boolean(object, path, "selected"_L1),
                .primary = boolean(object, path, "primary"_L1),
                .backgroundColor = string(object, path, "backgroundColor"_L1)};
    }

private:
    std::optional<QJsonValue> member(const QJsonObject &object, QLatin1StringView name) const
    {
        const QJsonValue value = object.value(name);
        return m_error || value.isUndefined() || value.isNull() ? std::nullopt : std::optional(value);
    }

    std::nullopt_t wrong(const QString &path, const QString &name, const QString &expected)
    {
        if (!m_error)
            m_error = path + name + u": expected "_s + expected;
        return std::nullopt;
    }

    std::optional<QString> m_error;
};

template<typename List, typename T>
Result<List, DecodingError> decodeList(const QByteArray &body, Decoder::Read<T> read)
{
    const auto json = parseJson(body);
    if (!json)
        return Failure(DecodingError{json.error().description()});
    if (!json->isObject())
        return Failure(DecodingError{u"The answer is not a JSON object."_s});
    Decoder decoder;
    List list{decoder.list(json->toObject(), {}, "items"_L1, read)};
    if (decoder.error())
        return Failure(DecodingError{u"The answer is not as expected: "_s + *decoder.error()});
    return list;
}

} // namespace

Result<GEventList, DecodingError> decodeEventList(const QByteArray &body)
{
    return decodeList<GEventList>(body, &Decoder::event);
}

Result<GCalendarList, DecodingError> decodeCalendarList(const QByteArray &body)
{
    return decodeList<GCalendarList>(body, &Decoder::calendar);
}

} // namespace kelp
