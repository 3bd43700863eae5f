#include "platform/linux/TokenWindowActivator.h"

#include <QString>
#include <QWidget>
#include <QWindow>

namespace kelp {

void TokenWindowActivator::activate(QWidget &window, const QString &token)
{
    // Qt takes the token of the next activation from here and clears it.
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    window.show();
    window.raise();
    window.activateWindow();
}

bool TokenWindowActivator::isActive(const QWidget &window) const
{
    return window.isVisible() && window.windowHandle() && window.windowHandle()->isActive();
}

} // namespace kelp
