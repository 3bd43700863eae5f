#pragma once

#include "support/PrivateDesktop.h"

namespace kelp::test {

class Sandbox;

/// The released application, as a process of its own on a private desktop. It ends with this object.
class KelpProcess
{
public:
    explicit KelpProcess(PrivateDesktop &desktop);
    ~KelpProcess();
    KelpProcess(const KelpProcess &) = delete;
    KelpProcess &operator=(const KelpProcess &) = delete;

    /// Makes it read the calendars of this sandbox. Before it is started.
    void use(const Sandbox &sandbox);
    /// Gives it a variable of the environment; a null string takes it away. Before it is started.
    void set(const QString &variable, const QString &value);

    [[nodiscard]] bool start();
    [[nodiscard]] bool isRunning() const { return m_process.state() == QProcess::Running; }
    [[nodiscard]] qint64 pid() const { return m_process.processId(); }
    /// Its exit status once it has ended; -1 where it still runs after 20 s or was ended by a signal.
    [[nodiscard]] int exitStatus();
    void terminate();
    /// SIGKILL: it has no chance to save anything.
    void killHard();
    /// What it wrote so far, to both outputs.
    [[nodiscard]] QByteArray output();

    /// The windows that it shows, from the left.
    [[nodiscard]] QList<QRect> windows() const;
    [[nodiscard]] bool coversBothMonitors() const;
    [[nodiscard]] bool coversAny() const;
    /// Whether its panel is to be seen and has the keyboard.
    [[nodiscard]] bool panelIsActive() const;

private:
    PrivateDesktop &m_desktop;
    QProcess m_process;
    QProcessEnvironment m_environment;
    QByteArray m_output;
};

} // namespace kelp::test
