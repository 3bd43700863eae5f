#include "shell/StatusTitle.h"

#include <QTest>

#include <limits>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_StatusTitle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsWholeMinutesUpToAnHour_data();
    void countsWholeMinutesUpToAnHour();
    void isEmptyWithoutANextMeeting();
    void isEmptyWhilePausedEvenIfAMeetingIsImminent();
};

void tst_StatusTitle::countsWholeMinutesUpToAnHour_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("title");
    QTest::newRow("in progress") << -1200.0 << u" now"_s;
    QTest::newRow("began a moment ago") << -0.5 << u" now"_s;
    QTest::newRow("begins") << 0.0 << u" now"_s;
    QTest::newRow("within the minute") << 59.99 << u" now"_s;
    QTest::newRow("a minute") << 60.0 << u" 1m"_s;
    QTest::newRow("nearly two minutes") << 119.9 << u" 1m"_s;
    QTest::newRow("five minutes") << 300.0 << u" 5m"_s;
    QTest::newRow("an hour") << 3600.0 << u" 60m"_s;
    QTest::newRow("60 minutes 59 seconds") << 3659.0 << u" 60m"_s;
    QTest::newRow("61 minutes") << 3660.0 << u""_s;
    QTest::newRow("tomorrow") << 86400.0 << u""_s;
    QTest::newRow("never") << std::numeric_limits<double>::infinity() << u""_s;
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << u""_s;
    QTest::newRow("before all time") << -std::numeric_limits<double>::infinity() << u" now"_s;
}

void tst_StatusTitle::countsWholeMinutesUpToAnHour()
{
    QFETCH(double, seconds);
    QFETCH(QString, title);
    QCOMPARE(statusTitle(seconds, false), title);
}

void tst_StatusTitle::isEmptyWithoutANextMeeting()
{
    QCOMPARE(statusTitle(std::nullopt, false), QString());
}

void tst_StatusTitle::isEmptyWhilePausedEvenIfAMeetingIsImminent()
{
    QCOMPARE(statusTitle(30, true), QString());
    QCOMPARE(statusTitle(300, true), QString());
    QCOMPARE(statusTitle(std::nullopt, true), QString());
}

QTEST_GUILESS_MAIN(tst_StatusTitle)
#include "tst_StatusTitle.moc"
