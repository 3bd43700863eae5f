#include "calendar/Meeting.h"
#include "platform/linux/GioUrlOpener.h"
#include "platform/linux/OwnEnvironment.h"
#include "support/PrivateDesktop.h"

#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Links and the applications that this desktop has for them.
class tst_UrlOpener : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void opensALinkByteForByte_data();
    void opensALinkByteForByte();
    void knowsWhetherAnApplicationIsInstalled();
    void joinsInTheApplicationWhereThereIsOne();
    void whatIsMeantForKelpAloneStaysThere();
    void opensNothingElse_data();
    void opensNothingElse();

private:
    PrivateDesktop desktop;
    GioUrlOpener opener;
};

void tst_UrlOpener::initTestCase()
{
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
    // This process becomes one of the desktop's; GLib reads the variables when it is first used.
    const QStringList names = desktop.environment().keys();
    for (const QString &each : names)
        qputenv(each.toLatin1().constData(), desktop.environment().value(each).toLocal8Bit());
}

void tst_UrlOpener::init()
{
    desktop.forget();
}

void tst_UrlOpener::opensALinkByteForByte_data()
{
    QTest::addColumn<QByteArray>("link");
    for (const char *each :
         {"https://meet.google.com/abc-defg-hij", "http://127.0.0.1:8080/o/oauth2?a=b%20c&d=%2F%3A+e",
          "https://example.com/a%2Fb;c=d/?q=%C3%A9%22%27%24(x)&amp;y=*~#top%20'",
          "https://Teams.Microsoft.com/l/meetup-join/19%3ameeting_x%40thread.v2/0?context=%7b%22Tid%22%7d"})
        QTest::newRow(each) << QByteArray(each);
}

void tst_UrlOpener::opensALinkByteForByte()
{
    QFETCH(QByteArray, link);
    opener.open(QString::fromLatin1(link));
    QTRY_COMPARE(desktop.opened().size(), 1);
    QCOMPARE(desktop.opened().first(), link);
}

void tst_UrlOpener::knowsWhetherAnApplicationIsInstalled()
{
    const QString conference = u"zoommtg"_s;
    QVERIFY(opener.hasHandler(u"https"_s));
    QVERIFY(!opener.hasHandler(conference));
    desktop.registerHandler(u"zoommtg"_s);
    QTRY_VERIFY(opener.hasHandler(conference));
    desktop.unregisterHandler(u"zoommtg"_s);
    QTRY_VERIFY(!opener.hasHandler(conference));
}

void tst_UrlOpener::joinsInTheApplicationWhereThereIsOne()
{
    Meeting meeting;
    meeting.joinURL = MeetingLink::fromText(u"https://us02web.zoom.us/j/85551234567?pwd=XyZ123"_s);
    QVERIFY(meeting.joinURL);
    desktop.registerHandler(u"zoommtg"_s);
    QTRY_VERIFY(opener.hasHandler(u"zoommtg"_s));
    meeting.join(opener);
    QTRY_COMPARE(desktop.opened().value(0), "zoommtg://zoom.us/join?action=join&confno=85551234567&pwd=XyZ123");
    desktop.unregisterHandler(u"zoommtg"_s);
    QTRY_VERIFY(!opener.hasHandler(u"zoommtg"_s));
    meeting.join(opener);
    QTRY_COMPARE(desktop.opened().value(1), "https://us02web.zoom.us/j/85551234567?pwd=XyZ123");
}

void tst_UrlOpener::whatIsMeantForKelpAloneStaysThere()
{
    qputenv("KELP_TEST_SET", "before");
    ownEnvironment::set("KELP_TEST_SET", "own");
    ownEnvironment::set("KELP_TEST_SET", "own again");
    ownEnvironment::set("KELP_TEST_UNSET", "own");
    QCOMPARE(qgetenv("KELP_TEST_SET"), "own again");
    QCOMPARE(qgetenv("KELP_TEST_UNSET"), "own");
    opener.open(u"https://example.com/"_s);
    QTRY_COMPARE(desktop.opened().size(), 1);
    const QList<QByteArray> environment = desktop.environmentOfOpener();
    QVERIFY(environment.contains("KELP_TEST_SET=before"));
    QVERIFY(!environment.contains("KELP_TEST_UNSET=own"));
    QVERIFY(environment.contains("DBUS_SESSION_BUS_ADDRESS=" + desktop.sessionBus().address().toLatin1()));
}

void tst_UrlOpener::opensNothingElse_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("a file") << u"file:///etc/passwd"_s;
    QTest::newRow("a file of a host") << u"file://host/share/x.desktop"_s;
    QTest::newRow("a script") << u"javascript:alert(1)"_s;
    QTest::newRow("a script with a host") << u"javascript://host/%0aalert(1)"_s;
    QTest::newRow("another application") << u"zoommtg://zoom.us/start?action=start"_s;
    QTest::newRow("no host") << u"https:///path"_s;
}

void tst_UrlOpener::opensNothingElse()
{
    QFETCH(QString, link);
    // They would be opened: there are applications for all of them.
    const QStringList schemes{u"file"_s, u"javascript"_s, u"zoommtg"_s};
    for (const QString &each : schemes)
        desktop.registerHandler(each);
    for (const QString &each : schemes)
        QTRY_VERIFY(opener.hasHandler(each));
    opener.open(link);
    const QString after = u"https://example.com/after"_s;
    opener.open(after);
    QTRY_VERIFY(desktop.opened().contains(after.toLatin1()));
    QCOMPARE(desktop.opened().size(), 1);
    for (const QString &each : schemes)
        desktop.unregisterHandler(each);
}

QTEST_GUILESS_MAIN(tst_UrlOpener)

#include "tst_UrlOpener.moc"
