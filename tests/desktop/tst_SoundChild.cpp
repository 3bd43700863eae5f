#include "desktop/SoundRig.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Which sound of the desktop's the child process takes, and what it does to itself before it reads one.
class tst_SoundChild : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void theDesktopsSoundGoesFirst();
    void theThemeThatTheUserChoseGoesFirst_data();
    void theThemeThatTheUserChoseGoesFirst();
    void aBrokenSoundOfTheDesktopGivesWayToOurOwn();
    void followsTheInheritanceOfThemes();
    void renouncesRightsAndLimitsItself();
    void refusesWrongUsage_data();
    void refusesWrongUsage();

private:
    [[nodiscard]] QString path(const QString &name) const { return rig.path(name); }
    [[nodiscard]] QString inTheme(const QString &file) const { return rig.inHome(u".local/share/sounds/"_s + file); }
    [[nodiscard]] bool makeTheme(const QString &name, const QByteArray &index) const;
    [[nodiscard]] bool putToneInto(const QString &file) const;
    /// Of what plays now, in Hz; 0 where nothing is recorded.
    [[nodiscard]] double frequencyNow() const;

    SoundRig rig;
    SoundServer *server = nullptr;
    Ears *ears = nullptr;
};

void tst_SoundChild::initTestCase()
{
    QVERIFY(rig.start());
    server = rig.server.get();
    QVERIFY(rig.makeTone(u"tone.wav"_s));
}

void tst_SoundChild::init()
{
    QVERIFY(rig.restart());
    ears = rig.ears.get();
}

void tst_SoundChild::cleanupTestCase()
{
    rig.end();
}

bool tst_SoundChild::makeTheme(const QString &name, const QByteArray &index) const
{
    return SoundRig::write(inTheme(name + u"/index.theme"_s), "[Sound Theme]\nName=T\n" + index);
}

bool tst_SoundChild::putToneInto(const QString &file) const
{
    return QDir().mkpath(QFileInfo(inTheme(file)).path()) && QFile::copy(path(u"tone.wav"_s), inTheme(file));
}

double tst_SoundChild::frequencyNow() const
{
    const double begin = server->recorded();
    return rig.waitFor(begin + 0.8) ? server->heard(begin + 0.3, 0.4).frequency : 0;
}

void tst_SoundChild::theDesktopsSoundGoesFirst()
{
    QVERIFY(makeTheme(u"freedesktop"_s, "Directories=stereo\n"));
    QVERIFY(putToneInto(u"freedesktop/stereo/glass.wav"_s));
    ears->sounds.playForOverlay();
    QTRY_COMPARE(ears->started.size(), 1);
    const double heard = frequencyNow();
    QVERIFY2(std::abs(heard - SoundRig::pitch) < 5, qPrintable(QString::number(heard)));
}

void tst_SoundChild::theThemeThatTheUserChoseGoesFirst_data()
{
    QTest::addColumn<QByteArray>("desktop");
    QTest::addColumn<QByteArray>("chosen");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("Plasma") << "KDE"_ba
                            << "mine"_ba << true;
    QTest::newRow("another desktop") << "XFCE"_ba
                                     << "mine"_ba << false;
    QTest::newRow("a name that leads elsewhere") << "KDE"_ba
                                                 << "../sounds/mine"_ba << false;
    QTest::newRow("a theme that is gone") << "KDE"_ba
                                          << "yours"_ba << false;
}

void tst_SoundChild::theThemeThatTheUserChoseGoesFirst()
{
    QFETCH(QByteArray, desktop);
    QFETCH(QByteArray, chosen);
    QFETCH(bool, isTaken);
    QVERIFY(makeTheme(u"mine"_s, "Directories=.\n"));
    QVERIFY(putToneInto(u"mine/Glass.wav"_s));
    QVERIFY(SoundRig::write(rig.inHome(u".config/kdeglobals"_s), "[Sounds]\nTheme=" + chosen + '\n'));
    qputenv("XDG_CURRENT_DESKTOP", desktop);
    ears->sounds.playForOverlay();
    qunsetenv("XDG_CURRENT_DESKTOP");
    QTRY_COMPARE(ears->started.size(), 1);
    const double heard = frequencyNow();
    QVERIFY2((std::abs(heard - SoundRig::pitch) < 5) == isTaken, qPrintable(QString::number(heard)));
}

void tst_SoundChild::aBrokenSoundOfTheDesktopGivesWayToOurOwn()
{
    QVERIFY(SoundRig::write(inTheme(u"freedesktop/Glass.wav"_s), "RIFF this is no sound"));
    const double begin = server->recorded();
    ears->sounds.playForOverlay();
    QTRY_COMPARE(ears->started.size(), 1);
    QVERIFY(rig.waitFor(server->recorded() + 0.5));
    QVERIFY(server->heard(begin, server->recorded() - begin).peak > 0.1);
}

void tst_SoundChild::followsTheInheritanceOfThemes()
{
    // Loops and names that lead elsewhere do no harm.
    QVERIFY(makeTheme(u"freedesktop"_s, "Directories=../../../..,/etc,stereo\nInherits=a,b\n"));
    QVERIFY(makeTheme(u"a"_s, "Inherits=freedesktop,a,../b\n"));
    QVERIFY(makeTheme(u"b"_s, "Directories=.\n"));
    QVERIFY(putToneInto(u"b/chirp.wav"_s));
    ears->sounds.play(u"chirp"_s);
    QTRY_COMPARE(ears->started.size(), 1);
    for (const QString &name : {u"../b/chirp"_s, u"nothing of that name"_s}) {
        ears->finished.clear();
        ears->player.play({.name = name}, 1, [this] { Q_EMIT ears->player.finished(); });
        QTRY_COMPARE(ears->finished.size(), 1);
    }
    QCOMPARE(ears->started.size(), 1);
}

/// A file that was made to take over a decoder gains little.
void tst_SoundChild::renouncesRightsAndLimitsItself()
{
    QProcess child;
    child.start(SoundRig::program(), {u"play"_s, u"--file"_s, path(u"tone.wav"_s)});
    QVERIFY(child.waitForReadyRead(20'000)); // it plays
    const auto stateOf = [&](const char *what) {
        QFile file(u"/proc/%1/%2"_s.arg(child.processId()).arg(QLatin1String(what)));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).simplified() : QString();
    };
    QVERIFY(stateOf("status").contains(u"NoNewPrivs: 1 "_s));
    QVERIFY(stateOf("limits").contains(u"Max core file size 0 0 "_s));
    QVERIFY(stateOf("limits").contains(u"Max address space 1073741824 1073741824 "_s));
    child.terminate();
    QVERIFY(child.waitForFinished());
}

void tst_SoundChild::refusesWrongUsage_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *each : {"", "sing", "play", "play --bytes --volume 2", "play --bytes --file a", "play --volume x",
                             "import --file a", "import --to b", "play --bytes more", "--nonsense"})
        QTest::newRow(each) << QString::fromLatin1(each);
}

void tst_SoundChild::refusesWrongUsage()
{
    QFETCH(QString, arguments);
    QProcess child;
    child.start(SoundRig::program(), arguments.split(u' ', Qt::SkipEmptyParts));
    child.closeWriteChannel();
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 2);
    QCOMPARE(child.readAllStandardOutput(), QByteArray());
    const QByteArray complaint = child.readAllStandardError();
    QVERIFY(complaint.startsWith("kelp-sound: ") && complaint.count('\n') == 1);
}

QTEST_GUILESS_MAIN(tst_SoundChild)
#include "tst_SoundChild.moc"
