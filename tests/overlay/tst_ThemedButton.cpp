#include "overlay/ThemedButton.h"

#include "overlay/CardTags.h"
#include "overlay/WelcomeCard.h"
#include "support/SampleThemes.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_ThemedButton : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fillsAndStrokesByItsLook_data();
    void fillsAndStrokesByItsLook();
    void cornersFollowTheLook_data();
    void cornersFollowTheLook();
    void labelHasItsColourAndRoom_data();
    void labelHasItsColourAndRoom();
    void pressedWinsOverHovered();
    void scalesAboutItsCentre();
    void aHoveredPrimaryButtonIsBrighterAsAWhole();
    void onlyThePrimaryButtonOfAGlowingThemeGlows();
    void theCheckMarkGlowsInAGlowingTheme();
};

namespace {

constexpr int room = 40;

OverlayTheme theme(ButtonLook look, bool glow = false)
{
    OverlayTheme result = sample::glowing();
    result.accent = QColor(100, 150, 200);
    result.accentText = QColor(20, 30, 40);
    result.text = Qt::white;
    result.button = look;
    result.glow = glow;
    return result;
}

/// The button over black, `room` pixels around it.
QImage picture(const Element &element)
{
    const Arrangement arrangement = element.arrange(1000);
    QImage image(arrangement.size().toSize() + QSize(2 * room, 2 * room), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.translate(room, room);
    arrangement.paint(painter, {});
    return image;
}

QImage button(const OverlayTheme &theme, bool isPrimary, const ButtonState &state = {})
{
    return picture(themedButton(u"Dismiss"_s, {}, theme, isPrimary, state));
}

/// Within the frame, above the label.
QColor fill(const QImage &image)
{
    return image.pixelColor(image.width() / 2, room + 6);
}

QColor grey(double opacity)
{
    const int level = qRound(255 * opacity);
    return {level, level, level};
}

bool isAbout(const QColor &a, const QColor &b, int tolerance = 1)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

/// The colour that lies farthest from the fill within the label's room.
QColor ink(const QImage &image)
{
    const QColor ground = fill(image);
    QColor result = ground;
    int most = 0;
    for (int y = room + 14; y < image.height() - room - 14; ++y) {
        for (int x = room + 28; x < image.width() - room - 28; ++x) {
            const QColor colour = image.pixelColor(x, y);
            const int distance = std::abs(qGray(colour.rgb()) - qGray(ground.rgb()));
            if (distance > most) {
                most = distance;
                result = colour;
            }
        }
    }
    return result;
}

} // namespace

void tst_ThemedButton::fillsAndStrokesByItsLook_data()
{
    QTest::addColumn<ButtonLook>("look");
    QTest::addColumn<bool>("isPrimary");
    QTest::addColumn<double>("hover");
    QTest::addColumn<QColor>("inside");
    QTest::addColumn<bool>("isStroked");
    const QColor accent(100, 150, 200);
    QTest::newRow("pill, primary") << ButtonLook::Pill << true << 0.0 << accent << false;
    QTest::newRow("outline, primary") << ButtonLook::Outline << true << 0.0 << accent << false;
    QTest::newRow("terminal, primary") << ButtonLook::Terminal << true << 0.0 << accent << false;
    QTest::newRow("pill") << ButtonLook::Pill << false << 0.0 << grey(0.14) << false;
    QTest::newRow("pill, hovered") << ButtonLook::Pill << false << 1.0 << grey(0.24) << false;
    QTest::newRow("pill, half way") << ButtonLook::Pill << false << 0.5 << grey(0.19) << false;
    QTest::newRow("outline") << ButtonLook::Outline << false << 0.0 << grey(0.1) << true;
    QTest::newRow("outline, hovered") << ButtonLook::Outline << false << 1.0 << grey(0.1) << true;
    QTest::newRow("terminal") << ButtonLook::Terminal << false << 0.0 << grey(0.1) << true;
    QTest::newRow("terminal, hovered") << ButtonLook::Terminal << false << 1.0 << grey(0.1) << true;
}

void tst_ThemedButton::fillsAndStrokesByItsLook()
{
    QFETCH(ButtonLook, look);
    QFETCH(bool, isPrimary);
    QFETCH(double, hover);
    QFETCH(QColor, inside);
    QFETCH(bool, isStroked);
    const QImage image = button(theme(look), isPrimary, {.hover = hover});
    QVERIFY2(isAbout(fill(image), inside), qPrintable(fill(image).name()));
    // The line lies half within the frame and half outside: three quarters of a pixel each, at 0.6.
    const int x = image.width() / 2;
    const QColor outside = image.pixelColor(x, room - 1);
    const QColor within = image.pixelColor(x, room);
    if (isStroked) {
        QVERIFY2(isAbout(outside, grey(0.75 * 0.6), 4), qPrintable(outside.name()));
        QVERIFY2(isAbout(within, grey(0.1 + 0.9 * 0.75 * 0.6), 6), qPrintable(within.name()));
    } else {
        QCOMPARE(outside, QColor(Qt::black));
        QVERIFY(isAbout(within, inside));
    }
}

void tst_ThemedButton::cornersFollowTheLook_data()
{
    QTest::addColumn<ButtonLook>("look");
    QTest::addColumn<bool>("isSquare");
    QTest::newRow("pill") << ButtonLook::Pill << false;
    QTest::newRow("outline") << ButtonLook::Outline << false;
    QTest::newRow("terminal") << ButtonLook::Terminal << true;
}

void tst_ThemedButton::cornersFollowTheLook()
{
    QFETCH(ButtonLook, look);
    QFETCH(bool, isSquare);
    const QImage image = button(theme(look), true);
    const QColor accent(100, 150, 200);
    QCOMPARE(image.pixelColor(room, room) == QColor(Qt::black), !isSquare); // 3 points of radius leave some of it
    QCOMPARE(image.pixelColor(room + 3, room + 3) == accent, isSquare);
    // A capsule's end is a half circle.
    const int half = (image.height() - 2 * room) / 2;
    const int diagonal = static_cast<int>(half * (1 - std::sqrt(0.5)));
    QVERIFY(image.pixelColor(room + diagonal + 2, room + diagonal + 2) == accent);
    QCOMPARE(image.pixelColor(room + diagonal - 3, room + diagonal - 3) == accent, isSquare);
}

void tst_ThemedButton::labelHasItsColourAndRoom_data()
{
    QTest::addColumn<bool>("isPrimary");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("primary") << true << QColor(20, 30, 40);
    QTest::newRow("secondary") << false << QColor(Qt::white);
}

void tst_ThemedButton::labelHasItsColourAndRoom()
{
    QFETCH(bool, isPrimary);
    QFETCH(QColor, colour);
    const QImage image = button(theme(ButtonLook::Pill), isPrimary);
    QVERIFY2(isAbout(ink(image), colour, 4), qPrintable(ink(image).name()));
    const Arrangement words =
        Element(text(u"Dismiss"_s).font(designFont(FontDesign::Rounded, 18, QFont::DemiBold))).arrange(1000);
    QCOMPARE(image.size() - QSize(2 * room, 2 * room), (words.size() + QSizeF(56, 28)).toSize());
}

void tst_ThemedButton::pressedWinsOverHovered()
{
    QCOMPARE(ButtonState::targetScale(false, false), 1.0);
    QCOMPARE(ButtonState::targetScale(false, true), 1.03);
    QCOMPARE(ButtonState::targetScale(true, true), 0.96);
    QCOMPARE(ButtonState::targetScale(true, false), 0.96);
}

void tst_ThemedButton::scalesAboutItsCentre()
{
    const auto frame = [](double scale) {
        const Element element =
            tagged(u"a"_s, themedButton(u"Dismiss"_s, {}, theme(ButtonLook::Pill), true, {.scale = scale}));
        const QImage image = picture(element);
        QRect filled;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (qBlue(image.pixel(x, y)) > 100)
                    filled |= QRect(x, y, 1, 1);
            }
        }
        return filled;
    };
    const QRect still = frame(1);
    QVERIFY(std::abs(frame(1.03).width() - still.width() * 1.03) <= 1.5);
    QVERIFY(std::abs(frame(0.96).width() - still.width() * 0.96) <= 1.5);
    QVERIFY((frame(0.96).center() - still.center()).manhattanLength() <= 1);
}

