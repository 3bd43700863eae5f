#include "SandboxFixture.h"

#include <QTest>
#include <QUrlQuery>

#include <memory>

using namespace kelp::test;
using namespace Qt::StringLiterals;

using Items = SandboxFixture::Items;

class tst_SandboxSignIn : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void showsTheConsentPageWithAllAccounts();
    void escapesWhatTheRequestBringsAlong();
    void refusesAuthorizationRequests_data();
    void refusesAuthorizationRequests();
    void redirectsWithCodeAndStateWhenAllowed();
    void redirectsWithAnErrorWhenCancelled();
    void refusesDecisionsForNobody();
    void exchangesACodeOnce();
    void issuesNoRefreshTokenUnlessOffline();
    void refusesExchanges_data();
    void refusesExchanges();
    void refreshesWithoutANewRefreshToken();
    void refusesRefreshes_data();
    void refusesRefreshes();
    void refusesAnythingButFormsPosted();
    void revocationEndsTheAccount();
    void aNewConsentAfterRevocationWorks();

private:
    std::unique_ptr<SandboxFixture> m_fixture;
};

void tst_SandboxSignIn::init()
{
    m_fixture = std::make_unique<SandboxFixture>();
    QVERIFY2(m_fixture->start(), qPrintable(m_fixture->sandbox.error()));
}

void tst_SandboxSignIn::showsTheConsentPageWithAllAccounts()
{
    const HttpExchange page = HttpExchange::send("GET", m_fixture->consentPage(SandboxFixture::consentItems()));
    QCOMPARE(page.status, 200);
    QVERIFY(page.isWhole);
    QVERIFY(page.header("content-type").startsWith("text/html"));
    for (const char *part : {"value=\"a@example.com\"", "value=\"b@example.com\"", "id=\"allow\"", "id=\"cancel\""})
        QVERIFY2(page.body.contains(part), part);
    QVERIFY(!page.body.contains("<script"));
}

void tst_SandboxSignIn::escapesWhatTheRequestBringsAlong()
{
    // Sent raw, as no browser would, so that quotes and angles reach the page.
    const QUrl url = m_fixture->consentPage(SandboxFixture::consentItems());
    QByteArray request = httpRequest("GET", url);
    request.replace(" HTTP/1.1", "&x=<b>&y=%3Cb%3E\" HTTP/1.1");
    const QByteArray page = HttpExchange::sendRaw(url, request).body;
    QVERIFY(page.contains("id=\"allow\""));
    QVERIFY(page.contains("&amp;x=&lt;b&gt;&amp;y=%3Cb%3E&quot;"));
    QVERIFY(!page.contains("<b>"));

    const HttpExchange error = HttpExchange::send(
        "GET", m_fixture->consentPage(changed(SandboxFixture::consentItems(), u"scope"_s, u"<script>\"'&"_s)));
    QCOMPARE(error.status, 400);
    QVERIFY(error.body.contains("&lt;script&gt;&quot;"));
    QVERIFY(!error.body.contains("<script"));
}

