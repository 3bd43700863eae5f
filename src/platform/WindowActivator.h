#pragma once

#include <functional>

class QString;
class QWidget;

namespace kelp {

/// Brings an ordinary window to the user.
class WindowActivator
{
public:
    virtual ~WindowActivator() = default;

    /// Keeps the window, which is hidden, out of the desktop's lists of windows (taskbar, pager, switcher) from now on,
    /// where a window can ask for that.
    virtual void keepOutOfLists(QWidget &window) = 0;
    /// Shows the window above the others and gives it the keyboard. `token` is the right to do so that whoever asked
    /// for it handed over, empty where there is none.
    virtual void activate(QWidget &window, const QString &token) = 0;
    /// Whether the window is to be seen and has the keyboard.
    [[nodiscard]] virtual bool isActive(const QWidget &window) const = 0;
    /// Calls `action` whenever the window loses the keyboard, as soon as that can be known. For one window at a time.
    virtual void whenLeft(QWidget &window, std::function<void()> action) = 0;
};

} // namespace kelp
