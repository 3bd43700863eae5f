#pragma once

#include <QObject>

namespace kelp {

/// What happens to the computer that is of interest to a reminder.
class SystemEvents : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    /// It has woken from sleep.
    void wokeUp();
    /// It can reach the network again.
    void networkReturned();
};

} // namespace kelp
