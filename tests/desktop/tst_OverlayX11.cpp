#include "overlay/OverlayController.h"
#include "overlay/OverlayView.h"
#include "platform/linux/x11/X11ScreenCover.h"
#include "preferences/Preferences.h"
#include "support/FakeUrlOpener.h"
#include "support/RecordedSounds.h"
#include "support/SampleMeetings.h"
#include "support/XServer.h"

#include "base/Clock.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <cstdio>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

XServer *server = nullptr;

/// Counts the presses of a key that reach our windows, those that somebody consumes included.
class KeyCount final : public QObject
{
public:
    explicit KeyCount(Qt::Key key) : m_key(key) { qApp->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == m_key)
            ++m_count;
        return false;
    }
    [[nodiscard]] int count() const { return m_count; }

private:
    Qt::Key m_key;
    int m_count = 0;
};

} // namespace

/// The overlay on a real X server with a window manager, two monitors and a full-screen window of somebody else, used
/// with the keyboard and the mouse from outside.
class tst_OverlayX11 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void coversBothMonitorsAboveAFullScreenWindow();
    void returnOpensTheLink();
    void escapeDismisses();
    void aClickSnoozes();
    void tabAndSpacePressAButton();
    void theKeyboardGoesToThePointersMonitor();
    void takesTheKeyboardBackFromAnotherWindow();
    void givesTheKeyboardBackAfterwards();
    void aReturnThatIsHeldDownIsNoPress();
    void staysOnEveryWorkspace();

private:
    [[nodiscard]] static QList<OverlayView *> views();
    void showAndWaitForKeyboard();
    [[nodiscard]] static bool isDark(int x, int y);

    SystemClock clock;
    FakeUrlOpener opener;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<X11ScreenCover> cover;
    std::unique_ptr<RecordedSounds> sounds;
    std::unique_ptr<OverlayController> controller;
    QProcess terminal;
    QString terminalWindow;
};

QList<OverlayView *> tst_OverlayX11::views()
{
    QList<OverlayView *> result;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *view = qobject_cast<OverlayView *>(widget); view && view->isVisible())
            result.append(view);
    }
    std::sort(result.begin(), result.end(), [](const QWidget *a, const QWidget *b) { return a->x() < b->x(); });
    return result;
}

bool tst_OverlayX11::isDark(int x, int y)
{
    // The bright desktop shines through as far as the gradient over it lets it.
    const QColor colour = server->pixel(x, y);
    return colour.isValid() && colour.green() < 120;
}

void tst_OverlayX11::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"xcb"_s);
    QCOMPARE(QGuiApplication::screens().size(), 2);
    // A bright full-screen window that has the keyboard.
    QVERIFY(server->launch(terminal, u"xterm"_s,
                           {u"-fullscreen"_s, u"-bg"_s, u"#00ff00"_s, u"-fg"_s, u"#00ff00"_s, u"-T"_s, u"work"_s,
                            u"-e"_s, u"sleep"_s, u"1000"_s}));
    terminalWindow =
        server->run(u"xdotool"_s, {u"search"_s, u"--sync"_s, u"--onlyvisible"_s, u"--name"_s, u"^work$"_s}).trimmed();
    QVERIFY(!terminalWindow.isEmpty());
    server->run(u"xdotool"_s, {u"windowactivate"_s, u"--sync"_s, terminalWindow});
    QTRY_VERIFY(server->pixel(640, 360).green() > 200);
}

void tst_OverlayX11::cleanupTestCase()
{
    terminal.terminate();
    QVERIFY(terminal.waitForFinished());
}

void tst_OverlayX11::init()
{
    server->run(u"xdotool"_s, {u"mousemove"_s, u"300"_s, u"600"_s});
    server->run(u"xdotool"_s, {u"windowfocus"_s, u"--sync"_s, terminalWindow});
    preferences = std::make_unique<Preferences>();
    cover = std::make_unique<X11ScreenCover>();
    sounds = std::make_unique<RecordedSounds>(*preferences, clock);
    controller = std::make_unique<OverlayController>(*preferences, clock, opener, *cover, sounds->sounds());
    opener.opened.clear();
}

void tst_OverlayX11::cleanup()
{
    controller.reset();
    cover.reset();
    QTRY_VERIFY(views().isEmpty());
}

void tst_OverlayX11::showAndWaitForKeyboard()
{
    Meeting meeting = sample::designReview();
    meeting.start = clock.now() + 60;
    meeting.end = meeting.start + 1800;
    controller->show(MeetingContent{meeting, {}});
    QTRY_VERIFY(QApplication::activeWindow());
    QTRY_COMPARE(views().size(), 2);
}

void tst_OverlayX11::coversBothMonitorsAboveAFullScreenWindow()
{
    showAndWaitForKeyboard();
    QCOMPARE(views().at(0)->geometry(), QRect(0, 0, 1280, 720));
    QCOMPARE(views().at(1)->geometry(), QRect(1280, 0, 1280, 720));
    const QList<QPoint> corners{{2, 2}, {1277, 717}, {1282, 2}, {2557, 717}, {640, 20}, {1920, 20}};
    for (const QPoint &each : corners)
        QTRY_VERIFY2(isDark(each.x(), each.y()), qPrintable(u"at %1,%2"_s.arg(each.x()).arg(each.y())));
    const QString folder = qEnvironmentVariable("KELP_PICTURES");
    if (!folder.isEmpty()) {
        const QWidget *join = views().at(1)->findChild<QAbstractButton *>();
        const QPoint edge = join->mapToGlobal(QPoint(16, join->height() / 2));
        QTRY_COMPARE(server->pixel(edge.x(), edge.y()), QColor(Qt::white)); // the card has come up
        server->run(u"import"_s, {u"-window"_s, u"root"_s, folder + u"/x11.png"_s});
    }
}

