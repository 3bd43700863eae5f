#include "overlay/OverlayController.h"

#include "overlay/OverlayFixture.h"

#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <qpa/qwindowsysteminterface.h>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Which screens are covered, while they come, go and change.
class tst_OverlayScreens : public QObject, OverlayFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void coversEveryScreenExactly();
    void coversOnlyThePrimaryScreenWhenAsked();
    void anUnknownChoiceOfScreensMeansAll();
    void givesTheKeyboardToTheScreenInUse();
    void coversAScreenThatIsAdded();
    void uncoversAScreenThatIsRemovedAndHandsTheKeyboardOn();
    void aWindowOutlivesTheNewsThatItsScreenGoes();
    void followsAScreenThatIsResized();
    void movesToTheNewPrimaryScreen();
    void aScreenAddedLaterIsCoveredWithoutFading();
    void aWindowThatTheDesktopClosesComesBack();
    void aDesktopThatClosesEveryWindowHasItsWay();
    void closingAWindowDismisses_data();
    void closingAWindowDismisses();
    void theKeyboardIsGivenBackAfterItsScreenIsGone();
};

void tst_OverlayScreens::coversEveryScreenExactly()
{
    QVERIFY(!controller->isShown());
    controller->show(review);
    QVERIFY(controller->isShown());
    QCOMPARE(controller->meeting(), sample::designReview());
    QCOMPARE(cover->visible().size(), 2);
    QCOMPARE(window(0)->geometry(), left);
    QCOMPARE(window(1)->geometry(), right);
    QCOMPARE(cover->keyboard, window(0));
}

void tst_OverlayScreens::coversOnlyThePrimaryScreenWhenAsked()
{
    preferences->set(preference::displays, u"primary"_s);
    controller->show(review);
    QCOMPARE(cover->visible().size(), 1);
    QCOMPARE(window()->geometry(), QGuiApplication::screens().constFirst()->geometry());
}

void tst_OverlayScreens::anUnknownChoiceOfScreensMeansAll()
{
    preferences->set(preference::displays, u"Primary"_s);
    controller->show(review);
    QCOMPARE(cover->visible().size(), 2);
}

void tst_OverlayScreens::givesTheKeyboardToTheScreenInUse()
{
    cover->current = QGuiApplication::screens().at(1);
    controller->show(review);
    QCOMPARE(cover->keyboard, window(1));
}

void tst_OverlayScreens::coversAScreenThatIsAdded()
{
    controller->show(review);
    const QRect below(0, 1080, 800, 600);
    setOffscreenScreens({left, right, below});
    QTRY_COMPARE(cover->visible().size(), 3);
    QCOMPARE(window(2)->geometry(), below);
    QVERIFY(cover->keyboard);
}

void tst_OverlayScreens::uncoversAScreenThatIsRemovedAndHandsTheKeyboardOn()
{
    cover->current = QGuiApplication::screens().at(1);
    controller->show(review);
    const QPointer<QWidget> lost = window(1);
    cover->current = nullptr;
    setOffscreenScreens({left});
    QTRY_VERIFY(!lost);
    QCOMPARE(cover->visible().size(), 1);
    QCOMPARE(window()->geometry(), left);
    QCOMPARE(cover->keyboard, window());
    QVERIFY(controller->isShown());
}

void tst_OverlayScreens::aWindowOutlivesTheNewsThatItsScreenGoes()
{
    controller->show(review);
    const QPointer<QWidget> lost = window(1);
    bool wasThere = false;
    QObject context;
    connect(qGuiApp, &QGuiApplication::screenRemoved, &context, [&] { wasThere = lost && lost->isVisible(); });
    setOffscreenScreens({left});
    QVERIFY(wasThere);
    QTRY_VERIFY(!lost);
    QVERIFY(controller->isShown());
}

void tst_OverlayScreens::followsAScreenThatIsResized()
{
    controller->show(review);
    const QRect larger(0, 0, 1600, 900);
    setOffscreenScreens({larger, right});
    QTRY_COMPARE(window()->geometry(), larger);
    QVERIFY(window()->rect().contains(button(u"Dismiss"_s)->geometry()));
    QVERIFY(std::abs(button(u"Snooze 1 min"_s)->geometry().center().x() - 800) < 200);
}

void tst_OverlayScreens::movesToTheNewPrimaryScreen()
{
    preferences->set(preference::displays, u"primary"_s);
    controller->show(review);
    setOffscreenScreens({});
    setOffscreenScreens({right});
    QTRY_VERIFY(window() && window()->geometry() == right);
    QCOMPARE(cover->visible().size(), 1);
}

void tst_OverlayScreens::aScreenAddedLaterIsCoveredWithoutFading()
{
    cover->means = ScreenCover::Fade::WindowOpacity;
    controller->show(review);
    QCOMPARE(window(0)->windowOpacity(), 0.0);
    setOffscreenScreens({left, right, QRect(0, 1080, 800, 600)});
    QTRY_COMPARE(cover->visible().size(), 3);
    QCOMPARE(window(2)->windowOpacity(), 1.0);
    controller->hide(true);
    QTRY_VERIFY(cover->visible().isEmpty());
}

void tst_OverlayScreens::aWindowThatTheDesktopClosesComesBack()
{
    controller->show(review);
    const QPointer<QWidget> closed = window(0);
    Q_EMIT cover->closed(closed);
    QTRY_VERIFY(!closed);
    QCOMPARE(cover->visible().size(), 1);
    QCOMPARE(cover->keyboard, window(0)); // that of the other screen
    clock->advance(0.2);
    QCOMPARE(cover->visible().size(), 2);
    QVERIFY(controller->isShown());
}

void tst_OverlayScreens::aDesktopThatClosesEveryWindowHasItsWay()
{
    setOffscreenScreens({left});
    controller->show(review);
    QSignalSpy hidden(controller.get(), &OverlayController::hidden);
    int closings = 0;
    for (; controller->meeting() && closings < 100; ++closings) {
        const QPointer<QWidget> closed = window(0);
        Q_EMIT cover->closed(closed);
        QTRY_VERIFY(!closed);
        clock->advance(0.2);
    }
    QCOMPARE(closings, 6);
    QCOMPARE(hidden.size(), 1);
}

void tst_OverlayScreens::closingAWindowDismisses_data()
{
    QTest::addColumn<bool>("fromOutside");
    QTest::newRow("as under X11") << true;
    QTest::newRow("as under Wayland") << false;
}

void tst_OverlayScreens::closingAWindowDismisses()
{
    QFETCH(bool, fromOutside);
    controller->show(review);
    QCOMPARE(cover->visible().size(), 2);
    if (fromOutside)
        QWindowSystemInterface::handleCloseEvent(window(0)->windowHandle());
    else
        window(0)->windowHandle()->close();
    QTRY_VERIFY(!controller->isShown());
    QTRY_COMPARE(cover->visible().size(), 0);
    QVERIFY(opener->opened.isEmpty());
}

void tst_OverlayScreens::theKeyboardIsGivenBackAfterItsScreenIsGone()
{
    cover->current = QGuiApplication::screens().at(1);
    controller->show(review);
    cover->current = nullptr;
    setOffscreenScreens({left});
    controller->hide(false);
    QVERIFY(!cover->keyboard);
    QTRY_COMPARE(cover->visible().size(), 0);
}

QTEST_MAIN(tst_OverlayScreens)
#include "tst_OverlayScreens.moc"
