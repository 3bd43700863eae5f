#include "overlay/CardButton.h"
#include "overlay/Entrance.h"
#include "overlay/OverlayFixture.h"
#include "support/HandDriver.h"
#include "ui/Blur.h"

#include <QEnterEvent>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// How the windows fade, how the card comes up and how its buttons give way, each at its own pace.
class tst_OverlayMotion : public QObject, OverlayFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void theCardComesUpWithItsSpring();
    void theCardGrowsAboutItsCentre();
    void theCardComesOutOfItsBlur();
    void theFirstPictureHasNoCardYet();
    void windowsFadeInAndOut();
    void buttonsFollowThePointerWithTheirSpring();
    void buttonsGiveWayWithTheirSpring();
};

namespace {

const OverlayContent review = MeetingContent{sample::designReview(), {}};

/// Animations count whole milliseconds.
bool isAt(double value, Spring spring, double seconds, double from = 0, double to = 1)
{
    const double a = from + (to - from) * spring.position(seconds - 0.0015);
    const double b = from + (to - from) * spring.position(seconds + 0.0015);
    return value >= std::min(a, b) - 1e-9 && value <= std::max(a, b) + 1e-9;
}

void enter(QWidget *widget)
{
    const QPointF point = widget->rect().center();
    QEnterEvent event(point, point, point);
    QCoreApplication::sendEvent(widget, &event);
}

} // namespace

void tst_OverlayMotion::theCardComesUpWithItsSpring()
{
    const Spring spring{0.7, 0.75};
    QCOMPARE(Entrance::at(0).part, 0.0);
    QCOMPARE(Entrance::at(0.05).part, 0.0);
    for (const double seconds : {0.06, 0.1, 0.2, 0.4, 0.6})
        QCOMPARE(Entrance::at(seconds).part, spring.position(seconds - 0.05));
    QVERIFY(Entrance::at(0.5).part > 1); // it swings beyond
    QCOMPARE(Entrance::duration(), 0.05 + spring.settlingTime());
    QCOMPARE(Entrance::at(Entrance::duration()).part, 1.0);
}

void tst_OverlayMotion::theCardGrowsAboutItsCentre()
{
    const QRectF frame(100, 50, 600, 400);
    const QRectF first = Entrance{0}.transform(frame).mapRect(frame);
    QVERIFY((first.center() - frame.center()).manhattanLength() < 1e-9);
    QVERIFY(std::abs(first.width() - 600 * 0.94) < 1e-9);
    QVERIFY(std::abs(first.height() - 400 * 0.94) < 1e-9);
    QVERIFY(std::abs(Entrance{0.5}.transform(frame).mapRect(frame).width() - 600 * 0.97) < 1e-9);
    QCOMPARE(Entrance{1}.transform(frame).mapRect(frame), frame);
}

void tst_OverlayMotion::theCardComesOutOfItsBlur()
{
    const QRectF frame(0, 0, 200, 120);
    QImage card(200, 120, QImage::Format_ARGB32_Premultiplied);
    card.fill(Qt::transparent);
    QPainter(&card).fillRect(QRect(60, 40, 80, 40), Qt::white);
    const auto canvas = [] {
        QImage image(200, 120, QImage::Format_RGB32);
        image.fill(Qt::black);
        return image;
    };
    for (const double part : {0.25, 0.5, 0.75}) {
        QImage shown = canvas();
        QPainter painter(&shown);
        Entrance{part}.paint(painter, frame, card, 1);
        painter.end();
        QImage expected = canvas();
        painter.begin(&expected);
        painter.setOpacity(part);
        painter.setTransform(Entrance{part}.transform(frame));
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QPointF(), blurred(card, 8 * (1 - part)));
        painter.end();
        int greatest = 0;
        for (int y = 0; y < 120; ++y) {
            for (int x = 0; x < 200; ++x)
                greatest = std::max(greatest, std::abs(qGray(shown.pixel(x, y)) - qGray(expected.pixel(x, y))));
        }
        QVERIFY2(greatest <= 255 * part * 0.12, qPrintable(u"%1 at %2"_s.arg(greatest).arg(part)));
    }
}

void tst_OverlayMotion::theFirstPictureHasNoCardYet()
{
    const HandDriver driver;
    controller->show(review);
    const QImage shown = window()->grab().toImage();
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x)
            QVERIFY(qGray(shown.pixel(x, y)) < 30); // the background of the theme is darker than any letter
    }
}

void tst_OverlayMotion::windowsFadeInAndOut()
{
    HandDriver driver;
    cover->means = ScreenCover::Fade::WindowOpacity;
    controller->show(review);
    const auto opacity = [&](int index) { return window(index)->windowOpacity(); };
    QCOMPARE(opacity(0), 0.0);
    driver.pass(175);
    for (int index = 0; index < 2; ++index)
        QVERIFY2(std::abs(opacity(index) - 0.5) < 0.03, qPrintable(QString::number(opacity(index))));
    driver.pass(165);
    QVERIFY(opacity(0) > 0.9 && opacity(0) < 1);
    driver.pass(15);
    QCOMPARE(opacity(0), 1.0);
    QCOMPARE(opacity(1), 1.0);

    driver.pass(5000); // the card is there, too
    controller->hide(true);
    driver.pass(100);
    QVERIFY2(std::abs(opacity(0) - 0.5) < 0.04, qPrintable(QString::number(opacity(0))));
    driver.pass(90);
    QVERIFY(opacity(1) > 0 && opacity(1) < 0.1);
    driver.pass(15);
    QVERIFY(cover->visible().isEmpty());
}

void tst_OverlayMotion::buttonsFollowThePointerWithTheirSpring()
{
    HandDriver driver;
    QWidget window;
    auto *button = new CardButton(u"Join"_s, &window);
    window.show();
    enter(button);
    const Spring spring{0.25, 1};
    double seconds = 0;
    for (const int step : {30, 40, 50, 100}) {
        driver.pass(step);
        seconds += step / 1000.0;
        QVERIFY2(isAt(button->state().hover, spring, seconds), qPrintable(QString::number(button->state().hover)));
        QVERIFY(isAt(button->state().scale, spring, seconds, 1, 1.03));
    }
    driver.pass(2000);
    QCOMPARE(button->state().scale, 1.03);
}

void tst_OverlayMotion::buttonsGiveWayWithTheirSpring()
{
    HandDriver driver;
    QWidget window;
    auto *button = new CardButton(u"Join"_s, &window);
    window.show();
    enter(button);
    driver.pass(2000);
    const Spring spring{0.15, 1};
    const auto follows = [&](double from, double to) {
        double seconds = 0;
        bool all = true;
        for (const int step : {20, 30, 50, 60}) {
            driver.pass(step);
            seconds += step / 1000.0;
            all = all && isAt(button->state().scale, spring, seconds, from, to);
        }
        driver.pass(2000);
        return all && button->state().scale == to;
    };
    QTest::mousePress(button, Qt::LeftButton);
    QVERIFY(follows(1.03, 0.96));
    QTest::mouseRelease(button, Qt::LeftButton);
    QVERIFY(follows(0.96, 1.03));
    QCOMPARE(button->state().hover, 1.0);
}

QTEST_MAIN(tst_OverlayMotion)
#include "tst_OverlayMotion.moc"
