#include "platform/mac/AppleScriptPlayers.h"

#include "platform/mac/ApplicationRegistry.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

/// Knows what is running and what is installed because a test says so.
struct FakeRegistry final : ApplicationRegistry
{
    void ifRunning(const QString &bundle, QObject *, std::function<void()> action) override
    {
        if (running.contains(bundle))
            action();
    }
    [[nodiscard]] bool isInstalled(const QString &bundle) const override { return installed.contains(bundle); }

    QSet<QString> running;
    QSet<QString> installed;
};

const QString pauseSpotify = u"tell application id \"com.spotify.client\" to pause"_s;
const QString pauseMusic = u"tell application id \"com.apple.Music\" to pause"_s;
const QString play = u"if application id \"com.spotify.client\" is not running then\n"
                     u"    tell application id \"com.spotify.client\" to launch\n"
                     u"    delay 2\n"
                     u"end if\n"
                     u"tell application id \"com.spotify.client\" to play track \"%1\""_s;

} // namespace

/// With a stand-in for the script runner that notes what it gets.
class tst_AppleScriptPlayers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void startsNothingToPauseWhatDoesNotRun();
    void pausesSpotify();
    void pausesTheOther();
    void playsAnItem_data();
    void playsAnItem();
    void discardsWhatTheRunnerSays();
    void doesNotWaitForTheRunner();
    void survivesARunnerThatFails_data();
    void survivesARunnerThatFails();
    void asksTheRegistryWhatIsInstalled();

private:
    void writeRunner(const QByteArray &body);
    [[nodiscard]] QByteArray content(const QString &file) const;
    /// The arguments of each run, in order.
    [[nodiscard]] QList<QStringList> runs() const;

    std::unique_ptr<QTemporaryDir> folder;
    FakeRegistry *registry = nullptr; // the players'
    std::unique_ptr<AppleScriptPlayers> players;
};

void tst_AppleScriptPlayers::init()
{
    folder = std::make_unique<QTemporaryDir>();
    // One write per run: the arguments, each ended by a NUL, and a NUL more.
    writeRunner("printf '%s\\0' \"$@\" '' >>\"$0.runs\"");
    auto owned = std::make_unique<FakeRegistry>();
    registry = owned.get();
    players = std::make_unique<AppleScriptPlayers>(std::move(owned), folder->filePath(u"runner"_s));
}

