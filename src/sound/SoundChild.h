#pragma once

#include "sound/ChildProtocol.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>

class QProcess;

namespace kelp {

class Clock;

/// One run of kelp-sound. The process is killed when this object goes, and ends by itself when Kelp does.
class SoundChild final : public QObject
{
    Q_OBJECT

public:
    /// Seconds after which the process counts as hanging and is killed.
    struct Patience
    {
        double untilReport = 10; ///< an old disk takes some seconds to read all plugins for the first time
        double afterReport = 0;  ///< 0 = for ever
    };

    /// `input` is the file that the process gets as its standard input; empty for none. Nothing is signalled before
    /// this returns.
    SoundChild(Clock &clock, const QString &program, QStringList arguments, const QString &input, Patience patience,
               QObject *parent = nullptr);
    ~SoundChild() override;

    /// Whether it has told that it is ready.
    [[nodiscard]] bool isReady() const { return m_isReady; }

Q_SIGNALS:
    void ready();
    /// Nothing where it crashed, hung or never started. The last signal.
    void ended(std::optional<kelp::ChildStatus> status);

private:
    void read();
    void limit(double seconds);
    void finish(std::optional<ChildStatus> status);

    Clock &m_clock;
    Patience m_patience;
    QProcess *m_process;
    QByteArray m_output;
    bool m_isReady = false;
    std::unique_ptr<QObject> m_limit;
};

} // namespace kelp
