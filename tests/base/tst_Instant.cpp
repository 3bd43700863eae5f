#include "base/Instant.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_Instant : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parsesOnlyRfc3339InstantsWithAnOffset_data();
    void parsesOnlyRfc3339InstantsWithAnOffset();
    void truncatesWholeSecondsTowardZero();
    void writesUtc();
    void writesTheEndsOfTheCalendar_data();
    void writesTheEndsOfTheCalendar();
    void writesTheShortestDecimalWithAFraction_data();
    void writesTheShortestDecimalWithAFraction();
};

void tst_Instant::parsesOnlyRfc3339InstantsWithAnOffset_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<double>("seconds");

    const auto good = [](const char *text, double seconds) {
        QTest::newRow(text) << QString::fromUtf8(text) << true << seconds;
    };
    const auto bad = [](const char *text) {
        QTest::newRow(*text ? text : "(empty)") << QString::fromUtf8(text) << false << 0.0;
    };
    good("2026-01-01T09:00:00Z", 1767258000);
    good("2026-01-01T10:00:00+01:00", 1767258000);
    good("2026-01-01T00:30:00-08:30", 1767258000);
    good("2026-01-01T09:00:00.250Z", 1767258000.25);
    good("2026-01-01T09:00:00.123456789012345678Z", 1767258000.123456789);
    good("1969-12-31T23:59:59Z", -1);
    good("2024-02-29T00:00:00Z", 1709164800);
    good("2026-01-01T09:00:00-00:00", 1767258000);
    bad("");
    bad("2026-01-01");
    bad("2026-01-01T09:00:00");
    bad("2026-01-01T09:00Z");
    bad("2026-01-01 09:00:00Z");
    bad("2026-01-01t09:00:00z");
    bad("2026-01-01T09:00:00+0100");
    bad("2026-01-01T09:00:00+01");
    bad("2026-01-01T09:00:00+24:00");
    bad("2026-01-01T09:00:00.Z");
    bad("2026-01-01T09:00:00,5Z");
    bad("2026-02-29T09:00:00Z");
    bad("2026-13-01T09:00:00Z");
    bad("2026-00-01T09:00:00Z");
    bad("2026-01-00T09:00:00Z");
    bad("2026-01-01T24:00:00Z");
    bad("2026-01-01T09:60:00Z");
    bad("2026-01-01T09:00:60Z");
    bad("2026-1-1T9:00:00Z");
    bad(" 2026-01-01T09:00:00Z");
    bad("2026-01-01T09:00:00Z ");
    bad("20260101T090000Z");
    bad("2026-01-01T09:00:00ZZ");
    bad("٢٠٢٦-01-01T09:00:00Z");
    bad("12026-01-01T09:00:00Z");
}

void tst_Instant::parsesOnlyRfc3339InstantsWithAnOffset()
{
    QFETCH(QString, text);
    QFETCH(bool, valid);
    QFETCH(double, seconds);
    const std::optional<Instant> instant = Instant::parse(text);
    QCOMPARE(instant.has_value(), valid);
    if (valid)
        QCOMPARE(instant->secondsSince1970, seconds);
}

void tst_Instant::truncatesWholeSecondsTowardZero()
{
    QCOMPARE(Instant{1.9}.wholeSeconds(), 1);
    QCOMPARE(Instant{-1.9}.wholeSeconds(), -1);
    QVERIFY(Instant{1e300}.wholeSeconds() > 0);
    QVERIFY(Instant{-1e300}.wholeSeconds() < 0);
    QCOMPARE(Instant{qQNaN()}.wholeSeconds(), 0);
}

void tst_Instant::writesUtc()
{
    QCOMPARE(Instant{1767258000.9}.toIso8601(), u"2026-01-01T09:00:00Z");
    QCOMPARE(Instant{1767258000.25}.toIso8601Milliseconds(), u"2026-01-01T09:00:00.250Z");
    QCOMPARE(Instant{1767258000.1234}.toIso8601Milliseconds(), u"2026-01-01T09:00:00.123Z");
    QCOMPARE(Instant{1e300}.toIso8601(), u"9999-12-31T23:59:59Z");
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
        const Instant instant{1767258000 + millisecond / 1000.0};
        QCOMPARE(Instant::parse(instant.toIso8601Milliseconds()), instant);
    }
}

void tst_Instant::writesTheEndsOfTheCalendar_data()
{
    QTest::addColumn<QString>("read");
    QTest::addColumn<QString>("written");
    const auto row = [](const char *read, const char *written) {
        QTest::newRow(read) << QString::fromLatin1(read) << QString::fromLatin1(written);
    };
    row("9999-12-31T23:59:59.999Z", "9999-12-31T23:59:59.999Z");
    row("9999-12-31T23:59:59-01:00", "9999-12-31T23:59:59.999Z");
    row("6400-01-01T00:00:00.003Z", "6400-01-01T00:00:00.003Z"); // a double is coarser there than in this century
    row("0001-01-01T00:00:00Z", "0001-01-01T00:00:00.000Z");
    row("0000-06-01T00:00:00Z", "0001-01-01T00:00:00.000Z");
}

void tst_Instant::writesTheEndsOfTheCalendar()
{
    QFETCH(QString, read);
    QFETCH(QString, written);
    QCOMPARE(Instant::parse(read)->toIso8601Milliseconds(), written);
}

void tst_Instant::writesTheShortestDecimalWithAFraction_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("whole") << 1767261600.0 << u"1767261600.0"_s;
    QTest::newRow("round") << 1700000000.0 << u"1700000000.0"_s;
    QTest::newRow("quarter") << 1767261600.25 << u"1767261600.25"_s;
    QTest::newRow("tenth") << 1767261600.1 << u"1767261600.1"_s;
    QTest::newRow("before 1970") << -1.5 << u"-1.5"_s;
    QTest::newRow("zero") << 0.0 << u"0.0"_s;
}

void tst_Instant::writesTheShortestDecimalWithAFraction()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    QCOMPARE(shortestDecimal(value), text);
}

QTEST_GUILESS_MAIN(tst_Instant)
#include "tst_Instant.moc"
