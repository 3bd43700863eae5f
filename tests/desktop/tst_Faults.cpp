#include "desktop/OneAccount.h"
#include "support/KelpProcess.h"
#include "support/ScreenReader.h"

#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

/// The running application against a Google that misbehaves: one line for the account in the panel, and nothing lost.
class tst_Faults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void tellsWhatIsWrongAndKeepsTheAccount_data();
    void tellsWhatIsWrongAndKeepsTheAccount();
    void takesANewTokenWhereTheOldOneIsRefused();
    void sendsNothingToWhereItIsRedirected_data();
    void sendsNothingToWhereItIsRedirected();
    void tellsThatGoogleGaveNoLastingAccess();
    void staysUsableWhileGoogleIsSilent_data();
    void staysUsableWhileGoogleIsSilent();
    void recoversByItself();

private:
    void startKelp();
    void openPanel();
    [[nodiscard]] QStringList accountLines();

    PrivateDesktop desktop;
    std::unique_ptr<ScreenReader> reader;
    std::unique_ptr<Sandbox> sandbox;
    std::unique_ptr<KelpProcess> kelp;
    QByteArray accounts;
};

void tst_Faults::initTestCase()
{
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
    reader = std::make_unique<ScreenReader>(desktop.sessionBus());
    QVERIFY(reader->isReady());
}

void tst_Faults::init()
{
    desktop.forget();
    oneAccount::signIn(desktop);
    accounts = desktop.accounts();
    sandbox = std::make_unique<Sandbox>();
    QVERIFY2(sandbox->start(oneAccount::seed()), qPrintable(sandbox->error()));
}

void tst_Faults::cleanup()
{
    if (QTest::currentTestFailed() && kelp)
        qInfo().noquote() << kelp->output() << reader->texts();
    kelp.reset();
    sandbox.reset();
}

void tst_Faults::cleanupTestCase()
{
    reader.reset();
}

