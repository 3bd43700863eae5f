#include "calendar/MeetingLink.h"

#include <QElapsedTimer>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_MeetingLink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsTheFirstLinkInFreeText_data();
    void findsTheFirstLinkInFreeText();
    void takesLinearTimeForHostileText_data();
    void takesLinearTimeForHostileText();
    void keepsOnlyStrictReferences_data();
    void keepsOnlyStrictReferences();
    void namesTheProviderByTheHost_data();
    void namesTheProviderByTheHost();
    void rewritesZoomConferenceLinks_data();
    void rewritesZoomConferenceLinks();
    void keepsTheTextAsItWasWritten();
    void opensOnlyWebLinks_data();
    void opensOnlyWebLinks();
};

void tst_MeetingLink::findsTheFirstLinkInFreeText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("link"); // null: none
    const auto row = [](const char *name, const QString &text, const QString &link) {
        QTest::newRow(name) << text << link;
    };
    const QString none;
    row("empty", u""_s, none);
    row("no link", u"Room 4"_s, none);
    row("zoom", u"https://zoom.us/j/123"_s, u"https://zoom.us/j/123"_s);
    row("zoom company", u"https://acme.zoom.us/j/123?pwd=a"_s, u"https://acme.zoom.us/j/123?pwd=a"_s);
    row("zoom personal", u"https://zoom.us/my/ada"_s, u"https://zoom.us/my/ada"_s);
    row("zoom webinar", u"https://zoom.us/w/5"_s, u"https://zoom.us/w/5"_s);
    row("zoom start", u"https://zoom.us/s/5"_s, u"https://zoom.us/s/5"_s);
    row("zoom other path", u"https://zoom.us/pricing"_s, none);
    row("zoom path word needs a slash", u"https://zoom.us/j"_s, none);
    row("meet", u"https://meet.google.com/abc-defg-hij"_s, u"https://meet.google.com/abc-defg-hij"_s);
    row("meet needs a slash", u"https://meet.google.com"_s, none);
    row("teams business", u"https://teams.microsoft.com/l/meetup-join/19%3ameeting"_s,
        u"https://teams.microsoft.com/l/meetup-join/19%3ameeting"_s);
    row("teams business other path", u"https://teams.microsoft.com/l/channel"_s, none);
    row("teams consumer", u"https://teams.live.com/meet/9"_s, u"https://teams.live.com/meet/9"_s);
    row("webex", u"https://acme.webex.com/acme/j.php?MTID=m"_s, u"https://acme.webex.com/acme/j.php?MTID=m"_s);
    row("around", u"https://around.co/r/x"_s, u"https://around.co/r/x"_s);
    row("http", u"http://zoom.us/j/1"_s, u"http://zoom.us/j/1"_s);
    row("upper case", u"HTTPS://ZOOM.US/J/1"_s, u"HTTPS://ZOOM.US/J/1"_s);
    row("dots are literal", u"https://zoomXus/j/1 https://meet-google.com/x"_s, none);
    row("without a scheme", u"zoom.us/j/1"_s, none);
    row("ftp", u"ftp://zoom.us/j/1"_s, none);
    row("within a sentence", u"Join (https://zoom.us/j/1)."_s, u"https://zoom.us/j/1"_s);
    row("trims all of )., ; > ]", u"https://zoom.us/j/1]>;,.)"_s, u"https://zoom.us/j/1"_s);
    row("keeps other punctuation", u"https://zoom.us/j/1!"_s, u"https://zoom.us/j/1!"_s);
    row("in quotes", u"<a href=\"https://zoom.us/j/1\">x</a>"_s, u"https://zoom.us/j/1"_s);
    row("in single quotes", u"'https://zoom.us/j/1'"_s, u"https://zoom.us/j/1"_s);
    row("in angle brackets", u"<https://zoom.us/j/1>"_s, u"https://zoom.us/j/1"_s);
    row("first of two", u"https://zoom.us/j/1 https://zoom.us/j/2"_s, u"https://zoom.us/j/1"_s);
    row("after another link", u"https://example.com https://zoom.us/j/2"_s, u"https://zoom.us/j/2"_s);
    row("glued to another link", u"https://example.com/?u=https://zoom.us/j/2"_s,
        u"https://example.com/?u=https://zoom.us/j/2"_s);
    row("provider before the scheme", u"zoom.us/j/https://example.com"_s, none);
    row("a provider as the scheme's own text", u"xhttps://zoom.us/j/2"_s, u"https://zoom.us/j/2"_s);
    row("no-break space ends it", u"https://zoom.us/j/1\u00a0x"_s, u"https://zoom.us/j/1"_s);
    row("ideographic space ends it", u"https://zoom.us/j/1\u3000x"_s, u"https://zoom.us/j/1"_s);
    row("new line ends it", u"https://zoom.us/j/1\nx"_s, u"https://zoom.us/j/1"_s);
    row("provider in the path", u"https://example.com/zoom.us/j/1"_s, u"https://example.com/zoom.us/j/1"_s);
    row("http inside https run", u"httphttps://zoom.us/j/1"_s, u"https://zoom.us/j/1"_s);
    row("only punctuation left of it", u")https://zoom.us/j/1"_s, u"https://zoom.us/j/1"_s);
}

