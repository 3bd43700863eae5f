#pragma once

#include "auth/AccountSource.h"

#include <QStringList>

namespace kelp::test {

/// Accounts whose tokens are at hand: "token-1", "token-2" after a forced refresh, and so on.
class FakeAccounts final : public AccountSource
{
public:
    QList<Account> list;
    std::optional<AuthError> error; ///< what asking for a token gives
    QStringList renames;            ///< "old → new"
    QStringList asked;              ///< "address" or "address forced"

    [[nodiscard]] const QList<Account> &accounts() const override { return list; }

    void validAccessToken(const Account &account, bool forceRefresh, QObject *, TokenCallback callback) override
    {
        asked.append(forceRefresh ? account.email + QStringLiteral(" forced") : account.email);
        if (error) {
            callback(Failure(*error));
            return;
        }
        m_serial += forceRefresh ? 1 : 0;
        callback(QStringLiteral("token-") + QString::number(m_serial));
    }

    void rename(const Account &account, const QString &email) override
    {
        renames.append(account.email + QStringLiteral(" → ") + email);
        for (Account &each : list) {
            if (each.email == account.email)
                each.email = email;
        }
    }

private:
    int m_serial = 1;
};

} // namespace kelp::test
