#include "auth/GoogleAuth.h"

#include "base/Uri.h"
#include "preferences/Preferences.h"
#include "support/FakeClock.h"
#include "support/FakeHttpClient.h"
#include "support/FakeUrlOpener.h"

#include <QCryptographicHash>
#include <QFile>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray tokens = R"({"access_token": "at", "refresh_token": "rt", "expires_in": 1000})";

QStringList namesOf(const Uri &uri)
{
    QStringList names;
    for (const Uri::QueryItem &item : uri.queryItems())
        names.append(item.name);
    return names;
}

} // namespace

class tst_GoogleAuth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void needsAClientToSignIn_data();
    void needsAClientToSignIn();
    void needsABrowserToSignIn();
    void prefersTheBuiltInClient();
    void opensTheConsentPageWithNineItemsInOrder();
    void exchangesTheCodeAndStoresTheAccount();
    void namesAnAccountWhoseAddressIsUnknown_data();
    void namesAnAccountWhoseAddressIsUnknown();
    void failsWithoutARefreshToken();
    void failsWhenTheLookupOfTheAddressFails();
    void reportsTheUsersRefusal();
    void reportsWhatTheTokenEndpointSays_data();
    void reportsWhatTheTokenEndpointSays();
    void cancelsAnEarlierAttempt();
    void keepsTheBusyFlagWhenACancelledAttemptEnds();
    void movesAReaddedAccountToTheEnd();

    void returnsACachedTokenThatIsGoodForMoreThanAMinute_data();
    void returnsACachedTokenThatIsGoodForMoreThanAMinute();
    void refreshesOnDemand();
    void takesDefaultsForAnIncompleteRefresh();
    void removesARevokedAccount();
    void keepsAnAccountThatWasAddedAgainMeanwhile();
    void keepsTheAccountAfterOtherFailures();
    void tellsTransientFailures_data();
    void tellsTransientFailures();

    void renamesTheAccountAndItsToken();
    void signsOut();
    void keepsSecretsOutOfTheLog();

private:
    void make(GoogleAuth::Client builtIn = {});
    void signIn();
    /// Answers the consent page as the browser would.
    void redirect(const QByteArray &query);
    void signInWhole(const QByteArray &email, const QByteArray &tokenAnswer = tokens);
    [[nodiscard]] Uri consentUri() const { return *Uri::parse(opener->opened.last()); }
    [[nodiscard]] Uri form(qsizetype request) const
    {
        return *Uri::parse(u"?"_s + QString::fromLatin1(http->sent()[request].body));
    }
    void token(bool force = false)
    {
        auth->validAccessToken(auth->accounts().first(), force, this,
                               [this](const Result<QString, AuthError> &result) { accessToken = result; });
    }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<FakeClock> clock;
    std::unique_ptr<FakeHttpClient> http;
    std::unique_ptr<FakeUrlOpener> opener;
    std::unique_ptr<GoogleAuth> auth;
    QList<Result<Account, AuthError>> outcomes;
    std::optional<Result<QString, AuthError>> accessToken;
};

void tst_GoogleAuth::init()
{
    folder = std::make_unique<QTemporaryDir>();
    preferences =
        std::make_unique<Preferences>(QJsonObject{{u"clientID"_s, u" id/1 "_s}, {u"clientSecret"_s, u"secret\n"_s}});
    clock = std::make_unique<FakeClock>();
    http = std::make_unique<FakeHttpClient>();
    opener = std::make_unique<FakeUrlOpener>();
    opener->handledSchemes = {u"https"_s};
    outcomes.clear();
    accessToken.reset();
    make();
}

void tst_GoogleAuth::cleanup()
{
    auth.reset();
}

void tst_GoogleAuth::make(GoogleAuth::Client builtIn)
{
    auth = std::make_unique<GoogleAuth>(GoogleAuth::Services{*preferences, *http, *clock, *opener}, GoogleEndpoints{},
                                        std::move(builtIn), folder->path() + u"/Kelp"_s);
}