void tst_OverlayX11::returnOpensTheLink()
{
    showAndWaitForKeyboard();
    server->run(u"xdotool"_s, {u"key"_s, u"Return"_s});
    QTRY_COMPARE(opener.opened.size(), 1);
    QVERIFY(!controller->isShown());
    QTRY_VERIFY(views().isEmpty());
}

void tst_OverlayX11::escapeDismisses()
{
    showAndWaitForKeyboard();
    QElapsedTimer timer;
    server->run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
    QTRY_VERIFY(!controller->isShown());
    timer.start();
    QTRY_VERIFY_WITH_TIMEOUT(views().isEmpty(), 2000);
    std::printf("Esc to windows gone: %lld ms\n", static_cast<long long>(timer.elapsed()));
    QVERIFY(opener.opened.isEmpty());
    QTRY_VERIFY(server->pixel(640, 20).green() > 200);
}

void tst_OverlayX11::aClickSnoozes()
{
    showAndWaitForKeyboard();
    QSignalSpy snoozed(controller.get(), &OverlayController::snoozed);
    // On the monitor that does not have the keyboard.
    const auto buttons = views().at(1)->findChildren<QAbstractButton *>();
    const auto snooze = std::find_if(buttons.begin(), buttons.end(), [](const QAbstractButton *each) {
        return each->accessibleName().startsWith("Snooze"_L1);
    });
    const QPoint at = (*snooze)->mapToGlobal((*snooze)->rect().center());
    server->run(u"xdotool"_s, {u"mousemove"_s, QString::number(at.x()), QString::number(at.y()), u"click"_s, u"1"_s});
    QTRY_COMPARE(snoozed.size(), 1);
    QVERIFY(!controller->isShown());
}

void tst_OverlayX11::tabAndSpacePressAButton()
{
    showAndWaitForKeyboard();
    QSignalSpy snoozed(controller.get(), &OverlayController::snoozed);
    server->run(u"xdotool"_s, {u"key"_s, u"Tab"_s, u"Tab"_s, u"space"_s});
    QTRY_COMPARE(snoozed.size(), 1);
    QVERIFY(!controller->isShown());
}

void tst_OverlayX11::theKeyboardGoesToThePointersMonitor()
{
    server->run(u"xdotool"_s, {u"mousemove"_s, u"2000"_s, u"600"_s});
    showAndWaitForKeyboard();
    QTRY_COMPARE(QApplication::activeWindow(), views().at(1));
}

void tst_OverlayX11::takesTheKeyboardBackFromAnotherWindow()
{
    showAndWaitForKeyboard();
    server->run(u"xdotool"_s, {u"windowfocus"_s, terminalWindow});
    QTRY_VERIFY(!QApplication::activeWindow());
    QTRY_VERIFY(QApplication::activeWindow());
    server->run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
    QTRY_VERIFY(!controller->isShown());
}

void tst_OverlayX11::givesTheKeyboardBackAfterwards()
{
    showAndWaitForKeyboard();
    QVERIFY(server->run(u"xdotool"_s, {u"getwindowfocus"_s}).trimmed() != terminalWindow);
    controller->hide(true);
    // At once, while the windows are still fading out; not only when they go and the window manager looks for an heir.
    QCOMPARE(views().size(), 2);
    QCOMPARE(server->run(u"xdotool"_s, {u"getwindowfocus"_s, u"-f"_s}).trimmed(), terminalWindow);
}

void tst_OverlayX11::aReturnThatIsHeldDownIsNoPress()
{
    server->run(u"xset"_s, {u"r"_s, u"rate"_s, u"100"_s, u"50"_s});
    server->run(u"xdotool"_s, {u"keydown"_s, u"Return"_s});
    showAndWaitForKeyboard();
    const KeyCount repeats(Qt::Key_Return);
    QTRY_VERIFY(repeats.count() > 5);
    QVERIFY(controller->isShown());
    QVERIFY(opener.opened.isEmpty());
    server->run(u"xdotool"_s, {u"keyup"_s, u"Return"_s});
    server->run(u"xdotool"_s, {u"key"_s, u"Return"_s});
    QTRY_COMPARE(opener.opened.size(), 1);
}

void tst_OverlayX11::staysOnEveryWorkspace()
{
    showAndWaitForKeyboard();
    server->run(u"wmctrl"_s, {u"-n"_s, u"2"_s});
    server->run(u"wmctrl"_s, {u"-s"_s, u"1"_s});
    QTRY_VERIFY(server->run(u"wmctrl"_s, {u"-d"_s}).contains("1  * "_L1));
    QTRY_VERIFY(isDark(2, 2));
    QTRY_VERIFY(isDark(2557, 717));
    // The window manager gives the keyboard to another window; it comes back.
    QTRY_COMPARE(server->run(u"xdotool"_s, {u"getwindowfocus"_s, u"-f"_s}).trimmed(),
                 QString::number(views().at(0)->winId()));
    server->run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
    QTRY_VERIFY(!controller->isShown());
    server->run(u"wmctrl"_s, {u"-s"_s, u"0"_s});
}

int main(int argc, char **argv)
{
    XServer x({{1280, 720}, {1280, 720}});
    if (!x.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(x.problem()));
        return 1;
    }
    server = &x;
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    tst_OverlayX11 test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_OverlayX11.moc"
