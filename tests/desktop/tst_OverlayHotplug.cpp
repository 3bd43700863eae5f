#include "desktop/OverlayRig.h"
#include "support/BrightClient.h"
#include "support/XServer.h"

#include <QElapsedTimer>
#include <QTest>

#include <cstdio>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

XServer *server = nullptr;
const QRect left(0, 0, 1280, 720);
const QRect right(1280, 0, 1280, 720);
/// Milliseconds. A quiet machine needs a twentieth of it.
constexpr qint64 longest = 2000;

/// How many pixels of a monitor the overlay leaves uncovered.
int uncoveredOf(const QRect &monitor)
{
    return uncovered(server->picture(), monitor);
}

} // namespace

/// Monitors come, go and change while the overlay is up, on a real Xorg with its dummy driver. QT_SCREEN_SCALE_FACTORS
/// may give them different scales.
class tst_OverlayHotplug : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aMonitorThatReturnsIsCoveredAtOnce();
    void survivesAMonitorThatVanishesWhileFading_data();
    void survivesAMonitorThatVanishesWhileFading();
    void followsAMonitorThatIsResizedAndMoved();
    void followsThePrimaryMonitor();
    void followsMonitorsThatMove_data();
    void followsMonitorsThatMove();

private:
    void showAndWait();

    std::unique_ptr<OverlayRig> rig;
};

void tst_OverlayHotplug::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"xcb"_s);
    server->run(u"xsetroot"_s, {u"-solid"_s, u"#00ff00"_s});
}

void tst_OverlayHotplug::init()
{
    server->setMonitor(0, left);
    server->setMonitor(1, right);
    QTRY_COMPARE(QGuiApplication::screens().size(), 2);
    QTRY_COMPARE(uncoveredOf(right), 1280 * 720);
    rig = std::make_unique<OverlayRig>();
}

void tst_OverlayHotplug::cleanup()
{
    rig.reset();
    QTRY_VERIFY(OverlayRig::areAllGone());
}

void tst_OverlayHotplug::showAndWait()
{
    rig->show();
    QTRY_COMPARE(OverlayRig::views().size(), 2);
    QTRY_VERIFY(OverlayRig::hasKeyboard());
    QTRY_COMPARE(uncoveredOf(left) + uncoveredOf(right), 0);
}

void tst_OverlayHotplug::aMonitorThatReturnsIsCoveredAtOnce()
{
    QList<qint64> toKeyboard;
    QList<qint64> toCovered;
    for (int round = 0; round < 3; ++round) {
        server->run(u"xdotool"_s, {u"mousemove"_s, u"2000"_s, u"600"_s});
        showAndWait();
        QTRY_COMPARE(QApplication::activeWindow(), OverlayRig::views().at(1));

        QElapsedTimer since;
        const auto removed = connect(qGuiApp, &QGuiApplication::screenRemoved, this, [&] { since.start(); });
        server->unplug(1);
        QTRY_VERIFY(since.isValid());
        QTRY_VERIFY(server->focused() == OverlayRig::views().at(0)->winId());
        toKeyboard.append(since.elapsed());
        QCOMPARE(OverlayRig::views().size(), 1);
        QTRY_VERIFY(OverlayRig::hasKeyboard());
        QCOMPARE(uncoveredOf(left), 0);

        since.invalidate();
        disconnect(removed);
        const auto added = connect(qGuiApp, &QGuiApplication::screenAdded, this, [&] { since.start(); });
        server->setMonitor(1, right);
        QTRY_COMPARE(OverlayRig::views().size(), 2);
        for (const QPoint &each : {right.topLeft(), right.topRight(), right.bottomLeft(), right.bottomRight()})
            QTRY_VERIFY(server->pixel(each.x(), each.y()).green() < 40);
        toCovered.append(since.elapsed());
        QCOMPARE(uncoveredOf(right), 0);
        disconnect(added);
        QVERIFY(OverlayRig::hasKeyboard());
        QCOMPARE(uncoveredOf(left), 0);
        server->run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
        QTRY_VERIFY(OverlayRig::areAllGone());
    }
    std::sort(toKeyboard.begin(), toKeyboard.end());
    std::sort(toCovered.begin(), toCovered.end());
    std::printf("Monitor gone to keyboard elsewhere: %lld ms, back to covered: %lld ms (medians of 3)\n",
                static_cast<long long>(toKeyboard.at(1)), static_cast<long long>(toCovered.at(1)));
    QVERIFY(toKeyboard.at(1) < longest);
    QVERIFY(toCovered.at(1) < longest);
}

void tst_OverlayHotplug::survivesAMonitorThatVanishesWhileFading_data()
{
    QTest::addColumn<bool>("fadesOut");
    QTest::newRow("in") << false;
    QTest::newRow("out") << true;
}

