#include "settings/PanelTexts.h"

#include <QTest>

#include <ctime>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_PanelTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void countsDownToTheOverlay_data();
    void countsDownToTheOverlay();
    void tellsHowLongAgo_data();
    void tellsHowLongAgo();
    void writesTheWeekdayOnOtherDays_data();
    void writesTheWeekdayOnOtherDays();
    void namesDays();
    void tomorrowBeginsWithTheLocalDay_data();
    void tomorrowBeginsWithTheLocalDay();
    void showsAFeedByItsHost_data();
    void showsAFeedByItsHost();
    void textsOfOthersCannotTurnOursAround();
};

namespace {

constexpr Instant nine{1767258000}; // Thursday, 2026-01-01 09:00 UTC
constexpr double day = 86400;

void useZone(const char *zone)
{
    qputenv("TZ", zone);
    tzset();
}

} // namespace

void tst_PanelTexts::cleanup()
{
    useZone("UTC");
    qputenv("LC_ALL", "C.UTF-8");
}

void tst_PanelTexts::countsDownToTheOverlay_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    const auto row = [](double seconds, const QString &text) { QTest::addRow("%g", seconds) << seconds << text; };
    row(-1e18, u"now"_s);
    row(-5, u"now"_s);
    row(0, u"now"_s);
    row(0.99, u"now"_s);
    row(1, u"Kelp in 1s"_s);
    row(59, u"Kelp in 59s"_s);
    row(59.99, u"Kelp in 59s"_s);
    row(60, u"Kelp in 2 min"_s);
    row(61, u"Kelp in 2 min"_s);
    row(119, u"Kelp in 2 min"_s);
    row(120, u"Kelp in 3 min"_s);
    row(3540, u"Kelp in 60 min"_s);
    row(3541, u"Kelp in 1 h 0 min"_s);
    row(3600, u"Kelp in 1 h 1 min"_s);
    row(5400, u"Kelp in 1 h 31 min"_s);
    row(86400, u"Kelp in 24 h 1 min"_s);
    row(1e300, u"Kelp in 1777777 h 47 min"_s);
}

void tst_PanelTexts::countsDownToTheOverlay()
{
    QFETCH(double, seconds);
    QFETCH(QString, text);
    QCOMPARE(panel::countdown(Instant{seconds}, Instant{0}), text);
}

void tst_PanelTexts::tellsHowLongAgo_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("not yet") << -3.0 << u"just now"_s;
    QTest::newRow("0") << 0.0 << u"just now"_s;
    QTest::newRow("59") << 59.9 << u"just now"_s;
    QTest::newRow("60") << 60.0 << u"1 min ago"_s;
    QTest::newRow("119") << 119.0 << u"1 min ago"_s;
    QTest::newRow("no hours") << 7500.0 << u"125 min ago"_s;
}

void tst_PanelTexts::tellsHowLongAgo()
{
    QFETCH(double, seconds);
    QFETCH(QString, text);
    QCOMPARE(panel::ago(nine, nine + seconds), text);
}

void tst_PanelTexts::writesTheWeekdayOnOtherDays_data()
{
    QTest::addColumn<QByteArray>("locale");
    QTest::addColumn<QString>("date");
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("pauseToday");
    QTest::addColumn<QString>("pauseTomorrow");
    QTest::newRow("C") << "C.UTF-8"_ba << u"Sat, Jan 3"_s << u"Sat 21:05"_s << u"21:05"_s << u"Fri 21:05"_s;
    QTest::newRow("American") << "en_US.UTF-8"_ba << u"Sat, Jan 3"_s << u"Sat 9:05 PM"_s << u"9:05 PM"_s
                              << u"Fri 9:05 PM"_s;
    QTest::newRow("British") << "en_GB.UTF-8"_ba << u"Sat, 3 Jan"_s << u"Sat 21:05"_s << u"21:05"_s << u"Fri 21:05"_s;
    QTest::newRow("German") << "de_DE@euro"_ba << u"Sa., 3. Jan."_s << u"Sa., 21:05"_s << u"21:05"_s << u"Fr., 21:05"_s;
}

