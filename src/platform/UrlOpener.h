#pragma once

#include <QString>

namespace kelp {

/// Hands links to the desktop. Links are percent-encoded texts and stay as they are written: QUrl would rewrite them,
/// and not every service takes its own links back in another spelling.
class UrlOpener
{
public:
    virtual ~UrlOpener() = default;

    /// Whether some application is registered for links of this scheme.
    [[nodiscard]] virtual bool hasHandler(const QString &scheme) const = 0;
    /// Opens the link in the application registered for it, without waiting. Links that `isOpenable` refuses are not
    /// opened; failures are only logged.
    virtual void open(const QString &link) = 0;
};

/// Whether Kelp may hand the link to the desktop: https and http with a host, and the conference form of zoommtg. Links
/// come from invitations that anybody can send; other schemes could start anything.
[[nodiscard]] bool isOpenable(const QString &link);

} // namespace kelp
