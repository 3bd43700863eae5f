#include "platform/linux/TokenWindowActivator.h"

#include <QString>
#include <QWidget>

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

} // namespace kelp
