#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QProcess>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

struct xcb_connection_t;

namespace kelp {

/// An X server of the test's own on a free display with a window manager, both ended with this object.
///
/// Start it before the QApplication: `start` points DISPLAY and Qt's platform at it for this process and its children.
class XServer
{
public:
    enum class Kind {
        Virtual,   ///< Xvfb, with monitors that are there for good
        Pluggable, ///< Xorg with its dummy driver, whose monitors DUMMY0, DUMMY1 and so on can be plugged in and out
    };
    /// Side by side, from the left.
    explicit XServer(QList<QSize> monitors, Kind kind = Kind::Virtual);
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    /// Whether all of it is up; if not, `problem` says why. `windowManager` is a command line.
    [[nodiscard]] bool start(const QString &windowManager = QStringLiteral("openbox"));
    /// The server alone, for a client that is the desktop itself; this process stays as it is.
    [[nodiscard]] bool startServer();
    [[nodiscard]] const QString &problem() const { return m_problem; }
    [[nodiscard]] QString display() const { return m_display; } ///< ":7"
    [[nodiscard]] qint64 processId() const { return m_server.processId(); }

    /// Runs a command to its end against this display and returns what it wrote.
    QString run(const QString &program, const QStringList &arguments);
    enum class Output { Ignored, Readable };
    /// Starts a client, whose standard output is to be read or not, in the environment that it was given, if any.
    [[nodiscard]] bool launch(QProcess &client, const QString &program, const QStringList &arguments,
                              Output output = Output::Ignored);
    /// The colour of a pixel on the screen, as anyone can see it.
    [[nodiscard]] QColor pixel(int x, int y);
    [[nodiscard]] QImage picture(const QRect &area);
    /// The whole screen, likewise.
    [[nodiscard]] QImage picture();
    /// The window that has the keyboard, as the server says.
    [[nodiscard]] quint32 focused();
    /// Gives a monitor of a pluggable server this place, plugging it in where it is not there; and takes one away.
    void setMonitor(int number, const QRect &place);
    void unplug(int number);
    /// Gives all monitors their places in one go, as a desktop's own settings do; those without a size are unplugged.
    void arrange(const QList<QRect> &places);
    /// The windows right on the screen, in the order in which they were made.
    [[nodiscard]] QList<quint32> windows();
    /// The number of a name; makes it known to clients that ask only for those that are there.
    quint32 atom(const char *name);
    /// What the button of a title bar does.
    void askToClose(quint32 window);

private:
    [[nodiscard]] xcb_connection_t *connection();
    [[nodiscard]] quint32 root();
    [[nodiscard]] bool managesWindows();
    [[nodiscard]] bool startWindowManager(const QString &program);
    [[nodiscard]] QStringList serverCommand();
    void addMonitors();
    [[nodiscard]] QProcessEnvironment environment() const;
    static void end(QProcess &process);

    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const;
    };

    QList<QSize> m_monitors;
    Kind m_kind;
    QTemporaryDir m_folder;
    QString m_display;
    QString m_problem;
    QProcess m_server;
    QProcess m_windowManager;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
};

} // namespace kelp
