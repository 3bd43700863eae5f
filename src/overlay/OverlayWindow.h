#pragma once

#include "platform/ScreenCover.h"

#include <QObject>
#include <QPointer>
#include <QScreen>
#include <QVariantAnimation>

#include <memory>

namespace kelp {

class OverlayView;

/// One screen's window on its way through life: shown while fading in, up, and fading out until it deletes itself.
class OverlayWindow final : public QObject
{
    Q_OBJECT

public:
    OverlayWindow(ScreenCover &cover, QScreen &screen, std::unique_ptr<OverlayView> view, QObject *parent = nullptr);
    ~OverlayWindow() override;

    /// Null once the window is lost.
    [[nodiscard]] OverlayView *view() const { return m_isLost ? nullptr : m_view.get(); }
    [[nodiscard]] QScreen *screen() const { return m_screen; }
    /// Whether `object` is the window, natively or as a widget, or a widget in it.
    [[nodiscard]] bool holds(const QObject *object) const;

    /// `gradually`: fading in and with the card coming up.
    void show(bool gradually);
    /// Takes the window down, at once or gradually, and then deletes this. The view answers nobody from now on.
    void leave(bool animated);

Q_SIGNALS:
    /// The screen was unplugged; the window is lost and goes with the next turn of the event loop.
    void screenLost();
    /// The desktop has taken the window down while its screen is still there; it goes with the next turn, too.
    void closed();

private:
    void lose();
    void takeDown();
    void fade(double from, double to, double seconds);
    void setShown(double part);

    ScreenCover &m_cover;
    QPointer<QScreen> m_screen;
    std::unique_ptr<OverlayView> m_view;
    ScreenCover::Fade m_means = ScreenCover::Fade::None;
    QPixmap m_behind;
    double m_shown = 1;
    bool m_isLeaving = false;
    bool m_isLost = false;
    QVariantAnimation m_fade;
};

} // namespace kelp
