#include "settings/SettingsView.h"

#include "auth/GoogleAuth.h"
#include "calendar/CalendarClient.h"
#include "preferences/Preferences.h"
#include "schedule/Scheduler.h"
#include "support/FakeClock.h"
#include "support/FakeHttpClient.h"
#include "support/FakeUrlOpener.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

class tst_SettingsView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void asksForAClientAndASignIn();
    void hidesTheFieldsWithABuiltInClient();
    void waitsWhileASignInRuns();
    void listsAccountsAndRemovesOneAfterAsking();
    void showsErrorsAsPlainText();

private:
    void make(const GoogleAuth::Client &builtIn = {}, const QByteArray &accounts = {});
    QPushButton *button(const QString &text) const
    {
        for (QPushButton *each : view->findChildren<QPushButton *>()) {
            if (each->text() == text)
                return each;
        }
        return nullptr;
    }
    QLineEdit *field(const QString &title) const
    {
        for (QLineEdit *each : view->findChildren<QLineEdit *>()) {
            if (each->placeholderText() == title)
                return each;
        }
        return nullptr;
    }

    std::unique_ptr<QTemporaryDir> folder;
    Preferences preferences;
    FakeClock clock;
    FakeHttpClient http;
    FakeUrlOpener opener;
    std::unique_ptr<GoogleAuth> auth;
    std::unique_ptr<CalendarClient> client;
    std::unique_ptr<Scheduler> scheduler;
    std::unique_ptr<SettingsView> view;
};

void tst_SettingsView::init()
{
    view.reset();
    preferences.remove(preference::clientID);
    preferences.remove(preference::clientSecret);
    folder = std::make_unique<QTemporaryDir>();
}

void tst_SettingsView::make(const GoogleAuth::Client &builtIn, const QByteArray &accounts)
{
    if (!accounts.isEmpty()) {
        QFile file(folder->path() + u"/accounts.json"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(accounts);
    }
    view.reset();
    scheduler.reset();
    auth = std::make_unique<GoogleAuth>(GoogleAuth::Services{preferences, http, clock, opener}, GoogleEndpoints{},
                                        builtIn, folder->path());
    client = std::make_unique<CalendarClient>(*auth, http, clock, u"http://api"_s);
    scheduler = std::make_unique<Scheduler>(Scheduler::Services{preferences, clock, *client, *auth});
    view = std::make_unique<SettingsView>(*auth, *scheduler, preferences);
    view->show();
}

void tst_SettingsView::asksForAClientAndASignIn()
{
    make();
    QCOMPARE(view->width(), 320);
    QPushButton *signIn = button(u"Sign in with Google"_s);
    QVERIFY(signIn && !signIn->isEnabled());
    QTest::keyClicks(field(u"Client ID"_s), u"id"_s);
    QVERIFY(!signIn->isEnabled());
    QTest::keyClicks(field(u"Client secret"_s), u"secret"_s);
    QVERIFY(signIn->isEnabled());
    QCOMPARE(field(u"Client secret"_s)->echoMode(), QLineEdit::Password);
    QCOMPARE(preferences.get(preference::clientID), u"id"_s);
    QCOMPARE(preferences.get(preference::clientSecret), u"secret"_s);
    QSignalSpy requested(view.get(), &SettingsView::signInRequested);
    QTest::mouseClick(signIn, Qt::LeftButton);
    QCOMPARE(requested.size(), 1);
}

void tst_SettingsView::hidesTheFieldsWithABuiltInClient()
{
    make({u"id"_s, u"secret"_s});
    QVERIFY(!field(u"Client ID"_s));
    QVERIFY(!field(u"Client secret"_s));
    QVERIFY(button(u"Sign in with Google"_s)->isEnabled());
}

void tst_SettingsView::waitsWhileASignInRuns()
{
    make({u"id"_s, u"secret"_s});
    opener.handledSchemes = {u"https"_s};
    auth->signIn(view.get(), [](const Result<Account, AuthError> &) {});
    QVERIFY(!button(u"Waiting for Google…"_s)->isEnabled());
}

void tst_SettingsView::listsAccountsAndRemovesOneAfterAsking()
{
    make({}, R"([{"email": "a&b@x", "refreshToken": "1"}, {"email": "b@x", "refreshToken": "2"}])");
    QVERIFY(button(u"Add account"_s));
    QVERIFY(!field(u"Client ID"_s)->isVisible());
    QPushButton *remove = button(u"Remove…"_s);
    QCOMPARE(remove->accessibleName(), u"Remove a&b@x"_s);
    for (const auto role : {QMessageBox::RejectRole, QMessageBox::DestructiveRole}) {
        QTest::mouseClick(remove, Qt::LeftButton);
        auto *question = view->findChild<QMessageBox *>();
        QVERIFY(question);
        QCOMPARE(question->text(), u"Remove a&b@x"_s);
        QCOMPARE(auth->accounts().size(), 2);
        for (QAbstractButton *each : question->buttons()) {
            if (question->buttonRole(each) == role)
                each->click();
        }
        QTRY_VERIFY(!view->findChild<QMessageBox *>());
    }
    QCOMPARE(auth->accounts().size(), 1);
    QCOMPARE(auth->accounts().first().email, u"b@x"_s);
    QVERIFY(scheduler->lastSync()); // what the account showed goes, too
}

void tst_SettingsView::showsErrorsAsPlainText()
{
    make();
    auto *error = view->findChild<QLabel *>(u"error"_s);
    QVERIFY(!error->isVisible());
    scheduler->apply({.errors = {u"a@x: <b>refused</b>"_s}});
    scheduler->refresh();
    QCOMPARE(error->textFormat(), Qt::PlainText);
    view->setError(u"Sign-in timed out."_s);
    QVERIFY(error->isVisible());
    QCOMPARE(error->text(), u"Sign-in timed out."_s);
    view->setError({});
    QVERIFY(!error->isVisible());
}

QTEST_MAIN(tst_SettingsView)
#include "tst_SettingsView.moc"
