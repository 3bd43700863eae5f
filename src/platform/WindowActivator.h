#pragma once

class QString;
class QWidget;

namespace kelp {

/// Brings an ordinary window to the user.
class WindowActivator
{
public:
    virtual ~WindowActivator() = default;

    /// Shows the window above the others and gives it the keyboard. `token` is the right to do so that whoever asked
    /// for it handed over, empty where there is none.
    virtual void activate(QWidget &window, const QString &token) = 0;
    /// Whether the window is to be seen and has the keyboard.
    [[nodiscard]] virtual bool isActive(const QWidget &window) const = 0;
};

} // namespace kelp
