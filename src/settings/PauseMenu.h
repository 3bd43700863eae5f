#pragma once

#include <QMenu>

namespace kelp {

class Clock;
class Scheduler;

/// For how long reminders are paused.
class PauseMenu final : public QMenu
{
    Q_OBJECT

public:
    PauseMenu(Scheduler &scheduler, Clock &clock, QWidget *parent = nullptr);

private:
    void fill();

    Scheduler &m_scheduler;
    Clock &m_clock;
};

} // namespace kelp
