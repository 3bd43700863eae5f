#pragma once

#include "Answer.h"
#include "base/Result.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace kelp::sandbox {

/// Something that goes wrong at one endpoint, for a number of requests or until it is cleared.
class Fault
{
public:
    enum class Kind {
        unauthorizedOnce, ///< 401; one request unless "times" says more
        forbidden,        ///< 403 "Rate Limit Exceeded"
        serverErrorHtml,  ///< 500 with a page
        htmlWith200,      ///< a page where JSON is due
        redirect,         ///< 302 to "location", or to the same address at "port" of 127.0.0.1
        hang,             ///< no answer
        invalidJson,      ///< the true answer, cut in half
        wrongTypes,       ///< the true answer with members of the wrong type
        tooLarge,         ///< the true answer, blown up to more than 8 MiB
        noRefreshToken,   ///< the true answer without "refresh_token"
        slowDrip,         ///< the true answer, a byte every "interval" seconds, without end
        reset,            ///< the connection breaks in the middle of the true answer
    };

    /// Reads {"at", "kind", "times", "location", "port", "interval"}; the error says what is wrong.
    [[nodiscard]] static Result<Fault, QString> parse(const QJsonObject &json);
    [[nodiscard]] QJsonObject toJson() const;

    /// Whether it concerns the endpoint of that name.
    [[nodiscard]] bool concerns(const QString &endpoint) const;
    /// Whether the endpoint is not asked at all.
    [[nodiscard]] bool replacesAnswer() const { return m_kind <= Kind::hang; }
    /// Whether this true answer is one that the fault can spoil; for faults that do not replace it.
    [[nodiscard]] bool canSpoil(const Answer &answer) const;

    /// Counts one request. Returns whether the fault has run out.
    [[nodiscard]] bool consume();

    /// The answer instead of the true one to a request for `target` at `endpoint`.
    [[nodiscard]] Answer replacement(const QString &endpoint, const QByteArray &target) const;
    [[nodiscard]] Answer spoiled(Answer answer) const;

private:
    [[nodiscard]] Result<void, QString> readDetails(const QJsonObject &json);

    QString m_at;
    Kind m_kind = Kind::forbidden;
    std::optional<int> m_times;
    QByteArray m_location;
    int m_port = 0;
    double m_interval = 1;
};

} // namespace kelp::sandbox
