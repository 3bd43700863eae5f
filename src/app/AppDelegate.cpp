#include "app/AppDelegate.h"

#include "base/Clock.h"
#include "base/Folders.h"
#include "overlay/OverlayContent.h"
#include "overlay/OverlayController.h"
#include "platform/DesktopAppearance.h"
#include "platform/LoginItem.h"
#include "platform/MusicPlayers.h"
#include "platform/OwnWindowKeys.h"
#include "platform/Platform.h"
#include "platform/ScreenCover.h"
#include "platform/SystemEvents.h"
#include "platform/UrlOpener.h"
#include "platform/WindowActivator.h"
#include "schedule/DuePolicy.h"
#include "schedule/SnoozePolicy.h"
#include "settings/AppearanceView.h"
#include "settings/SettingsView.h"
#include "shell/DoubleSlashHotkey.h"
#include "shell/RecentLoss.h"
#include "shell/TrayPictures.h"
#include "sound/ChildSoundPlayer.h"
#include "ui/DesktopPalette.h"

#include <QGuiApplication>
#include <QScreen>
#include <QUrl>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const GoogleAuth::Client builtInClient{QStringLiteral(KELP_GOOGLE_CLIENT_ID),
                                       QStringLiteral(KELP_GOOGLE_CLIENT_SECRET)};

/// Long enough before a reminder to make everything ready; the check comes every few seconds.
constexpr double preparation = 12; // seconds
/// After the start, when nothing of it is slowed down any more.
constexpr double warmUpSeconds = 5;

/// Removes what saves that were cut short left behind, before anything is read.
QString sweptConfiguration()
{
    AtomicFile::sweep(folders::configuration());
    AtomicFile::sweep(folders::data());
    return folders::configuration();
}

/// What of each screen is free for windows, the main one first.
QList<QRect> freeAreas()
{
    QList<QRect> areas;
    for (const QScreen *screen : QGuiApplication::screens())
        areas.append(screen->availableGeometry());
    return areas;
}

} // namespace

AppDelegate::AppDelegate(Clock &clock, Platform &platform)
    : m_clock(clock),
      m_opener(platform.makeUrlOpener()),
      m_appearance(platform.makeDesktopAppearance()),
      m_screenCover(platform.makeScreenCover()),
      m_activator(platform.makeWindowActivator()),
      m_systemEvents(platform.makeSystemEvents()),
      m_players(platform.makeMusicPlayers(clock)),
      m_loginItem(platform.makeLoginItem()),
      m_preferencesFile(sweptConfiguration() + u"/preferences.json"_s),
      m_preferences(m_preferencesFile),
      m_http(clock),
      m_endpoints(GoogleEndpoints::fromEnvironment()),
      m_auth({m_preferences, m_http, clock, *m_opener}, m_endpoints, builtInClient, folders::data()),
      m_calendarClient(m_auth, m_http, clock, m_endpoints.api),
      m_scheduler({m_preferences, clock, m_calendarClient, m_auth}),
      m_music(*m_players),
      m_overlayMusic(m_preferences, m_music),
      m_soundPlayer(std::make_unique<ChildSoundPlayer>(clock)),
      m_sounds(m_preferences, clock, *m_soundPlayer, m_overlayMusic, folders::data()),
      m_overlay(std::make_unique<OverlayController>(m_preferences, clock, *m_opener, *m_screenCover, m_sounds)),
      m_panelLoss(std::make_unique<RecentLoss>(clock)),
      m_statusItem(platform.makeStatusItem(clock, std::make_shared<TrayPictures>())),
      m_ownKeys(std::make_unique<OwnWindowKeys>()),
      m_allKeys(platform.makeKeySource(clock)),
      m_hotkey(std::make_unique<DoubleSlashHotkey>(m_preferences))
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::finishLaunching()
{
    migratePreferences();

    connect(m_statusItem.get(), &StatusItem::activated, this, &AppDelegate::toggleFromTray);
    updateStatusTitle();

    followAppearance();
    connect(m_appearance.get(), &DesktopAppearance::changed, this, &AppDelegate::followAppearance);

    m_scheduler.onDue = [this](const Meeting &meeting) { return onDue(meeting); };
    connect(&m_scheduler, &Scheduler::changed, this, &AppDelegate::updateStatusTitle);
    connect(&m_scheduler, &Scheduler::stateChanged, this, &AppDelegate::updateStatusTitle); // a pause, at once
    connect(m_overlay.get(), &OverlayController::snoozed, this,
            [this](const Meeting &meeting) { m_scheduler.snooze(meeting, snoozeSeconds(m_preferences)); });
    // Not at once: one overlay may make room for another.
    connect(m_overlay.get(), &OverlayController::hidden, this,
            [this] { m_clock.after(0, this, [this] { showAwaitedMainWindow(); }); });
    connect(m_systemEvents.get(), &SystemEvents::wokeUp, &m_scheduler, &Scheduler::refreshAfterWake);
    connect(m_systemEvents.get(), &SystemEvents::networkReturned, &m_scheduler, &Scheduler::refreshAfterWake);
    connect(&m_scheduler, &Scheduler::changed, this, &AppDelegate::prepareOverlay);
    m_scheduler.start();
    startHotkey();
    m_clock.after(warmUpSeconds, this, [this] { m_soundPlayer->warmUp(); });

    if (m_auth.accounts().isEmpty())
        m_clock.after(0, this, [this] { showMainWindow(); });
}

