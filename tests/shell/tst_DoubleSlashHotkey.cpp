#include "preferences/Preferences.h"
#include "shell/DoubleSlashHotkey.h"

#include <QSignalSpy>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

class FakeKeySource final : public KeySource
{
public:
    void start() override { isStarted = true; }
    [[nodiscard]] bool seesAll() const override { return all; }
    void setSeesAll(bool sees)
    {
        all = sees;
        Q_EMIT seesAllChanged();
    }

    bool isStarted = false;
    bool all = false;
};

KeyPress slash(double time)
{
    return {.time = time, .text = u"/"_s};
}

KeyPress other(double time)
{
    return {.time = time, .text = u"a"_s};
}

} // namespace

Q_DECLARE_METATYPE(QList<kelp::KeyPress>)

class tst_DoubleSlashHotkey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void triggersOnADeliberateDoubleSlash_data();
    void triggersOnADeliberateDoubleSlash();
    void neverTriggersOnATypedAddress_data();
    void neverTriggersOnATypedAddress();
    void leavesItsStateAloneWhileSwitchedOff();
    void readsTheSwitchAtEveryKey();
    void hearsEveryKeyOnce();
    void saysWhatLimitsIt();
};

void tst_DoubleSlashHotkey::triggersOnADeliberateDoubleSlash_data()
{
    QTest::addColumn<QList<KeyPress>>("keys");
    QTest::addColumn<int>("triggers");
    const auto row = [](const QByteArray &name, const QList<KeyPress> &keys, int triggers) {
        QTest::newRow(name.constData()) << keys << triggers;
    };
    row("two", {slash(10), slash(10.1)}, 1);
    row("one", {slash(10)}, 0);
    row("0.4 s apart", {slash(10), slash(10.4)}, 1);
    row("0.4 s apart, not exact in binary", {slash(4), slash(4.4)}, 1);
    row("0.41 s apart", {slash(10), slash(10.41)}, 0);
    row("a late second one arms anew", {slash(10), slash(10.41), slash(10.8)}, 1);
    row("0.5 s after a letter", {other(10), slash(10.5), slash(10.6)}, 0);
    row("0.6 s after a letter", {other(10), slash(10.6), slash(10.7)}, 1);
    row("0.6 s after a letter, not exact in binary", {other(4), slash(4.6), slash(4.7)}, 1);
    row("0.59 s after a letter", {other(10), slash(10.59), slash(10.7)}, 0);
    row("a slash too soon counts as typing", {other(10), slash(10.5), slash(11.09), slash(11.2)}, 0);
    row("a slash 0.6 s after one too soon", {other(10), slash(10.5), slash(11.1), slash(11.2)}, 1);
    row("a letter between", {slash(10), other(10.1), slash(10.2), slash(10.3)}, 0);
    row("a letter between, then quiet", {slash(10), other(10.1), slash(10.7), slash(10.8)}, 1);
    row("three trigger once", {slash(10), slash(10.1), slash(10.2)}, 1);
    row("a third and a fourth trigger again", {slash(10), slash(10.1), slash(10.2), slash(10.3)}, 2);
    row("right after the clock began", {slash(0.3), slash(0.4)}, 0);

    KeyPress repeated = slash(10.1);
    repeated.isRepeat = true;
    row("held", {slash(10), repeated}, 0);
    row("holding disarms", {slash(10), repeated, slash(10.3), slash(10.35)}, 0);
    for (bool KeyPress::*modifier : {&KeyPress::control, &KeyPress::alt, &KeyPress::meta}) {
        KeyPress modified = slash(10.1);
        modified.*modifier = true;
        const QByteArray number = modifier == &KeyPress::control ? "control"
                                  : modifier == &KeyPress::alt   ? "alt"
                                                                 : "meta";
        row(number + " with the second", {slash(10), modified}, 0);
        row(number + " with one between disarms", {slash(10), modified, slash(10.2), slash(10.3)}, 0);
        modified.time = 10;
        row(number + " with the first", {modified, slash(10.1)}, 0);
    }
    row("no text", {slash(10), {.time = 10.1}, slash(10.2)}, 0);
    row("a longer text", {{.time = 10, .text = u"//"_s}, {.time = 10.1, .text = u"//"_s}}, 0);
    row("another slash", {{.time = 10, .text = u"\u2215"_s}, {.time = 10.1, .text = u"\u2215"_s}}, 0);
}