void tst_OverlayHotplug::survivesAMonitorThatVanishesWhileFading()
{
    QFETCH(bool, fadesOut);
    if (fadesOut) {
        showAndWait();
        rig->controller->hide(true);
    } else {
        rig->show();
    }
    server->unplug(1);
    QTRY_COMPARE(QGuiApplication::screens().size(), 1);
    if (fadesOut) {
        QTRY_VERIFY(OverlayRig::areAllGone());
        return;
    }
    QCOMPARE(OverlayRig::views().size(), 1);
    QTRY_COMPARE(uncoveredOf(left), 0);
    QTRY_VERIFY(OverlayRig::hasKeyboard());
    server->run(u"xdotool"_s, {u"key"_s, u"Return"_s});
    QTRY_COMPARE(rig->opener.opened.size(), 1);
}

void tst_OverlayHotplug::followsAMonitorThatIsResizedAndMoved()
{
    showAndWait();
    const QRect larger(1280, 0, 1920, 1080);
    server->setMonitor(1, larger);
    QTRY_COMPARE(uncoveredOf(larger), 0);
    const QRect smaller(1280, 100, 800, 600);
    server->setMonitor(1, smaller);
    QTRY_COMPARE(uncoveredOf(smaller), 0);
    server->setMonitor(0, QRect(0, 0, 1024, 768));
    QTRY_COMPARE(uncoveredOf(QRect(0, 0, 1024, 768)), 0);
    QVERIFY(OverlayRig::hasKeyboard());
    QCOMPARE(OverlayRig::views().size(), 2);
}

void tst_OverlayHotplug::followsThePrimaryMonitor()
{
    server->run(u"xrandr"_s, {u"--output"_s, u"DUMMY1"_s, u"--primary"_s});
    QTRY_COMPARE(QGuiApplication::primaryScreen()->name(), u"DUMMY1"_s);
    rig->preferences.set(preference::displays, u"primary"_s);
    rig->show();
    QTRY_COMPARE(OverlayRig::views().size(), 1);
    QTRY_COMPARE(uncoveredOf(right), 0);
    QCOMPARE(uncoveredOf(left), 1280 * 720);
    server->unplug(1);
    QTRY_COMPARE(uncoveredOf(left), 0);
    QTRY_VERIFY(OverlayRig::hasKeyboard());
    server->run(u"xrandr"_s, {u"--output"_s, u"DUMMY0"_s, u"--primary"_s});
}

/// The size stays, so that all depends on where the window lies.
void tst_OverlayHotplug::followsMonitorsThatMove_data()
{
    QTest::addColumn<bool>("atOnce"); // as desktops do it, or step by step
    QTest::newRow("in one go") << true;
    QTest::newRow("one after the other") << false;
}

void tst_OverlayHotplug::followsMonitorsThatMove()
{
    QFETCH(bool, atOnce);
    showAndWait();
    QElapsedTimer since;
    QObject context;
    connect(qGuiApp, &QGuiApplication::screenRemoved, &context, [&] { since.start(); });
    // The left one goes, and the right one takes its place.
    if (atOnce) {
        server->arrange({{}, left});
    } else {
        server->unplug(0);
        server->setMonitor(1, left);
    }
    QTRY_VERIFY(since.isValid());
    for (const QPoint &each : {left.topLeft(), left.topRight(), left.bottomLeft(), left.bottomRight()})
        QTRY_VERIFY(server->pixel(each.x(), each.y()).green() < 40);
    QTRY_COMPARE(server->focused(), OverlayRig::keyboardWindow());
    std::printf("Monitor gone to the other in its place, covered and with the keyboard: %lld ms\n",
                static_cast<long long>(since.elapsed()));
    QVERIFY(since.elapsed() < longest);
    QCOMPARE(OverlayRig::views().size(), 1);
    QCOMPARE(uncoveredOf(left), 0);
    QVERIFY(OverlayRig::hasKeyboard());

    // It comes back.
    if (atOnce) {
        server->arrange({left, right});
    } else {
        server->setMonitor(0, left);
        server->setMonitor(1, right);
    }
    QTRY_COMPARE(OverlayRig::views().size(), 2);
    QTRY_COMPARE(uncoveredOf(left) + uncoveredOf(right), 0);
    QTRY_VERIFY(OverlayRig::hasKeyboard());

    server->arrange({right, left}); // they change places
    const auto place = [](const QString &name) {
        for (const QScreen *each : QGuiApplication::screens()) {
            if (each->name() == name)
                return each->geometry().topLeft();
        }
        return QPoint(-1, -1);
    };
    QTRY_COMPARE(place(u"DUMMY0"_s), right.topLeft());
    QTRY_COMPARE(place(u"DUMMY1"_s), left.topLeft());
    QTRY_COMPARE(uncoveredOf(left) + uncoveredOf(right), 0);
    QCOMPARE(OverlayRig::views().size(), 2);
    QTRY_VERIFY(OverlayRig::hasKeyboard());
    server->run(u"xdotool"_s, {u"key"_s, u"Return"_s});
    QTRY_COMPARE(rig->opener.opened.size(), 1);
}

int main(int argc, char **argv)
{
    XServer x({left.size(), right.size()}, XServer::Kind::Pluggable);
    if (!x.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(x.problem()));
        return 1;
    }
    server = &x;
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    tst_OverlayHotplug test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_OverlayHotplug.moc"
