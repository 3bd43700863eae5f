#pragma once

class QUrl;

namespace kelp {

/// Hands links to the desktop.
class UrlOpener
{
public:
    virtual ~UrlOpener() = default;

    /// Whether some application is registered for the link's scheme.
    [[nodiscard]] virtual bool hasHandler(const QUrl &url) const = 0;
    /// Opens the link in the application registered for it, without waiting. Failures are only logged.
    virtual void open(const QUrl &url) = 0;
};

} // namespace kelp
