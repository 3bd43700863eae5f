#pragma once

#include "auth/AuthError.h"
#include "base/Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace kelp {

/// What one request to the redirect listener comes to.
struct RedirectAnswer
{
    QByteArray response; ///< the whole HTTP response, byte for byte
    /// The authorization code, or Google's error; nothing for a request that is not the redirect waited for.
    std::optional<Result<QString, AuthError>> outcome;
};

/// Answers the bytes of one request; any bytes at all. Only the request line's target is looked at, method and path
/// are not.
[[nodiscard]] RedirectAnswer answerRedirect(const QByteArray &request, const QString &expectedState);

} // namespace kelp
