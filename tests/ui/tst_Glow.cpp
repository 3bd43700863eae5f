#include "ui/Element.h"

#include "ui/Blink.h"
#include "ui/Fonts.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_Glow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lightsWhatLiesAroundInItsColour_data();
    void lightsWhatLiesAroundInItsColour();
    void anInvisibleColourCostsNothing();
    void takesNoRoom();
    void isBakedOnceForAShapeThatStays();
    void followsAShapeThatChanges();
    void paintsTheSameInParts();

    void theCursorFollowsTheTextAndBlinks_data();
    void theCursorFollowsTheTextAndBlinks();
    void theCursorsLightBlinksWithIt();
    void theCursorIsNotSaid();
    void blinksByTheReferenceDate();
};

namespace {

constexpr double room = 60;
constexpr Instant lit{978307200};
constexpr double dark = 0.6; // seconds later

QImage painted(const Arrangement &arrangement, Instant now = lit, double density = 1)
{
    const QSizeF size = arrangement.size() + QSizeF(2 * room, 2 * room);
    QImage image((size * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.translate(room, room);
    arrangement.paint(painter, now);
    return image;
}

/// A white square that counts how often it is painted.
Element square(int *count = nullptr)
{
    return drawing({100, 100}, 0, {[count](QPainter &painter, Instant) {
                       if (count)
                           ++*count;
                       painter.setRenderHint(QPainter::Antialiasing);
                       painter.fillRect(QRectF(0, 0, 100, 100), Qt::white);
                   }});
}

/// White in every even second, left half in every odd one.
Element changing()
{
    return drawing({100, 100}, 0,
                   {.paint =
                        [](QPainter &painter, Instant now) {
                            painter.fillRect(QRectF(0, 0, now.wholeSeconds() % 2 == 0 ? 100 : 50, 100), Qt::white);
                        },
                    .untilChange = [](Instant, double) { return 0.25; },
                    .changed = [](Instant, Instant) { return QRectF(50, 0, 50, 100); }});
}

Text title(const QString &words)
{
    return text(words).font(designFont(FontDesign::Default, 60, QFont::Bold)).colour(Qt::white);
}

/// Where there is something of this colour.
QRect inked(const QImage &image, const QColor &colour)
{
    QRect result;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == colour)
                result |= QRect(x, y, 1, 1);
        }
    }
    return result;
}

} // namespace

void tst_Glow::lightsWhatLiesAroundInItsColour_data()
{
    QTest::addColumn<double>("density");
    QTest::newRow("1") << 1.0;
    QTest::newRow("1.5") << 1.5;
    QTest::newRow("2") << 2.0;
}

void tst_Glow::lightsWhatLiesAroundInItsColour()
{
    QFETCH(double, density);
    QColor colour(Qt::green);
    colour.setAlphaF(0.8F);
    const QImage image = painted(glowing(20, colour, square()).arrange(500), lit, density);
    const auto at = [&](double x, double y) {
        return image.pixelColor(static_cast<int>((room + x) * density), static_cast<int>((room + y) * density));
    };
    QCOMPARE(at(50, 50), QColor(Qt::white));
    // On the edge of a long straight shape half of the light arrives; one deviation out, 16 %.
    QVERIFY2(std::abs(at(-0.5, 50).green() - 0.5 * 0.8 * 255) < 8, qPrintable(at(-0.5, 50).name()));
    QVERIFY2(std::abs(at(-10.5, 50).green() - 0.16 * 0.8 * 255) < 8, qPrintable(at(-10.5, 50).name()));
    QCOMPARE(at(-0.5, 50).red(), 0);
    for (double distance : {0.5, 5.5, 12.5}) {
        QVERIFY(std::abs(at(-distance, 50).green() - at(100 + distance - 0.01, 50).green()) <= 3);
        QVERIFY(std::abs(at(-distance, 50).green() - at(50, -distance).green()) <= 3);
    }
    QCOMPARE(at(-40, 50), QColor(Qt::black));
}

void tst_Glow::anInvisibleColourCostsNothing()
{
    int count = 0;
    const Arrangement arrangement = glowing(20, Qt::transparent, square(&count)).arrange(500);
    const QImage image = painted(arrangement);
    QCOMPARE(count, 1);
    QCOMPARE(image, painted(square().arrange(500)));
}

void tst_Glow::takesNoRoom()
{
    const Arrangement arrangement = glowing(20, Qt::green, tagged(u"a"_s, square())).arrange(500);
    QCOMPARE(arrangement.size(), QSizeF(100, 100));
    QCOMPARE(*arrangement.frameOf(u"a"_s), QRectF(0, 0, 100, 100));
    QVERIFY(arrangement.bounds().contains(QRectF(-30, -30, 160, 160)));
}

void tst_Glow::isBakedOnceForAShapeThatStays()
{
    const Element element = glowing(20, Qt::green, square());
    const Arrangement before = element.arrange(500);
    const QImage first = painted(before);
    Arrangement after = element.arrange(500);
    after.inheritGlows(before);
    QCOMPARE(painted(after), first);
    // Another colour is another light.
    Arrangement other = glowing(20, Qt::red, square()).arrange(500);
    other.inheritGlows(before);
    QCOMPARE(painted(other), painted(glowing(20, Qt::red, square()).arrange(500)));
    QVERIFY(painted(other) != first);
}

