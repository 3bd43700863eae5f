#include "ui/DateTexts.h"

#include <QLocale>
#include <QTest>
#include <QTimeZone>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_DateTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void timesFollowTheLocale_data();
    void timesFollowTheLocale();
    void timesFollowTheZone();
    void theDayIsNamedOnlyOnAnotherDay();
    void distancesUseTheGreatestWholeUnit_data();
    void distancesUseTheGreatestWholeUnit();
};

namespace {

const Instant morning{1767258300}; // 2026-01-01 09:05 UTC

/// The system locale is read again from the environment.
void useLocale(const char *name)
{
    qputenv("LC_ALL", name);
    QEvent change(QEvent::LocaleChange);
    QCoreApplication::sendEvent(qApp, &change);
}

} // namespace

void tst_DateTexts::cleanup()
{
    useLocale("C.UTF-8");
    qputenv("TZ", "UTC");
    tzset();
}

void tst_DateTexts::timesFollowTheLocale_data()
{
    QTest::addColumn<QByteArray>("locale");
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("afternoon");
    QTest::newRow("C") << "C.UTF-8"_ba << u"09:05"_s << u"21:05"_s;
    QTest::newRow("POSIX") << "POSIX"_ba << u"09:05"_s << u"21:05"_s;
    QTest::newRow("American") << "en_US.UTF-8"_ba << u"9:05 AM"_s << u"9:05 PM"_s;
    QTest::newRow("British") << "en_GB.UTF-8"_ba << u"09:05"_s << u"21:05"_s;
    QTest::newRow("German") << "de_DE.UTF-8"_ba << u"09:05"_s << u"21:05"_s;
    QTest::newRow("Finnish") << "fi_FI.UTF-8"_ba << u"9.05"_s << u"21.05"_s;
}

void tst_DateTexts::timesFollowTheLocale()
{
    QFETCH(QByteArray, locale);
    QFETCH(QString, time);
    QFETCH(QString, afternoon);
    useLocale(locale.constData());
    QCOMPARE(shortTime(morning), time);
    QCOMPARE(shortTime(morning + 12 * 3600 + 59), afternoon);
}

void tst_DateTexts::timesFollowTheZone()
{
    qputenv("TZ", "America/New_York");
    tzset();
    QCOMPARE(shortTime(morning), u"04:05"_s);
}

void tst_DateTexts::theDayIsNamedOnlyOnAnotherDay()
{
    QCOMPARE(shortTimeWithDay(morning, morning - 3600), u"09:05"_s);
    QCOMPARE(shortTimeWithDay(morning + 86400, morning), u"1/2/26, 09:05"_s);
    QCOMPARE(shortTimeWithDay(Instant{1767225600}, Instant{1767225599}), u"1/1/26, 00:00"_s); // a second before midnight
    useLocale("en_US.UTF-8");
    QCOMPARE(shortTimeWithDay(morning + 86400, morning), u"1/2/26, 9:05 AM"_s);
    useLocale("de_DE.UTF-8");
    QCOMPARE(shortTimeWithDay(morning + 86400, morning), u"02.01.26, 09:05"_s);
}

void tst_DateTexts::distancesUseTheGreatestWholeUnit_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    const auto row = [](double seconds, const QString &text) { QTest::addRow("%g", seconds) << seconds << text; };
    row(0, u"in 0 seconds"_s);
    row(1.9, u"in 1 second"_s);
    row(59.9, u"in 59 seconds"_s);
    row(60, u"in 1 minute"_s);
    row(3599, u"in 59 minutes"_s);
    row(3600, u"in 1 hour"_s);
    row(86399, u"in 23 hours"_s);
    row(86400, u"in 1 day"_s);
    row(7 * 86400, u"in 1 week"_s);
    row(31 * 86400, u"in 1 month"_s);
    row(730 * 86400, u"in 2 years"_s);
    row(-90, u"1 minute ago"_s);
    row(-7200, u"2 hours ago"_s);
    row(-3 * 86400, u"3 days ago"_s);
}

void tst_DateTexts::distancesUseTheGreatestWholeUnit()
{
    QFETCH(double, seconds);
    QFETCH(QString, text);
    QCOMPARE(relativeTime(morning + seconds, morning), text);
}

QTEST_MAIN(tst_DateTexts)
#include "tst_DateTexts.moc"
