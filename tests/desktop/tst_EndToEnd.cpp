#include "desktop/OneAccount.h"
#include "support/Browser.h"
#include "support/KelpRig.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>
#include <QUrlQuery>

using namespace kelp::test;
using namespace kelp::test::oneAccount;
using namespace Qt::StringLiterals;

namespace {

using Items = QList<LoggedRequest::Item>;

const QString scope = u"https://www.googleapis.com/auth/calendar.readonly"_s;
constexpr int soon = 12'000; // ms: a tick comes every 5 s, and the machine may be busy

/// A time as Kelp keeps it.
QJsonObject date(const QDateTime &time)
{
    return {{u"date"_s, time.toUTC().toString(Qt::ISODateWithMs)}};
}

QString value(const Items &items, const QString &name)
{
    const auto found = std::find_if(items.begin(), items.end(), [&](const auto &each) { return each.first == name; });
    return found == items.end() ? QString() : found->second;
}

QStringList names(const Items &items)
{
    QStringList list;
    for (const auto &[name, value] : items)
        list.append(name);
    return list;
}

QString base64Url(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

} // namespace

/// The released binary from its start to a reminder on the screen: a real X server with two monitors, a real browser,
/// the desktop's own way to open links. Only Google is a local stand-in.
class tst_EndToEnd : public QObject, private KelpRig
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { endKelp(); }

    void signsInThroughTheBrowserAndGreets();
    void asksGoogleInItsOwnWords();
    void keepsTheAccountPrivate();
    void tellsThatTheUserDidNotAllow();
    void coversBothMonitorsAndJoins();
    void remembersAcrossAKillWhatWasShown();
    void bringsASnoozedMeetingBackAfterAKill();
    void removesAnAccountThatGoogleSignedOut();

private:
    void requestConsent(QUrl &page);
    void signIn();
    [[nodiscard]] QList<LoggedRequest> kelpsRequests() const;

    Browser browser;
};

void tst_EndToEnd::initTestCase()
{
    QVERIFY(startDesktop());
    QVERIFY2(browser.start(), qPrintable(browser.problem()));
}

void tst_EndToEnd::init()
{
    desktop.forget();
    desktop.writePreferences(oneAccount::preferences());
}

/// Presses the button of a Kelp without accounts, and hands out the page that the desktop is asked to open.
void tst_EndToEnd::requestConsent(QUrl &page)
{
    QVERIFY(startKelp());
    QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), soon);
    QVERIFY(person->click(u"Sign in with Google"_s));
    QTRY_COMPARE_WITH_TIMEOUT(desktop.opened().size(), 1, soon);
    page = QUrl::fromEncoded(desktop.opened().first(), QUrl::StrictMode);
    QVERIFY(page.isValid());
}

void tst_EndToEnd::signIn()
{
    QUrl page;
    requestConsent(page);
    QVERIFY2(browser.open(page), qPrintable(browser.problem()));
    QVERIFY2(browser.click(u"allow"_s), qPrintable(browser.problem()));
}

/// All that Kelp asked, without what the browser did.
QList<LoggedRequest> tst_EndToEnd::kelpsRequests() const
{
    QList<LoggedRequest> list = sandbox->requests();
    list.removeIf([](const LoggedRequest &each) {
        return each.path.startsWith("/o/oauth2/"_L1) || each.path == "/favicon.ico"_L1;
    });
    return list;
}

void tst_EndToEnd::signsInThroughTheBrowserAndGreets()
{
    QVERIFY(startSandbox(seed(QJsonArray{meeting(u"later"_s, u"Later today"_s, 7200)})));
    signIn();
    QTRY_VERIFY2(browser.text().contains("You can close this tab and go back to Kelp."_L1),
                 qPrintable(browser.text() + browser.problem()));
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
    QTRY_VERIFY(reader->reads(u"Kelp is set up"_s));
    QVERIFY(reader->reads(u"Connected to robin@example.com · 2 calendars"_s));
    QTRY_VERIFY(desktop.display().pixel(20, 20).lightness() < 60 &&
                desktop.display().pixel(2540, 700).lightness() < 60);
    desktop.display().run(u"xdotool"_s, {u"key"_s, u"Return"_s});
    QTRY_VERIFY(kelp->windows().isEmpty());
    QVERIFY(kelp->isRunning());
    QCOMPARE(desktop.opened().size(), 1);
}

