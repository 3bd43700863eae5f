#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>

namespace kelp::probe {

/// Runs the real scheduler and due policy against one scenario on a clock of its own (`kelp-probe schedule --help`
/// describes the form) and returns the happenings, one compact JSON line each, in order; or what is wrong with the
/// scenario.
[[nodiscard]] Result<QList<QByteArray>, QString> runScheduleScenario(const QJsonObject &scenario);

} // namespace kelp::probe
