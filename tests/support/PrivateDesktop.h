#pragma once

#include "support/PrivateBus.h"
#include "support/XServer.h"

#include <QJsonObject>
#include <QTemporaryDir>

namespace kelp::test {

/// A desktop of the test's own: a home, a session bus, a display of two monitors with a window manager, and
/// applications for links that only note what they are asked to open. All of it ends with this object.
class PrivateDesktop
{
public:
    PrivateDesktop();

    /// Whether all of it is up; if not, `problem` says why.
    [[nodiscard]] bool start();
    [[nodiscard]] const QString &problem() const { return m_problem; }

    /// Left and right.
    [[nodiscard]] static QList<QRect> monitors();
    [[nodiscard]] XServer &display() { return m_display; }
    [[nodiscard]] PrivateBus &sessionBus() { return m_bus; }
    /// What a program that runs here gets. Its system bus is none.
    [[nodiscard]] const QProcessEnvironment &environment() const { return m_environment; }
    [[nodiscard]] QString folder(const QString &name) const { return m_home.filePath(name); }

    /// Makes the noting application the one for links of `scheme`.
    void registerHandler(const QString &scheme);
    void unregisterHandler(const QString &scheme);
    /// The links opened since the last `forget`, in order, byte for byte.
    [[nodiscard]] QList<QByteArray> opened() const;
    /// What the application that opened the last of them was started with: "NAME=value".
    [[nodiscard]] QList<QByteArray> environmentOfOpener() const;

    /// Kelp's folders and files here.
    [[nodiscard]] QString configuration() const { return folder(QStringLiteral(".config/Kelp")); }
    [[nodiscard]] QString data() const { return folder(QStringLiteral(".local/share/Kelp")); }
    [[nodiscard]] QJsonObject preferences() const;
    void writePreferences(const QJsonObject &preferences);
    [[nodiscard]] QByteArray accounts() const;
    void writeAccount(const QString &email, const QString &refreshToken);
    /// Deletes all that Kelp has kept, and the list of opened links.
    void forget();

private:
    void makeFolders();
    void installHandler();
    void writeHandlers();
    [[nodiscard]] bool write(const QString &path, const QByteArray &content, bool isProgram = false);

    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    XServer m_display;
    PrivateBus m_bus;
    QStringList m_schemes;
    QString m_problem;
};

} // namespace kelp::test
