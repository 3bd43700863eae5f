#pragma once

#include "overlay/OverlayContent.h"
#include "overlay/OverlayKeys.h"
#include "themes/Theme.h"

#include <QObject>

#include <memory>
#include <optional>
#include <vector>

class QScreen;

namespace kelp {

class Clock;
class OverlaySounds;
class OverlayView;
class OverlayWindow;
class Preferences;
class ScreenCover;
class UrlOpener;

/// Puts the overlay on the screens and takes it down again, and carries out what the user answers.
///
///     hidden ── show ──> up ── join, snooze, dismiss, Return, Esc, the welcome card's time-out ──> hidden
///
/// What is hidden may still be fading out; it no longer answers, and a new showing does not wait for it.
class OverlayController final : public QObject
{
    Q_OBJECT

public:
    OverlayController(Preferences &preferences, Clock &clock, UrlOpener &opener, ScreenCover &cover,
                      OverlaySounds &sounds, QObject *parent = nullptr);
    ~OverlayController() override;

    /// Shows `content` on the screens that the preferences name, in `theme` or in the one that the preferences ask for.
    /// What is on the screens already vanishes at once.
    void show(const OverlayContent &content, const std::optional<OverlayTheme> &theme = {});
    void hide(bool animated);
    /// Makes ready what a showing of `content` within the next seconds needs (fonts, the picture of the theme, memory
    /// for pictures of the screens), so that it appears at once. Forgotten again when no showing comes.
    void prepare(const OverlayContent &content);

    /// Whether there are windows on the screens, those that are fading out left aside.
    [[nodiscard]] bool isShown() const { return !m_windows.empty(); }
    /// The meeting on the screens; none for the welcome card and while hidden.
    [[nodiscard]] const std::optional<Meeting> &meeting() const { return m_meeting; }

    /// Without motion ("reduce animation") the card is there at once. For the next showing.
    void setMotion(bool moves) { m_moves = moves; }

Q_SIGNALS:
    /// The user wants to be reminded again.
    void snoozed(const kelp::Meeting &meeting);
    void shown();
    void hidden();

private:
    /// What one showing consists of; gone with it.
    struct Showing;

    void join();
    void joinPrevious();
    void snooze();
    void confirm();
    void takeDown(bool animated);
    void forgetPrepared();
    void loadPicture();
    void tick();
    void soundOnceSeen();
    void startSound();
    void coverScreens();
    void cover(QScreen &screen);
    [[nodiscard]] QImage backdrop(QScreen &screen);
    void animate(OverlayView &view, const QScreen &screen);
    void connectView(OverlayView &view);
    void windowLost(const OverlayWindow *window);
    void windowClosed(const OverlayWindow *window);
    void giveKeyboard();
    [[nodiscard]] bool isOurs(const QObject *object) const;
    [[nodiscard]] std::vector<QScreen *> wantedScreens() const;

    Preferences &m_preferences;
    Clock &m_clock;
    UrlOpener &m_opener;
    ScreenCover &m_cover;
    OverlaySounds &m_sounds;
    OverlayKeys m_keys;
    bool m_moves = true;

    std::unique_ptr<Showing> m_showing;
    std::unique_ptr<QObject> m_prepared; ///< context of what is made ready for a showing that has not come yet
    std::optional<Meeting> m_meeting;
    std::vector<OverlayWindow *> m_windows; ///< children; those of this showing, in the order of the screens
};

} // namespace kelp
