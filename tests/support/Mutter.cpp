#include "support/Mutter.h"

#include "support/ChildProcess.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int patience = 20'000; // milliseconds; the machine may be busy
const QString socket = u"wayland-kelp"_s;

QDBusMessage remoteCall(const QString &path, const QString &interface, const QString &method)
{
    return QDBusMessage::createMethodCall(u"org.gnome.Mutter.RemoteDesktop"_s, path,
                                          u"org.gnome.Mutter.RemoteDesktop"_s + interface, method);
}

} // namespace

Mutter::~Mutter()
{
    end(m_compositor);
}

bool Mutter::start()
{
    m_environment = QProcessEnvironment::systemEnvironment();
    for (const QString &variable :
         {u"HOME"_s, u"XDG_CONFIG_HOME"_s, u"XDG_DATA_HOME"_s, u"XDG_CACHE_HOME"_s, u"XDG_RUNTIME_DIR"_s})
        m_environment.insert(variable, m_folder.path());
    m_environment.remove(u"DISPLAY"_s);
    m_environment.remove(u"WAYLAND_DISPLAY"_s);
    m_environment.insert(u"GSETTINGS_BACKEND"_s, u"memory"_s);
    m_environment.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    m_environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
    if (!m_bus.start(m_environment)) {
        m_problem = u"dbus-daemon does not start"_s;
        return false;
    }
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_bus.address());
    if (!startCompositor()) {
        m_problem = u"mutter does not start: "_s + m_compositor.errorString();
        return false;
    }
    const QString display = m_folder.filePath(socket);
    m_environment.insert(u"WAYLAND_DISPLAY"_s, display);
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"wayland"_s);
    qputenv("WAYLAND_DISPLAY", display.toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "wayland");
    qunsetenv("DISPLAY");
    return true;
}

bool Mutter::startCompositor()
{
    const QString output = u"%1x%2"_s.arg(outputSize.width()).arg(outputSize.height());
    endWithTest(m_compositor);
    m_compositor.setProcessEnvironment(m_environment);
    m_compositor.setStandardOutputFile(QProcess::nullDevice());
    m_compositor.setStandardErrorFile(QProcess::nullDevice());
    m_compositor.start(u"mutter"_s, {u"--headless"_s, u"--wayland"_s, u"--no-x11"_s, u"--wayland-display"_s, socket,
                                     u"--virtual-monitor"_s, output, u"--virtual-monitor"_s, output});
    const QDeadlineTimer deadline(patience);
    while (!QFileInfo::exists(m_folder.filePath(socket))) {
        if (deadline.hasExpired() || m_compositor.waitForFinished(20)) // between two looks at a condition
            return false;
    }
    return true;
}

bool Mutter::plugInKeyboard()
{
    const QString service = u"/org/gnome/Mutter/RemoteDesktop"_s;
    QDBusConnection bus = m_bus.connection();
    const QDeadlineTimer deadline(patience);
    QDBusReply<QDBusObjectPath> session;
    do
        session = bus.call(remoteCall(service, {}, u"CreateSession"_s));
    while (!session.isValid() && !deadline.hasExpired());
    m_remote = session.value().path();
    return session.isValid() &&
           bus.call(remoteCall(m_remote, u".Session"_s, u"Start"_s)).type() == QDBusMessage::ReplyMessage;
}

bool Mutter::key(quint32 symbol)
{
    for (const bool isPressed : {true, false}) {
        QDBusMessage call = remoteCall(m_remote, u".Session"_s, u"NotifyKeyboardKeysym"_s);
        call << symbol << isPressed;
        if (m_bus.connection().call(call).type() != QDBusMessage::ReplyMessage)
            return false;
    }
    return true;
}

QByteArray Mutter::askDisplays(const QStringList &arguments)
{
    const QString name = u"org.gnome.Mutter.DisplayConfig"_s;
    QProcess process;
    QEventLoop loop; // this process goes on painting
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    QStringList all{u"call"_s,          u"--session"_s,
                    u"--dest"_s,        name,
                    u"--object-path"_s, u"/org/gnome/Mutter/DisplayConfig"_s,
                    u"--method"_s,      name + u'.' + arguments.first()};
    if (!launch(process, u"gdbus"_s, all + arguments.sliced(1)))
        return {};
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    return process.readAllStandardOutput();
}

bool Mutter::useOutputs(int count)
{
    const QString state = QString::fromUtf8(askDisplays({u"GetCurrentState"_s}));
    const QString serial = QRegularExpression(u"uint32 (\\d+)"_s).match(state).captured(1);
    const QString mode = QRegularExpression(u"'(\\d+x\\d+@[\\d.]+)'"_s).match(state).captured(1);
    QStringList outputs;
    for (int number = 0; number < count; ++number)
        outputs.append(u"(%1, 0, 1.0, uint32 0, %2, [('Meta-%3', '%4', @a{sv} {})])"_s.arg(number * outputSize.width())
                           .arg(number == 0 ? u"true"_s : u"false"_s)
                           .arg(number)
                           .arg(mode));
    return askDisplays({u"ApplyMonitorsConfig"_s, serial, u"1"_s, u'[' + outputs.join(u',') + u']', u"@a{sv} {}"_s})
        .startsWith("()");
}

bool Mutter::launch(QProcess &client, const QString &program, const QStringList &arguments)
{
    endWithTest(client);
    client.setProcessEnvironment(m_environment);
    client.setStandardErrorFile(QProcess::nullDevice());
    client.start(program, arguments);
    return client.waitForStarted(patience);
}

} // namespace kelp::test
