#include "support/Sway.h"

#include "support/ChildProcess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QThread>
#include <QTimer>

#include <sys/prctl.h>

#include <csignal>
#include <utility>

#include <grp.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int patience = 20'000; // milliseconds; the machine may be busy
constexpr uid_t nobody = 65534;

void becomeNobody()
{
    if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0))
        _exit(127);
    prctl(PR_SET_PDEATHSIG, SIGKILL); // last: changing the user takes it back
}

/// The one entry of the folder that begins so.
QString entry(const QString &folder, const QString &beginning)
{
    const QStringList found = QDir(folder).entryList({beginning + u'*'}, QDir::System);
    for (const QString &each : found) {
        if (!each.endsWith(".lock"_L1))
            return folder + u'/' + each;
    }
    return {};
}

} // namespace

Sway::Sway() : m_host({outputSize, outputSize}) {}

Sway::~Sway()
{
    end(m_compositor);
}

bool Sway::start()
{
    if (!m_host.startServer()) {
        m_problem = m_host.problem();
        return false;
    }
    // It cannot be asked to close an output where these have no number when it starts.
    m_host.atom("WM_PROTOCOLS");
    m_host.atom("WM_DELETE_WINDOW");
    if (!writeConfiguration()) {
        m_problem = u"the configuration of sway cannot be written"_s;
        return false;
    }
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(u"DISPLAY"_s, m_host.display());
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s); // or one would be started
    m_environment.remove(u"WAYLAND_DISPLAY"_s);
    m_environment.remove(u"SWAYSOCK"_s);
    m_environment.insert(u"HOME"_s, m_folder.path());
    m_environment.insert(u"XDG_CONFIG_HOME"_s, m_folder.path());
    m_environment.insert(u"XDG_CACHE_HOME"_s, m_folder.path());
    m_environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    m_environment.insert(u"WLR_BACKENDS"_s, u"x11"_s);
    m_environment.insert(u"WLR_LIBINPUT_NO_DEVICES"_s, u"1"_s);
    m_environment.insert(u"WLR_RENDERER"_s, u"pixman"_s);
    m_environment.insert(u"WLR_X11_OUTPUTS"_s, QString::number(m_lastOutput));
    m_compositor.setProcessEnvironment(m_environment);
    m_compositor.setStandardOutputFile(QProcess::nullDevice());
    m_compositor.setStandardErrorFile(QProcess::nullDevice());
    m_compositor.setChildProcessModifier(becomeNobody);
    m_compositor.start(u"sway"_s, {u"--config"_s, m_folder.filePath(u"config"_s)});
    const QDeadlineTimer deadline(patience);
    while (entry(m_folder.path(), u"wayland-"_s).isEmpty() || entry(m_folder.path(), u"sway-ipc"_s).isEmpty()) {
        if (deadline.hasExpired() || m_compositor.waitForFinished(20)) { // between two looks at a condition
            m_problem = u"sway does not start: "_s + m_compositor.errorString();
            return false;
        }
    }
    m_environment.insert(u"WAYLAND_DISPLAY"_s, entry(m_folder.path(), u"wayland-"_s));
    m_environment.insert(u"SWAYSOCK"_s, entry(m_folder.path(), u"sway-ipc"_s));
    qputenv("WAYLAND_DISPLAY", m_environment.value(u"WAYLAND_DISPLAY"_s).toLocal8Bit());
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"wayland"_s);
    qputenv("QT_QPA_PLATFORM", "wayland");
    qunsetenv("DISPLAY");
    if (!waitForOutputs(m_lastOutput)) {
        m_problem = u"sway has no outputs"_s;
        return false;
    }
    placeLast();
    return true;
}

bool Sway::writeConfiguration()
{
    QString text = u"focus_follows_mouse no\nxwayland disable\ndefault_border none\n"
                   "output * bg #00ff00 solid_color\n"
                   "bar {\n position top\n colors {\n  background #00ff00\n }\n}\n"_s;
    for (int number = 1; number <= m_lastOutput + 20; ++number) // those that are plugged in later, too
        text += u"output X11-%1 pos %2 0 res %3x%4\n"_s.arg(number)
                    .arg(number == 1 ? 0 : outputSize.width())
                    .arg(outputSize.width())
                    .arg(outputSize.height());
    QFile file(m_folder.filePath(u"config"_s));
    const QByteArray bytes = text.toUtf8();
    const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    file.close();
    const QByteArray folder = QFile::encodeName(m_folder.path());
    return written && (geteuid() != 0 || chown(folder.constData(), nobody, nobody) == 0) &&
           file.setPermissions(QFile::ReadOwner | QFile::ReadOther);
}

bool Sway::launch(QProcess &client, const QString &program, const QStringList &arguments)
{
    endWithTest(client);
    client.setProcessEnvironment(m_environment);
    client.setStandardErrorFile(QProcess::nullDevice());
    client.start(program, arguments);
    return client.waitForStarted(patience);
}

QByteArray Sway::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    if (!launch(process, program, arguments))
        return {};
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    return process.readAllStandardOutput();
}

bool Sway::command(const QString &line)
{
    const QByteArray answer = run(u"swaymsg"_s, {u"--raw"_s, u"--"_s, line});
    return answer.contains("\"success\": true");
}

QJsonDocument Sway::ask(const QString &question)
{
    return QJsonDocument::fromJson(run(u"swaymsg"_s, {u"--raw"_s, u"-t"_s, question}));
}

void Sway::key(const QString &name)
{
    run(u"xdotool"_s, {u"key"_s, name});
}

void Sway::pointTo(const QPoint &place)
{
    run(u"xdotool"_s, {u"mousemove"_s, QString::number(place.x()), QString::number(place.y())});
}

void Sway::click(const QPoint &place)
{
    pointTo(place);
    run(u"xdotool"_s, {u"click"_s, u"1"_s});
}

/// The host has no window manager, so that its windows all lie in one place.
void Sway::placeLast()
{
    const quint32 window = m_host.windows().constLast();
    m_host.run(u"xdotool"_s, {u"windowmove"_s, QString::number(window), QString::number(outputSize.width()), u"0"_s});
}

/// Whether there are that many outputs soon.
bool Sway::waitForOutputs(qsizetype count)
{
    const QDeadlineTimer deadline(patience);
    while (m_host.windows().size() != count) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(5); // between two looks at a condition
    }
    return true;
}

bool Sway::unplugLast()
{
    const QList<quint32> windows = m_host.windows();
    m_host.askToClose(windows.constLast());
    return waitForOutputs(windows.size() - 1);
}

bool Sway::plugIn()
{
    const qsizetype before = m_host.windows().size();
    ++m_lastOutput;
    if (!command(u"create_output"_s) || !waitForOutputs(before + 1))
        return false;
    placeLast();
    return true;
}

QImage Sway::picture()
{
    return QImage::fromData(run(u"grim"_s, {u"-t"_s, u"ppm"_s, u"-"_s}));
}

} // namespace kelp::test
