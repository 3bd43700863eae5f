#include "platform/linux/TokenWindowActivator.h"

#include <QGuiApplication>
#include <QString>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace kelp {

void TokenWindowActivator::activate(QWidget &window, const QString &token)
{
    // Qt takes the token of the next activation from here and clears it.
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    else if (window.isVisible() && !isActive(window))
        window.hide(); // without a token a new window may come forward, but not one that is there
    window.show();
    window.raise();
    window.activateWindow();
}

bool TokenWindowActivator::isActive(const QWidget &window) const
{
    return window.isVisible() && window.windowHandle() && window.windowHandle()->isActive();
}

void TokenWindowActivator::whenLeft(QWidget &window, std::function<void()> action)
{
    QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &window,
                     [&window, action = std::move(action), had = false](const QWindow *focused) mutable {
                         const bool has = focused && focused == window.windowHandle();
                         if (std::exchange(had, has) && !has)
                             action();
                     });
}

} // namespace kelp
