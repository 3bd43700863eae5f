#pragma once

#include "platform/WindowActivator.h"

namespace kelp {

/// Activates a window with the token that its asker handed over, as Wayland wants it.
class TokenWindowActivator final : public WindowActivator
{
public:
    void activate(QWidget &window, const QString &token) override;
    [[nodiscard]] bool isActive(const QWidget &window) const override;
};

} // namespace kelp