void tst_ThemedButton::aHoveredPrimaryButtonIsBrighterAsAWhole()
{
    const QImage still = button(theme(ButtonLook::Pill), true);
    const QImage hovered = button(theme(ButtonLook::Pill), true, {.hover = 1});
    const int raise = qRound(0.08 * 255);
    QVERIFY(isAbout(fill(hovered), QColor(100 + raise, 150 + raise, 200 + raise)));
    QVERIFY(isAbout(ink(hovered), QColor(20 + raise, 30 + raise, 40 + raise), 4));
    QVERIFY(isAbout(fill(still), QColor(100, 150, 200)));
    QVERIFY(isAbout(ink(button(theme(ButtonLook::Pill), false, {.hover = 1})), Qt::white, 4));
}

void tst_ThemedButton::onlyThePrimaryButtonOfAGlowingThemeGlows()
{
    const auto below = [](const QImage &image, int distance) {
        return image.pixelColor(image.width() / 2, image.height() - room - 1 + distance);
    };
    QCOMPARE(below(button(theme(ButtonLook::Pill, false), true), 4), QColor(Qt::black));
    QCOMPARE(below(button(theme(ButtonLook::Pill, true), false), 4), QColor(Qt::black));
    const QImage glowing = button(theme(ButtonLook::Pill, true), true);
    // At most half of 0.6 right at the edge, in the accent's colour, and gone before the next line of text.
    const QColor edge = below(glowing, 1);
    QVERIFY2(edge.blue() > 35 && edge.blue() <= 0.5 * 0.6 * 200, qPrintable(edge.name()));
    QVERIFY(std::abs(edge.red() * 2 - edge.blue()) <= 3);
    QVERIFY(below(glowing, 10).blue() > 5);
    QVERIFY(below(glowing, 10).blue() < edge.blue() / 2);
    QCOMPARE(below(glowing, 32), QColor(Qt::black));
    QVERIFY(isAbout(fill(glowing), QColor(100, 150, 200)));
}

void tst_ThemedButton::theCheckMarkGlowsInAGlowingTheme()
{
    const auto beside = [](bool glow) {
        OverlayTheme plain = theme(ButtonLook::Pill, glow);
        const Arrangement card = WelcomeCard{{{}, 1, {}}, plain}.element({}, {}).arrange(1000);
        QImage image(card.size().toSize() + QSize(2 * room, 2 * room), QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        painter.translate(room, room);
        card.paint(painter, {});
        painter.end();
        return image.pixelColor(image.width() / 2 - 36 - 4, room + 36); // the mark is 72 points wide
    };
    QCOMPARE(beside(false), QColor(Qt::black));
    QVERIFY2(beside(true).blue() > 20, qPrintable(beside(true).name()));
}

QTEST_MAIN(tst_ThemedButton)
#include "tst_ThemedButton.moc"
