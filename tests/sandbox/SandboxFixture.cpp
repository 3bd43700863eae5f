#include "SandboxFixture.h"

#include <QJsonDocument>
#include <QUrlQuery>

namespace kelp::test {

using namespace Qt::StringLiterals;

namespace {

QJsonObject calendar(const QString &id, const QString &accessRole)
{
    return {{u"id"_s, id}, {u"accessRole"_s, accessRole}};
}

} // namespace

bool SandboxFixture::start(const QJsonObject &more)
{
    QJsonObject whole = seed();
    for (auto member = more.begin(); member != more.end(); ++member)
        whole.insert(member.key(), member.value());
    return sandbox.start(whole);
}

QJsonObject SandboxFixture::seed()
{
    QJsonObject primary = calendar(u"a@example.com"_s, u"owner"_s);
    primary[u"primary"_s] = true;
    primary[u"summary"_s] = u"Ada"_s;
    primary[u"selected"_s] = true;
    primary[u"backgroundColor"_s] = u"#112233"_s;
    const QJsonArray calendars{primary, calendar(u"en#holiday@group"_s, u"reader"_s), calendar(u"write"_s, u"writer"_s),
                               calendar(u"busy"_s, u"freeBusyReader"_s)};
    return {{u"accounts"_s, QJsonArray{QJsonObject{{u"email"_s, u"a@example.com"_s},
                                                   {u"refreshToken"_s, u"1//seeded-a"_s},
                                                   {u"calendars"_s, calendars}},
                                       QJsonObject{{u"email"_s, u"b@example.com"_s}}}}};
}

// The pair of RFC 7636, appendix B.
QString SandboxFixture::verifier()
{
    return u"dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"_s;
}

QString SandboxFixture::redirectUri()
{
    return u"http://127.0.0.1:45678"_s;
}

SandboxFixture::Items SandboxFixture::consentItems()
{
    return {{u"client_id"_s, Sandbox::clientId()},
            {u"redirect_uri"_s, redirectUri()},
            {u"response_type"_s, u"code"_s},
            {u"scope"_s, u"https://www.googleapis.com/auth/calendar.readonly"_s},
            {u"code_challenge"_s, u"E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"_s},
            {u"code_challenge_method"_s, u"S256"_s},
            {u"state"_s, u"st&te \"<'>"_s},
            {u"access_type"_s, u"offline"_s},
            {u"prompt"_s, u"consent select_account"_s}};
}

QUrl SandboxFixture::consentPage(const Items &items) const
{
    QUrl page = sandbox.authorizationUrl();
    page.setQuery(QString::fromLatin1(formBody(items)), QUrl::StrictMode);
    return page;
}

QString SandboxFixture::newCode(const QString &email, const Items &items) const
{
    const QUrl redirect = sandbox.decide(consentPage(items), u"allow"_s, email);
    return QUrlQuery(redirect).queryItemValue(u"code"_s, QUrl::FullyDecoded);
}

SandboxFixture::Items SandboxFixture::exchangeItems(const QString &code)
{
    return {{u"code"_s, code},
            {u"client_id"_s, Sandbox::clientId()},
            {u"client_secret"_s, Sandbox::clientSecret()},
            {u"redirect_uri"_s, redirectUri()},
            {u"grant_type"_s, u"authorization_code"_s},
            {u"code_verifier"_s, verifier()}};
}

SandboxFixture::Items SandboxFixture::refreshItems(const QString &refreshToken)
{
    return {{u"refresh_token"_s, refreshToken},
            {u"client_id"_s, Sandbox::clientId()},
            {u"client_secret"_s, Sandbox::clientSecret()},
            {u"grant_type"_s, u"refresh_token"_s}};
}

HttpExchange SandboxFixture::token(const Items &items) const
{
    return HttpExchange::send("POST", sandbox.tokenUrl(), {{"Content-Type", "application/x-www-form-urlencoded"}},
                              formBody(items));
}

QByteArray SandboxFixture::accessToken() const
{
    return jsonBody(token(refreshItems(u"1//seeded-a"_s)))[u"access_token"_s].toString().toUtf8();
}

HttpExchange SandboxFixture::get(const QString &pathAndQuery, const QByteArray &accessToken) const
{
    return HttpExchange::send("GET", sandbox.url(u"/calendar/v3"_s + pathAndQuery),
                              {{"Authorization", "Bearer " + accessToken}});
}

SandboxFixture::Items changed(SandboxFixture::Items items, const QString &name, const QString &value)
{
    items.removeIf([&](const LoggedRequest::Item &item) { return item.first == name; });
    if (!value.isNull())
        items.emplaceBack(name, value);
    return items;
}

QJsonObject jsonBody(const HttpExchange &exchange)
{
    return QJsonDocument::fromJson(exchange.body).object();
}

} // namespace kelp::test
