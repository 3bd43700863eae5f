#pragma once

#include "support/PrivateBus.h"

#include <QProcess>
#include <QSize>
#include <QTemporaryDir>

#include <memory>

namespace kelp::test {

/// The compositor mutter without a display: one that has no layer shell and does not let anybody see its screens. Its
/// keyboard is that of a remote desktop. It ends with this object.
///
/// Start it before the QApplication: `start` points Qt's platform at it for this process and its children.
class Mutter
{
public:
    /// Two outputs of this size side by side, Meta-0 and Meta-1.
    static constexpr QSize outputSize{800, 600};
    Mutter() = default;
    ~Mutter();
    Mutter(const Mutter &) = delete;
    Mutter &operator=(const Mutter &) = delete;

    /// Whether all of it is up; if not, `problem` says why.
    [[nodiscard]] bool start();
    [[nodiscard]] const QString &problem() const { return m_problem; }

    /// Gives the seat its keyboard, for as long as this object lives. Needs a QCoreApplication.
    [[nodiscard]] bool plugInKeyboard();
    /// Presses and releases a key by its number in X11.
    [[nodiscard]] bool key(quint32 symbol);
    /// Leaves the first output alone, or adds the second one to its right again.
    [[nodiscard]] bool useOutputs(int count);
    /// Starts a client, and lets it end with this process at the latest.
    [[nodiscard]] bool launch(QProcess &client, const QString &program, const QStringList &arguments);

private:
    [[nodiscard]] bool startCompositor();
    [[nodiscard]] QByteArray askDisplays(const QStringList &arguments);

    QTemporaryDir m_folder;
    QString m_problem;
    QProcessEnvironment m_environment;
    PrivateBus m_bus;
    QProcess m_compositor;
    QString m_remote; ///< the object of the remote desktop's session
};

} // namespace kelp::test
