#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <utility>

namespace kelp::sandbox {

/// What the sandbox answers, and how it gets it across.
struct Answer
{
    enum class Delivery {
        whole, ///< as a proper server does
        drip,  ///< byte by byte, then white space for as long as the client listens
        reset, ///< the connection is reset in the middle of the body
        hang,  ///< not one byte
    };

    int status = 200;
    QByteArray contentType;
    QByteArray body;
    QList<std::pair<QByteArray, QByteArray>> headers; ///< besides Content-Type
    Delivery delivery = Delivery::whole;
    double dripInterval = 1; ///< seconds between two bytes

    [[nodiscard]] static Answer json(int status, const QJsonObject &object);
    [[nodiscard]] static Answer html(int status, const QString &page);
    /// 302 to `location`.
    [[nodiscard]] static Answer redirect(const QByteArray &location);
    /// The page for an address that is not there.
    [[nodiscard]] static Answer notFound();

    /// The form in which the calendar service refuses: {"error": {"code", "message", "errors": [{"domain", "reason",
    /// "message"}], "status"}}.
    [[nodiscard]] static Answer apiError(int code, const QString &reason, const QString &message);
    /// The form of RFC 6749, section 5.2, in which the token endpoint refuses.
    [[nodiscard]] static Answer oauthError(int code, const QString &error, const QString &description);
};

} // namespace kelp::sandbox
