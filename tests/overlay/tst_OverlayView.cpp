#include "overlay/OverlayView.h"

#include "overlay/CardButton.h"
#include "support/SampleMeetings.h"

#include <QAccessible>
#include <QEnterEvent>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

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
    void comesUpWithMotion();
    void withoutMotionIsThereAtOnce();
    void blendsWithWhatIsBehind();

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

QTEST_MAIN(tst_OverlayView)
#include "tst_OverlayView.moc"
