#include "desktop/OverlayRig.h"
#include "platform/linux/wayland/FullScreenCover.h"
#include "platform/linux/wayland/LayerShellCover.h"
#include "support/BrightClient.h"
#include "support/Sway.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonObject>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <cstdio>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

Sway *sway = nullptr;
/// Milliseconds. A quiet machine needs a twentieth of it.
constexpr qint64 longest = 2000;

/// Notes when each overlay window has painted for the first time.
class FirstPaints final : public QObject
{
public:
    FirstPaints() { qApp->installEventFilter(this); }
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && qobject_cast<OverlayView *>(object))
            views.insert(object);
        return false;
    }
    QSet<QObject *> views;
};

QScreen *screenNamed(const QString &name)
{
    const QList<QScreen *> all = QGuiApplication::screens();
    const auto found = std::find_if(all.begin(), all.end(), [&](const QScreen *each) { return each->name() == name; });
    return found == all.end() ? nullptr : *found;
}

} // namespace

/// The overlay on a Wayland compositor that has a layer shell, with two outputs, panels and a full-screen window.
class tst_OverlaySway : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void takesTheLayerShell();
    void coversBothOutputsAboveAFullScreenWindowAndPanels();
    void staysOnEveryWorkspace();
    void returnArrivesTwentyTimesOfTwenty();
    void escapeArrivesTwentyTimesOfTwenty();
    void theKeyboardGoesBackAfterwards();
    void theKeyboardFollowsThePointer();
    void fadesInAndOut();
    void windowsTakeNothingWithThem();
    void anOutputThatReturnsIsCoveredAtOnce();
    void survivesAnOutputThatVanishesWhileFading_data();
    void survivesAnOutputThatVanishesWhileFading();
    void followsAChangeOfSize();
    void coversOutputsOfMixedScale();
    void coversAnOutputThatIsTurned();
    void coversWithFullScreenWindowsWhereThereIsNoLayerShell();
    void aFullScreenWindowThatTheUserClosesDismisses();
    void comesBackWhenTheLastOutputDoes(); // last: the outputs lie elsewhere afterwards

private:
    void showAndWait();
    [[nodiscard]] QString received();

    QProcess client;
    QString clientKeys; ///< what it got in this test
    std::unique_ptr<OverlayRig> rig;
};

void tst_OverlaySway::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"wayland"_s);
    QCOMPARE(QGuiApplication::screens().size(), 2);
    QVERIFY(sway->command(u"focus output X11-1"_s));
    QVERIFY(sway->launch(client, QCoreApplication::applicationFilePath(), {QLatin1String(BrightClient::argument)}));
    QTRY_COMPARE(uncovered(sway->picture(), QRect(0, 0, 1280, 720)), 1280 * 720);
    sway->key(u"x"_s);
    QTRY_COMPARE(received(), u"X"_s); // it has the keyboard
}

void tst_OverlaySway::cleanupTestCase()
{
    client.terminate();
    QVERIFY(client.waitForFinished());
}

void tst_OverlaySway::init()
{
    clientKeys.clear();
    rig = std::make_unique<OverlayRig>();
}

void tst_OverlaySway::cleanup()
{
    rig.reset();
    QTRY_VERIFY(OverlayRig::areAllGone());
    if (QGuiApplication::screens().size() == 1)
        QVERIFY(sway->plugIn());
    QVERIFY(sway->command(u"output %1 res 1280x720 scale 1 transform normal pos 1280 0"_s.arg(sway->last())));
    QTRY_COMPARE(QGuiApplication::screens().size(), 2);
    QTRY_COMPARE(screenNamed(sway->last()) ? screenNamed(sway->last())->geometry() : QRect(),
                 QRect(1280, 0, 1280, 720));
    QVERIFY(sway->command(u"workspace 1"_s));
}

void tst_OverlaySway::showAndWait()
{
    rig->show();
    QTRY_COMPARE(OverlayRig::views().size(), 2);
    QTRY_VERIFY(OverlayRig::hasKeyboard());
}

QString tst_OverlaySway::received()
{
    client.waitForReadyRead(1);
    clientKeys += QString::fromUtf8(client.readAllStandardOutput()).simplified();
    return clientKeys;
}

void tst_OverlaySway::takesTheLayerShell()
{
    QVERIFY(qobject_cast<LayerShellCover *>(rig->cover.get()));
}

