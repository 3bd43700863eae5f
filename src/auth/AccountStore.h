#pragma once

#include "auth/Account.h"
#include "auth/TokenStore.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace kelp {

class Preferences;

/// Keeps the list of accounts across launches as the JSON array "accounts.json", and takes over the single account of
/// the older layout (the file "refresh_token" and the preference "googleEmail").
class AccountStore
{
public:
    /// Accounts live in `folder`; nothing is touched yet.
    AccountStore(QString folder, const Preferences &preferences);

    /// A damaged file reads as absent.
    [[nodiscard]] QList<Account> load();
    /// An empty list removes the file.
    void save(const QList<Account> &accounts);

private:
    [[nodiscard]] std::optional<Account> olderAccount() const;

    TokenStore m_files;
    const Preferences &m_preferences;
};

/// The list that the text of "accounts.json" stands for; nothing where one element lacks a member or is of the wrong
/// type.
[[nodiscard]] std::optional<QList<Account>> decodeAccounts(const QByteArray &text);
/// The text of "accounts.json" for the list.
[[nodiscard]] QString encodeAccounts(const QList<Account> &accounts);

} // namespace kelp
