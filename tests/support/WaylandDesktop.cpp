#include "support/WaylandDesktop.h"

#include "support/ChildProcess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QThread>

#include <csignal>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int patience = 20'000; // ms
constexpr uid_t nobody = 65534;
const QSize outputSize(1280, 720);

const QByteArray configuration = R"(output * pos 0 0 res 1280x720
xwayland disable
default_border none
)";

std::optional<QJsonObject> findWindow(const QJsonObject &node, qint64 pid)
{
    if (node.value("pid"_L1).toInteger() == pid && node.value("visible"_L1).toBool())
        return node;
    for (const auto children : {"nodes"_L1, "floating_nodes"_L1}) {
        const QJsonArray list = node.value(children).toArray();
        for (const QJsonValue &each : list) {
            if (const auto found = findWindow(each.toObject(), pid))
                return found;
        }
    }
    return {};
}

} // namespace

WaylandDesktop::~WaylandDesktop()
{
    for (QProcess *each : {&m_pointer, &m_keyboard, &m_compositor})
        end(*each);
}

bool WaylandDesktop::start()
{
    m_environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[variable, name] : {std::pair(u"HOME"_s, u"home"_s),
                                         {u"XDG_CONFIG_HOME"_s, u"home/.config"_s},
                                         {u"XDG_DATA_HOME"_s, u"home/.local/share"_s},
                                         {u"XDG_CACHE_HOME"_s, u"home/.cache"_s},
                                         {u"XDG_RUNTIME_DIR"_s, u"run"_s}}) {
        QDir().mkpath(folder(name));
        m_environment.insert(variable, folder(name));
    }
    QFile::setPermissions(folder(u"run"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_environment.remove(u"DISPLAY"_s);
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"wayland"_s);
    m_environment.insert(u"GDK_BACKEND"_s, u"wayland"_s);
    m_environment.insert(u"QT_LOGGING_RULES"_s, u"kelp.*=true"_s);
    m_environment.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    m_environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
    if (!m_bus.start(m_environment)) {
        m_problem = u"dbus-daemon does not start"_s;
        return false;
    }
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_bus.address());
    if (!startCompositor())
        return false;
    // The seat has a keyboard for as long as somebody types, and a pointer for as long as somebody points.
    const QString pointer = qEnvironmentVariable("KELP_BINARY_DIR") + u"/tests/virtual-pointer"_s;
    m_pointer.setProcessEnvironment(m_environment);
    endWithTest(m_pointer);
    m_pointer.start(pointer, {QString::number(outputSize.width()), QString::number(outputSize.height())});
    if (!launch(m_keyboard, u"wtype"_s, {u"-s"_s, u"600000"_s}) || !m_pointer.waitForStarted(patience)) {
        m_problem = u"there is no keyboard or no pointer"_s;
        return false;
    }
    return true;
}

/// It refuses to run as root; its clients may.
bool WaylandDesktop::startCompositor()
{
    const QString place = folder(u"compositor"_s);
    QDir().mkpath(place);
    QFile file(place + u"/config"_s);
    if (!file.open(QIODevice::WriteOnly) || file.write(configuration) < 0)
        return false;
    file.close();
    QProcessEnvironment environment = m_environment;
    environment.insert(u"HOME"_s, place);
    environment.insert(u"XDG_RUNTIME_DIR"_s, place);
    environment.insert(u"WLR_BACKENDS"_s, u"headless"_s);
    environment.insert(u"WLR_LIBINPUT_NO_DEVICES"_s, u"1"_s);
    environment.insert(u"WLR_RENDERER"_s, u"pixman"_s);
    environment.insert(u"WLR_HEADLESS_OUTPUTS"_s, u"1"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    m_compositor.setProcessEnvironment(environment);
    const bool isRoot = ::getuid() == 0;
    if (isRoot) {
        ::chmod(QFile::encodeName(m_home.path()).constData(), 0755);
        if (::chown(QFile::encodeName(place).constData(), nobody, nobody) != 0)
            return false;
    }
    ::chmod(QFile::encodeName(place).constData(), 0700);
    m_compositor.setChildProcessModifier([isRoot] {
        if (isRoot && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
            ::_exit(1);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
    m_compositor.setStandardOutputFile(QProcess::nullDevice());
    m_compositor.setStandardErrorFile(folder(u"compositor.log"_s));
    m_compositor.start(u"sway"_s, {u"-c"_s, place + u"/config"_s});
    const QDeadlineTimer deadline(patience);
    while (!deadline.hasExpired() && m_compositor.state() != QProcess::NotRunning) {
        const QStringList sockets = QDir(place).entryList({u"wayland-*"_s, u"sway-ipc*"_s}, QDir::System);
        const QStringList displays = sockets.filter(QRegularExpression(u"^wayland-\\d+$"_s));
        const QStringList controls = sockets.filter(u"sway-ipc"_s);
        if (!displays.isEmpty() && !controls.isEmpty()) {
            m_environment.insert(u"WAYLAND_DISPLAY"_s, place + u'/' + displays.first());
            m_environment.insert(u"SWAYSOCK"_s, place + u'/' + controls.first());
            if (!run(u"swaymsg"_s, {u"-t"_s, u"get_outputs"_s}).isEmpty())
                return true;
        }
        QThread::msleep(20); // between two looks at a condition
    }
    m_problem = u"sway does not start: "_s + m_compositor.errorString();
    return false;
}

bool WaylandDesktop::write(const QString &name, const QByteArray &content) const
{
    QDir().mkpath(QFileInfo(folder(name)).path());
    QFile file(folder(name));
    return file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
           file.write(content) == content.size();
}

bool WaylandDesktop::launch(QProcess &client, const QString &program, const QStringList &arguments) const
{
    endWithTest(client);
    client.setProcessEnvironment(m_environment);
    client.setStandardErrorFile(QProcess::nullDevice());
    client.setStandardOutputFile(QProcess::nullDevice());
    client.start(program, arguments);
    return client.waitForStarted(patience);
}

QByteArray WaylandDesktop::run(const QString &program, const QStringList &arguments) const
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.start(program, arguments);
    if (!process.waitForFinished(patience))
        process.kill();
    return process.readAllStandardOutput();
}

void WaylandDesktop::point(const QPoint &at)
{
    tellPointer("move " + QByteArray::number(at.x()) + ' ' + QByteArray::number(at.y()));
}

void WaylandDesktop::click()
{
    tellPointer("click");
}

void WaylandDesktop::crash()
{
    m_compositor.kill();
    m_compositor.waitForFinished(patience);
}

void WaylandDesktop::tellPointer(const QByteArray &line)
{
    m_pointer.write(line + '\n');
    if (nextLine(m_pointer) != "done")
        m_problem = u"the pointer has gone"_s;
}

QImage WaylandDesktop::picture(const QRect &area) const
{
    const QString geometry = u"%1,%2 %3x%4"_s.arg(area.x()).arg(area.y()).arg(area.width()).arg(area.height());
    return QImage::fromData(run(u"grim"_s, {u"-g"_s, geometry, u"-"_s}), "PNG").convertToFormat(QImage::Format_RGB32);
}

std::optional<QJsonObject> WaylandDesktop::window(qint64 pid) const
{
    return findWindow(QJsonDocument::fromJson(run(u"swaymsg"_s, {u"-t"_s, u"get_tree"_s})).object(), pid);
}

} // namespace kelp::test
