#include "support/SoundServer.h"

#include "support/ChildProcess.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int patience = 20'000; // ms
constexpr int rate = 44100;

/// Looks again and again whether `condition` holds.
template<typename Condition>
bool comesTrue(const Condition &condition)
{
    const QDeadlineTimer deadline(patience);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(10); // between two looks
    }
    return true;
}

bool succeeds(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

double numberAfter(const QString &text, const QString &label)
{
    const QRegularExpression line(QRegularExpression::escape(label).replace(u"\\ "_s, u"\\s+"_s) +
                                  u"\\s*(-?[0-9.]+)"_s);
    return line.match(text).captured(1).toDouble();
}

} // namespace

double SoundServer::Measured::energy() const
{
    return 10 * std::log10(level * level * seconds + 1e-12);
}

SoundServer::~SoundServer()
{
    end(m_recorder);
    end(m_server);
}

bool SoundServer::start()
{
    QFile settings(clientSettings());
    if (!settings.open(QIODevice::WriteOnly) || settings.write("autospawn = no\nenable-shm = no\n") < 0)
        return false;
    settings.close();
    qputenv("PULSE_SERVER", address().toUtf8());
    qputenv("PULSE_CLIENTCONFIG", clientSettings().toUtf8());

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &each : {u"HOME"_s, u"XDG_RUNTIME_DIR"_s, u"XDG_CONFIG_HOME"_s, u"PULSE_RUNTIME_PATH"_s})
        environment.insert(each, m_folder.path());
    environment.remove(u"PULSE_SERVER"_s);
    // There may be one server on a bus, and another test's is there perhaps.
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    m_server.setProcessEnvironment(environment);
    m_server.setStandardOutputFile(QProcess::nullDevice());
    m_server.setStandardErrorFile(m_folder.filePath(u"log"_s));
    endWithTest(m_server);
    m_server.start(u"pulseaudio"_s, {u"-n"_s, u"--daemonize=no"_s, u"--exit-idle-time=-1"_s, u"--use-pid-file=no"_s,
                                     u"--load=module-native-protocol-unix auth-anonymous=1 socket="_s + socket(),
                                     u"--load=module-null-sink sink_name=nowhere rate=44100 norewinds=1"_s});
    if (!m_server.waitForStarted(patience) || !comesTrue([] { return succeeds(u"pactl"_s, {u"info"_s}); })) {
        m_problem = u"pulseaudio does not start: "_s + m_server.errorString();
        return false;
    }
    m_recorder.setStandardOutputFile(recording());
    m_recorder.setStandardErrorFile(QProcess::nullDevice());
    endWithTest(m_recorder);
    m_recorder.start(u"parec"_s, {u"--latency-msec=10"_s, u"--rate=44100"_s, u"--channels=1"_s, u"--format=s16le"_s,
                                  u"--raw"_s, u"--device=nowhere.monitor"_s});
    if (!comesTrue([this] { return recorded() > 0; })) {
        m_problem = u"parec records nothing: "_s + m_recorder.errorString();
        return false;
    }
    return true;
}

void SoundServer::killHard()
{
    m_server.kill();
    m_server.waitForFinished(patience);
}

double SoundServer::recorded() const
{
    return static_cast<double>(QFileInfo(recording()).size() / 2) / rate;
}

SoundServer::Measured SoundServer::heard(double begin, double seconds) const
{
    return measure({u"-t"_s, u"raw"_s, u"-r"_s, QString::number(rate), u"-c"_s, u"1"_s, u"-b"_s, u"16"_s, u"-e"_s,
                    u"signed"_s, recording()},
                   {u"trim"_s, QString::number(begin, 'f', 4), QString::number(seconds, 'f', 4)});
}

SoundServer::Measured SoundServer::ofFile(const QString &path)
{
    return measure({path}, {});
}

SoundServer::Measured SoundServer::measure(const QStringList &input, const QStringList &effects)
{
    QProcess sox;
    sox.start(u"sox"_s, input + QStringList{u"-n"_s} + effects + QStringList{u"stat"_s});
    sox.waitForFinished(patience);
    const QString text = QString::fromLocal8Bit(sox.readAllStandardError());
    return {numberAfter(text, u"Length (seconds):"_s), numberAfter(text, u"RMS amplitude:"_s),
            std::max(numberAfter(text, u"Maximum amplitude:"_s), -numberAfter(text, u"Minimum amplitude:"_s)),
            numberAfter(text, u"Rough frequency:"_s)};
}

} // namespace kelp::test
