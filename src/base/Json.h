#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QJsonValue>
#include <QString>

namespace kelp {

/// Text that is no JSON.
struct JsonError
{
    QString message;

    [[nodiscard]] QString description() const { return message; }
};

/// Reads one JSON value of any kind, a bare string or number included. At most 1,000 levels deep.
[[nodiscard]] Result<QJsonValue, JsonError> parseJson(const QByteArray &text);

} // namespace kelp
