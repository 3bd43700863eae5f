#pragma once

#include "auth/Account.h"
#include "auth/AuthError.h"
#include "base/Result.h"

#include <QList>

#include <functional>

class QObject;

namespace kelp {

/// The signed-in accounts and their access tokens, for those who read calendars.
class AccountSource
{
public:
    using TokenCallback = std::function<void(Result<QString, AuthError>)>;

    virtual ~AccountSource() = default;

    /// In the order in which they were added.
    [[nodiscard]] virtual const QList<Account> &accounts() const = 0;
    /// An access token that is good for at least a minute; a new one where `forceRefresh` is set. Calls back once,
    /// unless `context` is destroyed before; perhaps before this function returns, as it does with a token at hand.
    virtual void validAccessToken(const Account &account, bool forceRefresh, QObject *context,
                                  TokenCallback callback) = 0;
    /// Lists the account whose address equals that of `account` under `email`.
    virtual void rename(const Account &account, const QString &email) = 0;
};

} // namespace kelp
