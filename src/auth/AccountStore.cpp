#include "auth/AccountStore.h"

#include "base/Json.h"
#include "preferences/Preferences.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString accountsFile = u"accounts.json"_s;
const QString olderTokenFile = u"refresh_token"_s;

} // namespace

std::optional<QList<Account>> decodeAccounts(const QByteArray &text)
{
    const auto json = parseJson(text);
    if (!json || !json->isArray())
        return {};
    QList<Account> accounts;
    for (const QJsonValue &element : json->toArray()) {
        const QJsonValue email = element.toObject().value("email"_L1);
        const QJsonValue refreshToken = element.toObject().value("refreshToken"_L1);
        if (!email.isString() || !refreshToken.isString())
            return {};
        accounts.append({email.toString(), refreshToken.toString()});
    }
    return accounts;
}

QString encodeAccounts(const QList<Account> &accounts)
{
    QJsonArray array;
    for (const Account &account : accounts)
        array.append(QJsonObject{{u"email"_s, account.email}, {u"refreshToken"_s, account.refreshToken}});
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

AccountStore::AccountStore(QString folder, const Preferences &preferences)
    : m_files(std::move(folder)), m_preferences(preferences)
{
}

QList<Account> AccountStore::load()
{
    if (const std::optional<QString> text = m_files.get(accountsFile)) {
        if (const auto accounts = decodeAccounts(text->toUtf8()))
            return *accounts;
    }
    const std::optional<Account> older = olderAccount();
    if (!older)
        return {};
    save({*older});
    // On a full disk the older file is all there is; the next launch tries again.
    if (m_files.get(accountsFile) == encodeAccounts({*older}))
        m_files.remove(olderTokenFile);
    return {*older};
}

void AccountStore::save(const QList<Account> &accounts)
{
    if (accounts.isEmpty())
        m_files.remove(accountsFile);
    else
        m_files.set(encodeAccounts(accounts), accountsFile);
}

std::optional<Account> AccountStore::olderAccount() const
{
    const std::optional<QString> token = m_files.get(olderTokenFile);
    if (!token)
        return {};
    const bool hasEmail = m_preferences.contains(preference::googleEmail);
    return Account{hasEmail ? m_preferences.get(preference::googleEmail) : u"Google account"_s, *token};
}

} // namespace kelp