void tst_OverlaySway::coversBothOutputsAboveAFullScreenWindowAndPanels()
{
    QVERIFY(uncovered(sway->picture()) > 2 * 1280 * 700); // the client, the panel, the empty workspace
    showAndWait();
    QTRY_COMPARE(uncovered(sway->picture()), 0);
    QCOMPARE(OverlayRig::views().at(0)->geometry().size(), QSize(1280, 720));
    QCOMPARE(OverlayRig::views().at(1)->geometry().size(), QSize(1280, 720));
    const QString folder = qEnvironmentVariable("KELP_PICTURES");
    if (!folder.isEmpty())
        QVERIFY(sway->picture().save(folder + u"/sway.png"_s));
}

void tst_OverlaySway::staysOnEveryWorkspace()
{
    showAndWait();
    QTRY_COMPARE(uncovered(sway->picture()), 0);
    QVERIFY(sway->command(u"workspace 5"_s));
    QCOMPARE(uncovered(sway->picture()), 0);
    sway->key(u"Escape"_s);
    QTRY_VERIFY(!rig->controller->isShown());
}

void tst_OverlaySway::returnArrivesTwentyTimesOfTwenty()
{
    for (int round = 1; round <= 20; ++round) {
        showAndWait();
        sway->key(u"Return"_s);
        QTRY_COMPARE(rig->opener.opened.size(), round);
        QVERIFY(!rig->controller->isShown());
    }
    QCOMPARE(received(), QString());
}

void tst_OverlaySway::escapeArrivesTwentyTimesOfTwenty()
{
    for (int round = 1; round <= 20; ++round) {
        showAndWait();
        sway->key(u"Escape"_s);
        QTRY_VERIFY(!rig->controller->isShown());
    }
    QVERIFY(rig->opener.opened.isEmpty());
    QCOMPARE(received(), QString());
}

void tst_OverlaySway::theKeyboardGoesBackAfterwards()
{
    showAndWait();
    sway->key(u"x"_s);
    QCOMPARE(received(), QString());
    rig->controller->hide(true);
    QVERIFY(!OverlayRig::areAllGone()); // still fading out
    sway->key(u"y"_s);
    QTRY_COMPARE(received(), u"Y"_s);
}

void tst_OverlaySway::theKeyboardFollowsThePointer()
{
    sway->pointTo({300, 300});
    showAndWait();
    QTRY_COMPARE(QApplication::activeWindow(), OverlayRig::views().at(0));
    sway->pointTo({1900, 300});
    QTRY_COMPARE(QApplication::activeWindow(), OverlayRig::views().at(1));
    rig->controller->hide(false);
    // And so it is at once where the pointer is already there.
    rig->show();
    QTRY_COMPARE(OverlayRig::views().size(), 2);
    QTRY_COMPARE(QApplication::activeWindow(), OverlayRig::views().at(1));
    sway->pointTo({300, 300});
}

void tst_OverlaySway::fadesInAndOut()
{
    QTRY_VERIFY(sway->pixel(20, 600).green() > 250);
    QList<int> levels;
    const auto level = [&] {
        levels.append(sway->pixel(20, 600).green());
        return levels.constLast();
    };
    const auto isBetween = [](int each) { return each > 60 && each < 240; };
    bool isGradual = false;
    for (int round = 0; round < 10 && !isGradual; ++round) { // a busy machine may look too late
        levels.clear();
        rig->show();
        QTRY_VERIFY(level() < 14); // the background
        isGradual = std::any_of(levels.begin(), levels.end(), isBetween);
        QVERIFY(std::is_sorted(levels.rbegin(), levels.rend()));
        levels.clear();
        rig->controller->hide(true);
        QTRY_VERIFY(level() > 250);
        // On a busy machine the last of what came up may still be on its way.
        const auto goes = std::find_if(levels.begin(), levels.end(), [](int each) { return each >= 14; });
        QVERIFY(std::is_sorted(goes, levels.end()));
    }
    QVERIFY2(isGradual, "no picture in between");
}

