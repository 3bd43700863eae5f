#include "desktop/OverlayRig.h"
#include "platform/linux/x11/X11ScreenCover.h"
#include "support/BrightClient.h"
#include "support/PrivateBus.h"
#include "support/XServer.h"

#include <QTest>

#include <cstdio>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

XServer *server = nullptr;

} // namespace

/// The overlay under the window manager that KELP_WINDOW_MANAGER names, over a full-screen window and a panel.
class tst_OverlayManagers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void coversEverythingOnEveryWorkspace();
    void coversAWindowThatComesLater();
    void returnArrivesTwentyTimesOfTwenty();
    void escapeArrivesTwentyTimesOfTwenty();
    void theKeyboardGoesBackAfterwards();

private:
    void showAndWait();
    [[nodiscard]] QString received();

    QProcess client;
    QProcess panel;
    QString clientKeys; ///< what it got in this test
    std::unique_ptr<OverlayRig> rig;
};

void tst_OverlayManagers::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"xcb"_s);
    QCOMPARE(QGuiApplication::screens().size(), 2);
    server->run(u"xsetroot"_s, {u"-solid"_s, u"#00ff00"_s});
    server->run(u"xdotool"_s, {u"mousemove"_s, u"300"_s, u"600"_s});
    const QString self = QCoreApplication::applicationFilePath();
    QVERIFY(server->launch(panel, self, {QLatin1String(BrightClient::panelArgument)}));
    QTRY_VERIFY(server->run(u"wmctrl"_s, {u"-l"_s}).contains("work"_L1));
    QVERIFY(server->launch(client, self, {QLatin1String(BrightClient::argument)}, XServer::Output::Readable));
    QTRY_COMPARE(uncovered(server->picture(), QRect(0, 0, 1280, 720)), 1280 * 720);
    QTRY_VERIFY((server->run(u"xdotool"_s, {u"key"_s, u"x"_s}), !received().isEmpty())); // it has the keyboard
    server->run(u"wmctrl"_s, {u"-n"_s, u"2"_s});
}

void tst_OverlayManagers::cleanupTestCase()
{
    for (QProcess *each : {&client, &panel}) {
        if (each->state() == QProcess::NotRunning)
            continue;
        each->terminate();
        QVERIFY(each->waitForFinished());
    }
}

void tst_OverlayManagers::init()
{
    (void)received();
    clientKeys.clear();
    rig = std::make_unique<OverlayRig>();
    QVERIFY(qobject_cast<X11ScreenCover *>(rig->cover.get()));
}

void tst_OverlayManagers::cleanup()
{
    rig.reset();
    QTRY_VERIFY(OverlayRig::areAllGone());
}

void tst_OverlayManagers::showAndWait()
{
    rig->show();
    QTRY_COMPARE(OverlayRig::views().size(), 2);
    QTRY_VERIFY(OverlayRig::hasKeyboard());
    QTRY_COMPARE(server->focused(), OverlayRig::keyboardWindow());
}

QString tst_OverlayManagers::received()
{
    client.waitForReadyRead(1);
    clientKeys += QString::fromUtf8(client.readAllStandardOutput()).simplified();
    return clientKeys;
}

void tst_OverlayManagers::coversEverythingOnEveryWorkspace()
{
    const bool composites = qEnvironmentVariableIsSet("KELP_COMPOSITING");
    QTRY_COMPARE(rig->cover->fade(), composites ? ScreenCover::Fade::WindowOpacity : ScreenCover::Fade::Picture);
    QVERIFY(uncovered(server->picture()) >= 1280 * 720);
    showAndWait();
    QTRY_COMPARE(uncovered(server->picture()), 0);
    server->run(u"wmctrl"_s, {u"-s"_s, u"1"_s});
    QTRY_VERIFY(server->run(u"wmctrl"_s, {u"-d"_s}).contains("1  * "_L1));
    QCOMPARE(uncovered(server->picture()), 0);
    QTRY_COMPARE(server->focused(), OverlayRig::keyboardWindow());
    server->run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
    QTRY_VERIFY(!rig->controller->isShown());
    server->run(u"wmctrl"_s, {u"-s"_s, u"0"_s});
    QTRY_VERIFY(server->run(u"wmctrl"_s, {u"-d"_s}).contains("0  * "_L1));
}

void tst_OverlayManagers::coversAWindowThatComesLater()
{
    showAndWait();
    QTRY_COMPARE(uncovered(server->picture()), 0);
    QProcess later;
    const auto before = server->run(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^work$"_s});
    QVERIFY(server->launch(later, QCoreApplication::applicationFilePath(), {QLatin1String(BrightClient::argument)}));
    QTRY_VERIFY(server->run(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^work$"_s}) != before);
    QTRY_COMPARE(server->focused(), OverlayRig::keyboardWindow());
    QCOMPARE(uncovered(server->picture()), 0);
    server->run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
    QTRY_VERIFY(!rig->controller->isShown());
    later.terminate();
    QVERIFY(later.waitForFinished());
}

void tst_OverlayManagers::returnArrivesTwentyTimesOfTwenty()
{
    for (int round = 1; round <= 20; ++round) {
        showAndWait();
        server->run(u"xdotool"_s, {u"key"_s, u"Return"_s});
        QTRY_COMPARE(rig->opener.opened.size(), round);
        QVERIFY(!rig->controller->isShown());
    }
    QCOMPARE(received(), QString());
}

void tst_OverlayManagers::escapeArrivesTwentyTimesOfTwenty()
{
    for (int round = 1; round <= 20; ++round) {
        showAndWait();
        server->run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
        QTRY_VERIFY(!rig->controller->isShown());
    }
    QVERIFY(rig->opener.opened.isEmpty());
    QCOMPARE(received(), QString());
}

void tst_OverlayManagers::theKeyboardGoesBackAfterwards()
{
    const QString window = server->run(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^work$"_s});
    server->run(u"xdotool"_s, {u"windowactivate"_s, u"--sync"_s, window.section(u'\n', -2, -2)});
    showAndWait();
    rig->controller->hide(true);
    QTRY_VERIFY((server->run(u"xdotool"_s, {u"key"_s, u"y"_s}), received().contains(u'Y')));
}

int main(int argc, char **argv)
{
    if (BrightClient::isAsked(argc, argv))
        return BrightClient::run(argc, argv);
    PrivateBus bus;
    if (!bus.start()) {
        std::fputs("dbus-daemon does not start\n", stderr);
        return 1;
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());
    XServer x({{1280, 720}, {1280, 720}});
    if (!x.start(qEnvironmentVariable("KELP_WINDOW_MANAGER", u"openbox"_s))) {
        std::fprintf(stderr, "%s\n", qPrintable(x.problem()));
        return 1;
    }
    server = &x;
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    tst_OverlayManagers test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_OverlayManagers.moc"
