#include "overlay/OverlayWindow.h"

#include "overlay/OverlayView.h"

#include <QGuiApplication>
#include <QWindow>

#include <cmath>
#include <utility>

namespace kelp {

namespace {

constexpr double fadeInSeconds = 0.35;
constexpr double fadeOutSeconds = 0.2;

} // namespace

OverlayWindow::OverlayWindow(ScreenCover &cover, QScreen &screen, std::unique_ptr<OverlayView> view, QObject *parent)
    : QObject(parent), m_cover(cover), m_screen(&screen), m_view(std::move(view))
{
    m_cover.prepare(*m_view, screen);
    connect(&m_fade, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &part) { setShown(part.toDouble()); });
    connect(&screen, &QScreen::geometryChanged, this, [this] {
        if (!m_isLost)
            m_cover.fit(*m_view, *m_screen);
    });
    // Qt moves what it finds on the screen to another one, over the window that is there; only until this is deleted.
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this](const QScreen *removed) {
        if (removed != m_screen || m_isLost)
            return;
        lose();
        Q_EMIT screenLost();
    });
    connect(&m_cover, &ScreenCover::closed, this, [this](const QWidget *window) {
        if (m_isLost || window != m_view.get())
            return;
        lose();
        Q_EMIT closed();
    });
    connect(&m_fade, &QVariantAnimation::finished, this, [this] {
        if (m_isLeaving)
            takeDown();
    });
}

OverlayWindow::~OverlayWindow()
{
    m_cover.hide(*m_view);
}

/// The news may come in the middle of the view's own painting: while all its buffers are with the Wayland compositor,
/// Qt waits for one by handling whatever else arrives. So the window is left as it is until the event loop goes on.
void OverlayWindow::lose()
{
    m_isLost = true;
    m_fade.stop();
    m_view->disconnect();
    m_view->setEnabled(false);
    deleteLater();
}

bool OverlayWindow::holds(const QObject *object) const
{
    if (m_isLost)
        return false;
    if (object == m_view->windowHandle())
        return true;
    const auto *widget = qobject_cast<const QWidget *>(object);
    return widget && widget->window() == m_view.get();
}

void OverlayWindow::show(bool gradually)
{
    m_means = m_cover.fade();
    if (!gradually) {
        if (m_means == ScreenCover::Fade::Picture) // without one it also leaves at once
            m_means = ScreenCover::Fade::None;
        m_cover.show(*m_view);
        return;
    }
    if (m_means == ScreenCover::Fade::Picture) {
        m_behind = m_cover.picture(*m_screen);
        if (m_behind.isNull())
            m_means = ScreenCover::Fade::None;
    }
    if (m_means != ScreenCover::Fade::None)
        setShown(0);
    m_view->playEntrance();
    m_cover.show(*m_view);
    fade(0, 1, fadeInSeconds);
}

void OverlayWindow::leave(bool animated)
{
    m_fade.stop();
    if (m_isLost)
        return;
    m_view->disconnect();
    m_view->setEnabled(false);
    m_isLeaving = true;
    if (animated && m_means != ScreenCover::Fade::None)
        fade(m_shown, 0, fadeOutSeconds);
    else
        takeDown();
}

void OverlayWindow::takeDown()
{
    m_cover.hide(*m_view);
    deleteLater();
}

void OverlayWindow::fade(double from, double to, double seconds)
{
    if (m_means == ScreenCover::Fade::None)
        return;
    m_fade.setStartValue(from);
    m_fade.setEndValue(to);
    m_fade.setEasingCurve(QEasingCurve::InOutSine);
    m_fade.setDuration(static_cast<int>(std::lround(seconds * 1000)));
    m_fade.start();
}

void OverlayWindow::setShown(double part)
{
    m_shown = part;
    if (m_means == ScreenCover::Fade::WindowOpacity)
        m_view->setWindowOpacity(part);
    else
        m_view->setBlend(m_behind, part);
}

} // namespace kelp
