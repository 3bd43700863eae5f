#include "overlay/OverlayController.h"
#include "overlay/OverlayView.h"
#include "platform/linux/x11/X11ScreenCover.h"
#include "preferences/Preferences.h"
#include "support/FakeUrlOpener.h"
#include "support/RecordedSounds.h"
#include "support/SampleMeetings.h"
#include "support/XServer.h"

#include "base/Clock.h"
#include "sound/ChildSoundPlayer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <cstdio>
#include <ctime>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

XServer *server = nullptr;

/// Tells when the first picture of each window has gone out.
class FirstPaint final : public QObject
{
public:
    explicit FirstPaint(QSet<QObject *> *painted) : m_painted(painted) { qApp->installEventFilter(this); }
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && qobject_cast<OverlayView *>(object))
            m_painted->insert(object);
        return false;
    }

private:
    QSet<QObject *> *m_painted;
};

/// Milliseconds of this process's own.
double computingTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

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

/// A window over both monitors: a checkerboard of 4 pixels on the left one, black and then white on the right one.
class Board final : public QWidget
{
public:
    Board()
    {
        setWindowFlags(Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
        setGeometry(0, 0, 2560, 720);
    }
    static QRgb colourAt(int x, int y)
    {
        const bool isWhite = x < 1280 ? (x / 4 + y / 4) % 2 == 1 : x >= 1920;
        return isWhite ? 0xffffffff : 0xff000000;
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QImage image(size(), QImage::Format_RGB32);
        for (int y = 0; y < height(); ++y) {
            for (int x = 0; x < width(); ++x)
                image.setPixel(x, y, colourAt(x, y));
        }
        QPainter(this).drawImage(0, 0, image);
    }
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
    void fadesWithACompositor();
    void theDesktopIsBlurredBehindMidnight_data();
    void theDesktopIsBlurredBehindMidnight();
    void aPictureOfTheScreenIsExact();
    void isVisibleSoonAfterItIsDue();
    void aSoundCostsTheFirstPictureNothing();

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

void tst_OverlayX11::fadesWithACompositor()
{
    QCOMPARE(cover->fade(), ScreenCover::Fade::Picture);
    QProcess compositor;
    QVERIFY(server->launch(compositor, u"xcompmgr"_s, {u"-a"_s}));
    QTRY_COMPARE(cover->fade(), ScreenCover::Fade::WindowOpacity);
    showAndWaitForKeyboard();
    QTRY_COMPARE(views().at(0)->windowOpacity(), 1.0);
    QTRY_VERIFY(isDark(2, 2));
    controller->hide(true);
    QTRY_VERIFY(views().isEmpty());
    compositor.terminate();
    QVERIFY(compositor.waitForFinished());
}

void tst_OverlayX11::theDesktopIsBlurredBehindMidnight_data()
{
    QTest::addColumn<bool>("composited");
    QTest::newRow("no compositor") << false;
    QTest::newRow("compositor") << true;
}

void tst_OverlayX11::theDesktopIsBlurredBehindMidnight()
{
    QFETCH(bool, composited);
    QProcess compositor;
    if (composited) {
        QVERIFY(server->launch(compositor, u"xcompmgr"_s, {u"-a"_s}));
        QTRY_COMPARE(cover->fade(), ScreenCover::Fade::WindowOpacity);
    }
    Board board;
    board.show();
    board.raise();
    QTRY_COMPARE(server->pixel(2000, 100), QColor(Qt::white));
    QTRY_COMPARE(server->pixel(5, 1), QColor(Qt::white));
    showAndWaitForKeyboard();

    // What is expected at a height of a monitor whose desktop has, far around, this level.
    const auto expected = [](double level, int y) { return level * (1 - (0.55 + 0.25 * (y + 0.5) / 720)); };
    const auto isAbout = [](const QColor &colour, double level) {
        return std::abs(colour.red() - level) <= 2 && std::abs(colour.green() - level) <= 2 &&
               std::abs(colour.blue() - level) <= 2;
    };
    // What is wrong with a picture of the screen; nothing once the fade is over, until then the squares shine through.
    QImage screen;
    const auto fault = [&] {
        screen = QGuiApplication::primaryScreen()->grabWindow(0, 0, 0, 2560, 720).toImage();
        if (screen.size() != QSize(2560, 720))
            return u"no picture"_s;
        for (int y = 0; y < 720; y += 3) {
            int darkest = 255;
            int brightest = 0;
            for (int x = 0; x < 200; ++x) {
                const QColor colour = screen.pixelColor(x, y);
                if (!isAbout(colour, expected(127.5, y)))
                    return u"%1,%2: %3 instead of %4"_s.arg(x).arg(y).arg(colour.name()).arg(expected(127.5, y));
                darkest = std::min(darkest, colour.green());
                brightest = std::max(brightest, colour.green());
            }
            // Nothing is left of the squares: they had 255 between them, which the gradient leaves 51 of at least.
            if (brightest - darkest >= 0.1 * expected(255, y))
                return u"%1: squares from %2 to %3"_s.arg(y).arg(darkest).arg(brightest);
            // The other monitor shows what lies behind it, and nothing of this one.
            if (!isAbout(screen.pixelColor(1280, y), 0) || !isAbout(screen.pixelColor(2559, y), expected(255, y)))
                return u"%1: the right monitor"_s.arg(y);
        }
        return QString();
    };
    QString found;
    QTRY_VERIFY2((found = fault()).isEmpty(), qPrintable(found));
    // The edge in the middle of the right monitor has become soft, above the card.
    QVERIFY(screen.pixelColor(1920 - 20, 4).green() > 8);
    QVERIFY(screen.pixelColor(1920 + 20, 4).green() < expected(255, 4) - 8);
    for (int x = 1700; x < 2140; ++x)
        QVERIFY(std::abs(screen.pixelColor(x, 4).green() - screen.pixelColor(x + 1, 4).green()) <= 6);

    controller->hide(false);
    if (composited) {
        compositor.terminate();
        QVERIFY(compositor.waitForFinished());
    }
}

void tst_OverlayX11::aPictureOfTheScreenIsExact()
{
    Board board;
    board.show();
    board.raise();
    QTRY_COMPARE(server->pixel(2000, 100), QColor(Qt::white));
    QTRY_COMPARE(server->pixel(5, 1), QColor(Qt::white));
    for (QScreen *screen : QGuiApplication::screens()) {
        const QImage picture = cover->picture(*screen).toImage();
        QCOMPARE(picture.size(), screen->size());
        for (const QPoint at : {QPoint(0, 0), QPoint(4, 0), QPoint(639, 300), QPoint(640, 300), QPoint(1279, 719)}) {
            const QPoint global = screen->geometry().topLeft() + at;
            QCOMPARE(picture.pixel(at) | 0xff000000, Board::colourAt(global.x(), global.y()));
        }
        const QImage small = cover->smallPicture(*screen);
        QCOMPARE(small.size(), QSize(160, 90));
        const bool isChecked = screen->geometry().x() == 0;
        QVERIFY(std::abs(qGreen(small.pixel(10, 10)) - (isChecked ? 127 : 0)) <= 1);
        QVERIFY(std::abs(qGreen(small.pixel(159, 89)) - (isChecked ? 127 : 255)) <= 1);
        QCOMPARE(qGreen(small.pixel(79, 45)), isChecked ? qGreen(small.pixel(80, 45)) : 0);
    }
}

void tst_OverlayX11::isVisibleSoonAfterItIsDue()
{
    QList<qint64> times;
    for (int round = 0; round < 5; ++round) {
        QSet<QObject *> painted;
        FirstPaint watcher(&painted);
        QElapsedTimer timer;
        timer.start();
        controller->show(MeetingContent{sample::designReview(), {}});
        QTRY_COMPARE_WITH_TIMEOUT(painted.size(), 2, 2000);
        times.append(timer.elapsed());
        controller->hide(false);
        QTRY_VERIFY(views().isEmpty());
    }
    std::sort(times.begin(), times.end());
    std::printf("Due to first painted frame, two monitors, median of 5: %lld ms\n",
                static_cast<long long>(times.at(2)));
    QVERIFY(times.at(2) < 2000); // a quiet machine needs a tenth of it
}

void tst_OverlayX11::aSoundCostsTheFirstPictureNothing()
{
    QHash<QString, QList<double>> times;
    for (int round = 0; round < 13; ++round) {
        const QStringList both{u"None"_s, u"Singing bowl"_s};
        for (const int which : {round % 2, 1 - round % 2}) { // neither always comes first
            const QString &sound = both.at(which);
            preferences->set(preference::sound, sound);
            // Sounds that have not been made before, and a process for each.
            ChildSoundPlayer player(clock, u"/bin/true"_s);
            FakeMusicPlayers musicPlayers;
            MusicControl control(musicPlayers);
            OverlayMusic music(*preferences, control);
            OverlaySounds fresh(*preferences, clock, player, music, sounds->folder.path());
            OverlayController overlay(*preferences, clock, opener, *cover, fresh);
            const QSignalSpy finished(&player, &ChildSoundPlayer::finished);

            QSet<QObject *> painted;
            FirstPaint watcher(&painted);
            const double begin = computingTime();
            overlay.show(MeetingContent{sample::designReview(), {}});
            while (painted.size() < 2)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            times[sound].append(computingTime() - begin);
            // Then it is heard, or would be with another program.
            if (sound != u"None")
                QTRY_COMPARE(finished.size(), 1);
            overlay.hide(false);
            QTRY_VERIFY(views().isEmpty());
        }
    }
    for (QList<double> &each : times)
        std::sort(each.begin(), each.end());
    // The cheapest rounds tell what it takes; the others, what else the machine did.
    const double difference = times[u"Singing bowl"_s].at(1) - times[u"None"_s].at(1);
    std::printf("CPU to the first picture, two monitors, second best of 13: %.1f ms; with a new chime %+.1f ms\n",
                times[u"None"_s].at(1), difference);
    QVERIFY2(difference < 2, qPrintable(QString::number(difference)));
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
