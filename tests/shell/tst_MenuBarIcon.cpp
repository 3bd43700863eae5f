#include "shell/MenuBarIcon.h"

#include <QDir>
#include <QPainter>
#include <QPainterPath>
#include <QSvgRenderer>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

constexpr int inkOf = 40; ///< from this alpha on a pixel belongs to a drawing

const MenuBarIcon::Content calendar{};
const MenuBarIcon::Content paused{true, {}};

MenuBarIcon::Content minutes(const QString &text)
{
    return {false, text};
}

/// The icon as it is described: drawn one over the other with the gap erased, which works on a picture of its own only.
QImage drawnByErasing(int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(0, size);
    painter.scale(size / 18.0, -size / 18.0);

    QPainterPath body;
    body.addRoundedRect(QRectF(6.7, 3.2, 10.2, 8.6), 1.8, 1.8);
    painter.strokePath(body, QPen(Qt::black, 1.4));
    QPainterPath band;
    band.addRoundedRect(QRectF(6.0, 9.5, 11.6, 3.0), 2.2, 2.2);
    band.addRect(QRectF(6.0, 9.5, 11.6, 1.5));
    band.setFillRule(Qt::WindingFill);
    painter.fillPath(band, Qt::black);
    QPainterPath ring;
    ring.addRoundedRect(QRectF(13.9, 11.0, 1.7, 3.6), 0.85, 0.85);
    painter.fillPath(ring, Qt::black);
    const QColor faint(0, 0, 0, 102);
    for (const auto &[corner, colour] : {std::pair(QPointF(10.6, 6.4), faint),
                                         {QPointF(13.6, 6.4), QColor(Qt::black)},
                                         {QPointF(10.6, 3.6), faint},
                                         {QPointF(13.6, 3.6), faint}}) {
        QPainterPath cell;
        cell.addRoundedRect(QRectF(corner, QSizeF(2.3, 2.3)), 0.5, 0.5);
        painter.fillPath(cell, colour);
    }
    QPainterPath curtain(QPointF(9.4, 15.8));
    curtain.cubicTo(10.4, 9.0, 7.0, 3.4, 2.6, 2.2);
    curtain.cubicTo(1.8, 2.0, 1.2, 2.6, 1.2, 3.6);
    curtain.lineTo(1.2, 8.6);
    curtain.cubicTo(5.6, 8.8, 8.6, 11.8, 9.4, 15.8);
    curtain.closeSubpath();
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.strokePath(curtain, QPen(Qt::black, 2.0, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.fillPath(curtain, Qt::black);
    return image;
}

/// How far apart the alpha of two pictures is on average, 0…255.
double difference(const QImage &a, const QImage &b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            sum += std::abs(qAlpha(a.pixel(x, y)) - qAlpha(b.pixel(x, y)));
    }
    return sum / (a.width() * a.height());
}

int ink(const QImage &image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += qAlpha(image.pixel(x, y)) >= inkOf;
    }
    return count;
}

bool touchesEdge(const QImage &image)
{
    for (int i = 0; i < image.width(); ++i) {
        for (const QPoint &at :
             {QPoint(i, 0), QPoint(i, image.height() - 1), QPoint(0, i), QPoint(image.width() - 1, i)}) {
            if (qAlpha(image.pixel(at)) >= 128)
                return true;
        }
    }
    return false;
}

QImage rendered(const QByteArray &svg, int size)
{
    QSvgRenderer renderer(svg);
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

QStringList everyText()
{
    QStringList texts{u"now"_s};
    for (int minute = 1; minute <= 60; ++minute)
        texts.append(QString::number(minute));
    return texts;
}

} // namespace

class tst_MenuBarIcon : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isDrawnAsDescribedAtEverySize_data();
    void isDrawnAsDescribedAtEverySize();
    void hasTheSizeAndDensityAskedFor();
    void isBlackWithTransparency();
    void takesItsColourAndOpacity();
    void leavesWhatLiesBelowItInTheGap();
    void paintsNothingIntoNoSpace();
    void showsAPauseSignWhilePaused();
    void everyTextLooksDifferentAndFits_data();
    void everyTextLooksDifferentAndFits();
    void standsOnWholePixels_data();
    void standsOnWholePixels();
    void isTheSameAsSvg_data();
    void isTheSameAsSvg();
    void hasAnSvgThatDesktopsCanTint();
    void picturesForLookingAt();
};

void tst_MenuBarIcon::isDrawnAsDescribedAtEverySize_data()
{
    QTest::addColumn<int>("size");
    for (int size = 16; size <= 64; ++size)
        QTest::addRow("%d", size) << size;
    QTest::newRow("288") << 288;
}

