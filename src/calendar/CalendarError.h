#pragma once

#include <QByteArray>
#include <QString>

namespace kelp {

/// Google Calendar's refusal of a request.
struct CalendarError
{
    int status = 0; ///< HTTP status
    QByteArray body;

    /// "Google Calendar error 403: Rate Limit Exceeded": Google's own message, else the first 200 characters of the
    /// body.
    [[nodiscard]] QString description() const;
    /// Whether it is the server's own trouble, which may well be over in a few seconds.
    [[nodiscard]] bool isTransient() const { return status >= 500 && status <= 599; }
};

} // namespace kelp
