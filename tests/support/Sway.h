#pragma once

#include "support/XServer.h"

#include <QImage>
#include <QJsonDocument>
#include <QProcess>
#include <QRect>
#include <QTemporaryDir>

namespace kelp::test {

/// The compositor sway, run as a user without rights, for it refuses to run as root. Its outputs are windows on an X
/// server that nobody sees, which has the pointer and the keyboard. It ends with this object. All that it shows behind
/// windows is bright green, a panel on each output included.
///
/// Start it before the QApplication: `start` points Qt's platform at it for this process and its children.
class Sway
{
public:
    /// Two outputs of this size side by side, X11-1 and X11-2.
    static constexpr QSize outputSize{1280, 720};
    Sway();
    ~Sway();
    Sway(const Sway &) = delete;
    Sway &operator=(const Sway &) = delete;

    /// Whether all of it is up; if not, `problem` says why.
    [[nodiscard]] bool start();
    [[nodiscard]] const QString &problem() const { return m_problem; }
    [[nodiscard]] qint64 pid() const { return m_compositor.processId(); }

    /// Carries out a line of sway's configuration language; whether sway agreed.
    bool command(const QString &line);
    /// What sway answers to a question of its protocol, such as "get_outputs".
    [[nodiscard]] QJsonDocument ask(const QString &question);
    /// Types a key by its name in X11.
    void key(const QString &name);
    /// Moves the pointer to a place on the first two outputs, side by side; and presses its button there.
    void pointTo(const QPoint &place);
    void click(const QPoint &place);
    /// Unplugs the output that was plugged in last, and plugs in another one to the right of X11-1.
    [[nodiscard]] bool unplugLast();
    [[nodiscard]] bool plugIn();
    /// The name of the output that was plugged in last.
    [[nodiscard]] QString last() const { return QStringLiteral("X11-%1").arg(m_lastOutput); }
    /// What the outputs show, side by side; this process goes on painting meanwhile.
    [[nodiscard]] QImage picture();
    /// The colour of a pixel of the first two outputs, side by side; at once.
    [[nodiscard]] QColor pixel(int x, int y) { return m_host.pixel(x, y); }
    /// Starts a client, and lets it end with this process at the latest.
    [[nodiscard]] bool launch(QProcess &client, const QString &program, const QStringList &arguments);

private:
    [[nodiscard]] bool writeConfiguration();
    QByteArray run(const QString &program, const QStringList &arguments);

    void placeLast();
    [[nodiscard]] bool waitForOutputs(qsizetype count);

    XServer m_host;
    int m_lastOutput = 2;
    QTemporaryDir m_folder;
    QString m_problem;
    QProcessEnvironment m_environment;
    QProcess m_compositor;
};

} // namespace kelp::test