void tst_GoogleAuth::signIn()
{
    auth->signIn(this, [this](const Result<Account, AuthError> &outcome) { outcomes.append(outcome); });
}

void tst_GoogleAuth::redirect(const QByteArray &query)
{
    const QUrl uri(*consentUri().queryValue(u"redirect_uri"));
    QTcpSocket browser;
    browser.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(uri.port()));
    QVERIFY(browser.waitForConnected());
    browser.write("GET /?" + query + "&state=" + consentUri().queryValue(u"state")->toLatin1() + " HTTP/1.1\r\n\r\n");
    QTRY_COMPARE(browser.state(), QAbstractSocket::UnconnectedState);
}

void tst_GoogleAuth::signInWhole(const QByteArray &email, const QByteArray &tokenAnswer)
{
    signIn();
    redirect("code=c");
    QTRY_COMPARE(http->open(), 1);
    http->answer(200, tokenAnswer);
    http->answer(200, R"({"id": ")" + email + R"("})");
}

void tst_GoogleAuth::needsAClientToSignIn_data()
{
    QTest::addColumn<QJsonObject>("stored");
    QTest::newRow("nothing") << QJsonObject{};
    QTest::newRow("no secret") << QJsonObject{{u"clientID"_s, u"id"_s}};
    QTest::newRow("no identifier") << QJsonObject{{u"clientSecret"_s, u"secret"_s}};
    QTest::newRow("white space") << QJsonObject{{u"clientID"_s, u" \n"_s}, {u"clientSecret"_s, u"secret"_s}};
}

void tst_GoogleAuth::needsAClientToSignIn()
{
    QFETCH(QJsonObject, stored);
    preferences = std::make_unique<Preferences>(stored);
    make();
    QSignalSpy busy(auth.get(), &GoogleAuth::isSigningInChanged);
    signIn();
    QCOMPARE(outcomes.size(), 1);
    QCOMPARE(outcomes.first().error().description(), u"Add your Google OAuth client ID and secret in Settings."_s);
    QVERIFY(busy.isEmpty());
    QVERIFY(opener->opened.isEmpty());
}

void tst_GoogleAuth::needsABrowserToSignIn()
{
    opener->handledSchemes.clear();
    signIn();
    QCOMPARE(outcomes.size(), 1);
    QCOMPARE(outcomes.first().error().description(), u"No web browser is set up to open Google's sign-in page."_s);
    QVERIFY(!auth->isSigningIn());
    QVERIFY(opener->opened.isEmpty());
}

void tst_GoogleAuth::prefersTheBuiltInClient()
{
    make({u"built-in"_s, {}});
    QVERIFY(!auth->hasBuiltInClient());
    signIn();
    QCOMPARE(consentUri().queryValue(u"client_id"), u"built-in"_s);
    redirect("code=c");
    QTRY_COMPARE(http->open(), 1);
    QCOMPARE(form(0).queryValue(u"client_secret"), u"secret"_s);
}

void tst_GoogleAuth::opensTheConsentPageWithNineItemsInOrder()
{
    signIn();
    QVERIFY(auth->isSigningIn());
    const Uri uri = consentUri();
    QCOMPARE(uri.scheme, u"https"_s);
    QCOMPARE(uri.host, u"accounts.google.com"_s);
    QCOMPARE(uri.path, u"/o/oauth2/v2/auth"_s);
    QCOMPARE(namesOf(uri),
             QStringList({u"client_id"_s, u"redirect_uri"_s, u"response_type"_s, u"scope"_s, u"code_challenge"_s,
                          u"code_challenge_method"_s, u"state"_s, u"access_type"_s, u"prompt"_s}));
    QCOMPARE(uri.queryValue(u"client_id"), u"id/1"_s);
    QVERIFY(uri.queryValue(u"redirect_uri")->startsWith(u"http://127.0.0.1:"));
    QCOMPARE(uri.queryValue(u"response_type"), u"code"_s);
    QCOMPARE(uri.queryValue(u"scope"), u"https://www.googleapis.com/auth/calendar.readonly"_s);
    QCOMPARE(uri.queryValue(u"code_challenge")->size(), 43);
    QCOMPARE(uri.queryValue(u"code_challenge_method"), u"S256"_s);
    QCOMPARE(uri.queryValue(u"state")->size(), 22);
    QCOMPARE(uri.queryValue(u"access_type"), u"offline"_s);
    QCOMPARE(uri.queryValue(u"prompt"), u"consent select_account"_s);
}

