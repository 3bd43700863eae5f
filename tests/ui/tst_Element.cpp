#include "ui/Element.h"

#include "ui/Fonts.h"
#include "ui/Symbols.h"

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QWidget>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_Element : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theMiddleOfAShapeIsPaintedByOneThread(); // first, while no threads wait for work
    void stacksAreCentredWithTheirSpacing();
    void paddingTakesRoomAndOutlinesTakeNone();
    void rowsNarrowTheWidestPartWhereRoomIsShort();
    void atMostLimitsTheWidth();
    void scalingKeepsTheRoomAndTheCentre();
    void taggedElementsReportFrameAndLabel();
    void runningDigitsTurnInTheirPlace();
    void turningTellsWhatLooksDifferent();
    void paintsOnlyWhatTouchesTheDirtyPart();
    void shapesLookTheSameWhenPaintedInParts_data();
    void shapesLookTheSameWhenPaintedInParts();
    void textsStayWithinTheirBounds_data();
    void textsStayWithinTheirBounds();
    void fixedDigitsStandStill();
    void symbolsAreDrawnInTheirColour_data();
    void symbolsAreDrawnInTheirColour();
    void symbolsAreAsFineAsThePictureOfTheirWindow();
};

namespace {

/// A box of a size and colour, made of nothing else.
Element box(double width, double height, const QColor &colour = Qt::black)
{
    return filled(Shape::rectangle(), colour, padded({0, 0, width, height}, vertical(0, {})));
}

QRectF frame(const Arrangement &arrangement, const QString &tag)
{
    return arrangement.frameOf(tag).value_or(QRectF());
}

} // namespace

void tst_Element::stacksAreCentredWithTheirSpacing()
{
    const Arrangement column =
        vertical(7, {tagged(u"a"_s, box(100, 20)), tagged(u"b"_s, box(41, 10)), tagged(u"c"_s, box(60, 5))})
            .arrange(500);
    QCOMPARE(column.size(), QSizeF(100, 20 + 7 + 10 + 7 + 5));
    QCOMPARE(frame(column, u"a"_s), QRectF(0, 0, 100, 20));
    QCOMPARE(frame(column, u"b"_s), QRectF(29, 27, 41, 10)); // whole points
    QCOMPARE(frame(column, u"c"_s), QRectF(20, 44, 60, 5));

    const Arrangement row = horizontal(7, {tagged(u"a"_s, box(10, 20)), tagged(u"b"_s, box(30, 50))}).arrange(500);
    QCOMPARE(row.size(), QSizeF(47, 50));
    QCOMPARE(frame(row, u"a"_s), QRectF(0, 15, 10, 20));
    QCOMPARE(frame(row, u"b"_s), QRectF(17, 0, 30, 50));
    QCOMPARE(vertical(7, {}).arrange(500).size(), QSizeF(0, 0));
    QCOMPARE(horizontal(7, {}).arrange(500).size(), QSizeF(0, 0));
}

void tst_Element::paddingTakesRoomAndOutlinesTakeNone()
{
    const Arrangement padding = padded({1, 2, 3, 4}, tagged(u"a"_s, box(10, 10))).arrange(500);
    QCOMPARE(padding.size(), QSizeF(14, 16));
    QCOMPARE(frame(padding, u"a"_s), QRectF(1, 2, 10, 10));
    QCOMPARE(outlined(Shape::capsule(), QPen(Qt::black, 2), 4, box(10, 10)).arrange(500).size(), QSizeF(10, 10));
}

void tst_Element::rowsNarrowTheWidestPartWhereRoomIsShort()
{
    const Text words = text(u"a text that would like to be much wider than there is room for it"_s)
                           .font(designFont(FontDesign::Default, 15));
    const Arrangement row = horizontal(6, {tagged(u"words"_s, words), tagged(u"box"_s, box(50, 20))}).arrange(200);
    QVERIFY(row.size().width() <= 200);
    QCOMPARE(frame(row, u"box"_s).width(), 50.0);
    QVERIFY(frame(row, u"words"_s).width() > 120);
    QVERIFY(frame(row, u"words"_s).right() <= frame(row, u"box"_s).left());
}

