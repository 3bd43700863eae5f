#include "overlay/OverlayController.h"

#include "base/Clock.h"
#include "base/Memory.h"
#include "overlay/FramePacer.h"
#include "overlay/OverlayView.h"
#include "overlay/OverlayWindow.h"
#include "platform/ScreenCover.h"
#include "preferences/Preferences.h"
#include "sound/OverlaySounds.h"
#include "themes/KelpClock.h"
#include "themes/ThemeImages.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double welcomeSeconds = 8;
constexpr double longestWait = 1.01; // seconds
/// What was made ready is kept so long for a showing that does not come.
constexpr double preparedSeconds = 30;

// A desktop closes windows of a screen that is about to go, and perhaps for reasons of its own. Long enough for the
// former to be over, and not for ever against the latter.
constexpr double reopenSeconds = 0.1;
constexpr int mostReopenings = 5;
/// A screen that shows nothing for so long, a locked one for example, does not keep the reminder from being heard.
constexpr double longestSilence = 0.25; // seconds

QSize pixelsOf(const QScreen &screen)
{
    return (QSizeF(screen.size()) * screen.devicePixelRatio()).toSize();
}

/// As wide as the widest screen and as high as the highest, in pixels.
QSize largestView()
{
    QSize largest;
    for (const QScreen *screen : QGuiApplication::screens())
        largest = largest.expandedTo(pixelsOf(*screen));
    return largest;
}

} // namespace

struct OverlayController::Showing
{
    OverlayScene scene;
    bool onPrimaryOnly;
    QHash<QString, QImage> backdrops = {}; ///< by screen: what lies behind the windows, small
    bool replacesAnother = false;          ///< windows of an earlier showing are what the screens show
    bool isUp = false;
    int reopenings = 0;
    // Contexts of the clock's actions: none of them outlives the showing.
    QObject timeOut{};
    QObject reopening{};
    std::unique_ptr<QObject> nextTick{};
    std::unique_ptr<QObject> silence{}; ///< until the sound starts
};

OverlayController::OverlayController(Preferences &preferences, Clock &clock, UrlOpener &opener, ScreenCover &cover,
                                     OverlaySounds &sounds, QObject *parent)
    : QObject(parent),
      m_preferences(preferences),
      m_clock(clock),
      m_opener(opener),
      m_cover(cover),
      m_sounds(sounds),
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
    const bool replacesAnother = !findChildren<OverlayWindow *>(Qt::FindDirectChildrenOnly).isEmpty();
    QHash<QString, QImage> backdrops;
    if (m_showing)
        backdrops = std::move(m_showing->backdrops);
    takeDown(false);
    const OverlayTheme chosen = theme ? *theme : OverlayTheme::forNextOverlay(m_preferences);
    ThemeImages::forgetDecodedBut(chosen, m_preferences);
    m_showing.reset(new Showing{{content, chosen, OverlayOptions::from(m_preferences),
                                 BackgroundOptions::forOverlay(chosen, m_preferences, m_moves)},
                                m_preferences.get(preference::displays) == u"primary",
                                std::move(backdrops),
                                replacesAnother});
    if (const auto *reminder = std::get_if<MeetingContent>(&content))
        m_meeting = reminder->meeting;
    m_keys.start();
    coverScreens();
    loadPicture();
    forgetPrepared();
    if (m_meeting) {
        m_showing->silence = std::make_unique<QObject>();
        m_clock.after(longestSilence, m_showing->silence.get(), [this] { startSound(); });
        soundOnceSeen();
    } else {
        m_clock.after(welcomeSeconds, &m_showing->timeOut, [this] { hide(true); });
    }
    Q_EMIT shown();
}

void OverlayController::prepare(const OverlayContent &content)
{
    if (m_showing || m_prepared)
        return;
    m_prepared = std::make_unique<QObject>();
    m_clock.after(preparedSeconds, m_prepared.get(), [this] {
        forgetPrepared();
        ThemeImages::forgetDecoded();
        memory::giveBack();
    });
    m_cover.expectPictures();
    // A random theme is chosen when it is shown.
    const OverlayTheme theme = OverlayTheme::named(m_preferences.get(preference::theme));
    if (!ThemeImages::isReady(theme, m_preferences))
        ThemeImages::load(theme, m_preferences, largestView(), m_prepared.get(), [](const QImage &) {});
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const OverlayScene scene{content, theme, OverlayOptions::from(m_preferences)};
        const Instant now = m_clock.now();
        const Arrangement card = scene.card(screen->size(), now, {});
        static_cast<void>(OverlayScene::cardPicture(card, screen->devicePixelRatio(), now));
    }
}

void OverlayController::forgetPrepared()
{
    m_prepared.reset();
    m_cover.forgetPictures();
}

void OverlayController::hide(bool animated)
{
    const bool wasUp = m_showing != nullptr;
    takeDown(animated);
    if (wasUp)
        ThemeImages::forgetDecoded(); // back to the memory of an idle Kelp, once the windows are gone
}