void tst_GoogleAuth::exchangesTheCodeAndStoresTheAccount()
{
    signIn();
    const QString redirectUri = *consentUri().queryValue(u"redirect_uri");
    redirect("code=4%2F0A");
    QTRY_COMPARE(http->open(), 1);
    const HttpRequest exchange = http->sent().first();
    QCOMPARE(exchange.method, "POST");
    QCOMPARE(exchange.url, QUrl(u"https://oauth2.googleapis.com/token"_s));
    QCOMPARE(exchange.headers.first(),
             std::pair(QByteArray("Content-Type"), QByteArray("application/x-www-form-urlencoded")));
    QVERIFY(exchange.body.contains("code=4%2F0A&"));
    QCOMPARE(form(0).queryItems().size(), 6);
    QCOMPARE(form(0).queryValue(u"client_id"), u"id/1"_s);
    QCOMPARE(form(0).queryValue(u"client_secret"), u"secret"_s);
    QCOMPARE(form(0).queryValue(u"redirect_uri"), redirectUri);
    QCOMPARE(form(0).queryValue(u"grant_type"), u"authorization_code"_s);
    const QByteArray verifier = form(0).queryValue(u"code_verifier")->toLatin1();
    QCOMPARE(verifier.size(), 43);
    QCOMPARE(QCryptographicHash::hash(verifier, QCryptographicHash::Sha256)
                 .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals),
             consentUri().queryValue(u"code_challenge")->toLatin1());
    http->answer(200, tokens);

    QCOMPARE(http->sent().last().url, QUrl(u"https://www.googleapis.com/calendar/v3/calendars/primary"_s));
    QCOMPARE(http->sent().last().headers.first(), std::pair(QByteArray("Authorization"), QByteArray("Bearer at")));
    QVERIFY(auth->isSigningIn());
    http->answer(200, R"({"id": "ada@x"})");
    QCOMPARE(outcomes.size(), 1);
    QVERIFY(*outcomes.first() == (Account{u"ada@x"_s, u"rt"_s}));
    QVERIFY(!auth->isSigningIn());
    QCOMPARE(auth->email(), u"ada@x"_s);

    make();
    QVERIFY(auth->accounts() == (QList<Account>{{u"ada@x"_s, u"rt"_s}}));
}

void tst_GoogleAuth::namesAnAccountWhoseAddressIsUnknown_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("email");
    QTest::newRow("html") << 200 << QByteArray("<html>") << u"Google account"_s;
    QTest::newRow("no id") << 200 << QByteArray("{}") << u"Google account"_s;
    QTest::newRow("id is a number") << 200 << QByteArray(R"({"id": 7})") << u"Google account"_s;
    QTest::newRow("the status does not matter") << 403 << QByteArray(R"({"id": "ada@x"})") << u"ada@x"_s;
    QTest::newRow("refused") << 403 << QByteArray(R"({"error": {}})") << u"Google account"_s;
}

void tst_GoogleAuth::namesAnAccountWhoseAddressIsUnknown()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, email);
    signIn();
    redirect("code=c");
    QTRY_COMPARE(http->open(), 1);
    http->answer(200, tokens);
    http->answer(status, body);
    QCOMPARE(outcomes.first()->email, email);
}

