#include "platform/linux/evdev/EvdevKeySource.h"

#include "support/FakeClock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <linux/input.h>
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
    void hearsAKeyboardAsSoonAsItMayBeRead();
    void hearsTheRestWhenAKeyboardGoes();

private:
    /// Keyboards of which a test decides whether they may be read, and what is typed on them.
    struct FakeKeyboards
    {
        [[nodiscard]] EvdevKeySource::Open opener()
        {
            return [this](const QString &path, const EvdevKeyboard::Take &take, const std::function<void()> &lost) {
                if (!readable.contains(QFileInfo(path).fileName()))
                    return std::shared_ptr<void>();
                takers.insert(QFileInfo(path).fileName(), take);
                losers.insert(QFileInfo(path).fileName(), lost);
                return std::shared_ptr<void>(std::make_shared<int>());
            };
        }
        /// At that second of the kernel's clock.
        void type(const QString &keyboard, int key, int second) const
        {
            for (const int value : {1, 0}) {
                input_event event{};
                event.input_event_sec = second;
                event.type = EV_KEY;
                event.code = static_cast<quint16>(key);
                event.value = value;
                takers[keyboard](event);
            }
        }

        QSet<QString> readable;
        QHash<QString, EvdevKeyboard::Take> takers;
        QHash<QString, std::function<void()>> losers;
    };

    void addDevice(const QString &name) const;

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

void tst_EvdevKeySource::addDevice(const QString &name) const
{
    QFile file(folder->filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
}

void tst_EvdevKeySource::hearsAKeyboardAsSoonAsItMayBeRead()
{
    test::FakeClock clock;
    FakeKeyboards keyboards;
    addDevice(u"event0"_s);
    EvdevKeySource source(clock, folder->path(), keyboards.opener());
    const QSignalSpy changed(&source, &KeySource::seesAllChanged);
    const QSignalSpy pressed(&source, &KeySource::pressed);
    source.start();
    QVERIFY(!source.seesAll());
    // The user is granted the right to read it, while Kelp runs.
    keyboards.readable.insert(u"event0"_s);
    QVERIFY(QFile::setPermissions(folder->filePath(u"event0"_s), QFile::ReadOwner));
    const auto looked = [&] {
        clock.advance(1);
        return source.seesAll();
    };
    QTRY_VERIFY(looked());
    QCOMPARE(changed.size(), 1);
    keyboards.type(u"event0"_s, KEY_SLASH, 7);
    QCOMPARE(pressed.size(), 1);
    const auto key = pressed.first().first().value<KeyPress>();
    QCOMPARE(key.text, u"/"_s);
    QCOMPARE(key.time, 7.0);
    QVERIFY(!key.isRepeat);
}

void tst_EvdevKeySource::hearsTheRestWhenAKeyboardGoes()
{
    test::FakeClock clock;
    FakeKeyboards keyboards;
    addDevice(u"event0"_s);
    addDevice(u"event1"_s);
    keyboards.readable = {u"event0"_s, u"event1"_s};
    EvdevKeySource source(clock, folder->path(), keyboards.opener());
    const QSignalSpy changed(&source, &KeySource::seesAllChanged);
    const QSignalSpy pressed(&source, &KeySource::pressed);
    source.start();
    QCOMPARE(changed.size(), 1);
    keyboards.losers[u"event0"_s]();
    QCoreApplication::processEvents();
    QVERIFY(source.seesAll());
    keyboards.type(u"event1"_s, KEY_SLASH, 8);
    QCOMPARE(pressed.size(), 1);
    keyboards.losers[u"event1"_s]();
    QTRY_VERIFY(!source.seesAll());
    QCOMPARE(changed.size(), 2);
}

QTEST_GUILESS_MAIN(tst_EvdevKeySource)
#include "tst_EvdevKeySource.moc"
