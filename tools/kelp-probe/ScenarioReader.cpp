#include "ScenarioReader.h"

#include <QHash>
#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace kelp::probe {

namespace {

/// What is wrong with the input; thrown within this file only, so that reading stays readable.
struct Wrong
{
    QString message;
};

double number(const QJsonObject &object, const QString &name)
{
    const QJsonValue value = object.value(name);
    if (!value.isDouble())
        throw Wrong{u"\"%1\" has to be a number"_s.arg(name)};
    return value.toDouble();
}

QString string(const QJsonObject &object, const QString &name)
{
    const QJsonValue value = object.value(name);
    if (!value.isString())
        throw Wrong{u"\"%1\" has to be a string"_s.arg(name)};
    return value.toString();
}

std::optional<QString> optionalString(const QJsonObject &object, const QString &name)
{
    return object.value(name).isUndefined() || object.value(name).isNull() ? std::nullopt
                                                                           : std::optional(string(object, name));
}

bool boolean(const QJsonObject &object, const QString &name)
{
    const QJsonValue value = object.value(name);
    if (!value.isBool() && !value.isUndefined())
        throw Wrong{u"\"%1\" has to be true or false"_s.arg(name)};
    return value.toBool();
}

template<typename T>
QList<T> list(const QJsonObject &object, const QString &name, T (*read)(const QJsonObject &))
{
    const QJsonValue value = object.value(name);
    if (!value.isArray() && !value.isUndefined())
        throw Wrong{u"\"%1\" has to be an array"_s.arg(name)};
    QList<T> elements;
    for (const QJsonValue &element : value.toArray()) {
        if (!element.isObject())
            throw Wrong{u"each of \"%1\" has to be an object"_s.arg(name)};
        elements.append(read(element.toObject()));
    }
    return elements;
}

CalendarInfo readCalendar(const QJsonObject &object)
{
    const QString id = string(object, u"googleID"_s);
    return {.googleID = id,
            .accountEmail = string(object, u"accountEmail"_s),
            .name = optionalString(object, u"name"_s).value_or(id),
            .isPrimary = boolean(object, u"isPrimary"_s),
            .googleSelected = boolean(object, u"googleSelected"_s),
            .color = optionalString(object, u"color"_s)};
}

Meeting readMeeting(const QJsonObject &object)
{
    const std::optional<QString> link = optionalString(object, u"joinURL"_s);
    return {.id = string(object, u"id"_s),
            .title = optionalString(object, u"title"_s).value_or(QString()),
            .start = {number(object, u"start"_s)},
            .end = {number(object, u"end"_s)},
            .joinURL = link ? MeetingLink::fromText(*link) : std::nullopt,
            .calendarID = string(object, u"calendarID"_s)};
}

Scenario::Action readAction(const QJsonObject &object)
{
    using Kind = Scenario::Action::Kind;
    static const QHash<QString, Kind> kinds{{u"join"_s, Kind::join},       {u"snooze"_s, Kind::snooze},
                                            {u"dismiss"_s, Kind::dismiss}, {u"pause"_s, Kind::pause},
                                            {u"resume"_s, Kind::resume},   {u"restart"_s, Kind::restart},
                                            {u"jump"_s, Kind::jump},       {u"meetings"_s, Kind::meetings}};

    const auto kind = kinds.constFind(string(object, u"do"_s));
    if (kind == kinds.constEnd())
        throw Wrong{u"there is no action \"%1\""_s.arg(string(object, u"do"_s))};
    Scenario::Action action{.at = {number(object, u"at"_s)}, .kind = *kind};
    if (*kind == Kind::pause)
        action.instant = {number(object, u"until"_s)};
    if (*kind == Kind::jump)
        action.instant = {number(object, u"to"_s)};
    if (*kind == Kind::meetings) {
        action.meetings = list(object, u"meetings"_s, readMeeting);
        if (object.contains("calendars"_L1))
            action.calendars = list(object, u"calendars"_s, readCalendar);
    }
    return action;
}

} // namespace

Result<Scenario, QString> readScenario(const QJsonObject &json)
{
    try {
        const QJsonValue preferences = json.value("preferences"_L1);
        if (!preferences.isObject() && !preferences.isUndefined())
            throw Wrong{u"\"preferences\" has to be an object"_s};
        Scenario scenario{.from = {number(json, u"from"_s)},
                          .to = {number(json, u"to"_s)},
                          .step = number(json, u"step"_s),
                          .preferences = preferences.toObject(),
                          .calendars = list(json, u"calendars"_s, readCalendar),
                          .meetings = list(json, u"meetings"_s, readMeeting),
                          .actions = list(json, u"actions"_s, readAction)};
        if (scenario.step <= 0)
            throw Wrong{u"\"step\" has to be above 0"_s};
        return scenario;
    } catch (const Wrong &wrong) {
        return Failure(wrong.message);
    }
}

} // namespace kelp::probe