void tst_EndToEnd::asksGoogleInItsOwnWords()
{
    QVERIFY(startSandbox(seed()));
    const QDateTime before = QDateTime::currentDateTimeUtc();
    signIn();
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
    const QDateTime after = QDateTime::currentDateTimeUtc();

    // The consent page.
    const QUrl page = QUrl::fromEncoded(desktop.opened().first(), QUrl::StrictMode);
    QCOMPARE(page.adjusted(QUrl::RemoveQuery), sandbox->authorizationUrl());
    const Items consent = QUrlQuery(page).queryItems(QUrl::FullyDecoded);
    const QString redirect = value(consent, u"redirect_uri"_s);
    const QString state = value(consent, u"state"_s);
    const QString challenge = value(consent, u"code_challenge"_s);
    QCOMPARE(consent, (Items{{u"client_id"_s, Sandbox::clientId()},
                             {u"redirect_uri"_s, redirect},
                             {u"response_type"_s, u"code"_s},
                             {u"scope"_s, scope},
                             {u"code_challenge"_s, challenge},
                             {u"code_challenge_method"_s, u"S256"_s},
                             {u"state"_s, state},
                             {u"access_type"_s, u"offline"_s},
                             {u"prompt"_s, u"consent select_account"_s}}));
    QVERIFY(QRegularExpression(u"^http://127\\.0\\.0\\.1:\\d+$"_s).match(redirect).hasMatch());
    QCOMPARE(state.size(), 22);

    const QList<LoggedRequest> requests = kelpsRequests();
    QCOMPARE(requests.size(), 5);
    for (const LoggedRequest &each : requests)
        QCOMPARE(each.status, 200);

    // The code for the tokens.
    const LoggedRequest &exchange = requests[0];
    QCOMPARE(exchange.method, u"POST"_s);
    QCOMPARE(exchange.path, u"/token"_s);
    QCOMPARE(exchange.rawQuery, QString());
    QCOMPARE(exchange.headers.value(u"content-type"_s), u"application/x-www-form-urlencoded"_s);
    QVERIFY(!exchange.headers.contains(u"authorization"_s));
    const QString verifier = value(exchange.form, u"code_verifier"_s);
    QCOMPARE(verifier.size(), 43);
    QCOMPARE(base64Url(QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256)), challenge);
    QStringList fields = names(exchange.form);
    fields.sort();
    QCOMPARE(fields, (QStringList{u"client_id"_s, u"client_secret"_s, u"code"_s, u"code_verifier"_s, u"grant_type"_s,
                                  u"redirect_uri"_s}));
    QCOMPARE(value(exchange.form, u"client_id"_s), Sandbox::clientId());
    QCOMPARE(value(exchange.form, u"client_secret"_s), Sandbox::clientSecret());
    QCOMPARE(value(exchange.form, u"redirect_uri"_s), redirect);
    QCOMPARE(value(exchange.form, u"grant_type"_s), u"authorization_code"_s);

    // Whose account it is, and the first refresh, all with the token just received.
    const QString bearer = requests[1].headers.value(u"authorization"_s);
    QVERIFY(bearer.startsWith("Bearer "_L1));
    for (const LoggedRequest &each : requests.mid(1)) {
        QCOMPARE(each.method, u"GET"_s);
        QCOMPARE(each.headers.value(u"authorization"_s), bearer);
        QVERIFY(!each.headers.contains(u"cookie"_s));
    }
    QCOMPARE(requests[1].path, u"/calendar/v3/calendars/primary"_s);
    QCOMPARE(requests[1].rawQuery, QString());
    QCOMPARE(requests[2].path, u"/calendar/v3/users/me/calendarList"_s);
    QCOMPARE(requests[2].rawQuery, u"minAccessRole=reader"_s);
    // The primary calendar comes first; one that is not chosen is not read.
    QCOMPARE(requests[3].path, u"/calendar/v3/calendars/robin@example.com/events"_s);
    QCOMPARE(requests[4].path, u"/calendar/v3/calendars/en.german%23holiday@group.v.calendar.google.com/events"_s);
    for (const LoggedRequest &each : requests.mid(3)) {
        const QString from = value(each.query, u"timeMin"_s);
        const QString to = value(each.query, u"timeMax"_s);
        QCOMPARE(each.query, (Items{{u"timeMin"_s, from},
                                    {u"timeMax"_s, to},
                                    {u"singleEvents"_s, u"true"_s},
                                    {u"orderBy"_s, u"startTime"_s},
                                    {u"maxResults"_s, u"150"_s}}));
        QVERIFY(QRegularExpression(u"^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ$"_s).match(from).hasMatch());
        const QDateTime start = QDateTime::fromString(from, Qt::ISODate).addSecs(3600);
        QVERIFY(start >= before.addSecs(-1) && start <= after);
        QCOMPARE(QDateTime::fromString(to, Qt::ISODate), start.addSecs(24 * 3600));
    }
}

