#pragma once

#include "base/Instant.h"
#include "base/Result.h"

#include <QJsonObject>
#include <QList>
#include <QTimeZone>

#include <optional>

namespace kelp::sandbox {

/// The part of time that a list of events asks for: events that end after `from` and start before `to`.
struct Window
{
    std::optional<Instant> from;
    std::optional<Instant> to;
};

/// One event of the calendar, or one instance of a repeated one, as it goes over the wire.
struct Occurrence
{
    /// Seconds since 1970; nothing for an event whose times were seeded in a form that cannot be read.
    std::optional<Instant> start;
    QJsonObject members;
};

/// An event of the seed: its wire members, and the times that the seed gives in its own, relative way.
class SeedEvent
{
public:
    /// Reads one entry of "events". Relative times count from `now`; times are written in `zone`. The error says what
    /// is wrong.
    [[nodiscard]] static Result<SeedEvent, QString> parse(const QJsonObject &json, Instant now, const QTimeZone &zone);

    /// The events of `window`, each instance of a repeated event by itself.
    [[nodiscard]] QList<Occurrence> expanded(const Window &window) const;
    /// The event itself where one of its instances lies in `window`, with its recurrence rule.
    [[nodiscard]] QList<Occurrence> unexpanded(const Window &window) const;

    /// The identifier, which the seed may leave to the calendar.
    [[nodiscard]] bool hasId() const { return m_members.contains(QLatin1StringView("id")); }
    void setId(const QString &id);

private:
    struct Span
    {
        Instant start;
        Instant end;
        bool isAllDay = false;
    };
    struct Repetition
    {
        double every = 0;         ///< seconds
        std::optional<int> count; ///< for ever where there is none
    };

    [[nodiscard]] Result<void, QString> readTimes(const QJsonObject &json, Instant now);
    [[nodiscard]] Result<void, QString> readAllDay(const QJsonObject &json, Instant now);
    [[nodiscard]] Result<void, QString> readAbsolute(const QJsonObject &json);
    [[nodiscard]] Result<void, QString> readRepetition(const QJsonObject &json);
    [[nodiscard]] Span instance(qint64 index) const;
    [[nodiscard]] QList<qint64> instancesIn(const Window &window, qint64 limit) const;
    [[nodiscard]] QJsonObject wireTime(Instant instant, bool isAllDay) const;
    [[nodiscard]] QJsonObject instanceMembers(const Span &span) const;

    QJsonObject m_members;
    QTimeZone m_zone;
    std::optional<Span> m_span;
    std::optional<Repetition> m_repetition;
};

} // namespace kelp::sandbox
