#pragma once

#include "HttpExchange.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>

#include <optional>

namespace kelp::test {

/// A request that the sandbox received, as its request log tells it.
struct LoggedRequest
{
    using Item = std::pair<QString, QString>;

    QString method;
    QString path; ///< percent-encoded as on the wire
    QString rawQuery;
    QList<Item> query;               ///< decoded, in order
    QHash<QString, QString> headers; ///< names in lower case
    QList<Item> form;                ///< decoded, in order; empty where the body was no form
    int status = 0;                  ///< 0 where it was left without an answer
};

/// A kelp-sandbox of the test's own at a free port. It ends with this object, and with the test in any case.
///
///     Sandbox sandbox;
///     QVERIFY2(sandbox.start(seed), qPrintable(sandbox.error()));
///
/// The helpers block without an event loop, and return whether the sandbox agreed.
class Sandbox
{
public:
    Sandbox() = default;
    ~Sandbox();

    /// Without a seed, the one that is built in. Returns as soon as connections are accepted.
    [[nodiscard]] bool start(const std::optional<QJsonObject> &seed = std::nullopt, const QStringList &arguments = {});
    /// Asks it to end; returns whether it did so properly within 5 s.
    [[nodiscard]] bool stop();
    /// Why it did not start.
    [[nodiscard]] const QString &error() const { return m_error; }

    [[nodiscard]] const QUrl &baseUrl() const { return m_baseUrl; }
    [[nodiscard]] QUrl url(const QString &pathAndQuery) const;
    [[nodiscard]] QUrl authorizationUrl() const;
    [[nodiscard]] QUrl tokenUrl() const;
    /// The root of the calendar interface, "…/calendar/v3".
    [[nodiscard]] QUrl apiUrl() const;
    /// The variables that make Kelp use this sandbox, to be inserted into its environment.
    [[nodiscard]] QHash<QString, QString> environment() const;

    /// The client of seeds that name none.
    [[nodiscard]] static QString clientId();
    [[nodiscard]] static QString clientSecret();

    bool setFault(const QString &at, const QString &kind, std::optional<int> times = std::nullopt);
    bool setFault(const QJsonObject &fault);
    bool clearFaults();
    bool revoke(const QString &email);
    bool expireAccessTokens();
    bool replaceEvents(const QString &account, const QString &calendar, const QJsonArray &events);
    [[nodiscard]] QList<LoggedRequest> requests() const;
    bool clearRequests();

    /// What a browser does when a person opens `consentPage` and presses a button ("allow" or "cancel"): where it is
    /// sent to. Empty where the sandbox refuses.
    [[nodiscard]] QUrl decide(const QUrl &consentPage, const QString &decision, const QString &account) const;

private:
    bool control(const QByteArray &method, const QString &name, const QJsonObject &body = {}) const;

    QTemporaryDir m_folder;
    QProcess m_process;
    QUrl m_baseUrl;
    QString m_error;
};

/// "a=1&b=x%2Fy", everything but letters, digits and "-._~" encoded.
[[nodiscard]] QByteArray formBody(const QList<LoggedRequest::Item> &items);

} // namespace kelp::test
