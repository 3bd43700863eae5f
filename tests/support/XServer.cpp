#include "support/XServer.h"

#include <QColor>
#include <QDeadlineTimer>
#include <QFile>
#include <QRect>
#include <QThread>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <unistd.h>
#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

template<typename T>
using Reply = std::unique_ptr<T, void (*)(void *)>;

constexpr int patience = 20'000; // milliseconds; the machine may be busy

/// Modes of the usual sizes are added by the server; the pictures fit into the memory.
constexpr auto dummyConfiguration = R"(
Section "Device"
  Identifier "card"
  Driver "dummy"
  VideoRam 256000
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5-1000
  VertRefresh 5-200
EndSection
Section "Screen"
  Identifier "screen"
  Device "card"
  Monitor "monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Virtual 3840 2160
  EndSubSection
EndSection
Section "ServerFlags"
  Option "AutoAddDevices" "false"
  Option "AutoEnableDevices" "false"
EndSection
)";

QSize bounding(const QList<QSize> &monitors)
{
    QSize size(0, 0);
    for (const QSize &each : monitors)
        size = {size.width() + each.width(), std::max(size.height(), each.height())};
    return size;
}

/// The number that the server writes to the pipe once it listens.
QByteArray readLine(int descriptor)
{
    QByteArray line;
    char each = 0;
    while (read(descriptor, &each, 1) == 1 && each != '\n')
        line.append(each);
    return line;
}

} // namespace

void XServer::Disconnect::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

XServer::XServer(QList<QSize> monitors, Kind kind) : m_monitors(std::move(monitors)), m_kind(kind) {}

XServer::~XServer()
{
    m_connection.reset();
    end(m_windowManager);
    end(m_server);
}

bool XServer::start(const QString &windowManager)
{
    if (!startServer())
        return false;
    qputenv("DISPLAY", m_display.toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    addMonitors();
    return startWindowManager(windowManager);
}

bool XServer::startServer()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return false;
    const QStringList command = serverCommand();
    m_server.setStandardOutputFile(QProcess::nullDevice());
    m_server.setStandardErrorFile(QProcess::nullDevice());
    m_server.setChildProcessModifier([writing = ends[1]] { fcntl(writing, F_SETFD, 0); });
    m_server.start(command.constFirst(), command.sliced(1) + QStringList{u"-displayfd"_s, QString::number(ends[1]),
                                                                         u"-noreset"_s, u"-nolisten"_s, u"tcp"_s});
    const bool started = m_server.waitForStarted(patience);
    close(ends[1]); // or the pipe would not end where the server does
    const QByteArray number = started ? readLine(ends[0]) : QByteArray();
    close(ends[0]);
    m_display = u":"_s + QString::fromLatin1(number);
    if (number.isEmpty())
        m_problem = command.constFirst() + u" does not start: "_s + m_server.errorString();
    return !number.isEmpty();
}

QStringList XServer::serverCommand()
{
    const QSize size = bounding(m_monitors);
    if (m_kind == Kind::Virtual)
        return {u"Xvfb"_s, u"-screen"_s, u"0"_s, u"%1x%2x24"_s.arg(size.width()).arg(size.height())};
    const QString configuration = m_folder.filePath(u"xorg.conf"_s);
    QFile file(configuration);
    if (!file.open(QIODevice::WriteOnly) || file.write(dummyConfiguration) < 0)
        m_problem = u"the configuration of Xorg cannot be written"_s;
    // No virtual terminal, which a container has not.
    return {u"Xorg"_s,      u"-config"_s,  configuration,    u"-logfile"_s,
            u"/dev/null"_s, u"-keeptty"_s, u"-novtswitch"_s, u"-sharevts"_s};
}

void XServer::setMonitor(int number, const QRect &place)
{
    const QString output = u"DUMMY%1"_s.arg(number);
    const QString mode = u"%1x%2"_s.arg(place.width()).arg(place.height());
    run(u"xrandr"_s, {u"--addmode"_s, output, mode});
    run(u"xrandr"_s, {u"--output"_s, output, u"--mode"_s, mode, u"--pos"_s, u"%1x%2"_s.arg(place.x()).arg(place.y())});
}

void XServer::unplug(int number)
{
    run(u"xrandr"_s, {u"--output"_s, u"DUMMY%1"_s.arg(number), u"--off"_s});
}

void XServer::arrange(const QList<QRect> &places)
{
    QStringList arguments;
    for (int number = 0; number < places.size(); ++number) {
        const QRect &place = places.at(number);
        arguments += {u"--output"_s, u"DUMMY%1"_s.arg(number)};
        if (place.isEmpty())
            arguments += u"--off"_s;
        else
            arguments += {u"--mode"_s, u"%1x%2"_s.arg(place.width()).arg(place.height()), u"--pos"_s,
                          u"%1x%2"_s.arg(place.x()).arg(place.y())};
    }
    run(u"xrandr"_s, arguments);
}

void XServer::addMonitors()
{
    if (m_kind == Kind::Pluggable) {
        int left = 0;
        for (int number = 0; number < m_monitors.size(); ++number) {
            setMonitor(number, QRect(QPoint(left, 0), m_monitors.at(number)));
            left += m_monitors.at(number).width();
        }
        return;
    }
    int x = 0;
    for (const QSize &each : m_monitors) {
        const QString geometry = u"%1/300x%2/200+%3+0"_s.arg(each.width()).arg(each.height()).arg(x);
        run(u"xrandr"_s, {u"--setmonitor"_s, u"M%1"_s.arg(x), geometry, x == 0 ? u"screen"_s : u"none"_s});
        x += each.width();
    }
}

