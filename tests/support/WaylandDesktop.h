#pragma once

#include "support/PrivateBus.h"

#include <QImage>
#include <QJsonObject>
#include <QRect>
#include <QTemporaryDir>

#include <optional>

namespace kelp::test {

/// A Wayland desktop of the test's own without a screen: a compositor with one output of 1280 × 720, a keyboard, a
/// pointer and a session bus. All of it ends with this object.
class WaylandDesktop
{
public:
    WaylandDesktop() = default;
    ~WaylandDesktop();
    WaylandDesktop(const WaylandDesktop &) = delete;
    WaylandDesktop &operator=(const WaylandDesktop &) = delete;

    /// Whether all of it is up; if not, `problem` says why.
    [[nodiscard]] bool start();
    [[nodiscard]] const QString &problem() const { return m_problem; }
    [[nodiscard]] PrivateBus &sessionBus() { return m_bus; }
    /// What a program that runs here gets.
    [[nodiscard]] const QProcessEnvironment &environment() const { return m_environment; }
    [[nodiscard]] QString folder(const QString &name) const { return m_home.filePath(name); }
    /// Writes a file below the home, for the user alone.
    [[nodiscard]] bool write(const QString &name, const QByteArray &content) const;

    /// Starts a program that ends with this object at the latest.
    [[nodiscard]] bool launch(QProcess &client, const QString &program, const QStringList &arguments = {}) const;
    /// Runs a command to its end and returns what it wrote.
    QByteArray run(const QString &program, const QStringList &arguments) const;
    void point(const QPoint &at);
    void click(); ///< with the left button
    /// Ends the compositor without a word to its clients.
    void crash();
    [[nodiscard]] QImage picture(const QRect &area) const;
    /// The compositor's description of the window of process `pid`, if it is shown: "focused", "rect" and so on.
    [[nodiscard]] std::optional<QJsonObject> window(qint64 pid) const;

private:
    [[nodiscard]] bool startCompositor();
    void tellPointer(const QByteArray &line);

    QTemporaryDir m_home;
    QString m_problem;
    QProcessEnvironment m_environment;
    PrivateBus m_bus;
    QProcess m_compositor;
    QProcess m_keyboard;
    QProcess m_pointer;
};

} // namespace kelp::test
