#pragma once

#include <QWidget>

namespace kelp {

class Clock;
class Scheduler;

/// The panel's title and what can be done at any time: refresh, pause, quit.
class PanelHeader final : public QWidget
{
    Q_OBJECT

public:
    PanelHeader(Scheduler &scheduler, Clock &clock, QWidget *parent = nullptr);
};

} // namespace kelp
