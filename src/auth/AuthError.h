#pragma once

#include <QString>

namespace kelp {

/// Why signing in, or getting an access token, failed.
struct AuthError
{
    enum class Kind {
        server,        ///< Google's own answer; `message` is the whole text
        missingClient, ///< no OAuth client is built in or entered
        notSignedIn,
        timedOut,  ///< no redirect within 300 s
        cancelled, ///< a newer attempt took over
        transport, ///< the network or an unusable answer; `message` is the whole text
    };

    Kind kind = Kind::server;
    QString message;        ///< of `server` and `transport`
    bool transient = false; ///< may well succeed in a few seconds: no network, or the server's own trouble

    /// What the user is told.
    [[nodiscard]] QString description() const;

    [[nodiscard]] static AuthError fromServer(const QString &message, bool transient = false);
    [[nodiscard]] static AuthError fromTransport(const QString &message, bool transient);

    friend bool operator==(const AuthError &, const AuthError &) = default;
};

} // namespace kelp
