#pragma once

#include <QString>

namespace kelp {

/// `byteCount` bytes from the system's secure generator in base64url without padding: 32 bytes give 43 characters.
[[nodiscard]] QString randomURLSafe(int byteCount);

/// The S256 code challenge for a code verifier (RFC 7636, section 4.2).
[[nodiscard]] QString codeChallenge(const QString &verifier);

} // namespace kelp
