#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>

namespace kelp::test {

/// A second, deliberately naive account of when reminders come: what `runScheduleScenario` must say about `scenario`,
/// worked out with flat lists and loops that start over at every tick. It shares no code with the scheduler, so that
/// a mistake in one does not hide the same mistake in the other. The scenario must be well formed.
[[nodiscard]] QList<QByteArray> runNaiveSchedule(const QJsonObject &scenario);

} // namespace kelp::test
