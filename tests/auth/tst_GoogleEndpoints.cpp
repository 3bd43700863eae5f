#include "auth/GoogleEndpoints.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_GoogleEndpoints : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void areGooglesOwn();
    void areReplacedOnThisComputerOnly_data();
    void areReplacedOnThisComputerOnly();
};

void tst_GoogleEndpoints::cleanup()
{
    qunsetenv("KELP_GOOGLE_TOKEN");
}

void tst_GoogleEndpoints::areGooglesOwn()
{
    const GoogleEndpoints endpoints = GoogleEndpoints::fromEnvironment();
    QCOMPARE(endpoints.authorization, u"https://accounts.google.com/o/oauth2/v2/auth"_s);
    QCOMPARE(endpoints.token, u"https://oauth2.googleapis.com/token"_s);
    QCOMPARE(endpoints.api, u"https://www.googleapis.com/calendar/v3"_s);
}

void tst_GoogleEndpoints::areReplacedOnThisComputerOnly_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("accepted");
    const auto row = [](const char *value, bool accepted) {
        QTest::newRow(value) << QString::fromLatin1(value) << accepted;
    };
    row("http://127.0.0.1:8080/token", true);
    row("http://localhost:8080/token", true);
    row("https://127.0.0.1/token", true);
    row("http://example.com/token", false);
    row("http://127.0.0.1.example.com/token", false);
    row("http://localhost.example.com/token", false);
    row("http://127.0.0.1@example.com/token", false);
    row("http://example.com@127.0.0.1/token", false);
    row("http://example.com#@127.0.0.1/token", false);
    row("http://example.com\\@127.0.0.1/token", false);
    row("ftp://127.0.0.1/token", false);
    row("127.0.0.1/token", false);
    row("http://[::1]/token", false);
}

void tst_GoogleEndpoints::areReplacedOnThisComputerOnly()
{
    QFETCH(QString, value);
    QFETCH(bool, accepted);
    qputenv("KELP_GOOGLE_TOKEN", value.toUtf8());
    QCOMPARE(GoogleEndpoints::fromEnvironment().token, accepted ? value : GoogleEndpoints().token);
}

QTEST_GUILESS_MAIN(tst_GoogleEndpoints)
#include "tst_GoogleEndpoints.moc"
