#pragma once

#include "base/Instant.h"

#include <QHash>
#include <QString>

#include <optional>

namespace kelp::sandbox {

/// What a person allowed on the consent page, to be exchanged for tokens.
struct CodeGrant
{
    QString email;
    QString redirectUri;
    QString challenge; ///< SHA-256 of the verifier, base64url
    QString scope;
    bool isOffline = false; ///< whether there is to be a refresh token
};

/// The codes and tokens that are valid.
class Grants
{
public:
    /// Seconds that a code lives.
    static constexpr double codeLifetime = 600;
    /// Seconds that an access token lives.
    static constexpr int tokenLifetime = 3599;

    [[nodiscard]] QString issueCode(const CodeGrant &grant, Instant now);
    /// What the code stands for. It is good for one use, whatever comes of it.
    [[nodiscard]] std::optional<CodeGrant> takeCode(const QString &code, Instant now);

    [[nodiscard]] QString issueAccessToken(const QString &email, Instant now);
    /// Whose token it is, or nothing where it is unknown or expired.
    [[nodiscard]] std::optional<QString> accountOfAccessToken(const QString &token, Instant now) const;

    [[nodiscard]] QString issueRefreshToken(const QString &email);
    /// A token that the seed made up.
    void addRefreshToken(const QString &token, const QString &email);
    /// Whose token it is, or nothing where it is unknown or revoked.
    [[nodiscard]] std::optional<QString> accountOfRefreshToken(const QString &token) const;

    /// Ends all tokens of the account.
    void revoke(const QString &email);
    /// Ends all access tokens.
    void expireAccessTokens() { m_accessTokens.clear(); }

private:
    struct Code
    {
        CodeGrant grant;
        Instant expiry;
    };
    struct AccessToken
    {
        QString email;
        Instant expiry;
    };

    QHash<QString, Code> m_codes;
    QHash<QString, AccessToken> m_accessTokens;
    QHash<QString, QString> m_refreshTokens; ///< to e-mails
};

} // namespace kelp::sandbox
