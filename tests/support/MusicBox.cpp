#include "support/MusicBox.h"

#include "support/ChildProcess.h"

#include <QDataStream>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

/// Half a minute of a quiet 440 Hz square wave, 8 kHz, 8 bit, mono.
[[nodiscard]] bool writeTone(const QString &path)
{
    constexpr quint32 rate = 8000;
    constexpr quint32 samples = 30 * rate;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QDataStream stream(&file);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream.writeRawData("RIFF", 4);
    stream << quint32(36 + samples);
    stream.writeRawData("WAVEfmt ", 8);
    stream << quint32(16) << quint16(1) << quint16(1) << rate << rate << quint16(1) << quint16(8);
    stream.writeRawData("data", 4);
    stream << samples;
    for (quint32 i = 0; i < samples; ++i)
        stream << quint8((i * 880 / rate) % 2 ? 120 : 136);
    return stream.status() == QDataStream::Ok;
}

} // namespace

MusicBox::~MusicBox()
{
    for (const auto &player : m_players)
        end(*player);
}

bool MusicBox::open(const QString &address)
{
    m_tone = m_home.filePath(u"tone.wav"_s);
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(u"HOME"_s, m_home.path());
    for (const auto &[variable, name] :
         {std::pair(u"XDG_CONFIG_HOME"_s, u"config"_s), std::pair(u"XDG_DATA_HOME"_s, u"data"_s),
          std::pair(u"XDG_CACHE_HOME"_s, u"cache"_s), std::pair(u"XDG_RUNTIME_DIR"_s, u"run"_s)}) {
        const QString folder = m_home.filePath(name);
        if (!QDir().mkpath(folder) || !giveAway(folder))
            return false;
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_environment.insert(variable, folder);
    }
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, address);
    return writeTone(m_tone) && giveAway(m_tone) && giveAway(m_home.path());
}

void MusicBox::startVlc(Begins begins)
{
    QStringList arguments{u"-I"_s,    u"dummy"_s,      u"--extraintf"_s, u"dbus"_s, u"--aout"_s,
                          u"dummy"_s, u"--no-video"_s, u"--loop"_s,      m_tone};
    if (begins == Begins::Paused)
        arguments.prepend(u"--start-paused"_s);
    startPlayer(u"vlc"_s, arguments);
}

void MusicBox::startMpv(Begins begins)
{
    QStringList arguments{u"--no-config"_s,
                          u"--no-terminal"_s,
                          u"--ao=null"_s,
                          u"--vo=null"_s,
                          u"--loop"_s,
                          u"--script=/usr/lib/mpv-mpris/mpris.so"_s,
                          m_tone};
    if (begins == Begins::Paused)
        arguments.prepend(u"--pause"_s);
    startPlayer(u"mpv"_s, arguments);
}

void MusicBox::startPlayer(const QString &program, const QStringList &arguments)
{
    auto &player = *m_players.emplace_back(std::make_unique<QProcess>());
    endWithTest(player, Rights::NotRoots);
    player.setProcessEnvironment(m_environment);
    player.setWorkingDirectory(m_home.path());
    player.setStandardOutputFile(QProcess::nullDevice());
    player.setStandardErrorFile(QProcess::nullDevice());
    player.start(program, arguments);
}

QStringList MusicBox::statuses() const
{
    QProcess reader;
    reader.setProcessEnvironment(m_environment);
    reader.setStandardErrorFile(QProcess::nullDevice());
    reader.start(u"playerctl"_s, {u"--all-players"_s, u"status"_s, u"--format"_s, u"{{playerName}} {{status}}"_s});
    reader.waitForFinished();
    QStringList lines = QString::fromUtf8(reader.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    lines.sort();
    return lines;
}

} // namespace kelp::test
