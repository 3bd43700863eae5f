#include "auth/RedirectRequest.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

const QByteArray pageBegin = "<html><body style=\"font-family:-apple-system;padding:40px\"><h2>Kelp</h2><p>";
const QByteArray pageEnd = "</p><script>window.close()</script></body></html>";

QByteArray response(const QByteArray &status, const QByteArray &message)
{
    const QByteArray page = pageBegin + message + pageEnd;
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " + QByteArray::number(page.size()) +
           "\r\nConnection: close\r\n\r\n" + page;
}

const QByteArray success = response("200 OK", "You can close this tab and go back to Kelp.");
const QByteArray notFound = response("404 Not Found", "");

} // namespace

class tst_RedirectRequest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesTheCodeOfTheTrueRedirect_data();
    void takesTheCodeOfTheTrueRedirect();
    void takesGooglesError_data();
    void takesGooglesError();
    void waitsOnAfterAnythingElse_data();
    void waitsOnAfterAnythingElse();
    void countsTheBytesOfThePage();
};

void tst_RedirectRequest::takesTheCodeOfTheTrueRedirect_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QString>("code");
    const auto row = [](const char *name, const QByteArray &request, const QString &code) {
        QTest::newRow(name) << request << code;
    };
    row("as a browser sends it", "GET /?code=4/0Ab&state=s HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", u"4/0Ab"_s);
    row("escaped once", "GET /?state=s&code=4%2F0A%252F&scope=x HTTP/1.1\r\n\r\n", u"4/0A%2F"_s);
    row("any path", "GET /deep/er?code=c&state=s HTTP/1.1\r\n\r\n", u"c"_s);
    row("any method", "BREW /?code=c&state=s HTTP/1.1\r\n\r\n", u"c"_s);
    row("no version", "GET /?code=c&state=s ", u"c"_s);
    row("many spaces", "  GET    /?code=c&state=s   ", u"c"_s);
    row("absolute target", "GET http://127.0.0.1:1/?code=c&state=s HTTP/1.1", u"c"_s);
    row("with an error, too", "GET /?error=e&code=c&state=s HTTP/1.1", u"c"_s);
    row("empty code", "GET /?code=&state=s HTTP/1.1", u""_s);
    row("first of two codes", "GET /?code=a&code=b&state=s HTTP/1.1", u"a"_s);
    row("plus stays plus", "GET /?code=a+b&state=s HTTP/1.1", u"a+b"_s);
    row("a fragment is no part of it", "GET /?code=c&state=s#x HTTP/1.1", u"c"_s);
    row("beyond ASCII, escaped", "GET /?code=%C3%A9&state=s HTTP/1.1", u"é"_s);
}

void tst_RedirectRequest::takesTheCodeOfTheTrueRedirect()
{
    QFETCH(QByteArray, request);
    QFETCH(QString, code);
    const RedirectAnswer answer = answerRedirect(request, u"s"_s);
    QCOMPARE(answer.response, success);
    QVERIFY(answer.outcome && *answer.outcome);
    QCOMPARE(**answer.outcome, code);
}

void tst_RedirectRequest::takesGooglesError_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const QByteArray &request, const QString &error) {
        QTest::newRow(name) << request << error;
    };
    row("denied", "GET /?error=access_denied&state=s HTTP/1.1", u"access_denied"_s);
    row("state does not matter", "GET /?error=access_denied HTTP/1.1", u"access_denied"_s);
    row("code with the wrong state", "GET /?error=e&code=c&state=wrong HTTP/1.1", u"e"_s);
    row("code without state", "GET /?error=e&code=c HTTP/1.1", u"e"_s);
    row("empty", "GET /?error= HTTP/1.1", u""_s);
    row("as it stands", "GET /?error=%3Cb%3E HTTP/1.1", u"<b>"_s);
}

void tst_RedirectRequest::takesGooglesError()
{
    QFETCH(QByteArray, request);
    QFETCH(QString, error);
    const RedirectAnswer answer = answerRedirect(request, u"s"_s);
    QCOMPARE(answer.response, response("200 OK", "Sign-in failed: " + error.toUtf8()));
    QVERIFY(answer.outcome && !*answer.outcome);
    QCOMPARE(answer.outcome->error().description(), u"Google sign-in failed: "_s + error);
    QCOMPARE(answer.outcome->error().kind, AuthError::Kind::server);
}

void tst_RedirectRequest::waitsOnAfterAnythingElse_data()
{
    QTest::addColumn<QByteArray>("request");
    const auto row = [](const char *name, const QByteArray &request) { QTest::newRow(name) << request; };
    row("site icon", "GET /favicon.ico HTTP/1.1\r\n\r\n");
    row("nothing", "");
    row("one piece", "GET");
    row("only spaces", "    ");
    row("no state", "GET /?code=c HTTP/1.1");
    row("wrong state", "GET /?code=c&state=S HTTP/1.1");
    row("state without a value", "GET /?code=c&state HTTP/1.1");
    row("state with more behind it", "GET /?code=c&state=ss HTTP/1.1");
    row("first state counts", "GET /?code=c&state=x&state=s HTTP/1.1");
    row("code without a value", "GET /?code&state=s HTTP/1.1");
    row("names are case-sensitive", "GET /?Code=c&State=s HTTP/1.1");
    row("no UTF-8", "GET /?code=\xff&state=s HTTP/1.1");
    row("no UTF-8 anywhere", "GET /?code=c&state=s HTTP/1.1\r\nX: \xff\r\n\r\n");
    row("raw character beyond ASCII", "GET /?code=\xc3\xa9&state=s HTTP/1.1");
    row("broken escape", "GET /?code=%zz&state=s HTTP/1.1");
    row("escape that is no UTF-8", "GET /?code=%ff&state=s HTTP/1.1");
    row("line end within the target", "GET /?code=c&state=s\r\nHost: x");
    row("no target", " GET\r\n");
    row("NUL", QByteArray("GET /?code=c&state=s\0 HTTP/1.1", 30));
}

void tst_RedirectRequest::waitsOnAfterAnythingElse()
{
    QFETCH(QByteArray, request);
    const RedirectAnswer answer = answerRedirect(request, u"s"_s);
    QCOMPARE(answer.response, notFound);
    QVERIFY(!answer.outcome);
}

void tst_RedirectRequest::countsTheBytesOfThePage()
{
    const QByteArray answer = answerRedirect("GET /?error=%C3%A9%F0%9F%98%80 HTTP/1.1", u"s"_s).response;
    const qsizetype begin = answer.indexOf("\r\n\r\n") + 4;
    QVERIFY(answer.contains("Content-Length: " + QByteArray::number(answer.size() - begin) + "\r\n"));
}

QTEST_GUILESS_MAIN(tst_RedirectRequest)
#include "tst_RedirectRequest.moc"
