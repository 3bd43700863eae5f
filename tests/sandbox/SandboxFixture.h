#pragma once

#include "support/Sandbox.h"

namespace kelp::test {

/// A sandbox with two accounts ("a@example.com" with a calendar of each kind, "b@example.com") and the steps that the
/// tests take with it.
class SandboxFixture
{
public:
    using Items = QList<LoggedRequest::Item>;

    Sandbox sandbox;

    /// Starts it with `seed` plus `more` members.
    [[nodiscard]] bool start(const QJsonObject &more = {});

    [[nodiscard]] static QJsonObject seed();
    /// The verifier to which `consentItems` has the challenge.
    [[nodiscard]] static QString verifier();
    [[nodiscard]] static QString redirectUri();
    /// A complete authorization request.
    [[nodiscard]] static Items consentItems();
    [[nodiscard]] QUrl consentPage(const Items &items) const;
    /// Allows as `email` and returns the code.
    [[nodiscard]] QString newCode(const QString &email, const Items &items = consentItems()) const;

    /// A complete exchange of `code`.
    [[nodiscard]] static Items exchangeItems(const QString &code);
    [[nodiscard]] static Items refreshItems(const QString &refreshToken);
    [[nodiscard]] HttpExchange token(const Items &items) const;
    /// An access token for "a@example.com".
    [[nodiscard]] QByteArray accessToken() const;

    /// GET below the API's root.
    [[nodiscard]] HttpExchange get(const QString &pathAndQuery, const QByteArray &accessToken) const;
};

/// `items` with the value of `name` replaced; without it where `value` is null.
[[nodiscard]] SandboxFixture::Items changed(SandboxFixture::Items items, const QString &name, const QString &value);

[[nodiscard]] QJsonObject jsonBody(const HttpExchange &exchange);

} // namespace kelp::test