void tst_GoogleAuth::failsWithoutARefreshToken()
{
    for (const QByteArray answer : {R"({"access_token": "at"})", R"({"access_token": "at", "refresh_token": 7})"}) {
        signIn();
        redirect("code=c");
        QTRY_COMPARE(http->open(), 1);
        http->answer(200, answer);
        QCOMPARE(outcomes.takeFirst().error().description(), u"Google did not return a refresh token."_s);
        QVERIFY(!auth->isSigningIn());
        QVERIFY(auth->accounts().isEmpty());
    }
}

void tst_GoogleAuth::failsWhenTheLookupOfTheAddressFails()
{
    signIn();
    redirect("code=c");
    QTRY_COMPARE(http->open(), 1);
    http->answer(200, tokens);
    http->fail(HttpError::Kind::transport, u"Connection refused"_s);
    QCOMPARE(outcomes.first().error().description(), u"Connection refused"_s);
    QVERIFY(!auth->isSigningIn());
    QVERIFY(auth->accounts().isEmpty());
}

void tst_GoogleAuth::reportsTheUsersRefusal()
{
    signIn();
    redirect("error=access_denied");
    QTRY_COMPARE(outcomes.size(), 1);
    QCOMPARE(outcomes.first().error().description(), u"Google sign-in failed: access_denied"_s);
    QVERIFY(!auth->isSigningIn());
    QVERIFY(http->sent().isEmpty());
}

void tst_GoogleAuth::reportsWhatTheTokenEndpointSays_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    QTest::newRow("both") << 400 << QByteArray(R"({"error": "invalid_grant", "error_description": "Bad Request"})")
                          << u"Google sign-in failed: invalid_grant Bad Request"_s;
    QTest::newRow("no description") << 400 << QByteArray(R"({"error": "invalid_client"})")
                                    << u"Google sign-in failed: invalid_client "_s;
    QTest::newRow("empty object") << 400 << QByteArray("{}") << u"Google sign-in failed: unknown_error "_s;
    QTest::newRow("no object") << 200 << QByteArray("[1]") << u"Google sign-in failed: unknown_error "_s;
    QTest::newRow("a bare string") << 200 << QByteArray("\"x\"") << u"Google sign-in failed: unknown_error "_s;
    QTest::newRow("200 without a token") << 200 << QByteArray("{}") << u"Google sign-in failed: unknown_error "_s;
    QTest::newRow("token with another status") << 201 << tokens << u"Google sign-in failed: unknown_error "_s;
}

void tst_GoogleAuth::reportsWhatTheTokenEndpointSays()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    signIn();
    redirect("code=c");
    QTRY_COMPARE(http->open(), 1);
    http->answer(status, body);
    QCOMPARE(outcomes.first().error().description(), text);
    QCOMPARE(outcomes.first().error().kind, AuthError::Kind::server);
}

void tst_GoogleAuth::cancelsAnEarlierAttempt()
{
    signIn();
    signIn();
    QTRY_COMPARE(outcomes.size(), 1);
    QCOMPARE(outcomes.first().error().kind, AuthError::Kind::cancelled);
    redirect("error=x");
    QTRY_COMPARE(outcomes.size(), 2);
}

void tst_GoogleAuth::keepsTheBusyFlagWhenACancelledAttemptEnds()
{
    signIn();
    signIn();
    QTRY_COMPARE(outcomes.size(), 1);
    QVERIFY(auth->isSigningIn());
    redirect("error=x");
    QTRY_VERIFY(!auth->isSigningIn());
}

void tst_GoogleAuth::movesAReaddedAccountToTheEnd()
{
    signInWhole("a@x");
    signInWhole("b@x");
    signInWhole("a@x", R"({"access_token": "at2", "refresh_token": "rt2"})");
    QVERIFY(auth->accounts() == (QList<Account>{{u"b@x"_s, u"rt"_s}, {u"a@x"_s, u"rt2"_s}}));
}

