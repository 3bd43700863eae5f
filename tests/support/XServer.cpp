#include "support/XServer.h"

#include <QColor>
#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>
#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int patience = 20'000; // milliseconds; the machine may be busy

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

XServer::XServer(QList<QSize> monitors) : m_monitors(std::move(monitors)) {}

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
    const QSize size = bounding(m_monitors);
    m_server.setStandardOutputFile(QProcess::nullDevice());
    m_server.setStandardErrorFile(QProcess::nullDevice());
    m_server.setChildProcessModifier([writing = ends[1]] { fcntl(writing, F_SETFD, 0); });
    m_server.start(u"Xvfb"_s, {u"-displayfd"_s, QString::number(ends[1]), u"-noreset"_s, u"-nolisten"_s, u"tcp"_s,
                               u"-screen"_s, u"0"_s, u"%1x%2x24"_s.arg(size.width()).arg(size.height())});
    const bool started = m_server.waitForStarted(patience);
    close(ends[1]); // or the pipe would not end where the server does
    const QByteArray number = started ? readLine(ends[0]) : QByteArray();
    close(ends[0]);
    m_display = u":"_s + QString::fromLatin1(number);
    if (number.isEmpty())
        m_problem = u"Xvfb does not start: "_s + m_server.errorString();
    return !number.isEmpty();
}

void XServer::addMonitors()
{
    int x = 0;
    for (const QSize &each : m_monitors) {
        const QString geometry = u"%1/300x%2/200+%3+0"_s.arg(each.width()).arg(each.height()).arg(x);
        run(u"xrandr"_s, {u"--setmonitor"_s, u"M%1"_s.arg(x), geometry, x == 0 ? u"screen"_s : u"none"_s});
        x += each.width();
    }
}

bool XServer::startWindowManager(const QString &program)
{
    if (!launch(m_windowManager, program, {})) {
        m_problem = program + u" does not start: "_s + m_windowManager.errorString();
        return false;
    }
    const QDeadlineTimer deadline(patience);
    while (!deadline.hasExpired()) {
        if (run(u"xprop"_s, {u"-root"_s, u"_NET_SUPPORTING_WM_CHECK"_s}).contains("window id"_L1))
            return true;
        QThread::msleep(20); // between two looks at a condition
    }
    m_problem = program + u" does not manage windows"_s;
    return false;
}

QString XServer::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(patience))
        process.kill();
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

bool XServer::launch(QProcess &client, const QString &program, const QStringList &arguments)
{
    client.setStandardOutputFile(QProcess::nullDevice());
    client.setStandardErrorFile(QProcess::nullDevice());
    client.start(program, arguments);
    return client.waitForStarted(patience);
}

QColor XServer::pixel(int x, int y)
{
    if (!m_connection)
        m_connection.reset(xcb_connect(m_display.toLatin1().constData(), nullptr));
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
    const auto cookie = xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<std::int16_t>(x),
                                      static_cast<std::int16_t>(y), 1, 1, ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, void (*)(void *)> reply(
        xcb_get_image_reply(m_connection.get(), cookie, nullptr), std::free);
    if (!reply || xcb_get_image_data_length(reply.get()) < 4)
        return {};
    const std::uint8_t *bytes = xcb_get_image_data(reply.get()); // blue, green, red
    return QColor(bytes[2], bytes[1], bytes[0]);
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
