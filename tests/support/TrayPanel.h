#pragma once

#include "support/PrivateDesktop.h"

#include <QProcess>

namespace kelp::test {

/// The panel of a real desktop along the top of a private one's first monitor, with nothing but a tray. It ends with
/// this object.
class TrayPanel
{
public:
    static constexpr int height = 28; ///< and as wide is an item

    explicit TrayPanel(PrivateDesktop &desktop) : m_desktop(desktop) {}
    ~TrayPanel();
    TrayPanel(const TrayPanel &) = delete;
    TrayPanel &operator=(const TrayPanel &) = delete;

    [[nodiscard]] bool start(bool isDark = false);
    [[nodiscard]] bool end();
    /// SIGKILL.
    [[nodiscard]] bool crash();

    /// The middle of the first item, which may not be there yet.
    [[nodiscard]] static QPoint item() { return {height / 2, height / 2}; }
    /// What is on the screen where it is.
    [[nodiscard]] QImage picture();
    /// How many pixels of such a picture are not like the panel, of which the corner has nothing else.
    [[nodiscard]] static int inkOf(const QImage &picture);
    /// The picture once an item is there and at rest; null if that does not happen.
    [[nodiscard]] QImage settled();

private:
    PrivateDesktop &m_desktop;
    QProcess m_process;
};

} // namespace kelp::test
