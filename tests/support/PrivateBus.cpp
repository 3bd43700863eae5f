#include "support/PrivateBus.h"

#include "support/ChildProcess.h"

using namespace Qt::StringLiterals;

namespace kelp::test {

PrivateBus::~PrivateBus()
{
    if (!m_connectionName.isEmpty())
        QDBusConnection::disconnectFromBus(m_connectionName);
    end(m_process);
}

bool PrivateBus::start(const QProcessEnvironment &environment)
{
    endWithTest(m_process);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s, u"--print-address"_s});
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

} // namespace kelp::test