void AppDelegate::migratePreferences()
{
    // Older versions had a switch where there is a choice of sounds now.
    if (!m_preferences.contains(preference::sound) && m_preferences.holds(preference::playSound, false))
        m_preferences.set(preference::sound, u"None"_s);
}

void AppDelegate::startHotkey()
{
    connect(m_hotkey.get(), &DoubleSlashHotkey::triggered, this, [this] { toggleMainWindow(); });
    // Reading the keyboard's layout takes a while, which the tray need not wait for.
    m_clock.after(0, this, [this] { m_hotkey->start(*m_ownKeys, *m_allKeys); });
}

void AppDelegate::updateStatusTitle()
{
    const std::optional<Meeting> next = m_scheduler.nextMeeting();
    m_statusItem->show(
        statusLook(next ? std::optional(next->start - m_clock.now()) : std::nullopt, m_scheduler.isPaused()));
}

void AppDelegate::toggleFromTray(const QString &token)
{
    if (isMainWindowVisible() && m_panelLoss->isRecent())
        hideMainWindow();
    else
        toggleMainWindow(token);
}

void AppDelegate::followAppearance()
{
    applyDesktopPalette(m_appearance->isDark(), m_appearance->accent());
    m_overlay->setMotion(!m_appearance->reducesMotion());
    if (m_appearanceWindow)
        m_appearanceWindow->setMotion(!m_appearance->reducesMotion());
}

SettingsView &AppDelegate::mainWindow()
{
    if (m_mainWindow)
        return *m_mainWindow;
    m_mainWindow = std::make_unique<SettingsView>(
        SettingsView::Services{m_auth, m_scheduler, m_preferences, m_clock, *m_opener, *m_loginItem});
    m_mainWindow->setWindowTitle(u"Kelp"_s);
    m_mainWindow->onAppearance = [this] { showAppearance(); };
    m_mainWindow->isHotkeyTrusted = [this] { return m_hotkey->isTrusted(); };
    connect(m_mainWindow.get(), &SettingsView::signInRequested, this, &AppDelegate::signIn);
    m_activator->keepOutOfLists(*m_mainWindow); // it belongs to the tray
    m_activator->whenLeft(*m_mainWindow, [this] { m_panelLoss->note(); });
    return *m_mainWindow;
}

bool AppDelegate::isMainWindowVisible() const
{
    return m_mainWindow && m_mainWindow->isVisible();
}

void AppDelegate::showAppearance()
{
    hideMainWindow();
    if (!m_appearanceWindow) {
        m_appearanceWindow =
            std::make_unique<AppearanceView>(AppearanceView::Services{m_preferences, m_clock, previewSounds()});
        m_appearanceWindow->onPreview = [this] { testOverlay(); };
        m_appearanceWindow->setMotion(!m_appearance->reducesMotion());
        if (const QScreen *screen = QGuiApplication::primaryScreen())
            m_appearanceWindow->fit(screen->availableGeometry());
    } else if (!m_appearanceWindow->isVisible()) {
        m_appearanceWindow->returnTo(freeAreas());
    }
    m_activator->activate(*m_appearanceWindow, {});
}

