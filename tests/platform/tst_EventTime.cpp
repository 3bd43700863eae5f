#include "platform/EventTime.h"

#include <QTest>

using namespace kelp;

class tst_EventTime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isTheTimeClosestToNow_data();
    void isTheTimeClosestToNow();
    void isCloseToNow();
};

void tst_EventTime::isTheTimeClosestToNow_data()
{
    QTest::addColumn<quint32>("stamp");
    QTest::addColumn<qint64>("now");
    QTest::addColumn<double>("seconds");
    constexpr qint64 round = qint64(1) << 32;
    QTest::newRow("now") << 5000U << qint64(5000) << 5.0;
    QTest::newRow("a moment ago") << 4900U << qint64(5000) << 4.9;
    QTest::newRow("a moment ahead") << 5100U << qint64(5000) << 5.1;
    QTest::newRow("in the second round") << 5000U << round + 5100 << double(round + 5000) / 1000;
    QTest::newRow("from before the round began") << 0xffffff00U << round + 100 << double(round - 256) / 1000;
    QTest::newRow("from after the round ended") << 100U << round - 256 << double(round + 100) / 1000;
}

void tst_EventTime::isTheTimeClosestToNow()
{
    QFETCH(quint32, stamp);
    QFETCH(qint64, now);
    QFETCH(double, seconds);
    QCOMPARE(eventTime(stamp, now), seconds);
}

void tst_EventTime::isCloseToNow()
{
    const double a = eventTime(1000);
    const double b = eventTime(1400);
    QVERIFY(qAbs(b - a - 0.4) < 1e-6);
}

QTEST_GUILESS_MAIN(tst_EventTime)
#include "tst_EventTime.moc"
