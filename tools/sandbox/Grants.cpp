#include "Grants.h"

#include <QRandomGenerator>

#include <array>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

/// 48 characters of base64url.
QString randomText()
{
    std::array<quint32, 9> words{};
    QRandomGenerator::system()->fillRange(words.data(), words.size());
    const QByteArray bytes(reinterpret_cast<const char *>(words.data()), sizeof words);
    return QString::fromLatin1(bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

} // namespace

// The beginnings of codes and tokens are those of the real ones: clients stumble over the slashes.

QString Grants::issueCode(const CodeGrant &grant, Instant now)
{
    const QString code = u"4/0A"_s + randomText();
    m_codes.insert(code, {grant, now + codeLifetime});
    return code;
}

std::optional<CodeGrant> Grants::takeCode(const QString &code, Instant now)
{
    const auto found = m_codes.constFind(code);
    if (found == m_codes.constEnd())
        return std::nullopt;
    const Code taken = *found;
    m_codes.erase(found);
    if (now >= taken.expiry)
        return std::nullopt;
    return taken.grant;
}

QString Grants::issueAccessToken(const QString &email, Instant now)
{
    const QString token = u"ya29.a0"_s + randomText();
    m_accessTokens.insert(token, {email, now + tokenLifetime});
    return token;
}

std::optional<QString> Grants::accountOfAccessToken(const QString &token, Instant now) const
{
    const auto found = m_accessTokens.constFind(token);
    if (found == m_accessTokens.constEnd() || now >= found->expiry)
        return std::nullopt;
    return found->email;
}

QString Grants::issueRefreshToken(const QString &email)
{
    const QString token = u"1//0"_s + randomText();
    m_refreshTokens.insert(token, email);
    return token;
}

void Grants::addRefreshToken(const QString &token, const QString &email)
{
    m_refreshTokens.insert(token, email);
}

std::optional<QString> Grants::accountOfRefreshToken(const QString &token) const
{
    const auto found = m_refreshTokens.constFind(token);
    if (found == m_refreshTokens.constEnd())
        return std::nullopt;
    return *found;
}

void Grants::revoke(const QString &email)
{
    m_refreshTokens.removeIf([&](const auto &entry) { return entry.value() == email; });
    m_accessTokens.removeIf([&](const auto &entry) { return entry.value().email == email; });
    m_codes.removeIf([&](const auto &entry) { return entry.value().grant.email == email; });
}

} // namespace kelp::sandbox
