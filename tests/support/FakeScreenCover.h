#pragma once

#include "platform/ScreenCover.h"

#include <QPointer>
#include <QScreen>
#include <QWidget>

#include <functional>

namespace kelp {

/// Covers the screens of the offscreen platform and lets a test see and decide what only a real desktop would.
class FakeScreenCover final : public ScreenCover
{
public:
    void prepare(QWidget &window, QScreen &screen) override
    {
        window.setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        window.setScreen(&screen);
        window.setGeometry(screen.geometry());
        windows.append(&window);
    }
    void fit(QWidget &window, QScreen &screen) override { window.setGeometry(screen.geometry()); }
    void show(QWidget &window) override { window.show(); }
    void hide(QWidget &window) override { window.hide(); }
    void takeKeyboard(QWidget &window) override
    {
        keyboard = &window;
        window.activateWindow();
    }
    void giveBackKeyboard() override { keyboard.clear(); }
    [[nodiscard]] QSet<quint32> heldKeys() const override { return held; }
    [[nodiscard]] QScreen *currentScreen() const override { return current; }
    [[nodiscard]] Fade fade() const override { return means; }
    void expectPictures() override { expectsPictures = true; }
    void forgetPictures() override { expectsPictures = false; }
    [[nodiscard]] QPixmap picture(QScreen &screen) const override
    {
        QPixmap desktop(screen.size());
        desktop.fill(Qt::green);
        return desktop;
    }
    [[nodiscard]] QImage smallPicture(QScreen &screen) const override
    {
        if (!behind)
            return {};
        QImage desktop(screen.size() / 8, QImage::Format_RGB32);
        desktop.fill(behind(screen));
        return desktop;
    }

    /// The windows on the screens now, those that fade out included.
    [[nodiscard]] QList<QWidget *> visible() const
    {
        QList<QWidget *> result;
        for (const QPointer<QWidget> &window : windows) {
            if (window && window->isVisible())
                result.append(window);
        }
        return result;
    }

    QList<QPointer<QWidget>> windows;
    QPointer<QWidget> keyboard;
    QSet<quint32> held;
    QScreen *current = nullptr;
    Fade means = Fade::None;
    bool expectsPictures = false;
    std::function<QColor(const QScreen &)> behind; ///< what lies behind the windows
};

} // namespace kelp
