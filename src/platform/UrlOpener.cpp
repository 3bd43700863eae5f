#include "platform/UrlOpener.h"

#include "base/Uri.h"

using namespace Qt::StringLiterals;

namespace kelp {

bool isOpenable(const QString &link)
{
    const Uri uri = Uri::parse(link).value_or(Uri());
    if (uri.host.value_or(QString()).isEmpty())
        return false;
    const QString scheme = uri.scheme.value_or(QString()).toLower();
    const bool isConference = scheme == "zoommtg"_L1 && uri.path == "/join"_L1;
    return scheme == "https"_L1 || scheme == "http"_L1 || isConference;
}

} // namespace kelp
