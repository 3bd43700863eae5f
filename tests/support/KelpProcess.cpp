#include "support/KelpProcess.h"

#include "support/ChildProcess.h"
#include "support/Sandbox.h"

#include <QCoreApplication>
#include <QRect>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int patience = 20'000; // ms

QString program()
{
    const QString folder = qEnvironmentVariable("KELP_BINARY_DIR", QCoreApplication::applicationDirPath() + u"/.."_s);
    return folder + u"/kelp"_s;
}

} // namespace

KelpProcess::KelpProcess(PrivateDesktop &desktop) : m_desktop(desktop), m_environment(desktop.environment()) {}

KelpProcess::~KelpProcess()
{
    end(m_process);
    if (qEnvironmentVariableIsSet("KELP_TEST_VERBOSE"))
        qInfo().noquote() << output();
}

void KelpProcess::use(const Sandbox &sandbox)
{
    const QHash<QString, QString> variables = sandbox.environment();
    for (auto each = variables.begin(); each != variables.end(); ++each)
        m_environment.insert(each.key(), each.value());
}

void KelpProcess::set(const QString &variable, const QString &value)
{
    if (value.isNull())
        m_environment.remove(variable);
    else
        m_environment.insert(variable, value);
}

bool KelpProcess::start()
{
    endWithTest(m_process);
    m_process.setProcessEnvironment(m_environment);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(program(), {});
    return m_process.waitForStarted(patience);
}

int KelpProcess::exitStatus()
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(patience))
        return -1;
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

void KelpProcess::terminate()
{
    end(m_process);
}

void KelpProcess::killHard()
{
    m_process.kill();
    m_process.waitForFinished(patience);
}

QByteArray KelpProcess::output()
{
    m_output += m_process.readAll();
    return m_output;
}

QList<QRect> KelpProcess::windows() const
{
    if (!isRunning())
        return {};
    const QString text = m_desktop.display().run(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--all"_s, u"--pid"_s,
                                                                QString::number(pid()), u"--class"_s, u".*"_s,
                                                                u"getwindowgeometry"_s, u"--shell"_s, u"%@"_s});
    static const QRegularExpression window(u"X=(-?\\d+)\nY=(-?\\d+)\nWIDTH=(\\d+)\nHEIGHT=(\\d+)"_s);
    QList<QRect> result;
    for (auto each = window.globalMatch(text); each.hasNext();) {
        const QRegularExpressionMatch match = each.next();
        result.append({match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt(),
                       match.captured(4).toInt()});
    }
    std::sort(result.begin(), result.end(), [](const QRect &a, const QRect &b) { return a.x() < b.x(); });
    return result;
}

bool KelpProcess::coversBothMonitors() const
{
    return windows() == PrivateDesktop::monitors();
}

bool KelpProcess::coversAny() const
{
    const QList<QRect> shown = windows();
    return std::any_of(shown.begin(), shown.end(),
                       [](const QRect &each) { return PrivateDesktop::monitors().contains(each); });
}

bool KelpProcess::panelIsActive() const
{
    // Window managers announce a window as active before it has the keyboard, and still after it has gone.
    const QString owner = m_desktop.display().run(u"xdotool"_s, {u"getwindowfocus"_s, u"getwindowpid"_s});
    return isRunning() && owner.trimmed() == QString::number(pid()) && windows().size() == 1 && !coversAny();
}

} // namespace kelp::test
