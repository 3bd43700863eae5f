#include "support/EventLoopWatch.h"

#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int interval = 1; // ms

/// Nanoseconds for which this thread has waited for a processor so far; see proc(5).
qint64 waitedForProcessor()
{
    QFile file(u"/proc/thread-self/schedstat"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toLongLong();
}

} // namespace

EventLoopWatch::EventLoopWatch() : m_waited(waitedForProcessor())
{
    m_timer.start(interval, Qt::PreciseTimer, this);
    m_sinceTurn.start();
}

double EventLoopWatch::longestGap() const
{
    return static_cast<double>(std::max(m_longest, sinceTurn(waitedForProcessor()))) / 1e6;
}

void EventLoopWatch::timerEvent(QTimerEvent *)
{
    const qint64 waited = waitedForProcessor();
    m_longest = std::max(m_longest, sinceTurn(waited));
    m_waited = waited;
    m_sinceTurn.start();
    ++m_turns;
}

qint64 EventLoopWatch::sinceTurn(qint64 waited) const
{
    return m_sinceTurn.nsecsElapsed() - (waited - m_waited);
}

} // namespace kelp::test