/// Keeps the pictures: the next showing may need the same.
void OverlayController::takeDown(bool animated)
{
    m_sounds.stop();
    if (!m_showing)
        return;
    m_keys.stop();
    m_cover.giveBackKeyboard();
    m_showing.reset();
    m_meeting.reset();
    for (OverlayWindow *window : std::exchange(m_windows, {})) {
        connect(window, &QObject::destroyed, this, &memory::giveBack);
        window->leave(animated);
    }
    Q_EMIT hidden();
}

/// Making and starting a sound takes time that the first picture must not wait for.
void OverlayController::soundOnceSeen()
{
    const bool allSeen = std::all_of(m_windows.begin(), m_windows.end(),
                                     [](const OverlayWindow *window) { return window->view()->isSeen(); });
    if (allSeen && m_showing->silence)
        m_clock.after(0, m_showing->silence.get(), [this] { startSound(); });
}

void OverlayController::startSound()
{
    m_showing->silence.reset();
    m_sounds.playForOverlay();
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

/// Brings the cards up to date and comes back when one of them looks different.
void OverlayController::tick()
{
    const Instant now = KelpClock::shown(m_clock.now());
    double wait = std::numeric_limits<double>::infinity();
    for (const OverlayWindow *window : m_windows) {
        if (OverlayView *view = window->view()) {
            view->setNow(now);
            wait = std::min(wait, view->untilChange());
        }
    }
    m_showing->nextTick.reset();
    if (std::isinf(wait))
        return;
    m_showing->nextTick = std::make_unique<QObject>();
    // Sooner than needed where the wall clock may have been set meanwhile.
    m_clock.after(std::min(wait, longestWait), m_showing->nextTick.get(), [this] { tick(); });
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
    m_showing->isUp = true;
    giveKeyboard();
    tick();
}

void OverlayController::cover(QScreen &screen)
{
    OverlayScene scene = m_showing->scene;
    if (std::holds_alternative<BlurBackground>(scene.theme.background))
        scene.background.backdrop = backdrop(screen);
    auto view = std::make_unique<OverlayView>(std::move(scene), KelpClock::shown(m_clock.now()));
    view->setMotion(m_moves);
    connectView(*view);
    animate(*view, screen);
    auto *window = new OverlayWindow(m_cover, screen, std::move(view), this);
    connect(window, &OverlayWindow::screenLost, this, [this, window] { windowLost(window); });
    connect(window, &OverlayWindow::closed, this, [this, window] { windowClosed(window); });
    m_windows.push_back(window);
    // A screen that is plugged in later has nothing to be led over from.
    window->show(!m_showing->isUp);
}

/// What lies behind a window over that screen, small. While windows are replaced the screen still shows the old ones:
/// then it is what was behind those, or nothing where nobody looked.
QImage OverlayController::backdrop(QScreen &screen)
{
    const QSize pixels = pixelsOf(screen);
    QImage &known = m_showing->backdrops[u"%1 %2x%3"_s.arg(screen.name()).arg(pixels.width()).arg(pixels.height())];
    if (known.isNull() && !m_showing->replacesAnother)
        known = m_cover.smallPicture(screen);
    return known;
}

/// Gives the view new frames for as long as it lives, where its background moves.
void OverlayController::animate(OverlayView &view, const QScreen &screen)
{
    view.setFrameTime(KelpClock::shown(m_clock.now()));
    if (view.movingPart().isEmpty())
        return;
    const double seconds =
        std::max(view.leastInterval(), FramePacer::interval(pixelsOf(screen), wantedScreens().size()));
    new FramePacer(
        m_clock, seconds, [&view](Instant shown) { view.setFrameTime(shown); }, &view);
}

/// The windows do not wait for a picture that has to be decoded first.
void OverlayController::loadPicture()
{
    if (!m_showing->scene.background.pictureComes)
        return;
    ThemeImages::load(m_showing->scene.theme, m_preferences, largestView(), &m_showing->timeOut,
                      [this](const QImage &picture) {
                          BackgroundOptions &background = m_showing->scene.background;
                          background.pictureComes = false;
                          background.customPicture = picture;
                          for (const OverlayWindow *window : m_windows) {
                              if (OverlayView *view = window->view())
                                  view->setPicture(picture);
                          }
                      });
}

void OverlayController::connectView(OverlayView &view)
{
    connect(&view, &OverlayView::joinPressed, this, &OverlayController::join);
    connect(&view, &OverlayView::snoozePressed, this, &OverlayController::snooze);
    connect(&view, &OverlayView::dismissPressed, this, [this] { hide(true); });
    connect(&view, &OverlayView::seen, this, &OverlayController::soundOnceSeen);
    connect(&view, &OverlayView::joinPreviousPressed, this, &OverlayController::joinPrevious);
}

void OverlayController::windowLost(const OverlayWindow *window)
{
    const auto removed = std::erase(m_windows, window);
    if (removed > 0)
        giveKeyboard();
}

void OverlayController::windowClosed(const OverlayWindow *window)
{
    const bool isOfThisShowing = std::find(m_windows.begin(), m_windows.end(), window) != m_windows.end();
    windowLost(window);
    if (!isOfThisShowing)
        return;
    if (m_showing->reopenings++ < mostReopenings)
        m_clock.after(reopenSeconds, &m_showing->reopening, [this] { coverScreens(); });
    else if (m_windows.empty())
        hide(false);
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