void tst_Glow::followsAShapeThatChanges()
{
    const Arrangement arrangement = glowing(20, Qt::green, changing()).arrange(500);
    QCOMPARE(arrangement.untilChange(lit, 1), 0.25);
    QVERIFY(std::isinf(square().arrange(500).untilChange(lit, 1)));
    const QImage whole = painted(arrangement, lit);
    const QImage half = painted(arrangement, lit + 1);
    const auto right = [](const QImage &image) { return image.pixelColor(int(room) + 105, int(room) + 50).green(); };
    QVERIFY(right(whole) > 50);
    QCOMPARE(right(half), 0);
    QCOMPARE(painted(arrangement, lit + 2), whole);
}

void tst_Glow::paintsTheSameInParts()
{
    const Arrangement arrangement = glowing(20, Qt::green, changing()).arrange(500);
    QImage image = painted(arrangement, lit);
    const std::vector<QRectF> parts = arrangement.changed(lit, lit + 1);
    QCOMPARE(parts.size(), 1U); // the shape and its light together
    QPainter painter(&image);
    painter.translate(room, room);
    painter.setClipRect(parts.front());
    painter.fillRect(parts.front(), Qt::black);
    arrangement.paint(painter, lit + 1, parts.front());
    painter.end();
    QCOMPARE(image, painted(arrangement, lit + 1));
}

void tst_Glow::theCursorFollowsTheTextAndBlinks_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("onTheLeft");
    QTest::newRow("left to right") << u"Review"_s << false;
    QTest::newRow("right to left") << u"مراجعة"_s << true;
}

void tst_Glow::theCursorFollowsTheTextAndBlinks()
{
    QFETCH(QString, words);
    QFETCH(bool, onTheLeft);
    const Arrangement plain = Element(title(words)).arrange(900);
    const Arrangement arrangement = Element(title(words).cursor(Qt::red)).arrange(900);
    QVERIFY(arrangement.size().width() > plain.size().width() + 15);
    const QImage on = painted(arrangement, lit);
    const QImage off = painted(arrangement, lit + dark);
    const QRect letters = inked(off, Qt::white);
    QCOMPARE(inked(on, Qt::white), letters);
    QVERIFY(inked(off, Qt::red).isEmpty());
    const QRect cursor = inked(on, Qt::red);
    QVERIFY(cursor.width() > 15 && cursor.height() >= 2 && cursor.height() < 12);
    QVERIFY(onTheLeft ? cursor.right() < letters.left() + 6 : cursor.left() > letters.right() - 6);
    QVERIFY(onTheLeft ? cursor.right() > letters.left() - 20 : cursor.left() < letters.right() + 20);
    const std::vector<QRectF> parts = arrangement.changed(lit, lit + dark);
    QCOMPARE(parts.size(), 1U);
    QVERIFY(parts.front().translated(room, room).contains(QRectF(cursor)));
    QVERIFY(arrangement.changed(lit, lit + 1.2).empty());
}

void tst_Glow::theCursorsLightBlinksWithIt()
{
    const Arrangement arrangement = glowing(22, Qt::green, title(u"Review"_s).cursor(Qt::red)).arrange(900);
    const QRect cursor = inked(painted(arrangement, lit), Qt::red);
    const QPoint below(cursor.center().x() + 10, cursor.bottom() + 6);
    const int on = painted(arrangement, lit).pixelColor(below).green();
    const int off = painted(arrangement, lit + dark).pixelColor(below).green();
    QVERIFY2(on > off + 10, qPrintable(QString::number(on)));
}

void tst_Glow::theCursorIsNotSaid()
{
    const Arrangement arrangement = Element(title(u"Review"_s).cursor(Qt::red)).arrange(900);
    QCOMPARE(arrangement.texts().front().text, u"Review"_s);
}

void tst_Glow::blinksByTheReferenceDate()
{
    QVERIFY(Blink::isLit({978307200}));
    QVERIFY(Blink::isLit({978307200 + 0.549}));
    QVERIFY(!Blink::isLit({978307200 + 0.551}));
    QVERIFY(!Blink::isLit({978307200 + 1.099}));
    QVERIFY(Blink::isLit({978307200 + 1.101}));
    QVERIFY(!Blink::isLit({978307200 - 0.1}));
    // 788954400 s after the reference date are 1434462545.45 periods.
    QVERIFY(!Blink::isLit({1767261600}));
    Instant now{1767261600};
    for (int i = 0; i < 200; ++i) {
        const double wait = Blink::untilTurn(now);
        QVERIFY(wait > 0 && wait < 0.56);
        QVERIFY(Blink::isLit(now) != Blink::isLit(now + wait));
        now = now + wait;
    }
}

QTEST_MAIN(tst_Glow)
#include "tst_Glow.moc"
