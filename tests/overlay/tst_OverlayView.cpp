#include "overlay/OverlayView.h"

#include "overlay/CardButton.h"
#include "overlay/CardTags.h"
#include "support/PictureDifference.h"
#include "support/SampleMeetings.h"

#include <QAccessible>
#include <QBackingStore>
#include <QEnterEvent>
#include <QLabel>
#include <QPaintEvent>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_OverlayView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readsItselfToScreenReadersInOrder();
    void aScreenReaderCanPressAButton();
    void tabGoesThroughTheButtonsInOrder();
    void hoverAndPressShowInTheirStates();
    void onALowScreenButtonsAreWhereTheyAreSeen();
    void comesUpWithMotion();
    void comesUpOutOfABlur();
    void repaintsOnlyWhatMoves();
    void looksAsIfLaidOutAnewAfterEachTurn_data();
    void looksAsIfLaidOutAnewAfterEachTurn();
    void saysWhenItLooksDifferent();
    void withoutMotionIsThereAtOnce();
    void blendsWithWhatIsBehind();
    void theBackgroundFollowsTheFrames_data();
    void theBackgroundFollowsTheFrames();
    void eachFrameOfTheWindowIsWhole_data();
    void eachFrameOfTheWindowIsWhole();

private:
    [[nodiscard]] QImage picture() const;
    std::unique_ptr<OverlayView> view;
};

void tst_OverlayView::init()
{
    view = std::make_unique<OverlayView>(
        OverlayScene{MeetingContent{sample::designReview(), sample::budgetPlanning()}, OverlayTheme::midnight(), {}},
        sample::ten - 60);
    view->resize(1280, 720);
}

QImage tst_OverlayView::picture() const
{
    QImage image(view->size(), QImage::Format_RGB32);
    view->render(&image);
    return image;
}

void tst_OverlayView::readsItselfToScreenReadersInOrder()
{
    view->show();
    QAccessibleInterface *root = QAccessible::queryAccessibleInterface(view.get());
    QCOMPARE(root->text(QAccessible::Name), u"Meeting reminder"_s);
    QStringList read;
    for (int i = 0; i < root->childCount(); ++i) {
        const QAccessibleInterface *child = root->child(i);
        read.append((child->role() == QAccessible::Button ? u"[%1]"_s : u"%1"_s).arg(child->text(QAccessible::Name)));
        QVERIFY(view->rect().contains(QRect(view->mapFromGlobal(child->rect().topLeft()), child->rect().size())));
        QVERIFY(!child->rect().isEmpty());
    }
    QCOMPARE(read, (QStringList{
                       u"Starts in 1:00"_s, u"Weekly design review"_s, u"10:00 – 10:30  ·  5 people  ·  Work"_s,
                       u"Still on: Budget planning with the regional offices ·"_s, u"Return to join · Esc to dismiss"_s,
                       u"[Join Google Meet]"_s, u"[Snooze 1 min]"_s, u"[Dismiss]"_s, u"[Join]"_s}));
}

void tst_OverlayView::aScreenReaderCanPressAButton()
{
    view->show();
    QSignalSpy pressed(view.get(), &OverlayView::snoozePressed);
    QAccessibleInterface *root = QAccessible::queryAccessibleInterface(view.get());
    for (int i = 0; i < root->childCount(); ++i) {
        if (root->child(i)->text(QAccessible::Name) == u"Snooze 1 min")
            root->child(i)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    }
    QTRY_COMPARE(pressed.size(), 1);
}

void tst_OverlayView::tabGoesThroughTheButtonsInOrder()
{
    view->show();
    view->activateWindow();
    QTRY_VERIFY(view->isActiveWindow());
    QCOMPARE(view->focusWidget(), view.get()); // no button is chosen to begin with
    QStringList order;
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
        order.append(view->focusWidget()->accessibleName());
    }
    QCOMPARE(order, (QStringList{u"Join Google Meet"_s, u"Snooze 1 min"_s, u"Dismiss"_s, u"Join"_s}));
}

