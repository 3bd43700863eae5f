#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

/// Texts in the language and the zone of the environment. Qt knows the languages by itself: the system need not have
/// them generated.
class tst_ProbeLocale : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTextsAsTheEnvironmentSays_data();
    void writesTextsAsTheEnvironmentSays();
};

namespace {

/// 2026-01-01 10:00 UTC, a Thursday, seen from an hour before; and the Monday after it.
const QByteArray calls = R"({"fn":"panel.shortTime","args":{"date":1767261600,"now":1767258000}}
{"fn":"panel.day","args":{"date":1767603600,"now":1767258000}}
)";

} // namespace

void tst_ProbeLocale::writesTextsAsTheEnvironmentSays_data()
{
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QString>("texts");
    QTest::newRow("C") << QStringList{u"LC_ALL=C.UTF-8"_s, u"TZ=UTC"_s} << u"10:00|Mon, Jan 5"_s;
    QTest::newRow("American") << QStringList{u"LC_ALL=en_US.UTF-8"_s, u"TZ=UTC"_s} << u"10:00 AM|Mon, Jan 5"_s;
    QTest::newRow("German") << QStringList{u"LC_ALL=de_DE.UTF-8"_s, u"TZ=UTC"_s} << u"10:00|Mo., 5. Jan."_s;
    QTest::newRow("Berlin") << QStringList{u"LC_ALL=C.UTF-8"_s, u"TZ=Europe/Berlin"_s} << u"11:00|Mon, Jan 5"_s;
    QTest::newRow("an American in New York")
        << QStringList{u"LC_ALL=en_US.UTF-8"_s, u"TZ=America/New_York"_s} << u"5:00 AM|Mon, Jan 5"_s;
    QTest::newRow("only times are German")
        << QStringList{u"LC_ALL="_s, u"LANG=en_US.UTF-8"_s, u"LC_TIME=de_DE.UTF-8"_s, u"TZ=UTC"_s}
        << u"10:00|Mo., 5. Jan."_s;
}

void tst_ProbeLocale::writesTextsAsTheEnvironmentSays()
{
    QFETCH(QStringList, environment);
    QFETCH(QString, texts);
    QProcess probe;
    QProcessEnvironment whole = QProcessEnvironment::systemEnvironment();
    for (const QString &each : std::as_const(environment))
        whole.insert(each.section(u'=', 0, 0), each.section(u'=', 1));
    probe.setProcessEnvironment(whole);
    probe.start(qEnvironmentVariable("KELP_BINARY_DIR") + u"/kelp-probe"_s, {u"text"_s});
    probe.write(calls);
    probe.closeWriteChannel();
    QVERIFY(probe.waitForFinished());
    QStringList written;
    for (const QByteArray &line : probe.readAllStandardOutput().trimmed().split('\n'))
        written.append(QString::fromUtf8(line).section(u'"', 3, 3));
    // Newer versions of Qt have a narrow space before AM.
    QCOMPARE(written.join(u'|').replace(QChar(0x202F), u' '), texts);
}

QTEST_GUILESS_MAIN(tst_ProbeLocale)
#include "tst_ProbeLocale.moc"
