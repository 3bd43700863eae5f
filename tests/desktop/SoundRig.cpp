#include "desktop/SoundRig.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int patience = 20'000; // milliseconds; the machine may be busy
constexpr int longPatience = 60'000;

} // namespace

Ears::Ears(Preferences &preferences, Clock &clock)
    : player(clock, SoundRig::program()),
      control(players),
      music(preferences, control),
      sounds(preferences, clock, player, music, folder.filePath(u"Kelp"_s)),
      started(&player, &ChildSoundPlayer::started),
      finished(&player, &ChildSoundPlayer::finished)
{
}

QString SoundRig::program()
{
    return qEnvironmentVariable("KELP_BINARY_DIR", QCoreApplication::applicationDirPath() + u"/.."_s) +
           u"/kelp-sound"_s;
}

bool SoundRig::start()
{
    qputenv("HOME", m_home.path().toUtf8());
    qputenv("XDG_CACHE_HOME", inHome(u".cache"_s).toUtf8());
    qputenv("XDG_CONFIG_HOME", inHome(u".config"_s).toUtf8());
    qputenv("XDG_DATA_HOME", inHome(u".local/share"_s).toUtf8());
    qputenv("GSETTINGS_BACKEND", "memory");
    qunsetenv("XDG_CURRENT_DESKTOP");
    server = std::make_unique<SoundServer>();
    if (!server->start()) {
        qWarning("%s", qPrintable(server->problem()));
        return false;
    }
    QProcess warm;
    warm.start(program(), {u"warm"_s});
    return warm.waitForFinished(longPatience) && warm.exitCode() == 0;
}

bool SoundRig::restart()
{
    ears.reset();
    preferences = std::make_unique<Preferences>();
    ears = std::make_unique<Ears>(*preferences, m_clock);
    QDir(inHome(u".local/share/sounds"_s)).removeRecursively();
    return QTest::qWaitFor([this] { return server->heard(server->recorded() - 0.1, 0.1).peak == 0; }, patience);
}

void SoundRig::end()
{
    ears.reset();
    server.reset();
}

bool SoundRig::makeFile(const QString &name, const QStringList &arguments) const
{
    QProcess ffmpeg;
    ffmpeg.start(u"ffmpeg"_s, QStringList{u"-loglevel"_s, u"error"_s, u"-y"_s} + arguments + QStringList{path(name)});
    const bool isMade = ffmpeg.waitForFinished(longPatience) && ffmpeg.exitCode() == 0;
    if (!isMade)
        qWarning("%s", ffmpeg.readAllStandardError().constData());
    return isMade;
}

bool SoundRig::makeTone(const QString &name, const QStringList &encoder) const
{
    return makeFile(name,
                    QStringList{u"-f"_s, u"lavfi"_s, u"-i"_s, u"aevalsrc=0.5*sin(2*PI*%1*t):s=44100:d=6"_s.arg(pitch)} +
                        encoder);
}

bool SoundRig::write(const QString &file, const QByteArray &content)
{
    QFile target(file);
    return QDir().mkpath(QFileInfo(file).path()) && target.open(QIODevice::WriteOnly) &&
           target.write(content) == content.size();
}

bool SoundRig::waitFor(double seconds) const
{
    return QTest::qWaitFor([&] { return server->recorded() >= seconds; }, patience);
}

} // namespace kelp::test