void tst_OverlayView::hoverAndPressShowInTheirStates()
{
    view->setMotion(false);
    view->show();
    auto *button = view->findChildren<CardButton *>().at(1);
    const QImage atRest = picture();
    QEnterEvent enter(button->rect().center(), button->pos(), button->pos());
    QCoreApplication::sendEvent(button, &enter);
    QCOMPARE(button->state(), (ButtonState{.hover = 1, .scale = 1.03, .focused = false}));
    const QImage hovered = picture();
    QVERIFY(hovered != atRest);
    QTest::mousePress(button, Qt::LeftButton);
    QCOMPARE(button->state().scale, 0.96); // pressed wins over hovered
    QVERIFY(picture() != hovered);
    QTest::mouseRelease(button, Qt::LeftButton);
    QCOMPARE(button->state().scale, 1.03);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(button, &leave);
    QCOMPARE(button->state(), ButtonState{});
    QCOMPARE(picture(), atRest);
}

void tst_OverlayView::onALowScreenButtonsAreWhereTheyAreSeen()
{
    const OverlayScene scene{MeetingContent{sample::designReview(), sample::budgetPlanning()},
                             OverlayTheme::midnight(),
                             {.ringCountdown = true}};
    const Instant now = sample::ten - 60;
    const QSize size(911, 512);
    view = std::make_unique<OverlayView>(scene, now);
    view->resize(size);
    view->show();
    const Arrangement card = scene.card(size, now, {});
    const QPointF position = OverlayScene::cardPosition(size, card);
    const auto buttons = view->findChildren<CardButton *>();
    QCOMPARE(buttons.size(), 4);
    std::size_t index = 1; // behind the countdown
    for (const CardButton *button : buttons) {
        const QRectF seen = card.tagged().at(index++).frame.translated(position);
        QCOMPARE(button->geometry(), seen.toAlignedRect());
        QVERIFY(view->rect().contains(button->geometry()));
    }
    QVERIFY(buttons.at(0)->width() < scene.card({1280, 720}, now, {}).frameOf(tag::join)->width() - 5);
    for (const QLabel *label : view->findChildren<QLabel *>())
        QVERIFY(!label->geometry().isEmpty() && view->rect().contains(label->geometry()));
    // Hovered, it is that button that is painted anew, and nothing else.
    view->setMotion(false);
    const QImage before = picture();
    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QCoreApplication::sendEvent(buttons.at(2), &enter);
    const QImage after = picture();
    const QRect around = buttons.at(2)->geometry().adjusted(-5, -5, 5, 5);
    bool isBrighter = false;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            isBrighter = isBrighter || qGray(after.pixel(x, y)) > qGray(before.pixel(x, y)) + 5;
            QVERIFY(around.contains(x, y) || after.pixel(x, y) == before.pixel(x, y));
        }
    }
    QVERIFY(isBrighter);
}

void tst_OverlayView::comesUpWithMotion()
{
    const QImage there = picture();
    view->playEntrance();
    const QImage before = picture();
    QVERIFY(before != there);
    // The background alone: nothing of the card yet.
    for (int x = 0; x < before.width(); x += 7)
        QVERIFY(qGray(before.pixel(x, before.height() / 2)) < 40);
    QTRY_COMPARE(picture(), there);
}

void tst_OverlayView::comesUpOutOfABlur()
{
    // How sharp the card is: the steepest step from one pixel to the next, as a part of its brightest one.
    const auto sharpness = [](const QImage &image) {
        int brightest = 1;
        int steepest = 0;
        for (int y = image.height() / 4; y < image.height() * 3 / 4; ++y) {
            for (int x = 1; x < image.width(); ++x) {
                const int level = qGray(image.pixel(x, y));
                brightest = std::max(brightest, level);
                steepest = std::max(steepest, std::abs(level - qGray(image.pixel(x - 1, y))));
            }
        }
        return static_cast<double>(steepest) / brightest;
    };
    const double there = sharpness(picture());
    QVERIFY(there > 0.6);
    view->setEntrance(0.25);
    const double early = sharpness(picture());
    view->setEntrance(0.7);
    const double later = sharpness(picture());
    QVERIFY2(early < 0.4, qPrintable(QString::number(early)));
    QVERIFY2(later > early && later < there, qPrintable(QString::number(later)));
    view->setEntrance(1);
    QCOMPARE(sharpness(picture()), there);
}