void tst_OverlaySway::windowsTakeNothingWithThem()
{
    for (int round = 0; round < 30; ++round) {
        rig->show();
        if (round % 3 == 1)
            QCoreApplication::processEvents();
        else if (round % 3 == 2)
            QTRY_COMPARE(OverlayRig::views().size(), 2);
        rig->controller->hide(false);
    }
    showAndWait();
    QTRY_COMPARE(uncovered(sway->picture()), 0);
}

void tst_OverlaySway::anOutputThatReturnsIsCoveredAtOnce()
{
    QList<qint64> painted;
    QList<qint64> covered;
    for (int round = 0; round < 3; ++round) {
        showAndWait();
        QTRY_COMPARE(uncovered(sway->picture()), 0);
        // The one with the keyboard goes.
        rig->cover->takeKeyboard(*OverlayRig::views().at(1));
        QTRY_COMPARE(QApplication::activeWindow(), OverlayRig::views().at(1));
        QElapsedTimer sinceGone;
        const auto gone = connect(qGuiApp, &QGuiApplication::screenRemoved, this, [&] { sinceGone.start(); });
        QVERIFY(sway->unplugLast());
        QTRY_VERIFY(sinceGone.isValid());
        QTRY_VERIFY(OverlayRig::hasKeyboard());
        QVERIFY2(sinceGone.elapsed() < longest, qPrintable(QString::number(sinceGone.elapsed())));
        disconnect(gone);
        QCOMPARE(OverlayRig::views().size(), 1);
        QCOMPARE(uncovered(sway->picture()), 0);

        FirstPaints paints;
        QElapsedTimer sinceAdded;
        const auto added = connect(qGuiApp, &QGuiApplication::screenAdded, this, [&] { sinceAdded.start(); });
        QVERIFY(sway->plugIn());
        QTRY_COMPARE(OverlayRig::views().size(), 2);
        QTRY_VERIFY(paints.views.contains(OverlayRig::views().at(1)));
        painted.append(sinceAdded.elapsed());
        for (const QPoint &each : {QPoint(1282, 2), QPoint(2557, 2), QPoint(1282, 717), QPoint(2557, 717)})
            QTRY_VERIFY(sway->pixel(each.x(), each.y()).green() < 40);
        covered.append(sinceAdded.elapsed());
        QCOMPARE(uncovered(sway->picture()), 0);
        disconnect(added);
        QVERIFY(OverlayRig::hasKeyboard());
        sway->key(u"Escape"_s);
        QTRY_VERIFY(OverlayRig::areAllGone());
    }
    std::sort(painted.begin(), painted.end());
    std::sort(covered.begin(), covered.end());
    std::printf("Output back to painted: %lld ms, to seen covered: %lld ms (medians of 3)\n",
                static_cast<long long>(painted.at(1)), static_cast<long long>(covered.at(1)));
    QVERIFY(covered.at(1) < longest);
}

void tst_OverlaySway::survivesAnOutputThatVanishesWhileFading_data()
{
    QTest::addColumn<QString>("moment");
    QTest::newRow("before it is shown") << u"before"_s;
    QTest::newRow("while fading in") << u"in"_s;
    QTest::newRow("while fading out") << u"out"_s;
}

void tst_OverlaySway::survivesAnOutputThatVanishesWhileFading()
{
    QFETCH(QString, moment);
    rig->show();
    if (moment != u"before"_s)
        QTRY_COMPARE(OverlayRig::views().size(), 2);
    if (moment == u"out"_s) {
        QTRY_COMPARE(uncovered(sway->picture()), 0);
        rig->controller->hide(true);
    }
    QVERIFY(sway->unplugLast());
    QTRY_COMPARE(QGuiApplication::screens().size(), 1);
    if (moment == u"out"_s) {
        QTRY_VERIFY(OverlayRig::areAllGone());
        return;
    }
    QTRY_COMPARE(OverlayRig::views().size(), 1);
    QTRY_COMPARE(uncovered(sway->picture()), 0);
    QTRY_VERIFY(OverlayRig::hasKeyboard());
    sway->key(u"Escape"_s);
    QTRY_VERIFY(!rig->controller->isShown());
}

void tst_OverlaySway::comesBackWhenTheLastOutputDoes()
{
    showAndWait();
    QVERIFY(sway->unplugLast());
    QVERIFY(sway->unplugLast());
    QTRY_VERIFY(OverlayRig::views().isEmpty());
    QVERIFY(rig->controller->meeting());
    QVERIFY(sway->plugIn());
    QTRY_COMPARE(OverlayRig::views().size(), 1);
    QTRY_COMPARE(uncovered(sway->picture()), 0);
    sway->pointTo({1900, 300}); // the keyboard of the host follows the pointer
    sway->key(u"Return"_s);
    QTRY_COMPARE(rig->opener.opened.size(), 1);
}