void tst_GoogleAuth::returnsACachedTokenThatIsGoodForMoreThanAMinute_data()
{
    QTest::addColumn<double>("left");
    QTest::addColumn<bool>("cached");
    QTest::newRow("59 s") << 59.0 << false;
    QTest::newRow("60 s") << 60.0 << false;
    QTest::newRow("61 s") << 61.0 << true;
}

void tst_GoogleAuth::returnsACachedTokenThatIsGoodForMoreThanAMinute()
{
    QFETCH(double, left);
    QFETCH(bool, cached);
    signInWhole("a@x");
    clock->advance(1000 - left);
    token();
    QCOMPARE(accessToken.has_value(), cached);
    QCOMPARE(http->open(), cached ? 0 : 1);
    if (!cached)
        http->answer(200, R"({"access_token": "new", "expires_in": 100})");
    QCOMPARE(**accessToken, cached ? u"at"_s : u"new"_s);
}

void tst_GoogleAuth::refreshesOnDemand()
{
    signInWhole("a@x");
    token(true);
    QCOMPARE(http->sent().last().url, QUrl(u"https://oauth2.googleapis.com/token"_s));
    const Uri sent = form(http->sent().size() - 1);
    QCOMPARE(sent.queryItems().size(), 4);
    QCOMPARE(sent.queryValue(u"refresh_token"), u"rt"_s);
    QCOMPARE(sent.queryValue(u"client_id"), u"id/1"_s);
    QCOMPARE(sent.queryValue(u"client_secret"), u"secret"_s);
    QCOMPARE(sent.queryValue(u"grant_type"), u"refresh_token"_s);
    http->answer(200, R"({"access_token": "new", "refresh_token": "ignored", "expires_in": 100})");
    QCOMPARE(**accessToken, u"new"_s);
    QCOMPARE(auth->accounts().first().refreshToken, u"rt"_s);
    token();
    QCOMPARE(http->open(), 0);
}

void tst_GoogleAuth::takesDefaultsForAnIncompleteRefresh()
{
    signInWhole("a@x");
    token(true);
    http->answer(200, R"({"access_token": 7, "expires_in": "10"})");
    QCOMPARE(**accessToken, u""_s);
    clock->advance(3539);
    token();
    QCOMPARE(http->open(), 0);
    clock->advance(1);
    token();
    QCOMPARE(http->open(), 1);
}

void tst_GoogleAuth::removesARevokedAccount()
{
    signInWhole("a@x");
    token(true);
    http->answer(400, R"({"error": "invalid_grant"})");
    QCOMPARE(accessToken->error().description(), u"a@x was signed out by Google. Add it again."_s);
    QVERIFY(auth->accounts().isEmpty());
    QVERIFY(!QFile::exists(folder->path() + u"/Kelp/accounts.json"_s));
}

void tst_GoogleAuth::keepsAnAccountThatWasAddedAgainMeanwhile()
{
    signInWhole("a@x");
    token(true);
    signIn();
    redirect("code=c");
    QTRY_COMPARE(http->open(), 2);
    http->answer(400, R"({"error": "invalid_grant"})"); // to the first: its refresh token is the old one
    QVERIFY(auth->accounts().isEmpty());
    http->answer(200, R"({"access_token": "at2", "refresh_token": "rt2"})");
    http->answer(200, R"({"id": "a@x"})");
    QCOMPARE(auth->accounts().size(), 1);

    const Account old{u"a@x"_s, u"rt"_s};
    auth->validAccessToken(old, true, this, [](const Result<QString, AuthError> &) {});
    http->answer(400, R"({"error": "invalid_grant"})");
    QCOMPARE(auth->accounts().size(), 1);
}

