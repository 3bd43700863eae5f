#include "base/Clock.h"
#include "desktop/OverlayRig.h"
#include "platform/ScreenCover.h"
#include "preferences/Preferences.h"
#include "sound/ChildSoundPlayer.h"
#include "support/ComputingTime.h"
#include "support/FakeMusicPlayers.h"
#include "support/XServer.h"

#include <QApplication>
#include <QBackingStore>
#include <QElapsedTimer>
#include <QPainter>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

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

/// How the overlay's pictures come onto a real X server with two monitors, and what they are made of.
class tst_OverlayX11Pictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { rig = std::make_unique<OverlayRig>(); }
    void cleanup();

    void fadesWithACompositor();
    void theDesktopIsBlurredBehindMidnight_data();
    void theDesktopIsBlurredBehindMidnight();
    void aPictureOfTheScreenIsExact();
    void allMemoryIsThereBeforeTheFirstPicture();
    void isVisibleSoonAfterItIsDue();
    void aSoundCostsTheFirstPictureNothing();

private:
    void showMidnight();
    [[nodiscard]] bool startCompositor(QProcess &compositor) const;
    static void end(QProcess &compositor);

    SystemClock clock;
    std::unique_ptr<OverlayRig> rig;
};

void tst_OverlayX11Pictures::cleanup()
{
    rig.reset();
    QTRY_VERIFY(OverlayRig::areAllGone());
}

void tst_OverlayX11Pictures::showMidnight()
{
    rig->controller->show(MeetingContent{sample::designReview(), {}});
    QTRY_COMPARE(OverlayRig::views().size(), 2);
}

bool tst_OverlayX11Pictures::startCompositor(QProcess &compositor) const
{
    return rig->cover->fade() == ScreenCover::Fade::Picture && server->launch(compositor, u"xcompmgr"_s, {u"-a"_s}) &&
           QTest::qWaitFor([this] { return rig->cover->fade() == ScreenCover::Fade::WindowOpacity; });
}

void tst_OverlayX11Pictures::end(QProcess &compositor)
{
    compositor.terminate();
    QVERIFY(compositor.waitForFinished());
}

void tst_OverlayX11Pictures::fadesWithACompositor()
{
    QProcess compositor;
    QVERIFY(startCompositor(compositor));
    Board board;
    board.show();
    board.raise();
    QTRY_COMPARE(server->pixel(2000, 100), QColor(Qt::white));
    showMidnight();
    QTRY_COMPARE(OverlayRig::views().at(0)->windowOpacity(), 1.0);
    QTRY_VERIFY(server->pixel(2000, 100).green() < 120);
    rig->controller->hide(true);
    QTRY_VERIFY(OverlayRig::areAllGone());
    end(compositor);
}

void tst_OverlayX11Pictures::theDesktopIsBlurredBehindMidnight_data()
{
    QTest::addColumn<bool>("composited");
    QTest::newRow("no compositor") << false;
    QTest::newRow("compositor") << true;
}

void tst_OverlayX11Pictures::theDesktopIsBlurredBehindMidnight()
{
    QFETCH(bool, composited);
    QProcess compositor;
    if (composited)
        QVERIFY(startCompositor(compositor));
    Board board;
    board.show();
    board.raise();
    QTRY_COMPARE(server->pixel(2000, 100), QColor(Qt::white));
    QTRY_COMPARE(server->pixel(5, 1), QColor(Qt::white));
    showMidnight();

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

    rig->controller->hide(false);
    if (composited)
        end(compositor);
}

