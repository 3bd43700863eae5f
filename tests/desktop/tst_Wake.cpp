#include "desktop/OneAccount.h"
#include "support/KelpProcess.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

/// What the computer's services tell over the system bus makes the running application read the calendars again.
class tst_Wake : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void refreshesAfterSleep();
    void refreshesWhenTheNetworkReturns();
    void aStormOfSignalsIsOneRefreshInFiveSeconds();

private:
    void say(const QString &path, const QString &interface, const QString &name, const QVariant &value);
    void sleepSignal(bool goingDown);
    void networkSignal(uint state);
    [[nodiscard]] bool isListening();
    [[nodiscard]] qsizetype refreshes() const { return oneAccount::refreshes(*sandbox); }

    PrivateDesktop desktop;
    std::unique_ptr<PrivateBus> systemBus;
    std::unique_ptr<Sandbox> sandbox;
    std::unique_ptr<KelpProcess> kelp;
};

void tst_Wake::initTestCase()
{
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
}

/// Starts Kelp and waits until its first refresh is over and it listens to the bus.
void tst_Wake::init()
{
    desktop.forget();
    oneAccount::signIn(desktop);
    systemBus = std::make_unique<PrivateBus>();
    QVERIFY(systemBus->start());
    sandbox = std::make_unique<Sandbox>();
    QVERIFY2(sandbox->start(oneAccount::seed()), qPrintable(sandbox->error()));
    kelp = std::make_unique<KelpProcess>(desktop);
    kelp->use(*sandbox);
    kelp->set(u"DBUS_SYSTEM_BUS_ADDRESS"_s, systemBus->address());
    QVERIFY(kelp->start());
    QTRY_COMPARE(sandbox->requests().size(), 4);
    QTRY_VERIFY(isListening());
    QCOMPARE(refreshes(), 1);
}

void tst_Wake::cleanup()
{
    if (QTest::currentTestFailed() && kelp)
        qInfo().noquote() << kelp->output();
    kelp.reset();
    sandbox.reset();
    systemBus.reset();
}

void tst_Wake::say(const QString &path, const QString &interface, const QString &name, const QVariant &value)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
    signal << value;
    QVERIFY(systemBus->connection().send(signal));
}

void tst_Wake::sleepSignal(bool goingDown)
{
    say(u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s, goingDown);
}

void tst_Wake::networkSignal(uint state)
{
    say(u"/org/freedesktop/NetworkManager"_s, u"org.freedesktop.NetworkManager"_s, u"StateChanged"_s, state);
}

/// Whether somebody has asked the bus for both signals.
bool tst_Wake::isListening()
{
    const QDBusMessage ask =
        QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                       u"org.freedesktop.DBus.Debug.Stats"_s, u"GetAllMatchRules"_s);
    const QDBusMessage answer = systemBus->connection().call(ask);
    if (answer.type() != QDBusMessage::ReplyMessage)
        return false;
    QMap<QString, QStringList> rules;
    answer.arguments().first().value<QDBusArgument>() >> rules;
    QString all;
    for (const QStringList &each : rules)
        all += each.join(u'\n');
    return all.contains("member='PrepareForSleep'"_L1) && all.contains("member='StateChanged'"_L1);
}

void tst_Wake::refreshesAfterSleep()
{
    sleepSignal(true);
    sleepSignal(false);
    QTRY_COMPARE(sandbox->requests().size(), 7);
    // Falling asleep was none; it would have made a second one wait for its turn.
    QCOMPARE(refreshes(), 2);
}

void tst_Wake::refreshesWhenTheNetworkReturns()
{
    networkSignal(20); // disconnected
    networkSignal(40); // connecting
    networkSignal(70); // connected to the world
    QTRY_COMPARE(sandbox->requests().size(), 7);
    QCOMPARE(refreshes(), 2);
}

void tst_Wake::aStormOfSignalsIsOneRefreshInFiveSeconds()
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 50; ++i) {
        sleepSignal(false);
        networkSignal(20);
        networkSignal(70);
    }
    QTRY_COMPARE(refreshes(), 2);
    const qint64 first = timer.elapsed();
    QTRY_COMPARE_WITH_TIMEOUT(refreshes(), 3, 8000);
    const qint64 second = timer.elapsed();
    QVERIFY2(second - first > 4500, qPrintable(QString::number(second - first)));
    // All of the storm is behind it: what comes now waits its five seconds and is one more.
    sleepSignal(false);
    QTRY_COMPARE_WITH_TIMEOUT(refreshes(), 4, 8000);
    QVERIFY(timer.elapsed() - second > 4500);
}

QTEST_GUILESS_MAIN(tst_Wake)

#include "tst_Wake.moc"