namespace {

/// What a widget was asked to paint.
class PaintLog : public QObject
{
public:
    explicit PaintLog(QWidget *widget) { widget->installEventFilter(this); }
    QRegion region;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
};

std::unique_ptr<OverlayView> viewWithRing(const OverlayTheme &theme, Instant now)
{
    auto view = std::make_unique<OverlayView>(
        OverlayScene{MeetingContent{sample::designReview(), {}}, theme, {.ringCountdown = true}}, now);
    view->resize(1280, 720);
    return view;
}

} // namespace

void tst_OverlayView::repaintsOnlyWhatMoves()
{
    const auto ring = viewWithRing(OverlayTheme::midnight(), sample::ten - 40);
    ring->show();
    QVERIFY(QTest::qWaitForWindowExposed(ring.get()));
    PaintLog log(ring.get());
    const auto painted = [&](Instant now) {
        log.region = {};
        ring->setNow(now);
        QCoreApplication::sendPostedEvents();
        // What was asked for is painted with the next frame; a full repaint would swallow it.
        ring->repaint(QRegion(0, 0, 1, 1));
        return (log.region - QRegion(0, 0, 1, 1)).boundingRect();
    };
    const QRect arc = painted(sample::ten - 39.95);
    QVERIFY2(!arc.isEmpty() && arc.width() < 80 && arc.height() < 80, qPrintable(QString::number(arc.width())));
    const QRect label = painted(sample::ten - 39.4);
    QVERIFY2(!label.isEmpty() && label.width() < 200 && label.height() < 200,
             qPrintable(QString::number(label.width())));
    painted(sample::ten + 1);
    QVERIFY(painted(sample::ten + 2).isEmpty()); // "now", and the ring is empty
}

void tst_OverlayView::looksAsIfLaidOutAnewAfterEachTurn_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("isRing");
    QTest::addColumn<QSize>("size");
    for (const QString &theme : {u"midnight"_s, u"synthwave"_s, u"terminal"_s}) {
        for (const bool isRing : {false, true}) {
            for (const QSize &size : {QSize(1280, 720), QSize(640, 300)})
                QTest::addRow("%s, %s, %d", qPrintable(theme), isRing ? "ring" : "pill", size.width())
                    << theme << isRing << size;
        }
    }
}

void tst_OverlayView::looksAsIfLaidOutAnewAfterEachTurn()
{
    QFETCH(QString, theme);
    QFETCH(bool, isRing);
    QFETCH(QSize, size);
    const OverlayScene scene{MeetingContent{sample::designReview(), sample::budgetPlanning()},
                             OverlayTheme::named(theme),
                             {.ringCountdown = isRing, .leadMinutes = 2}};
    const Instant begin = sample::ten - 601;
    OverlayView turned(scene, begin);
    turned.resize(size);
    const double density = turned.devicePixelRatioF();
    // What is made larger or smaller, like a light or the whole card on a low screen, is rounded in another way where
    // only a part of it is painted.
    const bool isScaled = density != 1 || size.height() < 720;
    const int rounding = isScaled ? 2 : 0;
    const auto seen = [&](OverlayView &each) {
        QImage image((QSizeF(size) * density).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(density);
        each.render(&image);
        return image;
    };
    QImage before = seen(turned);
    // From two digits of minutes to one, into the last second, and past the start.
    for (const double moment : {-600.0, -599.0, -598.0, -597.0, -596.0, -119.0, -61.0, -59.0, -9.0, -1.0, 0.0, 61.0}) {
        const Instant now = sample::ten + moment;
        turned.setNow(now);
        OverlayView fresh(scene, now);
        fresh.setFrameTime(begin);
        fresh.resize(size);
        const QImage picture = seen(turned);
        const int difference = test::greatestDifference(picture, seen(fresh));
        QVERIFY2(difference <= rounding, qPrintable(u"%1 s: %2"_s.arg(moment).arg(difference)));
        QVERIFY2(picture != std::exchange(before, picture) || isRing, qPrintable(QString::number(moment)));
    }
}

void tst_OverlayView::saysWhenItLooksDifferent()
{
    QVERIFY(view->untilChange() > 0.4); // the pill once a second
    const auto ring = viewWithRing(OverlayTheme::midnight(), sample::ten - 40);
    QVERIFY(std::abs(ring->untilChange() - 0.05) < 1e-6);
    ring->setNow(sample::ten - 200); // full as yet: only its label
    QVERIFY(std::abs(ring->untilChange() - 0.505) < 1e-6);
    const OverlayView welcome(OverlayScene{WelcomeContent{{}, 1, {}}, OverlayTheme::midnight(), {}}, sample::ten);
    QVERIFY(std::isinf(welcome.untilChange()));
}

void tst_OverlayView::withoutMotionIsThereAtOnce()
{
    const QImage there = picture();
    view->setMotion(false);
    view->playEntrance();
    QCOMPARE(picture(), there);
}

void tst_OverlayView::blendsWithWhatIsBehind()
{
    QPixmap behind(view->size());
    behind.fill(Qt::green);
    const QImage whole = picture();
    view->setBlend(behind, 0);
    QCOMPARE(picture().pixelColor(10, 10), QColor(Qt::green));
    QCOMPARE(picture().pixelColor(640, 300), QColor(Qt::green));
    view->setBlend(behind, 0.5);
    const QColor half = picture().pixelColor(10, 10);
    QVERIFY(half.green() > 100 && half.green() < 160);
    view->setBlend(behind, 1);
    QCOMPARE(picture(), whole);
}

void tst_OverlayView::theBackgroundFollowsTheFrames_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("animate");
    QTest::addColumn<bool>("moves");
    QTest::newRow("aurora") << u"aurora"_s << true << true;
    QTest::newRow("a drifting picture") << u"zen"_s << true << true;
    QTest::newRow("without motion") << u"aurora"_s << false << false;
    QTest::newRow("a theme that stands still") << u"paper"_s << true << false;
}