void tst_OverlayX11Pictures::aPictureOfTheScreenIsExact()
{
    Board board;
    board.show();
    board.raise();
    QTRY_COMPARE(server->pixel(2000, 100), QColor(Qt::white));
    QTRY_COMPARE(server->pixel(5, 1), QColor(Qt::white));
    for (QScreen *screen : QGuiApplication::screens()) {
        const QImage picture = rig->cover->picture(*screen).toImage();
        QCOMPARE(picture.size(), screen->size());
        for (const QPoint at : {QPoint(0, 0), QPoint(4, 0), QPoint(639, 300), QPoint(640, 300), QPoint(1279, 719)}) {
            const QPoint global = screen->geometry().topLeft() + at;
            QCOMPARE(picture.pixel(at) | 0xff000000, Board::colourAt(global.x(), global.y()));
        }
        const QImage small = rig->cover->smallPicture(*screen);
        QCOMPARE(small.size(), QSize(160, 90));
        const bool isChecked = screen->geometry().x() == 0;
        QVERIFY(std::abs(qGreen(small.pixel(10, 10)) - (isChecked ? 127 : 0)) <= 1);
        QVERIFY(std::abs(qGreen(small.pixel(159, 89)) - (isChecked ? 127 : 255)) <= 1);
        QCOMPARE(qGreen(small.pixel(79, 45)), isChecked ? qGreen(small.pixel(80, 45)) : 0);
    }
}

/// Whoever asks the server for memory between two windows' pictures waits until it has copied the first one.
void tst_OverlayX11Pictures::allMemoryIsThereBeforeTheFirstPicture()
{
    /// How many windows have memory of their size when the first of them is painted.
    class Count final : public QObject
    {
    public:
        Count() { qApp->installEventFilter(this); }
        bool eventFilter(QObject *object, QEvent *event) override
        {
            if (event->type() == QEvent::Paint && m_ready < 0 && qobject_cast<OverlayView *>(object)) {
                const auto views = OverlayRig::views();
                m_ready = std::count_if(views.begin(), views.end(), [](const OverlayView *view) {
                    return view->backingStore() && view->backingStore()->size() == view->size();
                });
            }
            return false;
        }
        [[nodiscard]] qsizetype ready() const { return m_ready; }

    private:
        qsizetype m_ready = -1;
    };
    const Count count;
    showMidnight();
    QTRY_VERIFY(count.ready() >= 0);
    QCOMPARE(count.ready(), 2);
}

void tst_OverlayX11Pictures::isVisibleSoonAfterItIsDue()
{
    QList<qint64> times;
    for (int round = 0; round < 5; ++round) {
        QSet<QObject *> painted;
        FirstPaint watcher(&painted);
        QElapsedTimer timer;
        timer.start();
        rig->controller->show(MeetingContent{sample::designReview(), {}});
        QTRY_COMPARE_WITH_TIMEOUT(painted.size(), 2, 2000);
        times.append(timer.elapsed());
        rig->controller->hide(false);
        QTRY_VERIFY(OverlayRig::areAllGone());
    }
    std::sort(times.begin(), times.end());
    std::printf("Due to first painted frame, two monitors, median of 5: %lld ms\n",
                static_cast<long long>(times.at(2)));
    QVERIFY(times.at(2) < 2000); // a quiet machine needs a tenth of it
}

void tst_OverlayX11Pictures::aSoundCostsTheFirstPictureNothing()
{
    const QTemporaryDir chimes;
    FakeUrlOpener opener;
    QHash<QString, QList<double>> times;
    for (int round = 0; round < 13; ++round) {
        const QStringList both{u"None"_s, u"Singing bowl"_s};
        for (const int which : {round % 2, 1 - round % 2}) { // neither always comes first
            const QString &sound = both.at(which);
            rig->preferences.set(preference::sound, sound);
            // Sounds that have not been made before, and a process for each.
            ChildSoundPlayer player(clock, u"/bin/true"_s);
            FakeMusicPlayers musicPlayers;
            MusicControl control(musicPlayers);
            OverlayMusic music(rig->preferences, control);
            OverlaySounds fresh(rig->preferences, clock, player, music, chimes.path());
            OverlayController overlay(rig->preferences, clock, opener, *rig->cover, fresh);
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
            QTRY_VERIFY(OverlayRig::areAllGone());
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
    tst_OverlayX11Pictures test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_OverlayX11Pictures.moc"
