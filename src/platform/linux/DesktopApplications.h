#pragma once

#include <QString>

/// The applications that are installed on the desktop, by the identifier of their desktop entry without ".desktop".
/// An identifier may come from anybody: what cannot be one names no application.
namespace kelp::desktopApplications {

[[nodiscard]] bool isInstalled(const QString &id);
[[nodiscard]] bool isWebBrowser(const QString &id);
/// Starts it, on another thread; failures are only logged.
void launch(const QString &id);

} // namespace kelp::desktopApplications