void tst_PanelTexts::writesTheWeekdayOnOtherDays()
{
    QFETCH(QByteArray, locale);
    qputenv("LC_ALL", locale);
    const Instant evening = nine + 12 * 3600 + 305;
    QTEST(panel::day(evening + 2 * day, nine), "date");
    QTEST(panel::shortTime(evening + 2 * day, nine), "time");
    QTEST(panel::pauseEnd(evening, nine), "pauseToday");
    QTEST(panel::pauseEnd(evening + day, nine), "pauseTomorrow");
}

void tst_PanelTexts::namesDays()
{
    QCOMPARE(panel::day(nine, nine), u"Today"_s);
    QCOMPARE(panel::day(nine + day, nine), u"Tomorrow"_s);
    QCOMPARE(panel::shortTime(nine, nine + 3600), u"09:00"_s);
    QCOMPARE(panel::shortTime(nine + day, nine), u"Fri 09:00"_s);
    QCOMPARE(panel::day(nine - day, nine), u"Wed, Dec 31"_s);
    // It is the zone of the desktop that says which day it is.
    useZone("Pacific/Auckland");
    QCOMPARE(panel::day(nine + 3 * 3600, nine), u"Tomorrow"_s);
    QCOMPARE(panel::shortTime(nine + 3 * 3600, nine), u"Fri 01:00"_s);
}

void tst_PanelTexts::tomorrowBeginsWithTheLocalDay_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<double>("now");
    QTest::addColumn<double>("expected");
    QTest::newRow("UTC") << "UTC"_ba << nine.secondsSince1970 << 1767312000.0;
    QTest::newRow("Berlin") << "Europe/Berlin"_ba << nine.secondsSince1970 << 1767308400.0;
    // The clocks went forward at midnight: the day begins at 01:00.
    QTest::newRow("Beirut, no midnight") << "Asia/Beirut"_ba << 1711789200.0 << 1711836000.0;
}

void tst_PanelTexts::tomorrowBeginsWithTheLocalDay()
{
    QFETCH(QByteArray, zone);
    QFETCH(double, now);
    QFETCH(double, expected);
    useZone(zone.constData());
    QCOMPARE(panel::tomorrow(Instant{now}).secondsSince1970, expected);
}

void tst_PanelTexts::showsAFeedByItsHost_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a name") << u"Team Tide"_s << u"Team Tide"_s;
    QTest::newRow("webcal") << u"webcal://p01-calendars.example.com/published/2/x"_s << u"p01-calendars.example.com"_s;
    QTest::newRow("http") << u"http://example.org/a.ics"_s << u"example.org"_s;
    QTest::newRow("https, port and user") << u"https://me@example.org:8443/a?b#c"_s << u"example.org"_s;
    QTest::newRow("another scheme") << u"ftp://example.org/a"_s << u"ftp://example.org/a"_s;
    QTest::newRow("no host") << u"https:///a.ics"_s << u"https:///a.ics"_s;
    QTest::newRow("no URL") << u"https://my calendar"_s << u"https://my calendar"_s;
    QTest::newRow("in the middle") << u"see https://example.org"_s << u"see https://example.org"_s;
    QTest::newRow("capitals") << u"HTTPS://example.org"_s << u"HTTPS://example.org"_s;
    QTest::newRow("empty") << QString() << QString();
}

void tst_PanelTexts::showsAFeedByItsHost()
{
    QFETCH(QString, name);
    QTEST(panel::displayName(name), "shown");
}

void tst_PanelTexts::textsOfOthersCannotTurnOursAround()
{
    QCOMPARE(panel::within(u"Design\nreview"_s), u"Design review"_s);
    QCOMPARE(panel::within(u"\u202Eecilop"_s), u"ecilop"_s);
    QCOMPARE(panel::within(u"פגישה"_s), u"\u2068פגישה\u2069"_s);
    QCOMPARE(panel::within(u"a\u2067b"_s), u"ab"_s);
}

QTEST_GUILESS_MAIN(tst_PanelTexts)
#include "tst_PanelTexts.moc"