void tst_OverlayView::theBackgroundFollowsTheFrames()
{
    QFETCH(QString, theme);
    QFETCH(bool, animate);
    QFETCH(bool, moves);
    view = std::make_unique<OverlayView>(OverlayScene{MeetingContent{sample::designReview(), {}},
                                                      OverlayTheme::named(theme),
                                                      {},
                                                      {.live = true, .animate = animate}},
                                         sample::ten - 60);
    view->resize(640, 400);
    QCOMPARE(!view->movingPart().isEmpty(), moves);
    view->setFrameTime(sample::ten);
    const QImage before = picture();
    view->setFrameTime(sample::ten + 5);
    QCOMPARE(picture() != before, moves);
    view->setFrameTime(sample::ten);
    QCOMPARE(picture(), before);
}

void tst_OverlayView::eachFrameOfTheWindowIsWhole_data()
{
    QTest::addColumn<QString>("theme");
    for (const QString &theme :
         {u"lofi"_s, u"space"_s, u"zen"_s, u"aurora"_s, u"synthwave"_s, u"terminal"_s, u"paper"_s})
        QTest::newRow(qPrintable(theme)) << theme;
}

/// Of the window only the parts that move are painted: none of it may stay as it was or be painted twice.
void tst_OverlayView::eachFrameOfTheWindowIsWhole()
{
    QFETCH(QString, theme);
    view = std::make_unique<OverlayView>(OverlayScene{MeetingContent{sample::designReview(), {}},
                                                      OverlayTheme::named(theme),
                                                      {},
                                                      {.live = true, .animate = true}},
                                         sample::ten - 60);
    view->resize(800, 500);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view.get()));
    const double density = view->devicePixelRatioF();
    const auto check = [&](int frame) {
        QCoreApplication::sendPostedEvents(view.get(), QEvent::UpdateRequest);
        const QPaintDevice *device = view->backingStore()->paintDevice();
        QCOMPARE(device->devType(), static_cast<int>(QInternal::Image));
        const QImage window = *static_cast<const QImage *>(device);
        QImage whole((QSizeF(view->size()) * density).toSize(), QImage::Format_RGB32);
        whole.setDevicePixelRatio(density);
        view->render(&whole);
        // Qt draws smoothed lines a little differently under a clip.
        const int difference = test::greatestDifference(window, whole);
        QVERIFY2(difference <= 4, qPrintable(u"frame %1: %2"_s.arg(frame).arg(difference)));
    };
    for (int frame = 0; frame < 8; ++frame) {
        view->setFrameTime(sample::ten - 60 + 0.05 * frame);
        check(frame);
        view->setNow(sample::ten - 59 + frame); // a digit turns, and nothing else moves
        check(frame);
    }
}

QTEST_MAIN(tst_OverlayView)
#include "tst_OverlayView.moc"