void tst_MeetingLink::findsTheFirstLinkInFreeText()
{
    QFETCH(QString, text);
    QFETCH(QString, link);
    QCOMPARE(findMeetingLink(text).value_or(QString()), link);
}

void tst_MeetingLink::takesLinearTimeForHostileText_data()
{
    QTest::addColumn<QString>("piece");
    QTest::newRow("schemes") << u"http://"_s;
    QTest::newRow("almost schemes") << u"http"_s;
    QTest::newRow("domains") << u"zoom.us/"_s;
    QTest::newRow("one run") << u"x"_s;
    QTest::newRow("many runs") << u"http:// "_s;
}

void tst_MeetingLink::takesLinearTimeForHostileText()
{
    QFETCH(QString, piece);
    const auto duration = [&](int length) {
        const QString text = piece.repeated(length / static_cast<int>(piece.size()));
        QElapsedTimer timer;
        timer.start();
        (void)findMeetingLink(text);
        return timer.nsecsElapsed();
    };
    (void)duration(1'000'000);
    // Sixteen times the text: about sixteen times as long, where a quadratic search would take 256 times.
    const qint64 once = std::max<qint64>(duration(250'000), 1'000'000);
    QVERIFY2(duration(4'000'000) < 64 * once, qPrintable(QString::number(once)));
}

void tst_MeetingLink::keepsOnlyStrictReferences_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    const auto row = [](const char *text, bool valid) {
        QTest::newRow(*text ? text : "(empty)") << QString::fromUtf8(text) << valid;
    };
    row("https://zoom.us/j/1?pwd=a&x=%20#f", true);
    row("https://user@zoom.us:443/j/1", true);
    row("https://[::1]/x", true);
    row("tel:+49-30-1", true);
    row("relative/path", true);
    row("", false);
    row("https://zoom.us/j/1 2", false);
    row("https://zoom.us/j/%zz", false);
    row("https://zoom.us/j/{1}", false);
    row("https://zoom.us/j/1|2", false);
    row("https://zoom.us/j/1\\2", false);
    row("https://zoom.us/j/[1]", false);
    row("https://zoom.us/jé", false);
    row("https://zoom.us:port/j", false);
    row("https://zoom.us/#a#b", false);
    row("1https://zoom.us/", false);
}

void tst_MeetingLink::keepsOnlyStrictReferences()
{
    QFETCH(QString, text);
    QFETCH(bool, valid);
    QCOMPARE(MeetingLink::fromText(text).has_value(), valid);
}

void tst_MeetingLink::namesTheProviderByTheHost_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("provider");
    QTest::newRow("zoom") << u"https://acme.zoom.us/j/1"_s << u"Zoom"_s;
    QTest::newRow("upper case") << u"https://ZOOM.US/j/1"_s << u"Zoom"_s;
    QTest::newRow("meet") << u"https://meet.google.com/a"_s << u"Google Meet"_s;
    QTest::newRow("teams") << u"https://teams.microsoft.com/a"_s << u"Teams"_s;
    QTest::newRow("teams live") << u"https://teams.live.com/a"_s << u"Teams"_s;
    QTest::newRow("webex") << u"https://x.webex.com/a"_s << u"Webex"_s;
    QTest::newRow("around") << u"https://around.co/a"_s << u"Around"_s;
    QTest::newRow("the earlier in the list wins") << u"https://webex.com.zoom.us/"_s << u"Zoom"_s;
    QTest::newRow("only the host counts") << u"https://example.com/zoom.us/j/1"_s << QString();
    QTest::newRow("no host") << u"tel:1"_s << QString();
}