void tst_DoubleSlashHotkey::triggersOnADeliberateDoubleSlash()
{
    QFETCH(QList<KeyPress>, keys);
    QFETCH(int, triggers);
    const Preferences preferences;
    DoubleSlashHotkey hotkey(preferences);
    const QSignalSpy triggered(&hotkey, &DoubleSlashHotkey::triggered);
    for (const KeyPress &key : keys)
        hotkey.handle(key);
    QCOMPARE(triggered.size(), triggers);
}

void tst_DoubleSlashHotkey::neverTriggersOnATypedAddress_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("gap"); // seconds from key to key
    for (const double gap : {0.0, 0.03, 0.1, 0.25, 0.4, 0.5, 0.59, 0.6, 0.7, 1.5}) {
        for (const char *text : {"https://kelp.app//x", "a // comment", "file:////"})
            QTest::addRow("%s every %.2f s", text, gap) << QString::fromLatin1(text) << gap;
    }
}

void tst_DoubleSlashHotkey::neverTriggersOnATypedAddress()
{
    QFETCH(QString, text);
    QFETCH(double, gap);
    const Preferences preferences;
    DoubleSlashHotkey hotkey(preferences);
    const QSignalSpy triggered(&hotkey, &DoubleSlashHotkey::triggered);
    double time = 100;
    for (const QChar &each : text) {
        hotkey.handle({.time = time, .text = QString(each)});
        time += gap;
    }
    QCOMPARE(triggered.size(), 0);
}

void tst_DoubleSlashHotkey::leavesItsStateAloneWhileSwitchedOff()
{
    Preferences preferences;
    DoubleSlashHotkey hotkey(preferences);
    const QSignalSpy triggered(&hotkey, &DoubleSlashHotkey::triggered);
    preferences.set(preference::doubleSlash, false);
    hotkey.handle(slash(10));
    hotkey.handle(slash(10.1));
    QCOMPARE(triggered.size(), 0);
    preferences.set(preference::doubleSlash, true);
    hotkey.handle(slash(20));
    preferences.set(preference::doubleSlash, false);
    hotkey.handle(other(20.1)); // neither disarms nor counts as typing
    preferences.set(preference::doubleSlash, true);
    hotkey.handle(slash(20.2));
    QCOMPARE(triggered.size(), 1);
}

void tst_DoubleSlashHotkey::readsTheSwitchAtEveryKey()
{
    Preferences preferences;
    DoubleSlashHotkey hotkey(preferences);
    const QSignalSpy triggered(&hotkey, &DoubleSlashHotkey::triggered);
    hotkey.handle(slash(10));
    preferences.set(preference::doubleSlash, false);
    hotkey.handle(slash(10.1));
    QCOMPARE(triggered.size(), 0);
}

void tst_DoubleSlashHotkey::hearsEveryKeyOnce()
{
    const Preferences preferences;
    FakeKeySource own;
    FakeKeySource everywhere;
    DoubleSlashHotkey hotkey(preferences);
    const QSignalSpy triggered(&hotkey, &DoubleSlashHotkey::triggered);
    hotkey.start(own, everywhere);
    QVERIFY(own.isStarted);
    QVERIFY(everywhere.isStarted);

    // Without the right to see all keys those of our own windows count.
    Q_EMIT own.pressed(slash(10));
    Q_EMIT own.pressed(slash(10.1));
    QCOMPARE(triggered.size(), 1);

    // With it, one key in one of our windows is told of by both.
    everywhere.setSeesAll(true);
    Q_EMIT everywhere.pressed(slash(20));
    Q_EMIT own.pressed(slash(20));
    QCOMPARE(triggered.size(), 1);
    Q_EMIT everywhere.pressed(slash(20.1));
    Q_EMIT own.pressed(slash(20.1));
    QCOMPARE(triggered.size(), 2);

    everywhere.setSeesAll(false);
    Q_EMIT own.pressed(slash(30));
    Q_EMIT own.pressed(slash(30.1));
    QCOMPARE(triggered.size(), 3);
}

void tst_DoubleSlashHotkey::saysWhatLimitsIt()
{
    const Preferences preferences;
    FakeKeySource own;
    FakeKeySource everywhere;
    DoubleSlashHotkey hotkey(preferences);
    QVERIFY(!hotkey.isTrusted());
    hotkey.start(own, everywhere);
    QVERIFY(!hotkey.isTrusted());
    const QSignalSpy changed(&hotkey, &DoubleSlashHotkey::trustedChanged);
    everywhere.setSeesAll(true);
    QCOMPARE(changed.size(), 1);
    QVERIFY(hotkey.isTrusted());
}

QTEST_GUILESS_MAIN(tst_DoubleSlashHotkey)
#include "tst_DoubleSlashHotkey.moc"