PreviewSounds AppDelegate::previewSounds()
{
    return {.play = [this](const QString &choice) { return m_sounds.play(choice); },
            .stop = [this] { m_sounds.stop(); },
            .stopTurn = [this](quint64 turn) { m_sounds.stopTurn(turn); },
            .adopt =
                [this](const QString &path, QObject *context, std::function<void(Result<void, QString>)> done) {
                    m_sounds.setCustom(QUrl::fromLocalFile(path), context,
                                       [done = std::move(done)](const Result<void, SoundError> &result) {
                                           if (result)
                                               done({});
                                           else
                                               done(Failure(result.error().description()));
                                       });
                },
            .isSpotifyInstalled = [this] { return m_music.spotifyInstalled(); }};
}

void AppDelegate::testOverlay()
{
    hideMainWindow();
    const Instant now = m_clock.now();
    const auto lead = static_cast<double>(std::max<std::int64_t>(1, m_preferences.get(preference::leadMinutes)));
    const Instant start = now + lead * 60;
    m_overlay->show(MeetingContent{{.id = u"test"_s,
                                    .title = u"Test meeting"_s,
                                    .start = start,
                                    .end = start + 1800,
                                    .joinURL = MeetingLink::fromText(u"https://meet.google.com"_s),
                                    .attendeeCount = 4,
                                    .calendarName = u"Kelp"_s,
                                    .calendarID = {}},
                                   {}});
}

void AppDelegate::toggleMainWindow(const QString &token)
{
    if (m_mainWindowIsAwaited || (m_mainWindow && m_activator->isActive(*m_mainWindow)))
        hideMainWindow();
    else
        showMainWindow(token);
}

void AppDelegate::showMainWindow(const QString &token)
{
    m_mainWindowIsAwaited = m_overlay->isShown();
    if (m_mainWindowIsAwaited)
        return;
    SettingsView &window = mainWindow();
    if (!window.isVisible()) {
        window.prepare();
        const QScreen *screen = QGuiApplication::primaryScreen();
        const QRect available = screen ? screen->availableGeometry() : QRect();
        window.move(available.center() - window.rect().center());
    }
    m_activator->activate(window, token);
}

void AppDelegate::hideMainWindow()
{
    m_mainWindowIsAwaited = false;
    if (isMainWindowVisible())
        m_mainWindow->close();
}

void AppDelegate::showAwaitedMainWindow()
{
    if (m_mainWindowIsAwaited)
        showMainWindow();
}

void AppDelegate::prepareOverlay()
{
    const auto next = m_scheduler.nextPopup();
    if (next && !m_scheduler.isPaused() && next->at - m_clock.now() <= preparation)
        m_overlay->prepare(MeetingContent{next->meeting, {}});
}

bool AppDelegate::onDue(const Meeting &meeting)
{
    const std::optional<Meeting> onScreen = m_overlay->isShown() ? m_overlay->meeting() : std::nullopt;
    const DueDecision decision = decideDue(meeting, onScreen, m_clock.now());
    if (!decision.show)
        return false;
    hideMainWindow();
    m_overlay->show(MeetingContent{meeting, decision.previous});
    return true;
}

void AppDelegate::signIn()
{
    const bool isFirst = m_auth.accounts().isEmpty();
    m_auth.signIn(this, [this, isFirst](const Result<Account, AuthError> &account) {
        if (!account) {
            mainWindow().setError(account.error().description());
            return;
        }
        if (isFirst)
            hideMainWindow();
        m_scheduler.refresh([this, isFirst] {
            if (isFirst)
                welcome();
            else
                showMainWindow();
        });
    });
}

void AppDelegate::welcome()
{
    // The first refresh may have brought a meeting that is due: its reminder must not be lost to a greeting.
    if (m_overlay->isShown() && m_overlay->meeting())
        return;
    m_overlay->show(WelcomeContent{m_auth.email(), m_scheduler.enabledCalendarCount(), m_scheduler.nextMeeting()});
}

} // namespace kelp
