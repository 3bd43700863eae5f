#include "auth/AuthError.h"

using namespace Qt::StringLiterals;

namespace kelp {

QString AuthError::description() const
{
    switch (kind) {
    case Kind::server:
    case Kind::transport:
        return message;
    case Kind::missingClient:
        return u"Add your Google OAuth client ID and secret in Settings."_s;
    case Kind::notSignedIn:
        return u"Not signed in to Google."_s;
    case Kind::timedOut:
        return u"Sign-in timed out."_s;
    case Kind::cancelled:
        return u"Sign-in was cancelled."_s;
    }
    Q_UNREACHABLE();
}

AuthError AuthError::fromServer(const QString &message, bool transient)
{
    return {Kind::server, message, transient};
}

AuthError AuthError::fromTransport(const QString &message, bool transient)
{
    return {Kind::transport, message, transient};
}

} // namespace kelp
