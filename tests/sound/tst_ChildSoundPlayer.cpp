#include "sound/ChildSoundPlayer.h"

#include "base/Clock.h"
#include "sound/SoundBytes.h"

#include "support/EventLoopWatch.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace kelp;
using kelp::test::EventLoopWatch;
using namespace Qt::StringLiterals;

namespace {

/// One of so many has to leave the event loop turning: somebody else may have the processor for a while.
constexpr int rounds = 4;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// Kelp's side of the child process, with stand-ins that behave as badly as a decoder can.
class tst_ChildSoundPlayer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void handsTheSoundOver();
    void tellsTheCommandLine_data();
    void tellsTheCommandLine();
    void failsWithAChildThatMisbehaves_data();
    void failsWithAChildThatMisbehaves();
    void aSoundThatWasHeardHasNotFailed_data();
    void aSoundThatWasHeardHasNotFailed();
    void nothingElseIsTriedWhereThereIsNoOutput();
    void stopKillsTheChild();
    void theNextSoundKillsTheOneBefore();
    void whatWasStoppedDoesNotFail();
    void mayBePlayedAgainFromTheFailure();
    void theEndOfThePlayerKillsTheChild();
    void aChildThatPlaysIsNotTakenForOneThatHangs();

    void importsAFile();
    void importFails_data();
    void importFails();
    void nobodyIsToldOfAnImportWhoHasGone();
    void warmsUp();
    void bytesCannotBeChanged();

private:
    void makeChild(const QByteArray &script);
    [[nodiscard]] qint64 childPid() const { return contentOf(path(u"pid"_s)).trimmed().toLongLong(); }
    [[nodiscard]] bool isGone(qint64 pid) const { return ::kill(static_cast<pid_t>(pid), 0) != 0; }
    [[nodiscard]] QString path(const QString &name) const { return folder->filePath(name); }

    SystemClock clock;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ChildSoundPlayer> player;
    int failures = 0;
    std::function<void()> failed = [this] { ++failures; };
};

void tst_ChildSoundPlayer::init()
{
    player.reset();
    folder = std::make_unique<QTemporaryDir>();
    failures = 0;
}

/// `script` is what the child does; "hang" waits for ever in the script's own process.
void tst_ChildSoundPlayer::makeChild(const QByteArray &script)
{
    QFile file(path(u"child"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\ncd '" + QFile::encodeName(folder->path()) +
               "'\nprintf '%s\\n' \"$@\" >arguments\necho $$ >pid\n" + script + '\n');
    file.close();
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    player = std::make_unique<ChildSoundPlayer>(clock, file.fileName(), SoundChild::Patience{0.6, 0},
                                                SoundChild::Patience{0.6, 0.6});
}

void tst_ChildSoundPlayer::handsTheSoundOver()
{
    makeChild("cat >got; echo ready");
    const QSignalSpy finished(player.get(), &ChildSoundPlayer::finished);
    const auto bytes = std::make_shared<const SoundBytes>("RIFF and so on"_ba);
    for (int round = 1; round <= 2; ++round) {
        player->play({.bytes = bytes}, 0.5F, failed);
        QTRY_COMPARE(finished.size(), round);
        QCOMPARE(contentOf(path(u"got"_s)), "RIFF and so on"_ba);
        QFile::remove(path(u"got"_s));
    }
    QCOMPARE(failures, 0);
}

void tst_ChildSoundPlayer::tellsTheCommandLine_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("bytes");
    QTest::addColumn<float>("volume");
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::newRow("file") << u"/a b/--c.mp3"_s << QString() << false << 1.0F
                          << QByteArrayList{"play", "--volume", "1", "--file=/a b/--c.mp3"};
    QTest::newRow("name and bytes") << QString() << u"--Glass"_s << true << 0.8F
                                    << QByteArrayList{"play", "--volume", "0.8", "--name=--Glass", "--bytes"};
    QTest::newRow("soft") << QString() << QString() << true << 0.00001F
                          << QByteArrayList{"play", "--volume", "0.00001", "--bytes"};
}

void tst_ChildSoundPlayer::tellsTheCommandLine()
{
    QFETCH(QString, file);
    QFETCH(QString, name);
    QFETCH(bool, bytes);
    QFETCH(float, volume);
    QFETCH(QByteArrayList, arguments);
    makeChild("echo ready");
    const QSignalSpy finished(player.get(), &ChildSoundPlayer::finished);
    player->play({file, bytes ? std::make_shared<const SoundBytes>("RIFF"_ba) : nullptr, name}, volume, failed);
    QTRY_COMPARE(finished.size(), 1);
    arguments += {"--parent", QByteArray::number(QCoreApplication::applicationPid())};
    QCOMPARE(contentOf(path(u"arguments"_s)).trimmed().split('\n'), arguments);
}

