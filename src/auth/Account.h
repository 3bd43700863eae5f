#pragma once

#include <QString>

namespace kelp {

/// A signed-in Google account. Its e-mail address tells it apart.
struct Account
{
    QString email; ///< "Google account" where the address could not be found
    QString refreshToken;

    friend bool operator==(const Account &, const Account &) = default;
};

} // namespace kelp