void tst_MenuBarIcon::isDrawnAsDescribedAtEverySize()
{
    QFETCH(int, size);
    const QImage icon = MenuBarIcon::make(size);
    // Large and then small, so that edges drawn one over the other are not antialiased twice.
    const QImage expected =
        drawnByErasing(size * 8).scaled(size, size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const double apart = difference(icon, expected);
    QVERIFY2(apart < (size < 100 ? 2.0 : 0.6), qPrintable(QString::number(apart)));
    QVERIFY(ink(icon) > size * size / 4);
}

void tst_MenuBarIcon::hasTheSizeAndDensityAskedFor()
{
    const QImage icon = MenuBarIcon::make(18, calendar, Qt::black, 2);
    QCOMPARE(icon.size(), QSize(36, 36));
    QCOMPARE(icon.deviceIndependentSize(), QSizeF(18, 18));
    QVERIFY(difference(icon, MenuBarIcon::make(36)) < 0.01);
    QCOMPARE(MenuBarIcon::make(288).size(), QSize(288, 288));
    QCOMPARE(MenuBarIcon::make(16, calendar, Qt::black, 1.5).size(), QSize(24, 24));
    QVERIFY(MenuBarIcon::make(0).isNull());
}

void tst_MenuBarIcon::isBlackWithTransparency()
{
    const QImage icon = MenuBarIcon::make(180);
    for (int y = 0; y < icon.height(); ++y) {
        for (int x = 0; x < icon.width(); ++x)
            QCOMPARE(icon.pixel(x, y) & 0xffffff, 0U);
    }
    // In the design's space of 18 × 18, y up: the day that is meant, the others, the curtain, the gap, the outside.
    const auto alpha = [&](double x, double y) { return qAlpha(icon.pixel(int(x * 10), int(180 - y * 10))); };
    QCOMPARE(alpha(14.7, 7.5), 255);
    QCOMPARE(alpha(14.7, 4.7), 102);
    QCOMPARE(alpha(11.7, 7.5), 102);
    QCOMPARE(alpha(11.7, 4.7), 102);
    QCOMPARE(alpha(4, 6), 255);
    QCOMPARE(alpha(9.3, 10), 0);
    QCOMPARE(alpha(14.7, 13.5), 255);
    QCOMPARE(alpha(1, 17), 0);
    QCOMPARE(alpha(16, 6), 0);
}

void tst_MenuBarIcon::takesItsColourAndOpacity()
{
    QColor colour(10, 200, 90);
    colour.setAlphaF(0.5);
    const QImage icon = MenuBarIcon::make(180, calendar, colour);
    const QColor curtain = icon.pixelColor(40, 120);
    QVERIFY(std::abs(curtain.green() - 200) <= 2 && std::abs(curtain.alpha() - 128) <= 1);
    QVERIFY(std::abs(icon.pixelColor(147, 133).alpha() - 51) <= 1);
}

void tst_MenuBarIcon::leavesWhatLiesBelowItInTheGap()
{
    QImage ground(180, 180, QImage::Format_RGB32);
    ground.fill(Qt::yellow);
    QPainter painter(&ground);
    MenuBarIcon::paint(painter, ground.size());
    painter.end();
    QCOMPARE(ground.pixelColor(93, 80), QColor(Qt::yellow));
    QCOMPARE(ground.pixelColor(40, 120), QColor(Qt::black));
}

void tst_MenuBarIcon::paintsNothingIntoNoSpace()
{
    QImage image(8, 8, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    for (const QSizeF &size : {QSizeF(0, 0), QSizeF(-3, 5), QSizeF(5, 0)}) {
        MenuBarIcon::paint(painter, size);
        MenuBarIcon::paint(painter, size, minutes(u"5"_s));
    }
    painter.end();
    QCOMPARE(ink(image), 0);
}

void tst_MenuBarIcon::showsAPauseSignWhilePaused()
{
    const QImage icon = MenuBarIcon::make(180, paused);
    const auto alpha = [&](int x, int y) { return qAlpha(icon.pixel(x, y)); };
    QCOMPARE(alpha(90, 90), 0); // between the bars
    QCOMPARE(alpha(70, 90), 255);
    QCOMPARE(alpha(110, 90), 255);
    QCOMPARE(alpha(20, 90), 255); // the circle
    QCOMPARE(alpha(40, 90), 0);
    QVERIFY(difference(icon, icon.mirrored(true, false)) < 0.5);
    // A pause has no minutes.
    QCOMPARE(MenuBarIcon::make(22, {true, u"5"_s}), MenuBarIcon::make(22, paused));
}

void tst_MenuBarIcon::everyTextLooksDifferentAndFits_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {16, 18, 22, 24, 32, 44, 48, 64})
        QTest::addRow("%d", size) << size;
}

void tst_MenuBarIcon::everyTextLooksDifferentAndFits()
{
    QFETCH(int, size);
    QList<QImage> icons{MenuBarIcon::make(size), MenuBarIcon::make(size, paused)};
    for (const QString &text : everyText()) {
        const QImage icon = MenuBarIcon::make(size, minutes(text));
        QVERIFY2(!touchesEdge(icon), qPrintable(text));
        for (const QImage &each : std::as_const(icons))
            QVERIFY2(difference(icon, each) > 1.5, qPrintable(text));
        icons.append(icon);
    }
}

