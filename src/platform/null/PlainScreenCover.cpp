#include "platform/null/PlainScreenCover.h"

#include <QScreen>
#include <QWidget>

namespace kelp {

void PlainScreenCover::prepare(QWidget &window, QScreen &screen)
{
    window.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    window.setScreen(&screen);
    window.setGeometry(screen.geometry());
}

void PlainScreenCover::fit(QWidget &window, QScreen &screen)
{
    window.setGeometry(screen.geometry());
}

void PlainScreenCover::show(QWidget &window)
{
    window.showFullScreen();
}

void PlainScreenCover::hide(QWidget &window)
{
    window.hide();
}

void PlainScreenCover::takeKeyboard(QWidget &window)
{
    window.raise();
    window.activateWindow();
}

} // namespace kelp
