#pragma once

#include "platform/WindowActivator.h"

namespace kelp {

/// Activates a window under X11 on behalf of the user, as a taskbar does. A window that asks for itself is kept behind
/// where the user was in another one last: Kelp is asked by a key, a tray icon or a second start, of which the window
/// manager knows nothing.
class X11WindowActivator final : public WindowActivator
{
public:
    void activate(QWidget &window, const QString &token) override;
    [[nodiscard]] bool isActive(const QWidget &window) const override;
};

} // namespace kelp
