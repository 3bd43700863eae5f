#pragma once

#include "auth/GoogleAuth.h"
#include "base/AtomicFile.h"
#include "base/NetworkHttpClient.h"
#include "calendar/CalendarClient.h"
#include "preferences/Preferences.h"
#include "schedule/Scheduler.h"
#include "settings/PreviewSounds.h"
#include "sound/MusicControl.h"
#include "sound/OverlayMusic.h"
#include "sound/OverlaySounds.h"

#include <QObject>

#include <memory>

namespace kelp {

class AppearanceView;
class Clock;
class DesktopAppearance;
class DoubleSlashHotkey;
class KeySource;
class LoginItem;
class MusicPlayers;
class OverlayController;
class Platform;
class RecentLoss;
class ScreenCover;
class SettingsView;
class SoundPlayer;
class StatusItem;
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
    /// Hides the panel where the user is looking at it, else brings it to the front. While an overlay is shown, which
    /// keeps the keyboard, the panel comes once that has gone, unless it is toggled again before.
    /// `token` is the right to raise a window that was handed over, if any.
    void toggleMainWindow(const QString &token = {});

private:
    void migratePreferences();
    void startHotkey();
    /// The same as toggleMainWindow for a click that may itself have taken the keyboard from the panel.
    void toggleFromTray(const QString &token);
    void updateStatusTitle();
    void followAppearance();
    /// The panel, made when it is first needed: most days of most users pass without it, and it costs megabytes.
    [[nodiscard]] SettingsView &mainWindow();
    [[nodiscard]] bool isMainWindowVisible() const;
    void showMainWindow(const QString &token = {});
    void hideMainWindow();
    void showAwaitedMainWindow();
    void prepareOverlay();
    [[nodiscard]] bool onDue(const Meeting &meeting);
    void signIn();
    void showAppearance();
    void testOverlay();
    [[nodiscard]] PreviewSounds previewSounds();
    void welcome();

    Clock &m_clock;
    std::unique_ptr<UrlOpener> m_opener;
    std::unique_ptr<DesktopAppearance> m_appearance;
    std::unique_ptr<ScreenCover> m_screenCover;
    std::unique_ptr<WindowActivator> m_activator;
    std::unique_ptr<SystemEvents> m_systemEvents;
    std::unique_ptr<MusicPlayers> m_players;
    std::unique_ptr<LoginItem> m_loginItem;
    AtomicFile m_preferencesFile;
    Preferences m_preferences;
    NetworkHttpClient m_http;
    GoogleEndpoints m_endpoints;
    GoogleAuth m_auth;
    CalendarClient m_calendarClient;
    Scheduler m_scheduler;
    MusicControl m_music;
    OverlayMusic m_overlayMusic;
    std::unique_ptr<SoundPlayer> m_soundPlayer;
    OverlaySounds m_sounds;
    std::unique_ptr<OverlayController> m_overlay;
    std::unique_ptr<SettingsView> m_mainWindow;         ///< once it was needed
    bool m_mainWindowIsAwaited = false;                 ///< it comes when the overlay has gone
    std::unique_ptr<AppearanceView> m_appearanceWindow; ///< once it was opened
    std::unique_ptr<RecentLoss> m_panelLoss;
    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<KeySource> m_ownKeys;
    std::unique_ptr<KeySource> m_allKeys;
    std::unique_ptr<DoubleSlashHotkey> m_hotkey;
};

} // namespace kelp