void tst_SandboxSignIn::refusesAuthorizationRequests_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("error");

    const auto row = [](const char *title, const QString &name, const QString &value, const char *error) {
        QTest::newRow(title) << name << value << QByteArray(error);
    };
    const QString none;
    for (const char *name :
         {"client_id", "redirect_uri", "response_type", "scope", "state", "code_challenge", "code_challenge_method"})
        row(name, QString::fromLatin1(name), none, "invalid_request");
    row("unknown client", u"client_id"_s, u"other"_s, "invalid_client");
    row("another host", u"redirect_uri"_s, u"http://example.com:80"_s, "redirect_uri_mismatch");
    row("host that begins alike", u"redirect_uri"_s, u"http://127.0.0.1.example.com:80"_s, "redirect_uri_mismatch");
    row("host behind an at sign", u"redirect_uri"_s, u"http://127.0.0.1:80@example.com:80"_s, "redirect_uri_mismatch");
    row("no port", u"redirect_uri"_s, u"http://127.0.0.1"_s, "redirect_uri_mismatch");
    row("port too large", u"redirect_uri"_s, u"http://127.0.0.1:65536"_s, "redirect_uri_mismatch");
    row("https", u"redirect_uri"_s, u"https://127.0.0.1:80"_s, "redirect_uri_mismatch");
    row("fragment", u"redirect_uri"_s, u"http://127.0.0.1:80/#x"_s, "redirect_uri_mismatch");
    row("line break", u"redirect_uri"_s, u"http://127.0.0.1:80/\r\nX: y"_s, "redirect_uri_mismatch");
    row("token flow", u"response_type"_s, u"token"_s, "unsupported_response_type");
    row("other scope", u"scope"_s, u"https://www.googleapis.com/auth/drive"_s, "invalid_scope");
    row("odd scope too", u"scope"_s, u"https://www.googleapis.com/auth/calendar.readonly x"_s, "invalid_scope");
    row("plain challenge", u"code_challenge_method"_s, u"plain"_s, "invalid_request");
    row("challenge of 42 characters", u"code_challenge"_s, u"E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-c"_s,
        "invalid_request");
    row("padded challenge", u"code_challenge"_s, u"E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-c="_s, "invalid_request");
    row("access type", u"access_type"_s, u"sometimes"_s, "invalid_request");
    row("prompt", u"prompt"_s, u"please"_s, "invalid_request");
    row("no prompt", u"prompt"_s, u"none"_s, "interaction_required");
}

void tst_SandboxSignIn::refusesAuthorizationRequests()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QByteArray, error);
    const Items items = changed(SandboxFixture::consentItems(), name, value);
    const HttpExchange page = HttpExchange::send("GET", m_fixture->consentPage(items));
    QCOMPARE(page.status, 400);
    QVERIFY(page.header("content-type").startsWith("text/html"));
    QVERIFY2(page.body.contains("Error 400: " + error + "<"), page.body.constData());

    Items twice = SandboxFixture::consentItems();
    twice.emplaceBack(name, twice.first().second);
    QCOMPARE(HttpExchange::send("GET", m_fixture->consentPage(twice)).status, 400);
}

void tst_SandboxSignIn::redirectsWithCodeAndStateWhenAllowed()
{
    const QUrl redirect = m_fixture->sandbox.decide(m_fixture->consentPage(SandboxFixture::consentItems()), u"allow"_s,
                                                    u"b@example.com"_s);
    QCOMPARE(redirect.adjusted(QUrl::RemoveQuery).toString(), SandboxFixture::redirectUri());
    const QUrlQuery query(redirect);
    QCOMPARE(query.queryItemValue(u"state"_s, QUrl::FullyDecoded), u"st&te \"<'>");
    QCOMPARE(query.queryItemValue(u"scope"_s, QUrl::FullyDecoded),
             u"https://www.googleapis.com/auth/calendar.readonly");
    QVERIFY(query.queryItemValue(u"code"_s, QUrl::FullyDecoded).startsWith(u"4/0A"));
    QVERIFY(redirect.query(QUrl::FullyEncoded).contains(u"code=4%2F0A"));
    QVERIFY(!query.hasQueryItem(u"error"_s));
}

void tst_SandboxSignIn::redirectsWithAnErrorWhenCancelled()
{
    const QUrl redirect =
        m_fixture->sandbox.decide(m_fixture->consentPage(SandboxFixture::consentItems()), u"cancel"_s, {});
    const QUrlQuery query(redirect);
    QCOMPARE(query.queryItemValue(u"error"_s), u"access_denied");
    QCOMPARE(query.queryItemValue(u"state"_s, QUrl::FullyDecoded), u"st&te \"<'>");
    QVERIFY(!query.hasQueryItem(u"code"_s));
}

void tst_SandboxSignIn::refusesDecisionsForNobody()
{
    const QUrl page = m_fixture->consentPage(SandboxFixture::consentItems());
    QVERIFY(m_fixture->sandbox.decide(page, u"allow"_s, u"stranger@example.com"_s).isEmpty());
    QVERIFY(m_fixture->sandbox.decide(page, u"maybe"_s, u"a@example.com"_s).isEmpty());
}