void tst_EndToEnd::keepsTheAccountPrivate()
{
    QVERIFY(startSandbox(seed()));
    signIn();
    QTRY_VERIFY_WITH_TIMEOUT(!desktop.accounts().isEmpty(), soon);
    const QJsonArray accounts = QJsonDocument::fromJson(desktop.accounts()).array();
    QCOMPARE(accounts.size(), 1);
    QCOMPARE(accounts[0].toObject().keys(), (QStringList{u"email"_s, u"refreshToken"_s}));
    QCOMPARE(accounts[0][u"email"_s].toString(), email);
    const QString token = accounts[0][u"refreshToken"_s].toString();
    QVERIFY(!token.isEmpty() && token != refreshToken);

    const QFile::Permissions owners = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    const QFile::Permissions folders = owners | QFile::ExeOwner | QFile::ExeUser;
    QCOMPARE(QFile::permissions(desktop.data() + u"/accounts.json"_s), owners);
    QCOMPARE(QFile::permissions(desktop.data()), folders);
    QVERIFY(!kelp->output().contains(token.toUtf8()));
}

void tst_EndToEnd::tellsThatTheUserDidNotAllow()
{
    QVERIFY(startSandbox(seed()));
    QUrl page;
    requestConsent(page);
    QVERIFY2(browser.open(page), qPrintable(browser.problem()));
    QVERIFY2(browser.click(u"cancel"_s), qPrintable(browser.problem()));
    QTRY_VERIFY2(browser.text().contains("Sign-in failed: access_denied"_L1),
                 qPrintable(browser.text() + browser.problem()));
    QTRY_VERIFY(reader->reads(u"Google sign-in failed: access_denied"_s));
    QVERIFY(kelp->panelIsActive());
    QVERIFY(desktop.accounts().isEmpty());
    QVERIFY(kelpsRequests().isEmpty());
}

void tst_EndToEnd::coversBothMonitorsAndJoins()
{
    QVERIFY(startSandbox(seed(QJsonArray{meeting(u"review"_s, u"Design review"_s, 50)})));
    desktop.writeAccount(email, refreshToken);
    QVERIFY(startKelp());
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
    QTRY_VERIFY(reader->reads(u"Design review"_s));
    for (const QPoint &each : {QPoint(2, 2), QPoint(1277, 717), QPoint(1282, 2), QPoint(2557, 717)})
        QTRY_VERIFY(desktop.display().pixel(each.x(), each.y()).lightness() < 60);

    const QList<LoggedRequest> requests = kelpsRequests();
    QCOMPARE(requests.size(), 4);
    QCOMPARE(requests[0].path, u"/token"_s);
    Items form = requests[0].form;
    std::sort(form.begin(), form.end());
    QCOMPARE(form, (Items{{u"client_id"_s, Sandbox::clientId()},
                          {u"client_secret"_s, Sandbox::clientSecret()},
                          {u"grant_type"_s, u"refresh_token"_s},
                          {u"refresh_token"_s, refreshToken}}));

    desktop.display().run(u"xdotool"_s, {u"key"_s, u"Return"_s});
    QTRY_COMPARE(desktop.opened().value(0), joinLink.toUtf8());
    QCOMPARE(desktop.opened().size(), 1);
    QTRY_VERIFY(kelp->windows().isEmpty());
    QVERIFY(kelp->isRunning());
}

