#include "platform/UrlOpener.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace kelp {

bool isOpenable(const QUrl &url)
{
    if (!url.isValid() || url.host().isEmpty())
        return false;
    const QString scheme = url.scheme();
    const bool isConference = scheme == "zoommtg"_L1 && url.path() == "/join"_L1;
    return scheme == "https"_L1 || scheme == "http"_L1 || isConference;
}

} // namespace kelp
