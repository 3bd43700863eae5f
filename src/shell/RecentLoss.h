#pragma once

#include <QObject>

namespace kelp {

class Clock;

/// Remembers for a moment that a window has lost the keyboard. A click in the tray may take it before the click itself
/// arrives; to the user, the window still had it.
class RecentLoss : public QObject
{
    Q_OBJECT

public:
    static constexpr double memory = 0.3; ///< seconds

    explicit RecentLoss(Clock &clock, QObject *parent = nullptr);

    void note();
    [[nodiscard]] bool isRecent() const { return m_remembered > 0; }

private:
    Clock &m_clock;
    int m_remembered = 0; ///< losses that are not forgotten yet
};

} // namespace kelp
