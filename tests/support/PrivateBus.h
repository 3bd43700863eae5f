#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryFile>

#include <sys/types.h>

namespace kelp::test {

/// A D-Bus daemon of the test's own, in the place of the session's or the system's. It ends with this object.
class PrivateBus
{
public:
    PrivateBus() = default;
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    /// `environment` is what services get that the bus starts.
    [[nodiscard]] bool start(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
    void stop();
    [[nodiscard]] pid_t pid() const { return static_cast<pid_t>(m_process.processId()); }
    [[nodiscard]] const QString &address() const { return m_address; }
    /// The test's own connection to it.
    [[nodiscard]] QDBusConnection connection();

private:
    [[nodiscard]] bool configure();

    QProcess m_process;
    QTemporaryFile m_configuration;
    QString m_address;
    QString m_connectionName;
};

} // namespace kelp::test
