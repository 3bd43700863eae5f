#include "sound/MusicControl.h"

#include "support/ComputingTime.h"
#include "support/FakeMusicPlayers.h"

#include <QTest>

#include <algorithm>
#include <limits>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

const QString id = u"4uLU6hMCjMI75M1A2tKUQC"_s;

} // namespace

class tst_MusicControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsLinks_data();
    void readsLinks();
    void readsLongTextsInTime_data();
    void readsLongTextsInTime();
    void pausesAll();
    void playsOnlyLettersNumbersAndColons_data();
    void playsOnlyLettersNumbersAndColons();
    void knowsWhetherSpotifyIsInstalled();
};

void tst_MusicControl::readsLinks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("uri"); // null: none
    const auto row = [](const char *name, const QString &text, const QString &uri = {}) {
        QTest::newRow(name) << text << uri;
    };
    const QString track = u"spotify:track:"_s + id;
    const QString host = u"https://open.spotify.com"_s;

    row("empty", {});
    row("white space", u" \n\t "_s);
    row("prose", u"play something"_s);

    // URIs.
    row("uri", track, track);
    row("uri in white space", u"\u2003\r\n "_s + track + u"\u00a0\n"_s, track);
    for (const QString &kind : {u"track"_s, u"album"_s, u"playlist"_s, u"artist"_s, u"episode"_s, u"show"_s})
        row(qPrintable(kind), u"spotify:%1:ID"_s.arg(kind), u"spotify:%1:ID"_s.arg(kind));
    row("uri: no identifier", u"spotify:album:"_s);
    row("uri: no second colon", u"spotify:track"_s);
    row("uri: nothing", u"spotify:"_s);
    row("uri: unknown kind", u"spotify:foo:ID"_s);
    row("uri: kind in capitals", u"spotify:Track:ID"_s);
    row("uri: user's playlist", u"spotify:user:x:playlist:y"_s);
    row("uri: four pieces", u"spotify:track:ID:x"_s);
    row("uri: colons that hold nothing", u"spotify::track:::ID:"_s, u"spotify::track:::ID:"_s);
    row("uri: scheme in capitals", u"Spotify:track:ID"_s);
    row("uri: quote", u"spotify:track:ab\"c"_s, u"spotify:track:ab\"c"_s);

    // Share links.
    row("link", host + u"/track/"_s + id, track);
    row("link in spaces, with a query", u"  "_s + host + u"/track/"_s + id + u"?si=abc  "_s, track);
    row("link with a fragment", host + u"/track/"_s + id + u"#x"_s, track);
    row("localized link", host + u"/intl-de/track/"_s + id, track);
    row("language behind the kind", host + u"/track/intl-de/"_s + id, track);
    row("two languages", host + u"/intl-de/intl-pt-BR/track/"_s + id, track);
    row("link with more path", host + u"/track/"_s + id + u"/more/and/more"_s, track);
    row("link with a slash at the end", host + u"/track/"_s + id + u"/"_s, track);
    row("link with empty segments", host + u"//track//"_s + id, track);
    row("http", u"http://open.spotify.com/album/ID"_s, u"spotify:album:ID"_s);
    row("host in capitals", u"https://OPEN.SPOTIFY.COM/album/ID"_s, u"spotify:album:ID"_s);
    row("bare domain", u"https://spotify.com/show/ID"_s, u"spotify:show:ID"_s);
    row("port and user", u"https://me@open.spotify.com:443/artist/ID"_s, u"spotify:artist:ID"_s);
    row("without scheme", u"//open.spotify.com/episode/ID"_s, u"spotify:episode:ID"_s);
    row("escaped identifier", host + u"/track/a%22b"_s, u"spotify:track:a\"b"_s);
    row("user", host + u"/user/x"_s);
    row("user's playlist", host + u"/user/x/playlist/y"_s);
    row("kind only", host + u"/track"_s);
    row("kind and slash", host + u"/track/"_s);
    row("language only", host + u"/intl-de/track"_s);
    row("kind in capitals", host + u"/Track/ID"_s);
    row("no path", host);
    row("kind in the query", host + u"/?track/ID"_s);
    row("other host", u"https://example.com/track/ID"_s);
    row("domain in front", u"https://spotify.com.example.com/track/ID"_s);
    row("domain as user", u"https://open.spotify.com@example.com/track/ID"_s);
    row("domain in the path", u"https://example.com/open.spotify.com/track/ID"_s);
    row("no host", u"open.spotify.com/track/ID"_s);
    row("one slash", u"https:/open.spotify.com/track/ID"_s);
    row("space inside", host + u"/track/a b"_s);
    row("quote inside", host + u"/track/a\"b"_s);
    row("broken escape", host + u"/track/%zz"_s);
    row("broken port", u"https://open.spotify.com:x/track/ID"_s);
}

