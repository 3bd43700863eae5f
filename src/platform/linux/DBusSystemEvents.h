#pragma once

#include "platform/SystemEvents.h"

namespace kelp {

/// SystemEvents from the system bus: org.freedesktop.login1 tells of sleep, org.freedesktop.NetworkManager of the
/// network. Where a service or the bus is missing, its events do not come.
class DBusSystemEvents final : public SystemEvents
{
    Q_OBJECT

public:
    explicit DBusSystemEvents(QObject *parent = nullptr);

private Q_SLOTS:
    void onPrepareForSleep(bool goingDown);
    void onNetworkState(uint state);

private:
    bool m_hasNetwork = true;
};

} // namespace kelp
