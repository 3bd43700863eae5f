#include "platform/linux/evdev/EvdevKeySource.h"

#include "support/FakeClock.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace kelp;
using namespace Qt::StringLiterals;

/// What a folder of devices may hold besides keyboards that may be read.
class tst_EvdevKeySource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void worksWithoutAFolder();
    void takesNothingForAKeyboardThatIsNone();
    void looksAgainWhenTheFolderChanges();
    void looksAgainOnlyOnceForAStormOfChanges();
    void doesNotPollTheFolder();

private:
    std::unique_ptr<QTemporaryDir> folder;
};

void tst_EvdevKeySource::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
}

void tst_EvdevKeySource::worksWithoutAFolder()
{
    test::FakeClock clock;
    EvdevKeySource source(clock, folder->filePath(u"none"_s));
    source.start();
    QVERIFY(!source.seesAll());
}

void tst_EvdevKeySource::takesNothingForAKeyboardThatIsNone()
{
    QFile file(folder->filePath(u"event0"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("no device");
    file.close();
    QVERIFY(QDir(folder->path()).mkdir(u"event1"_s));
    QVERIFY(QFile::link(u"/dev/null"_s, folder->filePath(u"event2"_s)));
    QVERIFY(QFile::link(u"/nonexistent"_s, folder->filePath(u"event3"_s)));
    QVERIFY(QFile::link(u"/dev/zero"_s, folder->filePath(u"event4"_s)));
    // Opening this one for reading would wait for a writer, if it were opened to wait.
    QCOMPARE(::mkfifo(QFile::encodeName(folder->filePath(u"event5"_s)).constData(), 0600), 0);
    test::FakeClock clock;
    EvdevKeySource source(clock, folder->path());
    const QSignalSpy changed(&source, &KeySource::seesAllChanged);
    const QSignalSpy pressed(&source, &KeySource::pressed);
    source.start();
    QVERIFY(!source.seesAll());
    QCOMPARE(changed.size(), 0);
    QCOMPARE(pressed.size(), 0);
}

void tst_EvdevKeySource::looksAgainWhenTheFolderChanges()
{
    test::FakeClock clock;
    EvdevKeySource source(clock, folder->path());
    source.start();
    QFile file(folder->filePath(u"event0"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    const auto looked = [&] {
        clock.advance(1);
        return clock.wakeUps();
    };
    QTRY_COMPARE(looked(), 1);
    // The rights to a device are granted later than it comes.
    QVERIFY(file.setPermissions(QFile::ReadOwner));
    QTRY_COMPARE(looked(), 2);
}

void tst_EvdevKeySource::looksAgainOnlyOnceForAStormOfChanges()
{
    test::FakeClock clock;
    EvdevKeySource source(clock, folder->path());
    source.start();
    // Each comes to the watcher by itself, but none is looked for before the clock goes on.
    for (int i = 0; i < 50; ++i) {
        QFile file(folder->filePath(u"event%1"_s.arg(i)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCoreApplication::processEvents();
    }
    const auto looked = [&] {
        clock.advance(1);
        return clock.wakeUps();
    };
    QTRY_VERIFY(looked() >= 1);
    QVERIFY(looked() <= 2);
}

void tst_EvdevKeySource::doesNotPollTheFolder()
{
    test::FakeClock clock;
    EvdevKeySource source(clock, folder->path());
    source.start();
    clock.advance(3600);
    QCOMPARE(clock.wakeUps(), 0);
}

QTEST_GUILESS_MAIN(tst_EvdevKeySource)
#include "tst_EvdevKeySource.moc"
