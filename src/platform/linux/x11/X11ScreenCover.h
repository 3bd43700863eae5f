#pragma once

#include "platform/ScreenCover.h"
#include "platform/linux/x11/X11Screens.h"

#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <memory>

struct xcb_connection_t;

namespace kelp {

namespace x11 {
class Grabber;
}

/// Covers screens under X11 with windows that no window manager touches (override-redirect), which is the one kind that
/// every window manager leaves on its own screen and above full-screen windows, panels and later windows, on every
/// workspace.
///
/// Such a window gets the keyboard only by asking the server for it. Another client may take it away at any time; it is
/// taken back a moment later. The keyboard is not grabbed, which would block the desktop's own shortcuts.
class X11ScreenCover final : public ScreenCover
{
    Q_OBJECT

public:
    /// Nothing but a QGuiApplication on the platform "xcb" may be running.
    explicit X11ScreenCover(QObject *parent = nullptr);
    ~X11ScreenCover() override;

    void prepare(QWidget &window, QScreen &screen) override;
    void fit(QWidget &window, QScreen &screen) override;
    void show(QWidget &window) override;
    void hide(QWidget &window) override;
    void takeKeyboard(QWidget &window) override;
    void giveBackKeyboard() override;
    [[nodiscard]] QSet<quint32> heldKeys() const override;
    [[nodiscard]] QScreen *currentScreen() const override;
    [[nodiscard]] Fade fade() const override;
    void expectPictures() override;
    void forgetPictures() override;
    [[nodiscard]] QPixmap picture(QScreen &screen) const override;
    [[nodiscard]] QImage smallPicture(QScreen &screen) const override;

private:
    void focus(std::uint32_t window);
    void takeBackSoon();
    void setCardinal(const QWidget &window, const char *property, std::uint32_t value);
    [[nodiscard]] std::uint32_t focused() const;
    [[nodiscard]] std::uint32_t atom(const QByteArray &name) const;

    xcb_connection_t *m_connection;
    X11Screens m_screens;
    std::unique_ptr<x11::Grabber> m_grabber;
    QPointer<QWidget> m_keyboardWindow;
    bool m_hasKeyboard = false; ///< one of our windows is to have it
    std::uint32_t m_before = 0; ///< the window that had it before
};

} // namespace kelp