void tst_OverlaySway::followsAChangeOfSize()
{
    showAndWait();
    QVERIFY(sway->command(u"output %1 res 1920x1080"_s.arg(sway->last())));
    QTRY_COMPARE(OverlayRig::views().at(1)->size(), QSize(1920, 1080));
    QTRY_COMPARE(uncovered(sway->picture()), 0);
    QVERIFY(sway->command(u"output %1 res 800x600"_s.arg(sway->last())));
    QTRY_COMPARE(OverlayRig::views().at(1)->size(), QSize(800, 600));
    QTRY_COMPARE(uncovered(sway->picture()), 0);
}

void tst_OverlaySway::coversOutputsOfMixedScale()
{
    QVERIFY(sway->command(u"output %1 res 2560x1440 scale 2"_s.arg(sway->last())));
    QTRY_COMPARE(screenNamed(sway->last())->devicePixelRatio(), 2.0);
    showAndWait();
    QTRY_COMPARE(uncovered(sway->picture()), 0);
    QCOMPARE(OverlayRig::views().at(0)->devicePixelRatio(), 1.0);
    QCOMPARE(OverlayRig::views().at(1)->devicePixelRatio(), 2.0);
    QCOMPARE(OverlayRig::views().at(1)->size(), QSize(1280, 720));
    // And another scale while it is up, one between two whole numbers.
    QVERIFY(sway->command(u"output %1 scale 1.5"_s.arg(sway->last())));
    QTRY_VERIFY(OverlayRig::views().at(1)->width() > 1700);
    QTRY_COMPARE(uncovered(sway->picture()), 0);
    QVERIFY(sway->command(u"output %1 scale 1"_s.arg(sway->last())));
    QTRY_COMPARE(OverlayRig::views().at(1)->size(), QSize(2560, 1440));
    QTRY_COMPARE(OverlayRig::views().at(1)->devicePixelRatio(), 1.0);
    QTRY_COMPARE(uncovered(sway->picture()), 0);
}

void tst_OverlaySway::coversAnOutputThatIsTurned()
{
    showAndWait();
    QVERIFY(sway->command(u"output %1 transform 90"_s.arg(sway->last())));
    QTRY_COMPARE(OverlayRig::views().at(1)->size(), QSize(720, 1280));
    QTRY_COMPARE(uncovered(sway->picture(), QRect(1280, 0, 720, 1280)), 0);
}

/// What is done under other compositors works here as well, above the panels though not on every workspace.
void tst_OverlaySway::coversWithFullScreenWindowsWhereThereIsNoLayerShell()
{
    rig = std::make_unique<OverlayRig>(std::make_unique<FullScreenCover>());
    for (int round = 1; round <= 5; ++round) {
        showAndWait();
        QTRY_COMPARE(uncovered(sway->picture()), 0);
        sway->key(u"Return"_s);
        QTRY_COMPARE(rig->opener.opened.size(), round);
        QTRY_VERIFY(OverlayRig::areAllGone());
    }
}

/// With the key that the desktop has for it.
void tst_OverlaySway::aFullScreenWindowThatTheUserClosesDismisses()
{
    rig = std::make_unique<OverlayRig>(std::make_unique<FullScreenCover>());
    showAndWait();
    QSignalSpy hidden(rig->controller.get(), &OverlayController::hidden);
    QVERIFY(sway->command(u"kill"_s));
    QTRY_COMPARE(hidden.size(), 1);
    QTRY_VERIFY(OverlayRig::areAllGone());
    QVERIFY(rig->opener.opened.isEmpty());
    QVERIFY(client.state() == QProcess::Running);
}

int main(int argc, char **argv)
{
    if (BrightClient::isAsked(argc, argv))
        return BrightClient::run(argc, argv);
    Sway compositor;
    if (!compositor.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(compositor.problem()));
        return 1;
    }
    sway = &compositor;
    LayerShellCover::allow();
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    tst_OverlaySway test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_OverlaySway.moc"