void tst_MenuBarIcon::standsOnWholePixels_data()
{
    QTest::addColumn<int>("size");
    for (int size = 16; size <= 64; ++size)
        QTest::addRow("%d", size) << size;
}

/// Below the head and below the digits a row of full pixels is followed by an empty one.
void tst_MenuBarIcon::standsOnWholePixels()
{
    QFETCH(int, size);
    const QImage icon = MenuBarIcon::make(size, minutes(u"12"_s));
    const int column = static_cast<int>(std::round(size / 22.0 * 11));
    QList<int> alphas;
    for (int y = 0; y < static_cast<int>(std::round(8 * size / 22.0)); ++y)
        alphas.append(qAlpha(icon.pixel(column, y)));
    const qsizetype last = alphas.lastIndexOf(255);
    QVERIFY(last > 0);
    const qsizetype first = alphas.indexOf(255);
    for (qsizetype y = 0; y < alphas.size(); ++y)
        QCOMPARE(alphas.at(y), y >= first && y <= last ? 255 : 0);
    // The foot of the digits.
    const auto strongest = [&](int y) {
        int result = 0;
        for (int x = 0; x < size; ++x)
            result = std::max(result, qAlpha(icon.pixel(x, y)));
        return result;
    };
    const int bottom = static_cast<int>(std::round(21 * size / 22.0));
    QCOMPARE(strongest(bottom - 1), 255);
    for (int y = bottom; y < size; ++y)
        QVERIFY(strongest(y) < 8);
}

void tst_MenuBarIcon::isTheSameAsSvg_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isPaused");
    QTest::newRow("calendar") << QString() << false;
    QTest::newRow("paused") << QString() << true;
    for (const QString &text : everyText())
        QTest::newRow(qPrintable(text)) << text << false;
}

void tst_MenuBarIcon::isTheSameAsSvg()
{
    QFETCH(QString, text);
    QFETCH(bool, isPaused);
    const MenuBarIcon::Content content{isPaused, text};
    const QByteArray svg = MenuBarIcon::svg(content);
    QVERIFY(QSvgRenderer(svg).isValid());
    for (const int size : {22, 44}) {
        const double apart = difference(rendered(svg, size), MenuBarIcon::make(size, content));
        QVERIFY2(apart < 1.5, qPrintable(QString::number(apart)));
    }
}

void tst_MenuBarIcon::hasAnSvgThatDesktopsCanTint()
{
    for (const MenuBarIcon::Content &content : {calendar, paused, minutes(u"28"_s)}) {
        const QByteArray svg = MenuBarIcon::svg(content, QColor(1, 2, 3));
        QVERIFY(!svg.contains("<text"));
        QVERIFY(!svg.contains("mask"));
        QVERIFY(svg.contains("id=\"current-color-scheme\""));
        QVERIFY(svg.contains("color:#010203"));
        // GTK sets the fill of all shapes, KDE the colour of this class: no shape may have its own.
        QCOMPARE(svg.count("<path"), svg.count("class=\"ColorScheme-Text\" fill=\"currentColor\""));
        QVERIFY(svg.count("<path") > 0);
        QVERIFY(svg.size() < 16 * 1024);
    }
}

/// Leaves a sheet of all sizes on a light and a dark ground where KELP_TEST_PICTURES says.
void tst_MenuBarIcon::picturesForLookingAt()
{
    const QStringList texts{u""_s, u"paused"_s, u"1"_s, u"5"_s, u"12"_s, u"28"_s, u"46"_s, u"60"_s, u"now"_s};
    QImage sheet(2 * 700, 500, QImage::Format_RGB32);
    sheet.fill(QColor(0xf5, 0xf5, 0xf4));
    QPainter painter(&sheet);
    painter.fillRect(700, 0, 700, 500, QColor(0x2c, 0x2c, 0x2e));
    for (const int half : {0, 1}) {
        int y = 12;
        for (const int size : {16, 18, 22, 24, 32, 44, 48, 64}) {
            int x = 700 * half + 12;
            for (const QString &text : texts) {
                const MenuBarIcon::Content content = text == u"paused" ? paused : minutes(text);
                painter.drawImage(
                    x, y, MenuBarIcon::make(size, content, half ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x2e, 0x34, 0x36)));
                x += size + 12;
            }
            y += size + 14;
        }
    }
    painter.end();
    const QString folder =
        qEnvironmentVariable("KELP_TEST_PICTURES", qEnvironmentVariable("KELP_BINARY_DIR") + u"/pictures"_s);
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(sheet.save(folder + u"/menu-bar-icon.png"_s));
    QVERIFY(MenuBarIcon::make(288).save(folder + u"/menubar-big.png"_s));
}

QTEST_MAIN(tst_MenuBarIcon)
#include "tst_MenuBarIcon.moc"
