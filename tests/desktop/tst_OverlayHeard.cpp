#include "desktop/OneAccount.h"
#include "support/KelpProcess.h"
#include "support/Sandbox.h"
#include "support/SoundServer.h"

#include <QDir>
#include <QTest>

#include <memory>

using namespace kelp::test;
using namespace kelp::test::oneAccount;
using namespace Qt::StringLiterals;

namespace {

constexpr int soon = 12'000; // ms: a tick comes every 5 s, and the machine may be busy

/// The processes that `parent` has started and that still run the program `name`.
QStringList playersOf(qint64 parent, const QString &name)
{
    QStringList result;
    for (const QString &process : QDir(u"/proc"_s).entryList({u"[0-9]*"_s}, QDir::Dirs)) {
        QFile status(u"/proc/%1/status"_s.arg(process));
        if (!status.open(QIODevice::ReadOnly))
            continue;
        const QString text = QString::fromLatin1(status.readAll());
        if (text.startsWith(u"Name:\t%1\n"_s.arg(name)) && text.contains(u"\nPPid:\t%1\n"_s.arg(parent)) &&
            !text.contains(u"\nState:\tZ"_s))
            result.append(process);
    }
    return result;
}

} // namespace

/// The released binary on a desktop with a sound server: what a user hears of a reminder.
class tst_OverlayHeard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void isHeardUntilItIsDismissed();
    void isSilentWhereTheUserWantsThat();
    void theSoundEndsWithKelp_data();
    void theSoundEndsWithKelp();

private:
    void startKelp(const QJsonObject &preferences);
    void waitUntilHeard(double begin);
    void waitUntilSilent();

    PrivateDesktop desktop;
    std::unique_ptr<SoundServer> server;
    std::unique_ptr<Sandbox> sandbox;
    std::unique_ptr<KelpProcess> kelp;
};

void tst_OverlayHeard::initTestCase()
{
    server = std::make_unique<SoundServer>();
    QVERIFY2(server->start(), qPrintable(server->problem()));
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
}

void tst_OverlayHeard::init()
{
    desktop.forget();
    sandbox = std::make_unique<Sandbox>();
    QVERIFY2(sandbox->start(seed(QJsonArray{meeting(u"review"_s, u"Design review"_s, 50)})),
             qPrintable(sandbox->error()));
    waitUntilSilent();
}

void tst_OverlayHeard::cleanup()
{
    if (QTest::currentTestFailed() && kelp)
        qInfo().noquote() << kelp->output();
    kelp.reset();
    sandbox.reset();
}

void tst_OverlayHeard::cleanupTestCase()
{
    server.reset();
}

void tst_OverlayHeard::startKelp(const QJsonObject &preferences)
{
    QJsonObject all = oneAccount::preferences();
    for (auto each = preferences.begin(); each != preferences.end(); ++each)
        all.insert(each.key(), each.value());
    desktop.writePreferences(all);
    desktop.writeAccount(email, refreshToken);
    kelp = std::make_unique<KelpProcess>(desktop);
    kelp->use(*sandbox);
    kelp->set(u"PULSE_SERVER"_s, server->address());
    kelp->set(u"PULSE_CLIENTCONFIG"_s, server->clientSettings());
    kelp->set(u"GSETTINGS_BACKEND"_s, u"memory"_s);
    QVERIFY(kelp->start());
}

void tst_OverlayHeard::waitUntilHeard(double begin)
{
    QTRY_VERIFY_WITH_TIMEOUT(server->heard(begin, server->recorded() - begin).peak > 0.1, soon);
}

void tst_OverlayHeard::waitUntilSilent()
{
    QTRY_VERIFY(server->heard(server->recorded() - 0.3, 0.3).peak == 0);
}

void tst_OverlayHeard::isHeardUntilItIsDismissed()
{
    const double begin = server->recorded();
    startKelp({{u"sound"_s, u"Singing bowl"_s}});
    waitUntilHeard(begin);
    QVERIFY(kelp->coversBothMonitors());
    QCOMPARE(playersOf(kelp->pid(), u"kelp-sound"_s).size(), 1);
    desktop.display().run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
    // It rings for 10 s when nobody stops it.
    QTRY_VERIFY_WITH_TIMEOUT(server->heard(server->recorded() - 0.2, 0.2).peak == 0, 3000);
    QTRY_COMPARE(playersOf(kelp->pid(), u"kelp-sound"_s), QStringList());
    QVERIFY(kelp->isRunning());
}

void tst_OverlayHeard::isSilentWhereTheUserWantsThat()
{
    const double begin = server->recorded();
    startKelp({{u"playSound"_s, false}}); // as older versions stored it
    QTRY_VERIFY_WITH_TIMEOUT(kelp->coversBothMonitors(), soon);
    const double shown = server->recorded();
    QTRY_VERIFY(server->recorded() > shown + 1);
    QCOMPARE(server->heard(begin, server->recorded() - begin).peak, 0.0);
}

void tst_OverlayHeard::theSoundEndsWithKelp_data()
{
    QTest::addColumn<bool>("hard");
    QTest::newRow("asked to end") << false;
    QTest::newRow("killed") << true;
}

void tst_OverlayHeard::theSoundEndsWithKelp()
{
    QFETCH(bool, hard);
    const double begin = server->recorded();
    startKelp({{u"sound"_s, u"Singing bowl"_s}});
    waitUntilHeard(begin);
    const QStringList players = playersOf(kelp->pid(), u"kelp-sound"_s);
    QCOMPARE(players.size(), 1);
    if (hard)
        kelp->killHard();
    else
        kelp->terminate();
    QTRY_VERIFY(!QFile::exists(u"/proc/%1/exe"_s.arg(players.first())) ||
                QFileInfo(u"/proc/%1/exe"_s.arg(players.first())).symLinkTarget().isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(server->heard(server->recorded() - 0.2, 0.2).peak == 0, 3000);
}

QTEST_GUILESS_MAIN(tst_OverlayHeard)
#include "tst_OverlayHeard.moc"