void tst_MusicControl::readsLinks()
{
    QFETCH(QString, text);
    QFETCH(QString, uri);
    QCOMPARE(MusicControl::spotifyURI(text).value_or(QString()), uri);
    QCOMPARE(MusicControl::spotifyURI(text).has_value(), !uri.isNull());
}

void tst_MusicControl::readsLongTextsInTime_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("repeated");
    QTest::addColumn<QString>("after");
    QTest::newRow("colons") << u"spotify:"_s << u"track:"_s << QString();
    QTest::newRow("white space before") << QString() << u" "_s << u"x"_s;
    QTest::newRow("white space after") << u"x"_s << u" "_s << QString();
    QTest::newRow("segments") << u"https://open.spotify.com/"_s << u"user/"_s << QString();
    QTest::newRow("host") << u"https://"_s << u"spotify."_s << QString();
}

/// Eight times the text takes some eight times as long. What grows with the square would take 64 times as long.
void tst_MusicControl::readsLongTextsInTime()
{
    QFETCH(QString, before);
    QFETCH(QString, repeated);
    QFETCH(QString, after);
    // The least of some: the system may take long to find memory, and that counts as computing too.
    const auto timeOf = [&](int count) {
        const QString text = before + repeated.repeated(count) + after;
        double least = std::numeric_limits<double>::infinity();
        for (int i = 0; i < 5; ++i) {
            const double start = test::computingTime();
            const bool isUri = MusicControl::spotifyURI(text).has_value();
            if (isUri)
                return std::numeric_limits<double>::infinity();
            least = std::min(least, test::computingTime() - start);
        }
        return least;
    };
    constexpr int count = 5'000;
    const double eightfold = timeOf(8 * count);
    const double once = std::max(timeOf(count), 1.0);
    QVERIFY2(eightfold < 24 * once, qPrintable(u"%1 ms, %2 ms"_s.arg(once).arg(eightfold)));
}

void tst_MusicControl::pausesAll()
{
    test::FakeMusicPlayers players;
    MusicControl control(players);
    control.pauseAll(false);
    QCOMPARE(players.asked, (QStringList{u"pause Spotify"_s, u"pause others"_s}));
    players.asked.clear();
    control.pauseAll(true);
    QCOMPARE(players.asked, QStringList{u"pause others"_s});
    players.asked.clear();
    control.pauseSpotify();
    QCOMPARE(players.asked, QStringList{u"pause Spotify"_s});
}

void tst_MusicControl::playsOnlyLettersNumbersAndColons_data()
{
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("played");
    QTest::newRow("usual") << u"spotify:track:"_s + id << u"spotify:track:"_s + id;
    QTest::newRow("quote") << u"spotify:track:ab\"c"_s << u"spotify:track:abc"_s;
    QTest::newRow("script") << u"spotify:track:a\"\nend tell\ndo shell script \"rm -rf ~\" \\"_s
                            << u"spotify:track:aendtelldoshellscriptrmrf"_s;
    QTest::newRow("signs") << u"!$%&/()=?`´'#+*~-_.,;<>|@{}[]^°§\u00a0\u2028\t"_s << QString();
    QTest::newRow("letters of other scripts") << u"äßЖ漢\u05d0é"_s << u"äßЖ漢\u05d0é"_s;
    QTest::newRow("numbers of other scripts") << u"٣²½Ⅷ"_s << u"٣²½Ⅷ"_s;
    QTest::newRow("letter beyond the first plane") << u"\U00010400-\U0001f600"_s << u"\U00010400"_s;
    QTest::newRow("half a character") << QString(QChar(0xd801)) + u"a"_s << u"a"_s;
    QTest::newRow("nothing") << QString() << QString();
}

void tst_MusicControl::playsOnlyLettersNumbersAndColons()
{
    QFETCH(QString, uri);
    QFETCH(QString, played);
    test::FakeMusicPlayers players;
    MusicControl(players).playSpotify(uri);
    QCOMPARE(players.asked, QStringList{u"play "_s + played});
}

void tst_MusicControl::knowsWhetherSpotifyIsInstalled()
{
    test::FakeMusicPlayers players;
    const MusicControl control(players);
    QVERIFY(!control.spotifyInstalled());
    players.installed = true;
    QVERIFY(control.spotifyInstalled());
}

QTEST_GUILESS_MAIN(tst_MusicControl)
#include "tst_MusicControl.moc"