void tst_Faults::startKelp()
{
    kelp = std::make_unique<KelpProcess>(desktop);
    kelp->use(*sandbox);
    kelp->set(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    QVERIFY(kelp->start());
    // It is the running one from here on.
    if (!accounts.isEmpty())
        QTRY_VERIFY_WITH_TIMEOUT(!sandbox->requests().isEmpty(), 12'000);
}

/// As a user does: by starting Kelp once more.
void tst_Faults::openPanel()
{
    KelpProcess again(desktop);
    QVERIFY(again.start());
    QCOMPARE(again.exitStatus(), 0);
    QTRY_VERIFY(kelp->panelIsActive());
}

/// What the panel says about the account.
QStringList tst_Faults::accountLines()
{
    return reader->texts().filter(oneAccount::email + u": "_s);
}

void tst_Faults::tellsWhatIsWrongAndKeepsTheAccount_data()
{
    QTest::addColumn<QString>("at");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("times");
    QTest::addColumn<QString>("line"); // its beginning
    const auto row = [](const char *name, const QString &at, const QString &kind, const QString &line, int times = 0) {
        QTest::newRow(name) << at << kind << times << line;
    };
    const QString list = u"calendarList"_s;
    const QString events = u"events"_s;
    const QString token = u"token"_s;
    const QString google = u"Google Calendar error "_s;
    const QString noJson = u"The answer is not valid JSON"_s;
    row("refused twice", list, u"unauthorizedOnce"_s, google + u"401: "_s, 2);
    row("forbidden", list, u"forbidden"_s, google + u"403: Rate Limit Exceeded"_s);
    row("forbidden events", events, u"forbidden"_s, google + u"403: Rate Limit Exceeded"_s);
    row("a page with 500", list, u"serverErrorHtml"_s, google + u"500: <"_s);
    row("a page with 200", list, u"htmlWith200"_s, noJson);
    row("half an answer", list, u"invalidJson"_s, noJson);
    row("half the events", events, u"invalidJson"_s, noJson);
    row("wrong types", list, u"wrongTypes"_s, {});
    row("too large", list, u"tooLarge"_s, u"The server's answer is too large."_s);
    row("reset", list, u"reset"_s, {});
    row("reset events", events, u"reset"_s, {});
    row("no token: forbidden", token, u"forbidden"_s, u"Google sign-in failed: "_s);
    row("no token: a page with 500", token, u"serverErrorHtml"_s, noJson);
    row("no token: a page with 200", token, u"htmlWith200"_s, noJson);
    row("no token: half an answer", token, u"invalidJson"_s, noJson);
    row("no token: too large", token, u"tooLarge"_s, u"The server's answer is too large."_s);
    row("no token: reset", token, u"reset"_s, {});
}

void tst_Faults::tellsWhatIsWrongAndKeepsTheAccount()
{
    QFETCH(QString, at);
    QFETCH(QString, kind);
    QFETCH(int, times);
    QFETCH(QString, line);
    QVERIFY(sandbox->setFault(at, kind, times == 0 ? std::nullopt : std::optional(times)));
    startKelp();
    openPanel();
    QTRY_COMPARE(accountLines().size(), 1);
    const QString beginning = oneAccount::email + u": "_s + line;
    const QString said = accountLines().value(0);
    QVERIFY2(said.startsWith(beginning) && said.size() > oneAccount::email.size() + 2, qPrintable(said));
    QVERIFY(kelp->isRunning());
    QCOMPARE(desktop.accounts(), accounts);
    // Errors say nothing that nobody else may read.
    QVERIFY(!said.contains(oneAccount::refreshToken) && !said.contains(Sandbox::clientSecret()));
    QVERIFY(!kelp->output().contains(oneAccount::refreshToken.toUtf8()));
}

void tst_Faults::takesANewTokenWhereTheOldOneIsRefused()
{
    QVERIFY(sandbox->setFault(u"calendarList"_s, u"unauthorizedOnce"_s));
    startKelp();
    QTRY_COMPARE(sandbox->requests().size(), 6);
    const QList<LoggedRequest> requests = sandbox->requests();
    QStringList sequence;
    for (const LoggedRequest &each : requests)
        sequence.append(each.path.section(u'/', -1) + u' ' + QString::number(each.status));
    QCOMPARE(sequence.join(u", "_s),
             u"token 200, calendarList 401, token 200, calendarList 200, events 200, events 200"_s);
    const QString authorization = u"authorization"_s;
    QVERIFY(requests[1].headers.value(authorization) != requests[3].headers.value(authorization));
    openPanel();
    QTRY_VERIFY(reader->reads(oneAccount::email));
    QCOMPARE(accountLines(), QStringList());
}

void tst_Faults::sendsNothingToWhereItIsRedirected_data()
{
    QTest::addColumn<QString>("at");
    QTest::newRow("for the token") << u"token"_s;
    QTest::newRow("for the calendars") << u"calendarList"_s;
    QTest::newRow("for the events") << u"events"_s;
}

void tst_Faults::sendsNothingToWhereItIsRedirected()
{
    QFETCH(QString, at);
    Sandbox elsewhere;
    QVERIFY2(elsewhere.start(oneAccount::seed()), qPrintable(elsewhere.error()));
    QVERIFY(sandbox->setFault({{u"at"_s, at}, {u"kind"_s, u"redirect"_s}, {u"port"_s, elsewhere.baseUrl().port()}}));
    startKelp();
    openPanel();
    QTRY_COMPARE(accountLines().size(), 1);
    QVERIFY(elsewhere.requests().isEmpty());
    QCOMPARE(desktop.accounts(), accounts);
}

void tst_Faults::tellsThatGoogleGaveNoLastingAccess()
{
    desktop.forget();
    desktop.writePreferences(oneAccount::preferences());
    accounts.clear();
    QVERIFY(sandbox->setFault(u"token"_s, u"noRefreshToken"_s));
    startKelp();
    QTRY_VERIFY(kelp->panelIsActive());
    std::optional<QRect> button;
    QTRY_VERIFY((button = reader->button(u"Sign in with Google"_s)).has_value());
    const QPoint at = button->center();
    desktop.display().run(u"xdotool"_s,
                          {u"mousemove"_s, QString::number(at.x()), QString::number(at.y()), u"click"_s, u"1"_s});
    QTRY_COMPARE(desktop.opened().size(), 1);
    const QUrl page = QUrl::fromEncoded(desktop.opened().value(0), QUrl::StrictMode);
    const QUrl back = sandbox->decide(page, u"allow"_s, oneAccount::email);
    QCOMPARE(HttpExchange::send("GET", back).status, 200);
    QTRY_VERIFY(reader->reads(u"Google did not return a refresh token."_s));
    QVERIFY(desktop.accounts().isEmpty());
    QVERIFY(reader->button(u"Sign in with Google"_s));
}

void tst_Faults::staysUsableWhileGoogleIsSilent_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("no answer") << u"hang"_s;
    QTest::newRow("a byte now and then") << u"slowDrip"_s;
}

void tst_Faults::staysUsableWhileGoogleIsSilent()
{
    QFETCH(QString, kind);
    QVERIFY(sandbox->setFault(u"calendarList"_s, kind));
    startKelp();
    QTRY_COMPARE(oneAccount::refreshes(*sandbox), 1);
    openPanel();
    QTRY_VERIFY(reader->reads(oneAccount::email));
    QCOMPARE(accountLines(), QStringList());
    QVERIFY(reader->button(u"Add account"_s));
}

void tst_Faults::recoversByItself()
{
    QVERIFY(sandbox->setFault(u"events"_s, u"serverErrorHtml"_s));
    startKelp();
    openPanel();
    QTRY_COMPARE(accountLines().size(), 1);
    QVERIFY(sandbox->clearFaults());
    // It tries again 5 s after a failure that may pass.
    QTRY_COMPARE_WITH_TIMEOUT(accountLines().size(), 0, 12'000);
    QCOMPARE(oneAccount::refreshes(*sandbox), 2);
}

QTEST_GUILESS_MAIN(tst_Faults)

#include "tst_Faults.moc"
