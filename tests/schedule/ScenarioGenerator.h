#pragma once

#include <QJsonObject>

namespace kelp::test {

/// A random scenario for the scheduler; the same seed gives the same one. Times are chosen to fall on, just before and
/// just behind the limits that the scheduler compares with: show times, ends, the late cut-off, ends of snoozes and
/// pauses, and the age at which a shown meeting is forgotten.
[[nodiscard]] QJsonObject randomScenario(quint64 seed);

} // namespace kelp::test
