#include "overlay/OverlayController.h"

#include "base/Clock.h"
#include "overlay/MeetingCard.h"
#include "overlay/OverlayView.h"
#include "overlay/OverlayWindow.h"
#include "platform/ScreenCover.h"
#include "preferences/Preferences.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double welcomeSeconds = 8;

} // namespace

struct OverlayController::Showing
{
    OverlayScene scene;
    bool onPrimaryOnly;
    QObject timers{}; ///< context of the clock's actions: none of them outlives the showing
};

OverlayController::OverlayController(Preferences &preferences, Clock &clock, UrlOpener &opener, ScreenCover &cover,
                                     QObject *parent)
    : QObject(parent),
      m_preferences(preferences),
      m_clock(clock),
      m_opener(opener),
      m_cover(cover),
      m_keys(cover, [this](const QObject *object) { return isOurs(object); })
{
    connect(&m_keys, &OverlayKeys::confirmed, this, &OverlayController::confirm);
    connect(&m_keys, &OverlayKeys::dismissed, this, [this] { hide(true); });
    // Queued, because Qt announces a screen before it is set up.
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &OverlayController::coverScreens, Qt::QueuedConnection);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &OverlayController::coverScreens,
            Qt::QueuedConnection);
}

OverlayController::~OverlayController()
{
    hide(false);
}

void OverlayController::show(const OverlayContent &content, const std::optional<OverlayTheme> &theme)
{
    hide(false);
    m_showing.reset(new Showing{
        {content, theme ? *theme : OverlayTheme::forNextOverlay(m_preferences), OverlayOptions::from(m_preferences)},
        m_preferences.get(preference::displays) == u"primary"});
    if (const auto *reminder = std::get_if<MeetingContent>(&content))
        m_meeting = reminder->meeting;
    m_keys.start();
    coverScreens();
    if (m_meeting)
        tick();
    else
        m_clock.after(welcomeSeconds, &m_showing->timers, [this] { hide(true); });
    Q_EMIT shown();
}

void OverlayController::hide(bool animated)
{
    if (!m_showing)
        return;
    m_keys.stop();
    m_cover.giveBackKeyboard();
    m_showing.reset();
    m_meeting.reset();
    for (OverlayWindow *window : std::exchange(m_windows, {}))
        window->leave(animated);
    Q_EMIT hidden();
}

void OverlayController::confirm()
{
    if (m_meeting)
        join();
    else
        hide(true);
}

void OverlayController::join()
{
    if (!m_meeting || !m_meeting->canJoin())
        return;
    m_meeting->join(m_opener);
    hide(true);
}

void OverlayController::joinPrevious()
{
    const auto *reminder = m_showing ? std::get_if<MeetingContent>(&m_showing->scene.content) : nullptr;
    if (reminder && reminder->previous)
        reminder->previous->join(m_opener);
}

void OverlayController::snooze()
{
    if (m_meeting)
        Q_EMIT snoozed(Meeting(*m_meeting));
    hide(true);
}

/// Brings the card up to date and comes back when its countdown reads differently.
void OverlayController::tick()
{
    const Instant now = m_clock.now();
    for (const OverlayWindow *window : m_windows) {
        if (window->view())
            window->view()->setNow(now);
    }
    m_clock.after(MeetingCard::untilNextCountdown(m_meeting->start, now), &m_showing->timers, [this] { tick(); });
}

/// Gives every wanted screen that has none a window, and one of the windows the keyboard.
void OverlayController::coverScreens()
{
    if (!m_showing)
        return;
    const std::vector<QScreen *> wanted = wantedScreens();
    const auto isWanted = [&](const OverlayWindow *window) {
        return std::find(wanted.begin(), wanted.end(), window->screen()) != wanted.end();
    };
    const auto kept = std::stable_partition(m_windows.begin(), m_windows.end(), isWanted);
    for (auto left = kept; left != m_windows.end(); ++left)
        (*left)->leave(false);
    m_windows.erase(kept, m_windows.end());

    for (QScreen *screen : wanted) {
        const bool isCovered = std::any_of(m_windows.begin(), m_windows.end(),
                                           [&](const OverlayWindow *window) { return window->screen() == screen; });
        if (!isCovered)
            cover(*screen);
    }
    giveKeyboard();
}

void OverlayController::cover(QScreen &screen)
{
    auto view = std::make_unique<OverlayView>(m_showing->scene, m_clock.now());
    view->setMotion(m_moves);
    connectView(*view);
    auto *window = new OverlayWindow(m_cover, screen, std::move(view), this);
    connect(window, &OverlayWindow::screenLost, this, [this, window] { windowLost(window); });
    m_windows.push_back(window);
    window->show();
}

void OverlayController::connectView(OverlayView &view)
{
    connect(&view, &OverlayView::joinPressed, this, &OverlayController::join);
    connect(&view, &OverlayView::snoozePressed, this, &OverlayController::snooze);
    connect(&view, &OverlayView::dismissPressed, this, [this] { hide(true); });
    connect(&view, &OverlayView::joinPreviousPressed, this, &OverlayController::joinPrevious);
}

void OverlayController::windowLost(const OverlayWindow *window)
{
    const auto removed = std::erase(m_windows, window);
    if (removed > 0)
        giveKeyboard();
}

void OverlayController::giveKeyboard()
{
    if (m_windows.empty())
        return;
    const QScreen *current = m_cover.currentScreen();
    const auto found = std::find_if(m_windows.begin(), m_windows.end(),
                                    [&](const OverlayWindow *window) { return window->screen() == current; });
    OverlayWindow *window = found == m_windows.end() ? m_windows.front() : *found;
    m_cover.takeKeyboard(*window->view());
}

bool OverlayController::isOurs(const QObject *object) const
{
    return std::any_of(m_windows.begin(), m_windows.end(),
                       [&](const OverlayWindow *window) { return window->holds(object); });
}

std::vector<QScreen *> OverlayController::wantedScreens() const
{
    std::vector<QScreen *> wanted;
    for (QScreen *screen : QGuiApplication::screens()) {
        // A placeholder without size stands in while no screen is connected.
        if (!screen->geometry().isEmpty() && (!m_showing->onPrimaryOnly || screen == QGuiApplication::primaryScreen()))
            wanted.push_back(screen);
    }
    return wanted;
}

} // namespace kelp