void tst_Element::atMostLimitsTheWidth()
{
    const Text words = text(u"many words in one line"_s.repeated(20)).font(designFont(FontDesign::Default, 15));
    QVERIFY(Element(words).arrange(1000).size().width() > 900);
    QVERIFY(atMost(300, words).arrange(1000).size().width() <= 300);
    QVERIFY(atMost(300, words).arrange(100).size().width() <= 100);
}

void tst_Element::scalingKeepsTheRoomAndTheCentre()
{
    const Arrangement larger = scaled(1.5, tagged(u"a"_s, box(20, 10))).arrange(500);
    QCOMPARE(larger.size(), QSizeF(20, 10));
    QCOMPARE(frame(larger, u"a"_s), QRectF(-5, -2.5, 30, 15));
}

void tst_Element::taggedElementsReportFrameAndLabel()
{
    const Arrangement arrangement =
        vertical(0, {text(u"outside"_s), tagged(u"button"_s, horizontal(3, {text(u"Join"_s), text(u"now"_s)}))})
            .arrange(500);
    QCOMPARE(arrangement.texts().size(), 1U);
    QCOMPARE(arrangement.texts().front().text, u"outside"_s);
    QCOMPARE(arrangement.tagged().size(), 1U);
    QCOMPARE(arrangement.tagged().front().label, u"Join now"_s);
    QVERIFY(!arrangement.frameOf(u"other"_s));
}