void tst_GoogleAuth::keepsTheAccountAfterOtherFailures()
{
    signInWhole("a@x");
    token(true);
    http->answer(400, R"({"error": "invalid_client"})");
    QCOMPARE(accessToken->error().description(), u"Google sign-in failed: invalid_client "_s);
    token(true);
    http->fail(HttpError::Kind::timedOut, u"too long"_s);
    QCOMPARE(accessToken->error().description(), u"too long"_s);
    token(true);
    http->answer(200, "<html>");
    QVERIFY(!*accessToken);
    QCOMPARE(auth->accounts().size(), 1);
    preferences->set(preference::clientID, u""_s);
    token(true);
    QCOMPARE(accessToken->error().kind, AuthError::Kind::missingClient);
    QCOMPARE(auth->accounts().size(), 1);
}

void tst_GoogleAuth::tellsTransientFailures_data()
{
    QTest::addColumn<int>("status"); // 0: transport
    QTest::addColumn<bool>("transient");
    QTest::newRow("transport") << 0 << true;
    QTest::newRow("503") << 503 << true;
    QTest::newRow("400") << 400 << false;
    QTest::newRow("200 with html") << 200 << false;
}

void tst_GoogleAuth::tellsTransientFailures()
{
    QFETCH(int, status);
    QFETCH(bool, transient);
    signInWhole("a@x");
    token(true);
    if (status == 0)
        http->fail(HttpError::Kind::transport, u"x"_s);
    else
        http->answer(status, status == 400 ? "{}" : "<html>");
    QCOMPARE(accessToken->error().transient, transient);
}

void tst_GoogleAuth::renamesTheAccountAndItsToken()
{
    signInWhole("Google account");
    QSignalSpy changes(auth.get(), &GoogleAuth::accountsChanged);
    auth->rename(auth->accounts().first(), u"Google account"_s);
    QVERIFY(changes.isEmpty());
    auth->rename(auth->accounts().first(), u"ada@x"_s);
    QCOMPARE(changes.size(), 1);
    token();
    QCOMPARE(**accessToken, u"at"_s);
    make();
    QCOMPARE(auth->email(), u"ada@x"_s);
}

void tst_GoogleAuth::signsOut()
{
    signInWhole("a@x");
    const Account account = auth->accounts().first();
    auth->signOut(account);
    QVERIFY(auth->accounts().isEmpty());
    QVERIFY(!auth->email());
    auth->validAccessToken(account, false, this, [](const Result<QString, AuthError> &) {});
    QCOMPARE(http->open(), 1); // no token is left
}

void tst_GoogleAuth::keepsSecretsOutOfTheLog()
{
    static QString log;
    // The environment of tests switches off what rules of a program could switch on.
    const auto filter = QLoggingCategory::installFilter([](QLoggingCategory *category) {
        for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg})
            category->setEnabled(type, true);
    });
    const auto previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &message) { log += message; });
    preferences = std::make_unique<Preferences>(
        QJsonObject{{u"clientID"_s, u"id/1"_s}, {u"clientSecret"_s, u"secret-of-the-client"_s}});
    make();
    QFile inTheWay(folder->path() + u"/Kelp"_s); // nothing can be stored, of which the log tells
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    signIn();
    redirect("code=code-of-the-redirect");
    QTRY_COMPARE(http->open(), 1);
    http->answer(200,
                 R"({"access_token": "token-for-access", "refresh_token": "token-for-refresh", "expires_in": 1000})");
    http->answer(200, R"({"id": "robin@example.com"})");
    QCOMPARE(outcomes.size(), 1);
    token(true);
    http->answer(400, R"({"error": "invalid_grant", "error_description": "token-for-refresh"})");
    QVERIFY(accessToken.has_value());
    qInstallMessageHandler(previous);
    QLoggingCategory::installFilter(filter);
    QVERIFY(!log.isEmpty());
    for (const QString &secret :
         {u"secret-of-the-client"_s, u"code-of-the-redirect"_s, u"token-for-access"_s, u"token-for-refresh"_s,
          *form(0).queryValue(u"code_verifier"), *consentUri().queryValue(u"state"), u"robin"_s})
        QVERIFY2(!log.contains(secret), qPrintable(log));
}

QTEST_GUILESS_MAIN(tst_GoogleAuth)
#include "tst_GoogleAuth.moc"