bool XServer::startWindowManager(const QString &program)
{
    QStringList command = QProcess::splitCommand(program);
    const QString name = command.takeFirst();
    if (!launch(m_windowManager, name, command)) {
        m_problem = program + u" does not start: "_s + m_windowManager.errorString();
        return false;
    }
    if (managesWindows())
        return true;
    m_problem = program + u" does not manage windows"_s;
    return false;
}

/// Window managers say that they are there long before they look at windows, so one is put on trial: a window that does
/// not want the keyboard.
bool XServer::managesWindows()
{
    const QDeadlineTimer deadline(patience);
    const auto comes = [&](const auto &condition) {
        while (!condition() && !deadline.hasExpired())
            QThread::msleep(20); // between two looks
        return !deadline.hasExpired();
    };
    const auto isThere = [this] {
        return run(u"xprop"_s, {u"-root"_s, u"_NET_SUPPORTING_WM_CHECK"_s}).contains("window id"_L1);
    };
    if (!comes(isThere))
        return false;
    const xcb_window_t trial = xcb_generate_id(connection());
    xcb_create_window(connection(), XCB_COPY_FROM_PARENT, trial, root(), 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const std::array<quint32, 9> hints{1, 0}; // "input" is given, and false
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, trial, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, 32,
                        hints.size(), hints.data());
    xcb_map_window(connection(), trial);
    const auto isManaged = [&] {
        // openbox waits for the next event where the first ones arrive while it starts: here is one.
        xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, root(), atom("KELP_TRIAL"), XCB_ATOM_CARDINAL, 32, 1,
                            &trial);
        const auto cookie = xcb_get_property(connection(), 0, trial, atom("WM_STATE"), XCB_ATOM_ANY, 0, 2);
        const Reply<xcb_get_property_reply_t> state(xcb_get_property_reply(connection(), cookie, nullptr), std::free);
        return state && state->type != XCB_ATOM_NONE;
    };
    const bool manages = comes(isManaged);
    xcb_destroy_window(connection(), trial);
    xcb_flush(connection());
    return manages;
}

QProcessEnvironment XServer::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, m_display);
    return environment;
}

QString XServer::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(program, arguments);
    if (!process.waitForFinished(patience))
        process.kill();
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

bool XServer::launch(QProcess &client, const QString &program, const QStringList &arguments, Output output)
{
    if (client.processEnvironment().isEmpty())
        client.setProcessEnvironment(environment());
    if (output == Output::Ignored)
        client.setStandardOutputFile(QProcess::nullDevice());
    client.setStandardErrorFile(QProcess::nullDevice());
    client.start(program, arguments);
    return client.waitForStarted(patience);
}

QColor XServer::pixel(int x, int y)
{
    const QImage image = picture(QRect(x, y, 1, 1));
    return image.isNull() ? QColor() : image.pixelColor(0, 0);
}

QImage XServer::picture(const QRect &area)
{
    const auto cookie =
        xcb_get_image(connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, root(), static_cast<std::int16_t>(area.x()),
                      static_cast<std::int16_t>(area.y()), static_cast<std::uint16_t>(area.width()),
                      static_cast<std::uint16_t>(area.height()), ~0U);
    const Reply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection(), cookie, nullptr), std::free);
    if (!reply || xcb_get_image_data_length(reply.get()) < 4 * area.width() * area.height())
        return {};
    // Blue, green, red and nothing, in lines of whole pixels.
    return QImage(xcb_get_image_data(reply.get()), area.width(), area.height(), QImage::Format_RGB32).copy();
}

QImage XServer::picture()
{
    const Reply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), root()), nullptr), std::free);
    if (!size)
        return {};
    const auto cookie =
        xcb_get_image(connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, root(), 0, 0, size->width, size->height, ~0U);
    const Reply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection(), cookie, nullptr), std::free);
    if (!reply)
        return {};
    return QImage(xcb_get_image_data(reply.get()), size->width, size->height, size->width * 4, QImage::Format_RGB32)
        .copy();
}

quint32 XServer::focused()
{
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection(), xcb_get_input_focus(connection()), nullptr), std::free);
    return reply ? reply->focus : quint32{XCB_NONE};
}

xcb_connection_t *XServer::connection()
{
    if (!m_connection)
        m_connection.reset(xcb_connect(m_display.toLatin1().constData(), nullptr));
    return m_connection.get();
}

quint32 XServer::root()
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root;
}

quint32 XServer::atom(const char *name)
{
    const auto cookie = xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection(), cookie, nullptr), std::free);
    return reply ? reply->atom : quint32{XCB_ATOM_NONE};
}

QList<quint32> XServer::windows()
{
    const Reply<xcb_query_tree_reply_t> reply(
        xcb_query_tree_reply(connection(), xcb_query_tree(connection(), root()), nullptr), std::free);
    QList<quint32> windows;
    const xcb_window_t *children = reply ? xcb_query_tree_children(reply.get()) : nullptr;
    for (int i = 0; children && i < xcb_query_tree_children_length(reply.get()); ++i)
        windows.append(children[i]);
    std::sort(windows.begin(), windows.end()); // numbers are given out in order
    return windows;
}

void XServer::askToClose(quint32 window)
{
    xcb_client_message_event_t request{};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = window;
    request.type = atom("WM_PROTOCOLS");
    request.data.data32[0] = atom("WM_DELETE_WINDOW");
    xcb_send_event(connection(), 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&request));
    xcb_flush(connection());
}

void XServer::end(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished();
    }
}

} // namespace kelp
