#include "platform/linux/wayland/FullScreenCover.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace kelp {

void FullScreenCover::prepare(QWidget &window, QScreen &screen)
{
    window.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    window.setAttribute(Qt::WA_TranslucentBackground);
    window.setScreen(&screen);
    window.setGeometry(screen.geometry());
}

void FullScreenCover::show(QWidget &window)
{
    window.showFullScreen();
}

void FullScreenCover::hide(QWidget &window)
{
    window.hide();
}

void FullScreenCover::takeKeyboard(QWidget &window)
{
    window.activateWindow();
}

QScreen *FullScreenCover::currentScreen() const
{
    const QWindow *focused = QGuiApplication::focusWindow();
    return focused ? focused->screen() : nullptr;
}

} // namespace kelp