void tst_ChildSoundPlayer::failsWithAChildThatMisbehaves_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("cannot play it") << "exit 1"_ba;
    QTest::newRow("crashes") << "kill -SEGV $$"_ba;
    QTest::newRow("hangs") << "while :; do sleep 1; done"_ba;
    QTest::newRow("hangs and does not listen") << "trap '' TERM INT HUP; while :; do sleep 1; done"_ba;
    QTest::newRow("spins") << "while :; do :; done"_ba;
    QTest::newRow("talks without end") << "while :; do echo nonsense; done"_ba;
    QTest::newRow("ends with a number of its own") << "exit 77"_ba;
    QTest::newRow("is not there") << QByteArray();
}

void tst_ChildSoundPlayer::failsWithAChildThatMisbehaves()
{
    QFETCH(QByteArray, script);
    makeChild(script);
    if (script.isNull())
        QVERIFY(QFile::remove(path(u"child"_s)));
    double shortest = EventLoopWatch::noticeable;
    for (int round = 1; round <= rounds && shortest >= EventLoopWatch::noticeable; ++round) {
        const EventLoopWatch watch;
        player->play({.file = u"/some.mp3"_s}, 0.5F, failed);
        QCOMPARE(failures, round - 1);
        QTRY_COMPARE(failures, round);
        if (!script.isNull())
            QTRY_VERIFY(isGone(childPid()));
        shortest = watch.longestGap();
    }
    QVERIFY2(shortest < EventLoopWatch::noticeable, qPrintable(QString::number(shortest)));
}

void tst_ChildSoundPlayer::aSoundThatWasHeardHasNotFailed_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("a damaged end") << "echo ready; exit 1"_ba;
    QTest::newRow("a crash") << "echo ready; kill -SEGV $$"_ba;
    QTest::newRow("the server goes") << "echo ready; exit 3"_ba;
}

void tst_ChildSoundPlayer::aSoundThatWasHeardHasNotFailed()
{
    QFETCH(QByteArray, script);
    makeChild(script);
    const QSignalSpy started(player.get(), &ChildSoundPlayer::started);
    const QSignalSpy finished(player.get(), &ChildSoundPlayer::finished);
    player->play({.file = u"/some.mp3"_s}, 0.5F, failed);
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(started.size(), 1);
    QCOMPARE(failures, 0);
}

void tst_ChildSoundPlayer::nothingElseIsTriedWhereThereIsNoOutput()
{
    makeChild("exit 3");
    const QSignalSpy finished(player.get(), &ChildSoundPlayer::finished);
    player->play({.file = u"/some.mp3"_s}, 0.5F, failed);
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(failures, 0);
}

void tst_ChildSoundPlayer::stopKillsTheChild()
{
    makeChild("trap '' TERM; echo ready; while :; do sleep 1; done");
    const QSignalSpy started(player.get(), &ChildSoundPlayer::started);
    player->play({.file = u"/some.mp3"_s}, 0.5F, failed);
    QTRY_COMPARE(started.size(), 1);
    const qint64 pid = childPid();
    QVERIFY(!isGone(pid));
    QElapsedTimer timer;
    timer.start();
    player->stop();
    QVERIFY(static_cast<double>(timer.elapsed()) < EventLoopWatch::noticeable);
    QTRY_VERIFY(isGone(pid));
    player->stop();
    QCOMPARE(failures, 0);
}

void tst_ChildSoundPlayer::theNextSoundKillsTheOneBefore()
{
    makeChild("echo ready; while :; do sleep 1; done");
    const QSignalSpy started(player.get(), &ChildSoundPlayer::started);
    player->play({.file = u"/first.mp3"_s}, 0.5F, failed);
    QTRY_COMPARE(started.size(), 1);
    const qint64 first = childPid();
    player->play({.file = u"/second.mp3"_s}, 0.5F, failed);
    QTRY_COMPARE(started.size(), 2);
    QTRY_VERIFY(isGone(first));
    QVERIFY(!isGone(childPid()));
}

void tst_ChildSoundPlayer::whatWasStoppedDoesNotFail()
{
    makeChild("exit 1");
    player->play({.file = u"/some.mp3"_s}, 0.5F, failed);
    player->stop();
    // A second one's failure comes after whatever the first could have told.
    int later = 0;
    player->play({.file = u"/other.mp3"_s}, 0.5F, [&] { ++later; });
    QTRY_COMPARE(later, 1);
    QCOMPARE(failures, 0);
}

void tst_ChildSoundPlayer::mayBePlayedAgainFromTheFailure()
{
    makeChild("case \"$*\" in *first*) exit 1;; esac; echo ready");
    const QSignalSpy finished(player.get(), &ChildSoundPlayer::finished);
    player->play({.file = u"/first.mp3"_s}, 0.5F, [this] { player->play({.file = u"/second.mp3"_s}, 0.5F, failed); });
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(failures, 0);
}

