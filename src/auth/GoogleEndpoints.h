#pragma once

#include <QString>

namespace kelp {

/// Where Google's services are reached.
struct GoogleEndpoints
{
    QString authorization = QStringLiteral("https://accounts.google.com/o/oauth2/v2/auth"); ///< the consent page
    QString token = QStringLiteral("https://oauth2.googleapis.com/token");
    QString api = QStringLiteral("https://www.googleapis.com/calendar/v3"); ///< root of Google Calendar v3

    /// Google's own, each replaced by KELP_GOOGLE_AUTHORIZATION, KELP_GOOGLE_TOKEN or KELP_GOOGLE_API where that points
    /// at this computer (127.0.0.1 or localhost). Any other value is ignored: credentials go to Google or stay here.
    [[nodiscard]] static GoogleEndpoints fromEnvironment();
};

} // namespace kelp
