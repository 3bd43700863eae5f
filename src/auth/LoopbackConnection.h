#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

#include <functional>

namespace kelp {

class Clock;

/// One browser connection: a single read, a single answer, then closed. Works on the bare socket because a QTcpSocket
/// is gone the moment its client has finished sending, before it can be answered.
///
/// Deletes itself once it is closed; it needs no owner, so that the page still reaches its reader when the sign-in is
/// over.
class LoopbackConnection : public QObject
{
    Q_OBJECT

public:
    using Answer = std::function<QByteArray(const QByteArray &request)>;

    static constexpr qint64 largestRequest = 65536; ///< bytes that are looked at
    static constexpr double lingering = 5;          ///< seconds that a client has to take its page

    /// Takes over the connected socket `descriptor`.
    LoopbackConnection(int descriptor, Clock &clock, QObject *parent);
    ~LoopbackConnection() override;

    /// What turns the request's bytes into the whole response; called at most once.
    void setAnswer(Answer answer) { m_answer = std::move(answer); }
    /// Whether the client has not sent anything yet.
    [[nodiscard]] bool isSilent() const { return !m_answered; }

private:
    void read();
    void write();

    Clock &m_clock;
    int m_descriptor;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    Answer m_answer;
    bool m_answered = false;
    QByteArray m_unsent;
};

} // namespace kelp
