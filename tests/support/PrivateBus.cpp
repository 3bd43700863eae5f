#include "support/PrivateBus.h"

#include "support/ChildProcess.h"

using namespace Qt::StringLiterals;

namespace kelp::test {

PrivateBus::~PrivateBus()
{
    if (!m_connectionName.isEmpty())
        QDBusConnection::disconnectFromBus(m_connectionName);
    stop();
}

/// Writes the configuration: a session's bus that lets in nobody, too, and not only whose rights it has.
bool PrivateBus::configure()
{
    return m_configuration.open() &&
           m_configuration.write("<busconfig><include>/usr/share/dbus-1/session.conf</include>"
                                 "<policy context=\"mandatory\"><allow user=\"nobody\"/></policy></busconfig>") > 0 &&
           m_configuration.flush();
}

bool PrivateBus::start(const QProcessEnvironment &environment)
{
    if (!configure())
        return false;
    endWithTest(m_process);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(u"dbus-daemon"_s, {u"--config-file="_s + m_configuration.fileName(), u"--nofork"_s,
                                       u"--nopidfile"_s, u"--print-address"_s});
    m_address = QString::fromUtf8(nextLine(m_process));
    return !m_address.isEmpty();
}

QDBusConnection PrivateBus::connection()
{
    if (m_connectionName.isEmpty()) {
        m_connectionName = u"test of "_s + m_address;
        return QDBusConnection::connectToBus(m_address, m_connectionName);
    }
    return QDBusConnection(m_connectionName);
}

void PrivateBus::stop()
{
    end(m_process);
}

} // namespace kelp::test
