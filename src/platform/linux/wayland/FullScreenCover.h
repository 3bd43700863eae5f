#pragma once

#include "platform/ScreenCover.h"

namespace kelp {

/// Covers screens under Wayland where the compositor has no layer shell: with full-screen windows, one per screen,
/// above panels and on the workspace that is on. The compositor decides which of them has the keyboard.
class FullScreenCover final : public ScreenCover
{
    Q_OBJECT

public:
    using ScreenCover::ScreenCover;

    void prepare(QWidget &window, QScreen &screen) override;
    void fit(QWidget &, QScreen &) override {} // the compositor tells the new size
    void show(QWidget &window) override;
    void hide(QWidget &window) override;
    void takeKeyboard(QWidget &window) override;
    void giveBackKeyboard() override {}                                  // the compositor does when the windows go
    [[nodiscard]] QSet<quint32> heldKeys() const override { return {}; } // no client hears of those
    [[nodiscard]] QScreen *currentScreen() const override;
    [[nodiscard]] Fade fade() const override { return Fade::Transparency; }
    [[nodiscard]] QPixmap picture(QScreen &) const override { return {}; }
};

} // namespace kelp
