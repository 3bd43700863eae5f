#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

#if defined(__SANITIZE_ADDRESS__)
#define KELP_SANITIZED 1
#elif defined(__has_feature)
#define KELP_SANITIZED __has_feature(address_sanitizer)
#else
#define KELP_SANITIZED 0
#endif

namespace kelp::test {

/// Measures how long this thread's event loop is kept from turning. Time in which the thread was ready to run but the
/// computer was busy with others does not count.
class EventLoopWatch final : public QObject
{
public:
    EventLoopWatch();

    /// Milliseconds that a user notices. A sanitizer makes everything take several times as long, and now and then
    /// looks after its memory in between.
    static constexpr double noticeable = KELP_SANITIZED ? 500 : 50;

    /// The longest gap so far, the present one included, in milliseconds.
    [[nodiscard]] double longestGap() const;
    /// How often the loop has turned.
    [[nodiscard]] int turns() const { return m_turns; }

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    [[nodiscard]] qint64 sinceTurn(qint64 waited) const;

    QBasicTimer m_timer;
    QElapsedTimer m_sinceTurn;
    qint64 m_longest = 0; ///< nanoseconds
    qint64 m_waited = 0;  ///< nanoseconds, up to the last turn
    int m_turns = 0;
};

} // namespace kelp::test
