#include "shell/RecentLoss.h"

#include "support/FakeClock.h"

#include <QTest>

using namespace kelp;

class tst_RecentLoss : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void remembersFor300Milliseconds();
    void countsFromTheLastLoss();
    void costsNothingAfterwards();
};

void tst_RecentLoss::remembersFor300Milliseconds()
{
    test::FakeClock clock;
    RecentLoss loss(clock);
    QVERIFY(!loss.isRecent());
    loss.note();
    QVERIFY(loss.isRecent());
    clock.advance(0.299);
    QVERIFY(loss.isRecent());
    clock.advance(0.001);
    QVERIFY(!loss.isRecent());
}

void tst_RecentLoss::countsFromTheLastLoss()
{
    test::FakeClock clock;
    RecentLoss loss(clock);
    loss.note();
    clock.advance(0.2);
    loss.note();
    clock.advance(0.2);
    QVERIFY(loss.isRecent());
    clock.advance(0.1);
    QVERIFY(!loss.isRecent());
}

void tst_RecentLoss::costsNothingAfterwards()
{
    test::FakeClock clock;
    RecentLoss loss(clock);
    loss.note();
    clock.advance(3600);
    QCOMPARE(clock.wakeUps(), 1);
}

QTEST_GUILESS_MAIN(tst_RecentLoss)
#include "tst_RecentLoss.moc"
