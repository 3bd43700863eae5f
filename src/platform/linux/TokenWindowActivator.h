#pragma once

#include "platform/WindowActivator.h"

namespace kelp {

/// Activates a window with the token that its asker handed over, as Wayland wants it.
class TokenWindowActivator final : public WindowActivator
{
public:
    void keepOutOfLists(QWidget &) override {} // Wayland has no such wish
    void activate(QWidget &window, const QString &token) override;
    [[nodiscard]] bool isActive(const QWidget &window) const override;
    void whenLeft(QWidget &window, std::function<void()> action) override;
};

} // namespace kelp
