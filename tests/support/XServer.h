#pragma once

#include <QColor>
#include <QList>
#include <QProcess>
#include <QSize>
#include <QString>
#include <QStringList>

#include <memory>

struct xcb_connection_t;

namespace kelp {

/// A virtual X server on a free display with a window manager, both ended with this object.
///
/// Start it before the QApplication: `start` points DISPLAY and Qt's platform at it for this process and its children.
class XServer
{
public:
    /// Side by side, from the left.
    explicit XServer(QList<QSize> monitors);
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    /// Whether all of it is up; if not, `problem` says why.
    [[nodiscard]] bool start(const QString &windowManager = QStringLiteral("openbox"));
    [[nodiscard]] const QString &problem() const { return m_problem; }
    [[nodiscard]] QString display() const { return m_display; } ///< ":7"

    /// Runs a command to its end against this display and returns what it wrote.
    QString run(const QString &program, const QStringList &arguments);
    /// Starts a client that ends with this object at the latest.
    [[nodiscard]] bool launch(QProcess &client, const QString &program, const QStringList &arguments);
    /// The colour of a pixel on the screen, as anyone can see it.
    [[nodiscard]] QColor pixel(int x, int y);

private:
    [[nodiscard]] bool startServer();
    [[nodiscard]] bool startWindowManager(const QString &program);
    void addMonitors();
    static void end(QProcess &process);

    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const;
    };

    QList<QSize> m_monitors;
    QString m_display;
    QString m_problem;
    QProcess m_server;
    QProcess m_windowManager;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
};

} // namespace kelp
