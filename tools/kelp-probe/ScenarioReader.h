#pragma once

#include "base/Instant.h"
#include "base/Result.h"
#include "calendar/CalendarInfo.h"
#include "calendar/Meeting.h"

#include <QJsonObject>
#include <QList>

#include <optional>

namespace kelp::probe {

/// What a scheduler is put through.
struct Scenario
{
    struct Action
    {
        enum class Kind { join, snooze, dismiss, pause, resume, restart, jump, meetings };

        Instant at;
        Kind kind = Kind::dismiss;
        Instant instant;                              ///< end of the pause, or where the clock jumps to
        QList<Meeting> meetings;                      ///< of `meetings`
        std::optional<QList<CalendarInfo>> calendars; ///< of `meetings`; nothing keeps those there are
    };

    Instant from;
    Instant to;
    double step = 0; ///< seconds, above 0
    QJsonObject preferences;
    QList<CalendarInfo> calendars;
    QList<Meeting> meetings;
    QList<Action> actions;
};

/// The scenario that `json` describes, or what is wrong with it.
[[nodiscard]] Result<Scenario, QString> readScenario(const QJsonObject &json);

} // namespace kelp::probe