void tst_SandboxSignIn::exchangesACodeOnce()
{
    const Items items = SandboxFixture::exchangeItems(m_fixture->newCode(u"b@example.com"_s));
    const HttpExchange first = m_fixture->token(items);
    QCOMPARE(first.status, 200);
    const QJsonObject tokens = jsonBody(first);
    QCOMPARE(tokens[u"expires_in"_s], 3599);
    QCOMPARE(tokens[u"token_type"_s], u"Bearer"_s);
    QCOMPARE(tokens[u"scope"_s], u"https://www.googleapis.com/auth/calendar.readonly"_s);
    QVERIFY(!tokens[u"refresh_token"_s].toString().isEmpty());
    const HttpExchange primary = m_fixture->get(u"/calendars/primary"_s, tokens[u"access_token"_s].toString().toUtf8());
    QCOMPARE(jsonBody(primary)[u"id"_s], u"b@example.com"_s);

    const HttpExchange second = m_fixture->token(items);
    QCOMPARE(second.status, 400);
    QCOMPARE(jsonBody(second)[u"error"_s], u"invalid_grant"_s);
}

void tst_SandboxSignIn::issuesNoRefreshTokenUnlessOffline()
{
    const QString code =
        m_fixture->newCode(u"a@example.com"_s, changed(SandboxFixture::consentItems(), u"access_type"_s, {}));
    const HttpExchange answer = m_fixture->token(SandboxFixture::exchangeItems(code));
    QCOMPARE(answer.status, 200);
    QVERIFY(!jsonBody(answer).contains(u"refresh_token"_s));
}

void tst_SandboxSignIn::refusesExchanges_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");

    const QString none;
    const auto row = [](const char *title, const QString &name, const QString &value, int status,
                        const QString &error) { QTest::newRow(title) << name << value << status << error; };
    row("no code", u"code"_s, none, 400, u"invalid_request"_s);
    row("unknown code", u"code"_s, u"4/0Anything"_s, 400, u"invalid_grant"_s);
    row("no verifier", u"code_verifier"_s, none, 400, u"invalid_grant"_s);
    row("wrong verifier", u"code_verifier"_s, u"dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXK"_s, 400,
        u"invalid_grant"_s);
    row("challenge as verifier", u"code_verifier"_s, u"E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"_s, 400,
        u"invalid_grant"_s);
    row("another redirect", u"redirect_uri"_s, u"http://127.0.0.1:45679"_s, 400, u"redirect_uri_mismatch"_s);
    row("no redirect", u"redirect_uri"_s, none, 400, u"invalid_request"_s);
    row("no client", u"client_id"_s, none, 400, u"invalid_request"_s);
    row("wrong client", u"client_id"_s, u"x"_s, 401, u"invalid_client"_s);
    row("no secret", u"client_secret"_s, none, 400, u"invalid_request"_s);
    row("wrong secret", u"client_secret"_s, u"x"_s, 401, u"invalid_client"_s);
    row("no grant type", u"grant_type"_s, none, 400, u"invalid_request"_s);
    row("odd grant type", u"grant_type"_s, u"password"_s, 400, u"unsupported_grant_type"_s);
}

void tst_SandboxSignIn::refusesExchanges()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(int, status);
    QFETCH(QString, error);
    const Items items = SandboxFixture::exchangeItems(m_fixture->newCode(u"a@example.com"_s));
    const HttpExchange answer = m_fixture->token(changed(items, name, value));
    QCOMPARE(answer.status, status);
    QCOMPARE(jsonBody(answer)[u"error"_s], error);
    QVERIFY(!jsonBody(answer)[u"error_description"_s].toString().isEmpty());
}