void tst_EndToEnd::remembersAcrossAKillWhatWasShown()
{
    const QDateTime start = QDateTime::currentDateTimeUtc().addSecs(40);
    const QJsonObject first = meeting(u"first"_s, u"Shown before"_s, start);
    QVERIFY(startSandbox(seed(QJsonArray{first})));
    desktop.writeAccount(email, refreshToken);
    QVERIFY(startKelp());
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
    QTRY_VERIFY(reader->reads(u"Shown before"_s));
    QTRY_COMPARE(desktop.preferences()[u"shownMeetings"_s].toObject().size(), 1);
    const QByteArray accounts = desktop.accounts();
    kelp->killHard();

    // Were it forgotten, the first of the two would be shown, or stand on the other's card as the one that is left.
    const QJsonObject second = meeting(u"second"_s, u"Not yet shown"_s, start.addSecs(5));
    QVERIFY(sandbox->replaceEvents(email, email, {first, second}));
    QVERIFY(sandbox->clearRequests());
    QVERIFY(startKelp());
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
    QTRY_VERIFY(reader->reads(u"Not yet shown"_s));
    QVERIFY2(reader->texts().filter(u"Shown before"_s).isEmpty(), qPrintable(reader->texts().join(u'\n')));
    QCOMPARE(desktop.accounts(), accounts);
    QCOMPARE(kelpsRequests().size(), 4);
    QTRY_COMPARE(desktop.preferences()[u"shownMeetings"_s].toObject().size(), 2);
}

void tst_EndToEnd::bringsASnoozedMeetingBackAfterAKill()
{
    const QDateTime start = QDateTime::currentDateTimeUtc().addSecs(30);
    QVERIFY(startSandbox(seed(QJsonArray{meeting(u"review"_s, u"Design review"_s, start)})));
    desktop.writeAccount(email, refreshToken);
    QVERIFY(startKelp());
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
    const QDateTime snoozedAt = QDateTime::currentDateTimeUtc();
    QVERIFY(person->click(u"Snooze 1 min"_s));
    QTRY_VERIFY(kelp->windows().isEmpty());
    QJsonObject preferences = desktop.preferences();
    QJsonObject snoozed = preferences[u"snoozedMeetings"_s].toObject();
    QCOMPARE(snoozed.size(), 1);
    QVERIFY(preferences[u"shownMeetings"_s].toObject().isEmpty());
    const QDateTime ends = QDateTime::fromString(snoozed.begin().value()[u"date"_s].toString(), Qt::ISODateWithMs);
    QVERIFY(qAbs(snoozedAt.secsTo(ends) - 60) < 10);
    kelp->killHard();

    // The same as waiting for the minute to pass.
    const QDateTime sooner = QDateTime::currentDateTimeUtc().addSecs(4);
    snoozed[snoozed.begin().key()] = date(sooner);
    preferences[u"snoozedMeetings"_s] = snoozed;
    desktop.writePreferences(preferences);
    QVERIFY(startKelp());
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
    QVERIFY(QDateTime::currentDateTimeUtc() >= sooner);
    QTRY_VERIFY(reader->reads(u"Design review"_s));
    QTRY_VERIFY(desktop.preferences()[u"snoozedMeetings"_s].toObject().isEmpty());
}

void tst_EndToEnd::removesAnAccountThatGoogleSignedOut()
{
    QVERIFY(startSandbox(seed()));
    desktop.writeAccount(email, refreshToken);
    QVERIFY(sandbox->revoke(email));
    QVERIFY(startKelp());
    QTRY_VERIFY_WITH_TIMEOUT(desktop.accounts().isEmpty(), soon);
    QVERIFY(!QFileInfo::exists(desktop.data() + u"/accounts.json"_s));
    // Starting it once more opens the panel.
    QVERIFY(openPanel());
    QTRY_VERIFY(reader->reads(u"robin@example.com: robin@example.com was signed out by Google. Add it again."_s));
    QVERIFY(reader->button(u"Sign in with Google"_s));
}

QTEST_GUILESS_MAIN(tst_EndToEnd)

#include "tst_EndToEnd.moc"
