#pragma once

#include "platform/ScreenCover.h"

namespace kelp {

/// Plain full-screen windows: all that can be done where nothing is known about the desktop.
class PlainScreenCover final : public ScreenCover
{
    Q_OBJECT

public:
    using ScreenCover::ScreenCover;

    void prepare(QWidget &window, QScreen &screen) override;
    void fit(QWidget &window, QScreen &screen) override;
    void show(QWidget &window) override;
    void hide(QWidget &window) override;
    void takeKeyboard(QWidget &window) override;
    void giveBackKeyboard() override {}
    [[nodiscard]] QSet<quint32> heldKeys() const override { return {}; }
    [[nodiscard]] QScreen *currentScreen() const override { return nullptr; }
    [[nodiscard]] Fade fade() const override { return Fade::None; }
    [[nodiscard]] QPixmap picture(QScreen &) const override { return {}; }
};

} // namespace kelp