void tst_ChildSoundPlayer::theEndOfThePlayerKillsTheChild()
{
    makeChild("echo ready; while :; do sleep 1; done");
    const QSignalSpy started(player.get(), &ChildSoundPlayer::started);
    player->play({.file = u"/some.mp3"_s}, 0.5F, failed);
    QTRY_COMPARE(started.size(), 1);
    const qint64 pid = childPid();
    player.reset();
    QTRY_VERIFY(isGone(pid));
}

void tst_ChildSoundPlayer::aChildThatPlaysIsNotTakenForOneThatHangs()
{
    makeChild("echo ready; sleep 1.2; touch played");
    const QSignalSpy finished(player.get(), &ChildSoundPlayer::finished);
    player->play({.file = u"/long.mp3"_s}, 0.5F, failed);
    QTRY_COMPARE(finished.size(), 1);
    QVERIFY(QFile::exists(path(u"played"_s)));
    QCOMPARE(failures, 0);
}

void tst_ChildSoundPlayer::importsAFile()
{
    makeChild("echo ready; echo copied >copy");
    std::optional<Result<void, SoundError>> outcome;
    player->import(u"/some.mp3"_s, path(u"copy"_s), this, [&](const auto &result) { outcome = result; });
    QVERIFY(!outcome);
    QTRY_VERIFY(outcome);
    QVERIFY(outcome->has_value());
    QCOMPARE(contentOf(path(u"copy"_s)), "copied\n"_ba);
    QVERIFY(contentOf(path(u"arguments"_s)).startsWith("import\n--file=/some.mp3\n--to=" + path(u"copy"_s).toUtf8()));
}

void tst_ChildSoundPlayer::importFails_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<SoundError::Kind>("kind");
    QTest::newRow("no sound") << "exit 1"_ba << SoundError::Kind::corruptFile;
    QTest::newRow("crash") << "echo half >copy; kill -SEGV $$"_ba << SoundError::Kind::corruptFile;
    QTest::newRow("hangs decoding") << "while :; do sleep 1; done"_ba << SoundError::Kind::corruptFile;
    QTest::newRow("hangs copying") << "echo ready; echo half >copy; while :; do sleep 1; done"_ba
                                   << SoundError::Kind::corruptFile;
    QTest::newRow("full disk") << "echo ready; exit 4"_ba << SoundError::Kind::copy;
    QTest::newRow("not there") << QByteArray() << SoundError::Kind::corruptFile;
}

void tst_ChildSoundPlayer::importFails()
{
    QFETCH(QByteArray, script);
    QFETCH(SoundError::Kind, kind);
    makeChild(script);
    if (script.isNull())
        QVERIFY(QFile::remove(path(u"child"_s)));
    double shortest = EventLoopWatch::noticeable;
    for (int round = 1; round <= rounds && shortest >= EventLoopWatch::noticeable; ++round) {
        const EventLoopWatch watch;
        std::optional<Result<void, SoundError>> outcome;
        player->import(u"/some.mp3"_s, path(u"copy"_s), this, [&](const auto &result) { outcome = result; });
        QTRY_VERIFY(outcome);
        QVERIFY(!outcome->has_value());
        QCOMPARE(outcome->error().kind, kind);
        QVERIFY(!QFile::exists(path(u"copy"_s)));
        shortest = watch.longestGap();
    }
    QVERIFY2(shortest < EventLoopWatch::noticeable, qPrintable(QString::number(shortest)));
}

void tst_ChildSoundPlayer::nobodyIsToldOfAnImportWhoHasGone()
{
    makeChild("echo ready; echo copied >copy");
    auto view = std::make_unique<QObject>();
    player->import(u"/some.mp3"_s, path(u"copy"_s), view.get(), [](const auto &) { QFAIL("it has gone"); });
    view.reset();
    std::optional<Result<void, SoundError>> outcome;
    player->import(u"/some.mp3"_s, path(u"copy"_s), this, [&](const auto &result) { outcome = result; });
    QTRY_VERIFY(outcome);
}

void tst_ChildSoundPlayer::warmsUp()
{
    makeChild("touch warm");
    player->warmUp();
    QTRY_VERIFY(QFile::exists(path(u"warm"_s)));
    QVERIFY(contentOf(path(u"arguments"_s)).startsWith("warm\n--parent\n"));
}

void tst_ChildSoundPlayer::bytesCannotBeChanged()
{
    const SoundBytes bytes("RIFF"_ba);
    QVERIFY(bytes.isValid());
    QFile file(bytes.path());
    QVERIFY(!file.open(QIODevice::ReadWrite) || (file.write("WAVE") == 4 && !file.flush()));
    QCOMPARE(contentOf(bytes.path()), "RIFF"_ba);
}

QTEST_GUILESS_MAIN(tst_ChildSoundPlayer)
#include "tst_ChildSoundPlayer.moc"
