#include "desktop/OneAccount.h"
#include "support/KelpProcess.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

/// One Kelp per session and configuration folder, whatever state the session's bus is in.
class tst_SingleInstance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void startingItAgainTogglesThePanel();
    void startingItAgainBringsAPanelBehindOthersForward();
    void anotherConfigurationHasAKelpOfItsOwn();
    void withoutABusTheFirstOneStays();
    void whoComesWithoutABusFindsTheOneWithIt();
    void aKilledOneLeavesNoLock();
    void aBusThatNeverAnswersDoesNotKeepItFromStarting();

private:
    static constexpr int patience = 12'000; // ms

    PrivateDesktop desktop;
};

void tst_SingleInstance::initTestCase()
{
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
}

void tst_SingleInstance::init()
{
    desktop.forget();
    desktop.writePreferences(oneAccount::preferences());
}

void tst_SingleInstance::startingItAgainTogglesThePanel()
{
    KelpProcess first(desktop);
    QVERIFY(first.start());
    QTRY_VERIFY_WITH_TIMEOUT(first.panelIsActive(), patience);
    for (int round = 0; round < 2; ++round) {
        KelpProcess hiding(desktop);
        QVERIFY(hiding.start());
        QCOMPARE(hiding.exitStatus(), 0);
        QVERIFY(hiding.output().contains("Kelp is running already."));
        QTRY_VERIFY(first.windows().isEmpty());
        KelpProcess showing(desktop);
        QVERIFY(showing.start());
        QCOMPARE(showing.exitStatus(), 0);
        QTRY_VERIFY(first.panelIsActive());
    }
    QVERIFY(first.isRunning());
}

void tst_SingleInstance::startingItAgainBringsAPanelBehindOthersForward()
{
    KelpProcess first(desktop);
    QVERIFY(first.start());
    QTRY_VERIFY_WITH_TIMEOUT(first.panelIsActive(), patience);
    QProcess other;
    QVERIFY(desktop.display().launch(other, u"xterm"_s, {u"-e"_s, u"cat"_s}));
    QTRY_COMPARE(desktop.display().run(u"xdotool"_s, {u"getwindowfocus"_s, u"getwindowpid"_s}).trimmed(),
                 QString::number(other.processId()));
    KelpProcess second(desktop);
    QVERIFY(second.start());
    QCOMPARE(second.exitStatus(), 0);
    QTRY_VERIFY(first.panelIsActive());
    other.terminate();
    QVERIFY(other.waitForFinished());
}

void tst_SingleInstance::anotherConfigurationHasAKelpOfItsOwn()
{
    KelpProcess first(desktop);
    QVERIFY(first.start());
    KelpProcess second(desktop);
    second.set(u"XDG_CONFIG_HOME"_s, desktop.folder(u"other"_s));
    QVERIFY(second.start());
    QTRY_COMPARE_WITH_TIMEOUT(first.windows().size(), 1, patience);
    QTRY_COMPARE_WITH_TIMEOUT(second.windows().size(), 1, patience);
}

void tst_SingleInstance::withoutABusTheFirstOneStays()
{
    KelpProcess first(desktop);
    first.set(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    QVERIFY(first.start());
    QTRY_VERIFY_WITH_TIMEOUT(first.panelIsActive(), patience);
    KelpProcess second(desktop);
    second.set(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    QVERIFY(second.start());
    QCOMPARE(second.exitStatus(), 0);
    QVERIFY(second.output().contains("Kelp is running already."));
    QVERIFY(first.panelIsActive());
}

void tst_SingleInstance::whoComesWithoutABusFindsTheOneWithIt()
{
    KelpProcess first(desktop);
    QVERIFY(first.start());
    QTRY_VERIFY_WITH_TIMEOUT(first.panelIsActive(), patience);
    KelpProcess second(desktop);
    second.set(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    QVERIFY(second.start());
    QCOMPARE(second.exitStatus(), 0);
    QVERIFY(second.output().contains("Kelp is running already."));
    QVERIFY(first.panelIsActive());
}

void tst_SingleInstance::aKilledOneLeavesNoLock()
{
    for (const QString &bus : {desktop.sessionBus().address(), u"unix:path=/nonexistent"_s}) {
        for (int round = 0; round < 2; ++round) {
            KelpProcess kelp(desktop);
            kelp.set(u"DBUS_SESSION_BUS_ADDRESS"_s, bus);
            QVERIFY(kelp.start());
            QTRY_VERIFY_WITH_TIMEOUT(kelp.panelIsActive(), patience);
            kelp.killHard();
        }
    }
}

void tst_SingleInstance::aBusThatNeverAnswersDoesNotKeepItFromStarting()
{
    QLocalServer silent;
    QVERIFY(silent.listen(desktop.folder(u"run/silent"_s)));
    const QString address = u"unix:path="_s + silent.fullServerName();
    KelpProcess kelp(desktop);
    kelp.set(u"DBUS_SESSION_BUS_ADDRESS"_s, address);
    kelp.set(u"DBUS_SYSTEM_BUS_ADDRESS"_s, address);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(kelp.start());
    QTRY_VERIFY_WITH_TIMEOUT(kelp.panelIsActive(), 10'000);
    qInfo() << "the panel was there after" << timer.elapsed() << "ms";
    QVERIFY(silent.hasPendingConnections());
    // The window is alive, too: it closes when it is asked to.
    desktop.display().run(u"xdotool"_s, {u"getactivewindow"_s, u"windowclose"_s});
    QTRY_VERIFY(kelp.windows().isEmpty());
}

QTEST_GUILESS_MAIN(tst_SingleInstance)

#include "tst_SingleInstance.moc"