void tst_SandboxSignIn::refreshesWithoutANewRefreshToken()
{
    const HttpExchange answer = m_fixture->token(SandboxFixture::refreshItems(u"1//seeded-a"_s));
    QCOMPARE(answer.status, 200);
    const QJsonObject tokens = jsonBody(answer);
    QVERIFY(!tokens.contains(u"refresh_token"_s));
    QCOMPARE(tokens[u"expires_in"_s], 3599);
    QCOMPARE(m_fixture->get(u"/calendars/primary"_s, tokens[u"access_token"_s].toString().toUtf8()).status, 200);
}

void tst_SandboxSignIn::refusesRefreshes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("error");
    QTest::newRow("no token") << u"refresh_token"_s << QString() << u"invalid_request"_s;
    QTest::newRow("unknown token") << u"refresh_token"_s << u"1//x"_s << u"invalid_grant"_s;
    QTest::newRow("wrong client") << u"client_id"_s << u"x"_s << u"invalid_client"_s;
    QTest::newRow("wrong secret") << u"client_secret"_s << u"x"_s << u"invalid_client"_s;
}

void tst_SandboxSignIn::refusesRefreshes()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QString, error);
    const HttpExchange answer = m_fixture->token(changed(SandboxFixture::refreshItems(u"1//seeded-a"_s), name, value));
    QCOMPARE(answer.status, error == u"invalid_client" ? 401 : 400);
    QCOMPARE(jsonBody(answer)[u"error"_s], error);
}

void tst_SandboxSignIn::refusesAnythingButFormsPosted()
{
    const QUrl url = m_fixture->sandbox.tokenUrl();
    const QByteArray form = formBody(SandboxFixture::refreshItems(u"1//seeded-a"_s));
    QCOMPARE(HttpExchange::send("GET", m_fixture->sandbox.url(u"/token?"_s + QString::fromLatin1(form))).status, 404);
    QCOMPARE(HttpExchange::send("PUT", url, {{"Content-Type", "application/x-www-form-urlencoded"}}, form).status, 404);
    QCOMPARE(HttpExchange::send("POST", url, {{"Content-Type", "text/plain"}}, form).status, 400);
    QCOMPARE(HttpExchange::send("POST", url, {}, form).status, 400);
    QCOMPARE(
        HttpExchange::send("POST", url, {{"Content-Type", "application/x-www-form-urlencoded; charset=utf-8"}}, form)
            .status,
        200);
    QCOMPARE(
        HttpExchange::send("POST", url, {{"Content-Type", "application/x-www-form-urlencoded"}}, form + "%zz").status,
        400);
    QCOMPARE(HttpExchange::send("POST", url, {{"Content-Type", "application/x-www-form-urlencoded"}}, form + '&' + form)
                 .status,
             400);
    QCOMPARE(HttpExchange::send("GET", m_fixture->sandbox.url(u"/nothing"_s)).status, 404);
}

void tst_SandboxSignIn::revocationEndsTheAccount()
{
    const QByteArray token = m_fixture->accessToken();
    QCOMPARE(m_fixture->get(u"/calendars/primary"_s, token).status, 200);
    QVERIFY(!m_fixture->sandbox.revoke(u"stranger@example.com"_s));
    QVERIFY(m_fixture->sandbox.revoke(u"a@example.com"_s));
    QCOMPARE(m_fixture->get(u"/calendars/primary"_s, token).status, 401);
    const HttpExchange refresh = m_fixture->token(SandboxFixture::refreshItems(u"1//seeded-a"_s));
    QCOMPARE(refresh.status, 400);
    QCOMPARE(jsonBody(refresh)[u"error"_s], u"invalid_grant"_s);
}

void tst_SandboxSignIn::aNewConsentAfterRevocationWorks()
{
    QVERIFY(m_fixture->sandbox.revoke(u"a@example.com"_s));
    const QJsonObject tokens =
        jsonBody(m_fixture->token(SandboxFixture::exchangeItems(m_fixture->newCode(u"a@example.com"_s))));
    QCOMPARE(m_fixture->token(SandboxFixture::refreshItems(tokens[u"refresh_token"_s].toString())).status, 200);
}

QTEST_GUILESS_MAIN(tst_SandboxSignIn)
#include "tst_SandboxSignIn.moc"
