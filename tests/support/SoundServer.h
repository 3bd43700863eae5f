#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace kelp::test {

/// A PulseAudio daemon of the test's own. What is played on it goes nowhere but to a recording. It ends with this
/// object.
class SoundServer
{
public:
    /// A piece of sound, measured by sox.
    struct Measured
    {
        double seconds = 0;
        double level = 0;     ///< RMS, 1 = full scale
        double peak = 0;      ///< 1 = full scale
        double frequency = 0; ///< Hz, roughly; silence around a sound makes no difference

        /// Of all of it together, in decibels; silence around a sound makes no difference.
        [[nodiscard]] double energy() const;
    };

    SoundServer() = default;
    ~SoundServer();
    SoundServer(const SoundServer &) = delete;
    SoundServer &operator=(const SoundServer &) = delete;

    /// Whether it is up and records; if not, `problem` says why. It becomes the server of this process and its
    /// children.
    [[nodiscard]] bool start();
    [[nodiscard]] const QString &problem() const { return m_problem; }
    /// What a program needs in its environment to play on it.
    [[nodiscard]] QString address() const { return QStringLiteral("unix:") + socket(); }
    [[nodiscard]] QString clientSettings() const { return m_folder.filePath(QStringLiteral("client.conf")); }
    /// As somebody pulls the plug.
    void killHard();

    /// How many seconds have been recorded.
    [[nodiscard]] double recorded() const;
    /// What was recorded from `begin` on, for `seconds`.
    [[nodiscard]] Measured heard(double begin, double seconds) const;
    [[nodiscard]] static Measured ofFile(const QString &path);

private:
    [[nodiscard]] QString socket() const { return m_folder.filePath(QStringLiteral("socket")); }
    [[nodiscard]] QString recording() const { return m_folder.filePath(QStringLiteral("recording")); }
    [[nodiscard]] static Measured measure(const QStringList &input, const QStringList &effects);

    QTemporaryDir m_folder;
    QProcess m_server;
    QProcess m_recorder;
    QString m_problem;
};

} // namespace kelp::test
