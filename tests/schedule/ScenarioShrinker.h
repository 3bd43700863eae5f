#pragma once

#include <QJsonObject>

#include <functional>

namespace kelp::test {

/// A scenario as small as can be found by leaving things out of `scenario` one by one for which `fails` still holds.
[[nodiscard]] QJsonObject shrunkScenario(QJsonObject scenario, const std::function<bool(const QJsonObject &)> &fails);

} // namespace kelp::test
