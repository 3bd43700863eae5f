#include "support/Browser.h"

#include "support/ChildProcess.h"
#include "support/HttpExchange.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

/// The name under which the protocol hands out elements.
const QString elementKey = u"element-6066-11e4-a52e-4f735466cecf"_s;

QString program()
{
    const QString chromium = QStandardPaths::findExecutable(u"chromium"_s);
    return chromium.isEmpty() ? QStandardPaths::findExecutable(u"chromium-browser"_s) : chromium;
}

QJsonObject capabilities(const QString &profile)
{
    const QJsonArray arguments{u"--headless"_s, u"--no-sandbox"_s, u"--disable-gpu"_s, u"--disable-quic"_s,
                               u"--no-first-run"_s, u"--disable-background-networking"_s, u"--disable-sync"_s,
                               u"--disable-component-update"_s, u"--disable-dev-shm-usage"_s,
                               // Ends the browser with the driver, however that ends.
                               u"--remote-debugging-pipe"_s, u"--user-data-dir="_s + profile};
    const QJsonObject options{{u"args"_s, arguments}, {u"binary"_s, program()}};
    return {{u"capabilities"_s, QJsonObject{{u"alwaysMatch"_s, QJsonObject{{u"goog:chromeOptions"_s, options}}}}}};
}

} // namespace

Browser::~Browser()
{
    if (m_driver.state() == QProcess::Running && m_session.path().startsWith("/session"_L1))
        command("DELETE", {});
    end(m_driver);
}

bool Browser::start()
{
    if (!startDriver())
        return false;
    const QString id = command("POST", u"/session"_s, capabilities(m_profile.path()))[u"sessionId"_s].toString();
    if (id.isEmpty())
        return false;
    m_session.setPath(u"/session/"_s + id);
    return true;
}

bool Browser::startDriver()
{
    endWithTest(m_driver);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TMPDIR"_s, m_profile.path());
    environment.insert(u"HOME"_s, m_profile.path());
    m_driver.setProcessEnvironment(environment);
    m_driver.setStandardErrorFile(QProcess::nullDevice());
    m_driver.start(u"chromedriver"_s, {u"--port=0"_s});
    static const QRegularExpression started(u"on port (\\d+)"_s);
    for (QByteArray line = nextLine(m_driver); !line.isEmpty(); line = nextLine(m_driver)) {
        const QRegularExpressionMatch match = started.match(QString::fromUtf8(line));
        if (match.hasMatch() && match.captured(1) != "0"_L1) {
            m_session = QUrl(u"http://127.0.0.1:"_s + match.captured(1));
            return true;
        }
    }
    m_problem = u"chromedriver does not start: "_s + m_driver.errorString();
    return false;
}

bool Browser::open(const QUrl &url)
{
    m_problem.clear();
    command("POST", u"/url"_s, {{u"url"_s, QString::fromUtf8(url.toEncoded())}});
    return m_problem.isEmpty();
}

bool Browser::click(const QString &id)
{
    return clickFirst(u"#"_s + id);
}

bool Browser::clickFirst(const QString &selector)
{
    m_problem.clear();
    const QString element = find(selector);
    if (m_problem.isEmpty())
        command("POST", u"/element/%1/click"_s.arg(element));
    return m_problem.isEmpty();
}

bool Browser::press(Key key)
{
    m_problem.clear();
    const QString value{QChar(static_cast<char16_t>(key))};
    const QJsonArray strokes{QJsonObject{{u"type"_s, u"keyDown"_s}, {u"value"_s, value}},
                             QJsonObject{{u"type"_s, u"keyUp"_s}, {u"value"_s, value}}};
    const QJsonObject keyboard{{u"type"_s, u"key"_s}, {u"id"_s, u"keyboard"_s}, {u"actions"_s, strokes}};
    command("POST", u"/actions"_s, {{u"actions"_s, QJsonArray{keyboard}}});
    return m_problem.isEmpty();
}

QString Browser::focused()
{
    const QString element = command("GET", u"/element/active"_s)[elementKey].toString();
    const auto property = [&](const QString &name) {
        return command("GET", u"/element/%1/property/%2"_s.arg(element, name)).toString();
    };
    const QString id = property(u"id"_s);
    return id.isEmpty() ? property(u"value"_s) : id;
}

QString Browser::title()
{
    return command("GET", u"/title"_s).toString();
}

QString Browser::text()
{
    return command("GET", u"/element/%1/text"_s.arg(find(u"body"_s))).toString();
}

QString Browser::address()
{
    return command("GET", u"/url"_s).toString();
}

QString Browser::find(const QString &selector)
{
    return command("POST", u"/element"_s, {{u"using"_s, u"css selector"_s}, {u"value"_s, selector}})[elementKey]
        .toString();
}

QJsonValue Browser::command(const QByteArray &method, const QString &path, const QJsonObject &parameters)
{
    QUrl url = m_session;
    url.setPath(m_session.path() + path);
    const HttpExchange answer =
        HttpExchange::ask(method, url, {{"Content-Type", "application/json; charset=utf-8"}},
                          method == "POST" ? QJsonDocument(parameters).toJson(QJsonDocument::Compact) : QByteArray());
    const QJsonValue value = QJsonDocument::fromJson(answer.body)[u"value"_s];
    if (answer.status != 200)
        m_problem = QString::fromUtf8(method) + u' ' + path + u": "_s + value[u"message"_s].toString();
    return value;
}

} // namespace kelp::test
