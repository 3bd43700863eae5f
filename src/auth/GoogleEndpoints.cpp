#include "auth/GoogleEndpoints.h"

#include "base/Logging.h"
#include "base/Uri.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

bool isOnThisComputer(const QString &text)
{
    const std::optional<Uri> uri = Uri::parse(text);
    // QUrl has the last word, because it is what the request is made from.
    const QUrl url(text, QUrl::StrictMode);
    const bool local = url.host() == "127.0.0.1"_L1 || url.host() == "localhost"_L1;
    return uri && local && url.userInfo().isEmpty() && (url.scheme() == "http"_L1 || url.scheme() == "https"_L1);
}

void replaceFromEnvironment(QString &endpoint, const char *variable)
{
    QString value = qEnvironmentVariable(variable);
    if (value.isEmpty())
        return;
    if (!isOnThisComputer(value)) {
        qCWarning(logAuth) << variable << "does not point at this computer and is ignored";
        return;
    }
    while (value.endsWith(u'/'))
        value.chop(1);
    endpoint = value;
}

} // namespace

GoogleEndpoints GoogleEndpoints::fromEnvironment()
{
    GoogleEndpoints endpoints;
    replaceFromEnvironment(endpoints.authorization, "KELP_GOOGLE_AUTHORIZATION");
    replaceFromEnvironment(endpoints.token, "KELP_GOOGLE_TOKEN");
    replaceFromEnvironment(endpoints.api, "KELP_GOOGLE_API");
    return endpoints;
}

} // namespace kelp
