#include "ui/DateTexts.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <cstdio>
#include <ctime>

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

/// What this program, started under another locale, prints for a time now and the same time tomorrow.
QStringList printedUnder(const QByteArray &locale, Instant instant)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, QString::fromLatin1(locale));
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(QCoreApplication::applicationFilePath(), {u"--print"_s, QString::number(instant.wholeSeconds())});
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

int print(Instant instant)
{
    std::printf("%s\n%s\n", qUtf8Printable(shortTime(instant)),
                qUtf8Printable(shortTimeWithDay(instant + 86400, instant)));
    return 0;
}

} // namespace

void tst_DateTexts::cleanup()
{
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
    QCOMPARE(printedUnder(locale, morning).value(0), time);
    QCOMPARE(printedUnder(locale, morning + 12 * 3600 + 59).value(0), afternoon);
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
    QCOMPARE(shortTimeWithDay(Instant{1767225600}, Instant{1767225599}),
             u"1/1/26, 00:00"_s); // a second before midnight
    QCOMPARE(printedUnder("en_US.UTF-8", morning).value(1), u"1/2/26, 9:05 AM"_s);
    QCOMPARE(printedUnder("de_DE.UTF-8", morning).value(1), u"02.01.26, 09:05"_s);
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

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--print")
        return print(Instant{arguments.value(2).toDouble()});
    tst_DateTexts test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_DateTexts.moc"