void tst_AppleScriptPlayers::writeRunner(const QByteArray &body)
{
    QFile file(folder->filePath(u"runner"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\n" + body + "\n");
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QByteArray tst_AppleScriptPlayers::content(const QString &name) const
{
    QFile file(folder->filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<QStringList> tst_AppleScriptPlayers::runs() const
{
    QList<QStringList> all;
    QStringList arguments;
    QList<QByteArray> pieces = content(u"runner.runs"_s).split('\0');
    pieces.removeLast();
    for (const QByteArray &piece : pieces) {
        if (piece.isEmpty())
            all.append(std::exchange(arguments, {}));
        else
            arguments.append(QString::fromUtf8(piece));
    }
    return all;
}

void tst_AppleScriptPlayers::startsNothingToPauseWhatDoesNotRun()
{
    registry->installed = {u"com.spotify.client"_s, u"com.apple.Music"_s};
    players->pauseSpotify();
    players->pauseOthers();
    // What comes later comes alone.
    players->playSpotify(u"spotify:track:ID"_s);
    QTRY_VERIFY(!runs().isEmpty());
    QCOMPARE(runs().size(), 1);
    QVERIFY(runs().first().last().contains("play track"_L1));
}

void tst_AppleScriptPlayers::pausesSpotify()
{
    registry->running = {u"com.spotify.client"_s, u"com.apple.Music"_s};
    players->pauseSpotify();
    QTRY_COMPARE(runs(), (QList<QStringList>{{u"-e"_s, pauseSpotify}}));
}

void tst_AppleScriptPlayers::pausesTheOther()
{
    registry->running = {u"com.spotify.client"_s, u"com.apple.Music"_s};
    players->pauseOthers();
    QTRY_COMPARE(runs(), (QList<QStringList>{{u"-e"_s, pauseMusic}}));
}

void tst_AppleScriptPlayers::playsAnItem_data()
{
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("played");
    QTest::newRow("track") << u"spotify:track:ID"_s << u"spotify:track:ID"_s;
    QTest::newRow("playlist") << u"spotify:playlist:ID"_s << u"spotify:playlist:ID"_s;
    QTest::newRow("quote") << u"spotify:track:ab\"c"_s << u"spotify:track:abc"_s;
    QTest::newRow("hostile") << u"spotify:track:\"\ndo shell script \"touch x\" -- \\"_s
                             << u"spotify:track:doshellscripttouchx"_s;
}

void tst_AppleScriptPlayers::playsAnItem()
{
    QFETCH(QString, uri);
    QFETCH(QString, played);
    players->playSpotify(uri);
    QTRY_COMPARE(runs(), (QList<QStringList>{{u"-e"_s, play.arg(played)}}));
}

void tst_AppleScriptPlayers::discardsWhatTheRunnerSays()
{
    writeRunner("channels=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2); echo \"$channels\" >\"$0.channels\"");
    players->playSpotify(u"spotify:track:ID"_s);
    QTRY_COMPARE(content(u"runner.channels"_s), QByteArray("/dev/null\n/dev/null\n/dev/null\n"));
}

void tst_AppleScriptPlayers::doesNotWaitForTheRunner()
{
    // It ends by a signal only.
    writeRunner("echo $$ >>\"$0.pids\"; exec tail -f /dev/null");
    registry->running = {u"com.spotify.client"_s};
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 4; ++i)
        players->pauseSpotify();
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
    QTRY_COMPARE(content(u"runner.pids"_s).count('\n'), 4);
    players.reset(); // nor at the end
    const QList<QByteArray> pids = content(u"runner.pids"_s).trimmed().split('\n');
    for (const QByteArray &pid : pids)
        QCOMPARE(::kill(pid.toInt(), SIGTERM), 0);
}

void tst_AppleScriptPlayers::survivesARunnerThatFails_data()
{
    QTest::addColumn<QByteArray>("runner"); // empty: there is none
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("fails") << QByteArray("echo failed >&2; printf x >>\"$0.failed\"; exit 1");
    QTest::newRow("crashes") << QByteArray("printf x >>\"$0.failed\"; kill -SEGV $$");
}

void tst_AppleScriptPlayers::survivesARunnerThatFails()
{
    QFETCH(QByteArray, runner);
    registry->running = {u"com.spotify.client"_s};
    if (runner.isEmpty())
        QVERIFY(QFile::remove(folder->filePath(u"runner"_s)));
    else
        writeRunner(runner);
    players->pauseSpotify();
    if (!runner.isEmpty())
        QTRY_COMPARE(content(u"runner.failed"_s), QByteArray("x"));
    // Nothing is tried again, and the next request is made as usual.
    writeRunner("printf '%s\\0' \"$@\" '' >>\"$0.runs\"");
    players->pauseSpotify();
    QTRY_COMPARE(runs(), (QList<QStringList>{{u"-e"_s, pauseSpotify}}));
}

void tst_AppleScriptPlayers::asksTheRegistryWhatIsInstalled()
{
    QVERIFY(!players->spotifyInstalled());
    registry->installed = {u"com.apple.Music"_s};
    QVERIFY(!players->spotifyInstalled());
    registry->installed = {u"com.spotify.client"_s};
    QVERIFY(players->spotifyInstalled());
    QCOMPARE(AppleScriptPlayers::systemRunner, u"/usr/bin/osascript"_s);
}

QTEST_GUILESS_MAIN(tst_AppleScriptPlayers)
#include "tst_AppleScriptPlayers.moc"
