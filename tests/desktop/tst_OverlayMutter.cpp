#include "desktop/OverlayRig.h"
#include "platform/linux/wayland/FullScreenCover.h"
#include "platform/linux/wayland/LayerShellCover.h"
#include "support/BrightClient.h"
#include "support/Mutter.h"

#include <QScreen>
#include <QTest>
#include <QWindow>

#include <xkbcommon/xkbcommon-keysyms.h>

#include <cstdio>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

Mutter *mutter = nullptr;

} // namespace

/// The overlay on a Wayland compositor that has no layer shell, with two outputs and a full-screen window.
class tst_OverlayMutter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void takesFullScreenWindows();
    void fillsBothOutputs();
    void returnJoins();
    void escapeDismisses();
    void theKeyboardGoesBackAfterwards();
    void followsOutputsThatGoAndReturn();

private:
    void waitForClient();
    void showAndWait();
    /// Whether each output has a window of its own that fills it and has been painted.
    [[nodiscard]] static bool fillsAllOutputs();
    [[nodiscard]] QString received();

    QProcess client;
    QString clientKeys; ///< what it got in this test
    std::unique_ptr<OverlayRig> rig;
};

void tst_OverlayMutter::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"wayland"_s);
    QCOMPARE(QGuiApplication::screens().size(), 2);
    QVERIFY(mutter->plugInKeyboard());
    QVERIFY(mutter->launch(client, QCoreApplication::applicationFilePath(), {QLatin1String(BrightClient::argument)}));
    waitForClient();
}

void tst_OverlayMutter::cleanupTestCase()
{
    client.terminate();
    QVERIFY(client.waitForFinished());
}

void tst_OverlayMutter::init()
{
    rig = std::make_unique<OverlayRig>();
}

void tst_OverlayMutter::cleanup()
{
    rig.reset();
    QTRY_VERIFY(OverlayRig::areAllGone());
    if (QGuiApplication::screens().size() == 1)
        QVERIFY(mutter->useOutputs(2));
    QTRY_COMPARE(QGuiApplication::screens().size(), 2);
    waitForClient();
}

/// Until it has the keyboard, and has read all that was typed.
void tst_OverlayMutter::waitForClient()
{
    clientKeys.clear();
    QTRY_VERIFY(mutter->key(XKB_KEY_x) && received().contains(u'X'));
    QVERIFY(mutter->key(XKB_KEY_q));
    QTRY_VERIFY(received().endsWith(u'Q'));
    clientKeys.clear();
}

bool tst_OverlayMutter::fillsAllOutputs()
{
    const QList<OverlayView *> views = OverlayRig::views();
    QSet<QScreen *> filled;
    for (OverlayView *view : views) {
        const QWindow *window = view->windowHandle();
        if (view->isSeen() && window->isExposed() && window->windowState() == Qt::WindowFullScreen &&
            view->size() == window->screen()->size())
            filled.insert(window->screen());
    }
    return filled.size() == views.size() && filled.size() == QGuiApplication::screens().size();
}

void tst_OverlayMutter::showAndWait()
{
    rig->show();
    QTRY_VERIFY(fillsAllOutputs());
    QTRY_VERIFY(OverlayRig::hasKeyboard());
}

QString tst_OverlayMutter::received()
{
    client.waitForReadyRead(1);
    clientKeys += QString::fromUtf8(client.readAllStandardOutput()).remove(u'\n');
    return clientKeys;
}

void tst_OverlayMutter::takesFullScreenWindows()
{
    QVERIFY(qobject_cast<FullScreenCover *>(rig->cover.get()));
}

void tst_OverlayMutter::fillsBothOutputs()
{
    showAndWait();
    for (const OverlayView *each : OverlayRig::views())
        QCOMPARE(each->size(), Mutter::outputSize);
}

void tst_OverlayMutter::returnJoins()
{
    for (int round = 1; round <= 3; ++round) {
        showAndWait();
        QVERIFY(mutter->key(XKB_KEY_Return));
        QTRY_COMPARE(rig->opener.opened.size(), round);
        QVERIFY(!rig->controller->isShown());
        QTRY_VERIFY(OverlayRig::areAllGone());
    }
    QCOMPARE(received(), QString());
}

void tst_OverlayMutter::escapeDismisses()
{
    for (int round = 1; round <= 3; ++round) {
        showAndWait();
        QVERIFY(mutter->key(XKB_KEY_Escape));
        QTRY_VERIFY(!rig->controller->isShown());
        QTRY_VERIFY(OverlayRig::areAllGone());
    }
    QVERIFY(rig->opener.opened.isEmpty());
    QCOMPARE(received(), QString());
}

void tst_OverlayMutter::theKeyboardGoesBackAfterwards()
{
    showAndWait();
    QVERIFY(mutter->key(XKB_KEY_x));
    QCOMPARE(received(), QString());
    rig->controller->hide(true);
    QTRY_VERIFY(OverlayRig::areAllGone());
    waitForClient();
}

void tst_OverlayMutter::followsOutputsThatGoAndReturn()
{
    showAndWait();
    QVERIFY(mutter->useOutputs(1));
    QTRY_COMPARE(QGuiApplication::screens().size(), 1);
    QTRY_VERIFY(fillsAllOutputs());
    QTRY_VERIFY(OverlayRig::hasKeyboard());
    QVERIFY(mutter->useOutputs(2));
    QTRY_COMPARE(QGuiApplication::screens().size(), 2);
    QTRY_VERIFY(fillsAllOutputs());
    QTRY_VERIFY(OverlayRig::hasKeyboard());
    QVERIFY(mutter->key(XKB_KEY_Return));
    QTRY_COMPARE(rig->opener.opened.size(), 1);
}

int main(int argc, char **argv)
{
    if (BrightClient::isAsked(argc, argv))
        return BrightClient::run(argc, argv);
    Mutter compositor;
    if (!compositor.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(compositor.problem()));
        return 1;
    }
    mutter = &compositor;
    LayerShellCover::allow();
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    tst_OverlayMutter test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_OverlayMutter.moc"
