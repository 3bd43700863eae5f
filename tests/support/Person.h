#pragma once

#include "support/PrivateDesktop.h"
#include "support/ScreenReader.h"

namespace kelp::test {

/// Someone in front of a private desktop, with a mouse and a keyboard. Where things are comes from the accessibility
/// tree. Whatever returns a bool waits for what it is about, and says in the log what was in vain.
class Person
{
public:
    enum class Towards { Next, Previous };

    Person(PrivateDesktop &desktop, ScreenReader &reader) : m_desktop(desktop), m_reader(reader) {}

    /// Clicks on a control, which the wheel brings into sight where it is scrolled away.
    [[nodiscard]] bool click(const QString &control);
    /// Clicks on an item of the menu or list that is open, likewise.
    [[nodiscard]] bool choose(const QString &item);
    void clickAt(const QPoint &point);
    /// Clicks on the last button of the title bar of the window in front, which closes it.
    [[nodiscard]] bool closeWindow();

    /// Presses these keys (keysyms, as "shift+Tab"), one after the other.
    void press(const QStringList &keys);
    void type(const QString &text);
    /// Presses "/" twice, after the pause that tells it from writing.
    void pressSlashes();
    /// Goes on with Tab, or back, until this control has the focus. Every stop has a name and looks focused.
    [[nodiscard]] bool tabTo(const QString &control, Towards towards = Towards::Next);
    /// Presses an arrow key until this item of the menu or list that is open has the focus.
    [[nodiscard]] bool goTo(const QString &item, const QString &arrow = QStringLiteral("Down"));

    /// Whether a text of exactly these words, or one that begins with them, is or will soon be to be read.
    [[nodiscard]] bool reads(const QString &text);
    [[nodiscard]] bool readsBeginning(const QString &beginning);
    [[nodiscard]] bool noLongerReads(const QString &text);

private:
    /// Where to click; the wheel has been turned until that is in sight and stands still.
    [[nodiscard]] std::optional<QPoint> reach(const QString &name, ScreenReader::Kind kind);
    [[nodiscard]] bool step(const QString &key);
    void turnWheel(const QPoint &at, bool down);

    PrivateDesktop &m_desktop;
    ScreenReader &m_reader;
};

} // namespace kelp::test