void tst_MeetingLink::namesTheProviderByTheHost()
{
    QFETCH(QString, text);
    QFETCH(QString, provider);
    QCOMPARE(MeetingLink::fromText(text)->provider().value_or(QString()), provider);
}

void tst_MeetingLink::rewritesZoomConferenceLinks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("application");
    const auto row = [](const char *name, const QString &text, const QString &application) {
        QTest::newRow(name) << text << application;
    };
    row("with a password", u"https://zoom.us/j/85551234567?pwd=XyZ"_s,
        u"zoommtg://zoom.us/join?action=join&confno=85551234567&pwd=XyZ"_s);
    row("without", u"https://acme.zoom.us/j/1"_s, u"zoommtg://zoom.us/join?action=join&confno=1"_s);
    row("first password", u"https://zoom.us/j/1?pwd=a&pwd=b"_s, u"zoommtg://zoom.us/join?action=join&confno=1&pwd=a"_s);
    row("password without a value", u"https://zoom.us/j/1?pwd"_s, u"zoommtg://zoom.us/join?action=join&confno=1"_s);
    row("empty password", u"https://zoom.us/j/1?pwd="_s, u"zoommtg://zoom.us/join?action=join&confno=1&pwd="_s);
    row("password that needs escapes", u"https://zoom.us/j/1?pwd=a%26b%3D+"_s,
        u"zoommtg://zoom.us/join?action=join&confno=1&pwd=a%26b%3D%2B"_s);
    row("more of the path", u"https://zoom.us/x/j/1/2"_s, u"zoommtg://zoom.us/join?action=join&confno=1"_s);
    row("other parameters are dropped", u"https://zoom.us/j/1?uname=x#f"_s,
        u"zoommtg://zoom.us/join?action=join&confno=1"_s);
    row("personal room", u"https://zoom.us/my/ada"_s, QString());
    row("no number", u"https://zoom.us/j"_s, QString());
    row("no number but a slash", u"https://zoom.us/j/"_s, QString());
    row("host in upper case", u"https://ZOOM.US/j/1"_s, QString());
    row("path word in upper case", u"https://zoom.us/J/1"_s, QString());
    row("other provider", u"https://meet.google.com/j/1"_s, QString());
    row("no host", u"/j/1"_s, QString());
}

void tst_MeetingLink::rewritesZoomConferenceLinks()
{
    QFETCH(QString, text);
    QFETCH(QString, application);
    QCOMPARE(MeetingLink::fromText(text)->applicationLink().value_or(QString()), application);
}

void tst_MeetingLink::keepsTheTextAsItWasWritten()
{
    const QString text = u"https://Acme.ZOOM.us/j/%31?pwd=%7E"_s;
    QCOMPARE(MeetingLink::fromText(text)->text(), text);
}

void tst_MeetingLink::opensOnlyWebLinks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isWeb");
    QTest::newRow("https") << u"https://example.com"_s << true;
    QTest::newRow("http") << u"HTTP://example.com"_s << true;
    QTest::newRow("file") << u"file:///etc/passwd"_s << false;
    QTest::newRow("javascript") << u"javascript:alert(1)"_s << false;
    QTest::newRow("relative") << u"abc"_s << false;
    QTest::newRow("no host") << u"https:///x"_s << false;
    QTest::newRow("zoommtg written by somebody") << u"zoommtg://zoom.us/join?confno=1"_s << false;
}

void tst_MeetingLink::opensOnlyWebLinks()
{
    QFETCH(QString, text);
    QFETCH(bool, isWeb);
    const auto link = MeetingLink::fromText(text);
    QCOMPARE(link && link->isWebLink(), isWeb);
}

QTEST_GUILESS_MAIN(tst_MeetingLink)
#include "tst_MeetingLink.moc"
