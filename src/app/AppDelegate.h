#pragma once

#include "auth/GoogleAuth.h"
#include "base/AtomicFile.h"
#include "base/NetworkHttpClient.h"
#include "calendar/CalendarClient.h"
#include "preferences/Preferences.h"
#include "schedule/Scheduler.h"

#include <QObject>

#include <memory>

namespace kelp {

class Clock;
class OverlayController;
class Platform;
class ScreenCover;
class SettingsView;
class SystemEvents;
class UrlOpener;
class WindowActivator;

/// Owns every long-lived object of the running application and wires them; the only place that knows them all.
///
///     CalendarClient → Scheduler → AppDelegate → OverlayController → OverlayView
///
/// and a user's answer travels back the same way.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    AppDelegate(Clock &clock, Platform &platform);
    ~AppDelegate() override;

    /// The launch sequence.
    void finishLaunching();
    /// Hides the panel where the user is looking at it, else brings it to the front.
    /// `token` is the right to raise a window that was handed over, if any.
    void toggleMainWindow(const QString &token = {});

private:
    void migratePreferences();
    void showMainWindow(const QString &token = {});
    void hideMainWindow();
    [[nodiscard]] bool onDue(const Meeting &meeting);
    void signIn();
    void welcome();

    Clock &m_clock;
    std::unique_ptr<UrlOpener> m_opener;
    std::unique_ptr<ScreenCover> m_screenCover;
    std::unique_ptr<WindowActivator> m_activator;
    std::unique_ptr<SystemEvents> m_systemEvents;
    AtomicFile m_preferencesFile;
    Preferences m_preferences;
    NetworkHttpClient m_http;
    GoogleEndpoints m_endpoints;
    GoogleAuth m_auth;
    CalendarClient m_calendarClient;
    Scheduler m_scheduler;
    std::unique_ptr<OverlayController> m_overlay;
    std::unique_ptr<SettingsView> m_mainWindow;
};

} // namespace kelp
