#include "app/AppDelegate.h"

#include "base/Clock.h"
#include "base/Folders.h"
#include "base/Logging.h"
#include "overlay/OverlayContent.h"
#include "overlay/OverlayController.h"
#include "platform/Platform.h"
#include "platform/ScreenCover.h"
#include "platform/SystemEvents.h"
#include "platform/UrlOpener.h"
#include "platform/WindowActivator.h"
#include "schedule/DuePolicy.h"
#include "schedule/SnoozePolicy.h"
#include "settings/SettingsView.h"

#include <QGuiApplication>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const GoogleAuth::Client builtInClient{QStringLiteral(KELP_GOOGLE_CLIENT_ID),
                                       QStringLiteral(KELP_GOOGLE_CLIENT_SECRET)};

/// Removes what saves that were cut short left behind, before anything is read.
QString sweptConfiguration()
{
    AtomicFile::sweep(folders::configuration());
    AtomicFile::sweep(folders::data());
    return folders::configuration();
}

} // namespace

AppDelegate::AppDelegate(Clock &clock, Platform &platform)
    : m_clock(clock),
      m_opener(platform.makeUrlOpener()),
      m_screenCover(platform.makeScreenCover()),
      m_activator(platform.makeWindowActivator()),
      m_systemEvents(platform.makeSystemEvents()),
      m_preferencesFile(sweptConfiguration() + u"/preferences.json"_s),
      m_preferences(m_preferencesFile),
      m_http(clock),
      m_endpoints(GoogleEndpoints::fromEnvironment()),
      m_auth({m_preferences, m_http, clock, *m_opener}, m_endpoints, builtInClient, folders::data()),
      m_calendarClient(m_auth, m_http, clock, m_endpoints.api),
      m_scheduler({m_preferences, clock, m_calendarClient, m_auth}),
      m_overlay(std::make_unique<OverlayController>(m_preferences, clock, *m_opener, *m_screenCover))
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::finishLaunching()
{
    migratePreferences();

    m_mainWindow = std::make_unique<SettingsView>(m_auth, m_scheduler, m_preferences);
    m_mainWindow->setWindowTitle(u"Kelp"_s);
    connect(m_mainWindow.get(), &SettingsView::signInRequested, this, &AppDelegate::signIn);

    m_scheduler.onDue = [this](const Meeting &meeting) { return onDue(meeting); };
    connect(m_overlay.get(), &OverlayController::snoozed, this,
            [this](const Meeting &meeting) { m_scheduler.snooze(meeting, snoozeSeconds(m_preferences)); });
    connect(m_systemEvents.get(), &SystemEvents::wokeUp, &m_scheduler, &Scheduler::refreshAfterWake);
    connect(m_systemEvents.get(), &SystemEvents::networkReturned, &m_scheduler, &Scheduler::refreshAfterWake);
    m_scheduler.start();

    if (m_auth.accounts().isEmpty())
        m_clock.after(0, this, [this] { showMainWindow(); });
}

void AppDelegate::migratePreferences()
{
    // Older versions had a switch where there is a choice of sounds now.
    if (!m_preferences.contains(preference::sound) && m_preferences.holds(preference::playSound, false))
        m_preferences.set(preference::sound, u"None"_s);
}

void AppDelegate::toggleMainWindow(const QString &token)
{
    if (m_activator->isActive(*m_mainWindow))
        hideMainWindow();
    else
        showMainWindow(token);
}

void AppDelegate::showMainWindow(const QString &token)
{
    if (!m_mainWindow->isVisible()) {
        m_mainWindow->adjustSize();
        const QScreen *screen = QGuiApplication::primaryScreen();
        const QRect available = screen ? screen->availableGeometry() : QRect();
        m_mainWindow->move(available.center() - m_mainWindow->rect().center());
    }
    m_activator->activate(*m_mainWindow, token);
}

void AppDelegate::hideMainWindow()
{
    m_mainWindow->hide();
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
            m_mainWindow->setError(account.error().description());
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
