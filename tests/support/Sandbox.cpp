#include "Sandbox.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>

#include <sys/prctl.h>

#include <csignal>

namespace kelp::test {

using namespace Qt::StringLiterals;

namespace {

constexpr int timeLimit = 5000; // ms

QString program()
{
    const QString folder = qEnvironmentVariable("KELP_BINARY_DIR", QCoreApplication::applicationDirPath() + u"/.."_s);
    return folder + u"/kelp-sandbox"_s;
}

QList<LoggedRequest::Item> items(const QJsonValue &json)
{
    QList<LoggedRequest::Item> list;
    for (const QJsonValue &item : json.toArray())
        list.emplaceBack(item[u"name"_s].toString(), item[u"value"_s].toString());
    return list;
}

/// The value of the page's hidden field, which holds HTML entities.
QString hiddenRequest(const QByteArray &page)
{
    const QByteArray before = "name=\"request\" value=\"";
    const qsizetype start = page.indexOf(before);
    if (start < 0)
        return {};
    const qsizetype from = start + before.size();
    QString value = QString::fromUtf8(page.mid(from, page.indexOf('"', from) - from));
    return value.replace(u"&lt;"_s, u"<"_s)
        .replace(u"&gt;"_s, u">"_s)
        .replace(u"&quot;"_s, u"\""_s)
        .replace(u"&amp;"_s, u"&"_s);
}

} // namespace

Sandbox::~Sandbox()
{
    if (!stop())
        m_process.kill();
    m_process.waitForFinished(timeLimit);
}

bool Sandbox::start(const std::optional<QJsonObject> &seed, const QStringList &arguments)
{
    QStringList all = arguments;
    if (seed) {
        QFile file(m_folder.filePath(u"seed.json"_s));
        if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(*seed).toJson()) < 0) {
            m_error = file.errorString();
            return false;
        }
        all += {u"--seed"_s, file.fileName()};
    }
    // A test that crashes takes its sandbox along.
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.start(program(), all, QIODevice::ReadOnly);
    while (!m_process.canReadLine() && m_process.waitForReadyRead(timeLimit)) {
    }
    m_baseUrl = QUrl(QString::fromUtf8(m_process.readLine().trimmed()));
    if (m_baseUrl.port() > 0)
        return true;
    m_process.waitForFinished(timeLimit);
    m_error = QString::fromUtf8(m_process.readAllStandardError()) + m_process.errorString();
    return false;
}

bool Sandbox::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return true;
    m_process.terminate();
    return m_process.waitForFinished(timeLimit) && m_process.exitStatus() == QProcess::NormalExit &&
           m_process.exitCode() == 0;
}

QUrl Sandbox::url(const QString &pathAndQuery) const
{
    return QUrl(m_baseUrl.toString() + pathAndQuery);
}

QUrl Sandbox::authorizationUrl() const
{
    return url(u"/o/oauth2/v2/auth"_s);
}

QUrl Sandbox::tokenUrl() const
{
    return url(u"/token"_s);
}

QUrl Sandbox::apiUrl() const
{
    return url(u"/calendar/v3"_s);
}

QHash<QString, QString> Sandbox::environment() const
{
    return {{u"KELP_GOOGLE_AUTHORIZATION"_s, authorizationUrl().toString()},
            {u"KELP_GOOGLE_TOKEN"_s, tokenUrl().toString()},
            {u"KELP_GOOGLE_API"_s, apiUrl().toString()}};
}

QString Sandbox::clientId()
{
    return u"kelp-sandbox.apps.googleusercontent.com"_s;
}

QString Sandbox::clientSecret()
{
    return u"kelp-sandbox-secret"_s;
}

bool Sandbox::setFault(const QString &at, const QString &kind, std::optional<int> times)
{
    QJsonObject fault{{u"at"_s, at}, {u"kind"_s, kind}};
    if (times)
        fault[u"times"_s] = *times;
    return setFault(fault);
}

bool Sandbox::setFault(const QJsonObject &fault)
{
    return control("POST", u"faults"_s, fault);
}

bool Sandbox::clearFaults()
{
    return control("DELETE", u"faults"_s);
}

bool Sandbox::revoke(const QString &email)
{
    return control("POST", u"revoke"_s, {{u"email"_s, email}});
}

bool Sandbox::expireAccessTokens()
{
    return control("POST", u"expire"_s);
}

bool Sandbox::replaceEvents(const QString &account, const QString &calendar, const QJsonArray &events)
{
    return control("POST", u"events"_s, {{u"account"_s, account}, {u"calendar"_s, calendar}, {u"events"_s, events}});
}

QList<LoggedRequest> Sandbox::requests() const
{
    QList<LoggedRequest> list;
    const HttpExchange answer = HttpExchange::send("GET", url(u"/sandbox/requests"_s));
    for (const QJsonValue &entry : QJsonDocument::fromJson(answer.body).array()) {
        LoggedRequest request{entry[u"method"_s].toString(),
                              entry[u"path"_s].toString(),
                              entry[u"rawQuery"_s].toString(),
                              items(entry[u"query"_s]),
                              {},
                              items(entry[u"form"_s]),
                              entry[u"status"_s].toInt()};
        const QJsonObject headers = entry[u"headers"_s].toObject();
        for (auto header = headers.begin(); header != headers.end(); ++header)
            request.headers.insert(header.key(), header.value().toString());
        list.append(request);
    }
    return list;
}

bool Sandbox::clearRequests()
{
    return control("DELETE", u"requests"_s);
}

QUrl Sandbox::decide(const QUrl &consentPage, const QString &decision, const QString &account) const
{
    const HttpExchange page = HttpExchange::send("GET", consentPage);
    if (page.status != 200)
        return {};
    const QByteArray form =
        formBody({{u"request"_s, hiddenRequest(page.body)}, {u"account"_s, account}, {u"decision"_s, decision}});
    const HttpExchange answer = HttpExchange::send("POST", url(u"/o/oauth2/v2/consent"_s),
                                                   {{"Content-Type", "application/x-www-form-urlencoded"}}, form);
    return answer.status == 302 ? QUrl::fromEncoded(answer.header("location"), QUrl::StrictMode) : QUrl();
}

bool Sandbox::control(const QByteArray &method, const QString &name, const QJsonObject &body) const
{
    const HttpExchange answer =
        HttpExchange::send(method, url(u"/sandbox/"_s + name), {{"Content-Type", "application/json"}},
                           method == "POST" ? QJsonDocument(body).toJson(QJsonDocument::Compact) : QByteArray());
    return answer.status == 200;
}

QByteArray formBody(const QList<LoggedRequest::Item> &items)
{
    QByteArrayList pairs;
    for (const auto &[name, value] : items)
        pairs.append(QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value));
    return pairs.join('&');
}

} // namespace kelp::test