void tst_Element::runningDigitsTurnInTheirPlace()
{
    const auto card = [](const QString &time) {
        const Text clock = text(time).font(designFont(FontDesign::Rounded, 20)).colour(Qt::red).fixedDigits();
        return scaled(0.8, padded({3, 4, 5, 6}, vertical(2, {tagged(u"a"_s, text(u"12"_s).fixedDigits()),
                                                             tagged(u"clock"_s, vertical(2, {clock, text(u"left"_s)})),
                                                             tagged(u"b"_s, text(u"34"_s))})))
            .arrange(500);
    };
    const auto drawn = [](const Arrangement &arrangement) {
        QImage image(100, 120, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        arrangement.paint(painter, {});
        return image;
    };
    Arrangement turned = card(u"in 10:00"_s);
    QVERIFY(drawn(turned) != drawn(card(u"in 98:76"_s)));
    QVERIFY(turned.turnDigits(u"clock"_s, u"in 98:76 left"_s));
    QCOMPARE(drawn(turned), drawn(card(u"in 98:76"_s)));
    QCOMPARE(turned.tagged().at(1).label, u"in 98:76 left"_s);
    QCOMPARE(turned.words(), card(u"in 98:76"_s).words());
    QVERIFY(turned.turnDigits(u"clock"_s, u"in 11:11 left"_s));
    QCOMPARE(drawn(turned), drawn(card(u"in 11:11"_s)));

    QVERIFY(!turned.turnDigits(u"clock"_s, u"in 1:11 left"_s));       // fewer of them
    QVERIFY(!turned.turnDigits(u"clock"_s, u"in 11:111 left"_s));     // more
    QVERIFY(!turned.turnDigits(u"clock"_s, u"in 11:11 right"_s));     // other words
    QVERIFY(!turned.turnDigits(u"clock"_s, u"in 11:1x left"_s));      // no digit
    QVERIFY(!turned.turnDigits(u"clock"_s, u"in 11:1\u0663 left"_s)); // none of these
    QVERIFY(!turned.turnDigits(u"b"_s, u"35"_s));                     // they do not run
    QVERIFY(!turned.turnDigits(u"d"_s, u"in 11:12 left"_s));          // not there
    QCOMPARE(drawn(turned), drawn(card(u"in 11:11"_s)));
    QCOMPARE(turned.tagged().at(1).label, u"in 11:11 left"_s);

    // A light takes on the shape of what it shines around, so it has to be made anew.
    Arrangement light = tagged(u"clock"_s, glowing(12, Qt::red, text(u"10:00"_s).fixedDigits())).arrange(500);
    QVERIFY(!light.turnDigits(u"clock"_s, u"10:01"_s));
}

void tst_Element::turningTellsWhatLooksDifferent()
{
    const Element clock = tagged(
        u"clock"_s,
        filled(Shape::capsule(), Qt::white,
               padded({20, 5, 20, 5}, text(u"10:00"_s).font(designFont(FontDesign::Rounded, 20)).fixedDigits())));
    Arrangement card = padded({7, 0, 0, 0}, vertical(2, {clock})).arrange(500);
    const auto turned = [&](const QString &time) { return card.turnDigits(u"clock"_s, time); };
    QCOMPARE(turned(u"10:00"_s), QRectF());
    const QRectF frame = card.frame();
    const QRectF last = turned(u"10:01"_s).value();
    const QRectF both = turned(u"10:23"_s).value();
    const QRectF all = turned(u"09:59"_s).value();
    QVERIFY(last.left() > frame.center().x() && last.right() > frame.right() - 27 && last.right() < frame.right());
    QVERIFY(both.contains(last.center()) && both.left() < last.left() - 8 && both.left() > frame.center().x() - 10);
    QVERIFY(all.contains(both.center()) && all.left() > frame.left() && all.left() < frame.left() + 27);
}

void tst_Element::paintsOnlyWhatTouchesTheDirtyPart()
{
    const Arrangement row = horizontal(0, {box(10, 10, Qt::red), box(10, 10, Qt::blue)}).arrange(100);
    QImage image(20, 10, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    row.paint(painter, {}, QRectF(12, 2, 2, 2));
    painter.end();
    QCOMPARE(image.pixelColor(5, 5), QColor(Qt::white));
    QCOMPARE(image.pixelColor(15, 5), QColor(Qt::blue));
}

void tst_Element::shapesLookTheSameWhenPaintedInParts_data()
{
    QTest::addColumn<double>("density");
    for (const double density : {1.0, 1.25, 1.5, 2.0, 3.0})
        QTest::addRow("%g", density) << density;
}

void tst_Element::shapesLookTheSameWhenPaintedInParts()
{
    QFETCH(double, density);
    const Arrangement shape =
        filled(Shape::capsule(), QColor(255, 255, 255, 31), padded({0, 0, 101, 37}, vertical(0, {}))).arrange(500);
    // Each square at a time, as large as asked for.
    const auto painted = [&](int side) {
        QImage image(QSize(120, 60) * density, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(density);
        image.fill(QColor(20, 90, 40));
        for (int x = 0; x < 120; x += side) {
            for (int y = 0; y < 60; y += side) {
                QPainter painter(&image);
                painter.translate(5, 5);
                painter.setClipRect(QRect(x - 5, y - 5, side, side));
                shape.paint(painter, {});
            }
        }
        return image;
    };
    const QImage whole = painted(120);
    QVERIFY(whole.pixel(whole.rect().center()) != whole.pixel(0, 0));
    for (const int side : {1, 6, 10})
        QCOMPARE(painted(side), whole);
}

void tst_Element::theMiddleOfAShapeIsPaintedByOneThread()
{
    const auto threads = [] { return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(); };
    const Arrangement shape =
        filled(Shape::capsule(), QColor(255, 255, 255, 31), padded({0, 0, 400, 90}, vertical(0, {}))).arrange(500);
    QImage image(400, 90, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    const auto before = threads();
    QPainter painter(&image);
    painter.setClipRect(QRect(100, 5, 80, 80));
    shape.paint(painter, {});
    painter.end();
    QVERIFY(image.pixel(140, 45) != image.pixel(0, 0));
    QCOMPARE(threads(), before); // for more than a few spans Qt starts helpers
}

void tst_Element::textsStayWithinTheirBounds_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<FontDesign>("design");
    QTest::newRow("plain") << u"Ågy 0:47"_s << FontDesign::Default;
    QTest::newRow("serif") << u"fjord Ågy"_s << FontDesign::Serif;
    QTest::newRow("rounded") << u"fjord Ågy"_s << FontDesign::Rounded;
    QTest::newRow("monospaced") << u"fjord Ågy"_s << FontDesign::Monospaced;
    QTest::newRow("from right to left") << u"שָׁלוֹם مُحَمَّدٌ"_s << FontDesign::Default;
    QTest::newRow("ideographs") << u"会議の予定"_s << FontDesign::Default;
    QTest::newRow("emoji") << u"🎉🦑 ☕"_s << FontDesign::Default;
    QTest::newRow("accents on accents") << u"A"_s + QString(8, QChar(0x0302)) + QString(8, QChar(0x0332))
                                        << FontDesign::Default;
    QTest::newRow("letters below letters") << u"ཧཱུྃ"_s << FontDesign::Default;
    QTest::newRow("in the middle of three lines") << u"one two ཧཱུྃ four five six ཧཱུྃ"_s << FontDesign::Default;
}

void tst_Element::textsStayWithinTheirBounds()
{
    QFETCH(QString, words);
    QFETCH(FontDesign, design);
    const Arrangement shown = Element(text(words).font(designFont(design, 60)).colour(Qt::white).lines(3)).arrange(400);
    constexpr int around = 600;
    const auto inked = [&](const QRegion &where) {
        QImage image(shown.size().toSize() + QSize(2 * around, 2 * around), QImage::Format_RGB32);
        image.fill(Qt::black);
        const QImage blank = image;
        QPainter painter(&image);
        painter.translate(around, around);
        painter.setClipRegion(where);
        shown.paint(painter, {});
        painter.end();
        return image != blank;
    };
    const QRect bounds = shown.bounds().toAlignedRect();
    QVERIFY(inked(bounds));
    QVERIFY(!inked(QRegion(bounds.adjusted(-around, -around, around, around)) - bounds));
    // What stands above a title is painted every second, and the title with it where it reaches so far.
    if (QByteArrayView(QTest::currentDataTag()) == "plain")
        QVERIFY(bounds.top() >= -1 && bounds.bottom() <= shown.frame().bottom() + 1);
}

void tst_Element::fixedDigitsStandStill()
{
    const auto width = [](const QString &figure, bool fixed) {
        const Text words = text(figure).font(designFont(FontDesign::Rounded, 20));
        return Element(fixed ? words.fixedDigits() : words).arrange(500).size().width();
    };
    QVERIFY(width(u"0:11"_s, false) < width(u"0:00"_s, false)); // or the test would prove nothing
    for (int second = 0; second < 60; ++second)
        QCOMPARE(width(u"Starts in 0:%1"_s.arg(second, 2, 10, QLatin1Char('0')), true),
                 width(u"Starts in 0:00"_s, true));
    QVERIFY(width(u"10:00"_s, true) > width(u"0:00"_s, true));
}

void tst_Element::symbolsAreDrawnInTheirColour_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("video") << u"video"_s;
    QTest::newRow("checkmark-circle") << u"checkmark-circle"_s;
}

void tst_Element::symbolsAreDrawnInTheirColour()
{
    QFETCH(QString, name);
    QImage image(48, 48, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    const Arrangement arrangement = symbol(name, 48, Qt::red).arrange(500);
    QCOMPARE(arrangement.size(), QSizeF(48, 48));
    arrangement.paint(painter, {});
    painter.end();
    int red = 0;
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 48; ++x)
            red += image.pixelColor(x, y) == QColor(Qt::red) ? 1 : 0;
    }
    QVERIFY(red > 500);
    QCOMPARE(image.pixelColor(0, 0), QColor(Qt::white));
}

void tst_Element::symbolsAreAsFineAsThePictureOfTheirWindow()
{
    class Window : public QWidget
    {
    protected:
        void paintEvent(QPaintEvent *) override
        {
            QPainter painter(this);
            paintSymbol(painter, rect(), u"paintpalette-fill"_s, Qt::black);
        }
    };
    QImage picture(60, 60, QImage::Format_RGB32);
    picture.setDevicePixelRatio(3);
    picture.fill(Qt::white);
    QImage direct = picture;
    QPainter painter(&direct);
    paintSymbol(painter, {0, 0, 20, 20}, u"paintpalette-fill"_s, Qt::black);
    painter.end();
    Window window;
    window.setAttribute(Qt::WA_OpaquePaintEvent);
    window.resize(20, 20);
    window.render(&picture, {}, {}, {});
    QCOMPARE(picture, direct);
}

QTEST_MAIN(tst_Element)
#include "tst_Element.moc"
