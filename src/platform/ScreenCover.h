#pragma once

#include <QImage>
#include <QObject>
#include <QPixmap>
#include <QSet>

class QScreen;
class QWidget;

namespace kelp {

/// Puts windows over whole screens, above everything else, and gives them the keyboard.
class ScreenCover : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// How a window can be made to appear and vanish gradually.
    enum class Fade {
        None,          ///< at once
        WindowOpacity, ///< the desktop blends the window: QWidget::setWindowOpacity
        Picture,       ///< the window blends itself with `picture`, taken before it was shown
        Transparency,  ///< the window paints itself translucent
    };

    /// Sets up `window`, a hidden top-level widget, so that showing it covers `screen` on every workspace.
    virtual void prepare(QWidget &window, QScreen &screen) = 0;
    /// Lets `window` cover the screen exactly again after that has changed.
    virtual void fit(QWidget &window, QScreen &screen) = 0;
    /// Shows a prepared window without giving it the keyboard.
    virtual void show(QWidget &window) = 0;
    /// Takes a prepared window down. Before it is destroyed, whether it was shown or not.
    virtual void hide(QWidget &window) = 0;

    /// Gives the keyboard to `window`, which is shown, and keeps it there until `giveBackKeyboard`.
    virtual void takeKeyboard(QWidget &window) = 0;
    /// Returns the keyboard to whom it belonged before.
    virtual void giveBackKeyboard() = 0;
    /// The native scan codes of the keys that are down now, where that can be known.
    [[nodiscard]] virtual QSet<quint32> heldKeys() const = 0;

    /// The screen that the user is working on, or null where that cannot be known.
    [[nodiscard]] virtual QScreen *currentScreen() const = 0;
    [[nodiscard]] virtual Fade fade() const = 0;
    /// Says that a `picture` of each screen will be wanted within seconds. What takes time about it is done now, and
    /// its memory kept until then.
    virtual void expectPictures() {}
    /// Gives back what was kept for pictures that were not taken.
    virtual void forgetPictures() {}
    /// What the screen shows now; null where it cannot be seen.
    [[nodiscard]] virtual QPixmap picture(QScreen &screen) const = 0;
    /// The same at an eighth of its size, for what blurs it anyway; null where it cannot be seen.
    [[nodiscard]] virtual QImage smallPicture(QScreen &) const { return {}; }

Q_SIGNALS:
    /// The desktop has taken a window down by itself; it has to be hidden.
    void closed(QWidget *window);
};

} // namespace kelp
