#include "shell/RecentLoss.h"

#include "base/Clock.h"

namespace kelp {

RecentLoss::RecentLoss(Clock &clock, QObject *parent) : QObject(parent), m_clock(clock) {}

void RecentLoss::note()
{
    ++m_remembered;
    m_clock.after(memory, this, [this] { --m_remembered; });
}

} // namespace kelp
