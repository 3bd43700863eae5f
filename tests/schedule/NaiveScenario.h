#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>
#include <vector>

namespace kelp::test {

/// A meeting as the naive model sees it; times in seconds since 1970.
struct NaiveMeeting
{
    QString id;
    QString key;
    double start = 0;
    double end = 0;
    bool hasLink = false;
    QString calendar;
};

struct NaiveCalendar
{
    QString key;
    QString googleID;
    bool primary = false;
    bool selected = false;
};

/// A meeting's key with a date, in seconds since 1970.
struct Note
{
    QString key;
    double date = 0;
};

/// The user's choice for the calendars of a key.
struct Choice
{
    QString key;
    bool on = false;
};

[[nodiscard]] std::optional<double> readDate(const QJsonValue &value);
/// Empty where one of the dates is none.
[[nodiscard]] std::vector<Note> readNotes(const QJsonValue &value);
/// Empty where one of the choices is none.
[[nodiscard]] std::vector<Choice> readChoices(const QJsonValue &value);
[[nodiscard]] std::vector<NaiveMeeting> readMeetings(const QJsonValue &value);
[[nodiscard]] std::vector<NaiveCalendar> readCalendars(const QJsonValue &value);
/// A whole number: `absent` where there is none, 0 where it is of another type.
[[nodiscard]] double readInteger(const QJsonValue &value, double absent);

} // namespace kelp::test
