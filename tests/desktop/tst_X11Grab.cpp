#include "platform/linux/x11/X11Grab.h"

#include "support/XServer.h"

#include <QFile>
#include <QGuiApplication>
#include <QTest>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

XServer *server = nullptr;

constexpr QRect part(80, 60, 643, 487); // neither side a multiple of eight

xcb_connection_t *connection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

/// Pages that the server has asked the kernel for so far.
qint64 serversPageFaults()
{
    QFile status(u"/proc/%1/stat"_s.arg(server->processId()));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray all = status.readAll();
    return all.mid(all.lastIndexOf(')') + 2).split(' ').value(7).toLongLong(); // proc(5): minflt
}

/// Pieces of System V shared memory that this process has made and that are still there.
int sharedPieces()
{
    QFile list(u"/proc/sysvipc/shm"_s);
    if (!list.open(QIODevice::ReadOnly))
        return -1;
    int count = 0;
    for (const QByteArray &line : list.readAll().split('\n'))
        count += line.simplified().split(' ').value(4).toLongLong() == QCoreApplication::applicationPid(); // cpid
    return count;
}

int distance(QRgb one, QRgb other)
{
    return std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                     std::abs(qBlue(one) - qBlue(other))});
}

} // namespace

class tst_X11Grab : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void showsWhatIsThereNow();
    void anExpectedPictureAsksTheServerForNoMemory();
    void takesAnotherSizeThanExpected();
    void forgetsWhatWasExpected();
    void anEighthIsTheSameEitherWay();
    void thereIsNothingOutsideOfTheScreen();

private:
    /// Fills the root window with vertical stripes `width` pixels wide.
    static void paint(std::uint32_t one, std::uint32_t other, int width);
};

void tst_X11Grab::initTestCase()
{
    QVERIFY(serversPageFaults() > 0);
    QCOMPARE(sharedPieces(), 0);
}

void tst_X11Grab::init()
{
    paint(0x204060, 0x204060, 8);
}

void tst_X11Grab::paint(std::uint32_t one, std::uint32_t other, int width)
{
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection())).data;
    const xcb_gcontext_t gc = xcb_generate_id(connection());
    xcb_create_gc(connection(), gc, screen->root, 0, nullptr);
    for (int x = 0; x < screen->width_in_pixels; x += width) {
        const std::uint32_t colour = x / width % 2 == 0 ? one : other;
        const xcb_rectangle_t stripe{static_cast<std::int16_t>(x), 0, static_cast<std::uint16_t>(width),
                                     screen->height_in_pixels};
        xcb_change_gc(connection(), gc, XCB_GC_FOREGROUND, &colour);
        xcb_poly_fill_rectangle(connection(), screen->root, gc, 1, &stripe);
    }
    xcb_free_gc(connection(), gc);
    // The answer comes when all of that is done.
    std::free(xcb_get_input_focus_reply(connection(), xcb_get_input_focus(connection()), nullptr));
}

void tst_X11Grab::showsWhatIsThereNow()
{
    x11::Grabber grabber(connection());
    grabber.expect(part);
    paint(0xff0000, 0x0000ff, 1);
    const QImage shown = grabber.grab(part);
    QCOMPARE(shown.size(), part.size());
    QCOMPARE(shown.pixel(0, 0), qRgb(255, 0, 0));
    QCOMPARE(shown.pixel(shown.width() - 2, shown.height() - 1), qRgb(0, 0, 255));
    // Once: whoever has the picture keeps it.
    paint(0x00ff00, 0x00ff00, 8);
    QCOMPARE(grabber.grab(part).pixel(0, 0), qRgb(0, 255, 0));
    QCOMPARE(shown.pixel(0, 0), qRgb(255, 0, 0));
}

void tst_X11Grab::anExpectedPictureAsksTheServerForNoMemory()
{
    x11::Grabber grabber(connection());
    grabber.expect(part);
    qint64 before = serversPageFaults();
    QVERIFY(!grabber.grab(part).isNull());
    const qint64 expected = serversPageFaults() - before;
    before = serversPageFaults();
    QVERIFY(!grabber.grab(part).isNull());
    const qint64 unexpected = serversPageFaults() - before;
    QVERIFY2(expected < 20 && unexpected > 5 * std::max<qint64>(expected, 1),
             qPrintable(u"%1 page faults, %2 where it was not expected"_s.arg(expected).arg(unexpected)));
}

void tst_X11Grab::takesAnotherSizeThanExpected()
{
    x11::Grabber grabber(connection());
    grabber.expect(part);
    const QRect other = part.adjusted(0, 0, -10, -10); // the screen has got another mode since
    QCOMPARE(grabber.grab(other).size(), other.size());
    QCOMPARE(grabber.grab(part).size(), part.size());
}

void tst_X11Grab::forgetsWhatWasExpected()
{
    const int before = sharedPieces();
    x11::Grabber grabber(connection());
    grabber.expect(part);
    grabber.expect(part);
    QCOMPARE(sharedPieces(), before + 2);
    grabber.forget();
    QVERIFY(!grabber.grabEighth(part).isNull()); // the server has read everything
    QCOMPARE(sharedPieces(), before);
}

void tst_X11Grab::anEighthIsTheSameEitherWay()
{
    paint(0xf01020, 0x10e0d0, 5);
    x11::Grabber grabber(connection());
    const QImage byServer = grabber.grabEighth(part);
    grabber.expect(part);
    const QImage here = grabber.grabEighth(part);
    QCOMPARE(here.size(), QSize(part.width() / 8, part.height() / 8));
    QCOMPARE(here.size(), byServer.size());
    for (int x = 0; x < here.width(); ++x) {
        // The server rounds three times.
        QVERIFY2(distance(here.pixel(x, 3), byServer.pixel(x, 3)) <= 2, qPrintable(QString::number(x)));
    }
    QCOMPARE(grabber.grab(part).size(), part.size()); // it is still expected
}

void tst_X11Grab::thereIsNothingOutsideOfTheScreen()
{
    x11::Grabber grabber(connection());
    const QRect outside(100000, 0, 100, 100);
    grabber.expect(outside);
    QVERIFY(grabber.grab(outside).isNull());
    QVERIFY(grabber.grabEighth(outside).isNull());
}

int main(int argc, char **argv)
{
    XServer x({{1280, 720}});
    if (!x.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(x.problem()));
        return 1;
    }
    server = &x;
    QGuiApplication application(argc, argv);
    tst_X11Grab test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_X11Grab.moc"
