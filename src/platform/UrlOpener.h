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
    /// Opens the link in the application registered for it, without waiting. Links that `isOpenable` refuses are not
    /// opened; failures are only logged.
    virtual void open(const QUrl &url) = 0;
};

/// Whether Kelp may hand the link to the desktop: https and http with a host, and the conference form of zoommtg. Links
/// come from invitations that anybody can send; other schemes could start anything.
[[nodiscard]] bool isOpenable(const QUrl &url);

} // namespace kelp
