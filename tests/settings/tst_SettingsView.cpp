#include "settings/PanelFixture.h"
#include "settings/Picker.h"
#include "ui/KelpStyle.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

class tst_SettingsView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setStyle(new KelpStyle); }
    void init() { panel = std::make_unique<PanelFixture>(); }
    void cleanup() { panel.reset(); }

    void showsOnlyTheSignInWithoutAccounts();
    void asksForAClientWhereNoneIsBuiltIn();
    void offersToSignInOnlyWithAClient_data();
    void offersToSignInOnlyWithAClient();
    void waitsWhileASignInRuns();
    void signsInOnReturnInAField();
    void showsOneErrorAtTheBottom();

    void refreshesAndQuitsFromTheHeader();
    void pausesForAnHourOrUntilTomorrow();
    void pausesUntilTheNextMeetingEnds();
    void pauseMenuTakesTitlesAsTheyAre();
    void resumesFromTheBanner();
    void theBannerGoesWhenThePauseEnds();

    void saysWhenThereIsNothingNext();
    void listsTheNextMeetingAndTheFollowingOnes();
    void countsDownWhileItIsOpen();
    void doesNothingWhileItIsClosed();
    void offersToJoinAroundTheStart_data();
    void offersToJoinAroundTheStart();
    void namesTheProviderOfTheCall_data();
    void namesTheProviderOfTheCall();

    void offersTheLeadTimesThereAre();
    void showsNoChoiceForAnotherLeadTime_data();
    void showsNoChoiceForAnotherLeadTime();
    void switchesWriteTheirPreferenceAtOnce_data();
    void switchesWriteTheirPreferenceAtOnce();
    void survivesPreferencesOfWrongTypes();
    void showsWhetherKelpIsReallyLaunchedAtLogin();
    void tellsWhyLaunchAtLoginFailed();
    void tellsWhereTheHotkeyCannotBeHeard();
    void opensTheAppearanceWindow();

private:
    [[nodiscard]] Picker *lead() const { return panel->view->findChild<Picker *>(); }
    [[nodiscard]] QLineEdit *field(const QString &title) const
    {
        for (QLineEdit *each : panel->view->findChildren<QLineEdit *>()) {
            if (each->placeholderText() == title && each->isVisible())
                return each;
        }
        return nullptr;
    }
    [[nodiscard]] bool isOn(const QString &name) const { return panel->button(name)->isChecked(); }

    std::unique_ptr<PanelFixture> panel;
};

namespace {

constexpr Instant nine{1767258000};
const QString meetLink = u"https://meet.google.com/abc-defg-hij"_s;
const QString signInText =
    u"Connect your Google Calendar and Kelp will take over your screen right before each meeting."_s;
const GoogleAuth::Client builtIn{u"id"_s, u"secret"_s};

} // namespace

void tst_SettingsView::showsOnlyTheSignInWithoutAccounts()
{
    panel->open();
    QCOMPARE(panel->view->width(), 320);
    QCOMPARE(panel->texts(), (QStringList{u"Kelp"_s, signInText}));
    QVERIFY(panel->button(u"Sign in with Google"_s));
    QVERIFY(!panel->button(u"Add account"_s));
    QVERIFY(!panel->button(u"Launch at login"_s));
    panel->view->setError(u"Sign-in timed out."_s);
    QCOMPARE(panel->texts(), (QStringList{u"Kelp"_s, signInText, u"Sign-in timed out."_s}));
}

void tst_SettingsView::asksForAClientWhereNoneIsBuiltIn()
{
    panel->open();
    QCOMPARE(field(u"Client secret"_s)->echoMode(), QLineEdit::Password);
    QTest::keyClicks(field(u"Client ID"_s), u"id"_s);
    QCOMPARE(panel->preferences.get(preference::clientID), u"id"_s);
    QTest::keyClicks(field(u"Client secret"_s), u"sec"_s);
    QCOMPARE(panel->preferences.get(preference::clientSecret), u"sec"_s);
    panel->open({}, builtIn);
    QVERIFY(!field(u"Client ID"_s));
    QVERIFY(!field(u"Client secret"_s));
}

void tst_SettingsView::offersToSignInOnlyWithAClient_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("secret");
    QTest::addColumn<bool>("isBuiltIn");
    QTest::addColumn<bool>("offered");
    QTest::newRow("nothing") << QString() << QString() << false << false;
    QTest::newRow("only an ID") << u"id"_s << QString() << false << false;
    QTest::newRow("only a secret") << QString() << u"secret"_s << false << false;
    QTest::newRow("spaces") << u" "_s << u" "_s << false << false;
    QTest::newRow("both") << u"id"_s << u"secret"_s << false << true;
    QTest::newRow("built in") << QString() << QString() << true << true;
}

void tst_SettingsView::offersToSignInOnlyWithAClient()
{
    QFETCH(QString, id);
    QFETCH(QString, secret);
    QFETCH(bool, isBuiltIn);
    QFETCH(bool, offered);
    panel->open({}, isBuiltIn ? builtIn : GoogleAuth::Client{});
    if (!id.isEmpty())
        QTest::keyClicks(field(u"Client ID"_s), id);
    if (!secret.isEmpty())
        QTest::keyClicks(field(u"Client secret"_s), secret);
    QCOMPARE(panel->button(u"Sign in with Google"_s)->isEnabled(), offered);
    QSignalSpy requested(panel->view.get(), &SettingsView::signInRequested);
    panel->click(u"Sign in with Google"_s);
    QCOMPARE(requested.size(), offered ? 1 : 0);
}

void tst_SettingsView::waitsWhileASignInRuns()
{
    panel->opener.handledSchemes = {u"https"_s};
    for (const QStringList &accounts : {QStringList(), QStringList{ada}}) {
        panel->open(accounts, builtIn);
        const QString offer = accounts.isEmpty() ? u"Sign in with Google"_s : u"Add account"_s;
        QVERIFY(panel->button(offer)->isEnabled());
        panel->auth->signIn(panel->view.get(), [](const Result<Account, AuthError> &) {});
        QVERIFY(!panel->button(offer));
        QVERIFY(!panel->button(u"Waiting for Google…"_s)->isEnabled());
        panel->clock.advance(301); // nobody answered
        PanelFixture::settle();
        QVERIFY(panel->button(offer)->isEnabled());
    }
    QSignalSpy requested(panel->view.get(), &SettingsView::signInRequested);
    panel->click(u"Add account"_s);
    QCOMPARE(requested.size(), 1);
}

void tst_SettingsView::signsInOnReturnInAField()
{
    panel->open();
    QSignalSpy requested(panel->view.get(), &SettingsView::signInRequested);
    QTest::keyClicks(field(u"Client ID"_s), u"id"_s);
    QTest::keyClick(field(u"Client ID"_s), Qt::Key_Return);
    QCOMPARE(requested.size(), 0);
    QTest::keyClicks(field(u"Client secret"_s), u"secret"_s);
    QTest::keyClick(field(u"Client secret"_s), Qt::Key_Return);
    QCOMPARE(requested.size(), 1);
}

void tst_SettingsView::showsOneErrorAtTheBottom()
{
    panel->open({ada});
    auto *error = panel->view->findChild<QLabel *>(u"error"_s);
    QVERIFY(!error->isVisible());
    panel->bring({}, {}, {u"ada@example.com: <b>refused</b>"_s, u"b@x: "_s + QString(300, u'e')});
    QVERIFY(error->isVisible());
    QCOMPARE(error->textFormat(), Qt::PlainText);
    QCOMPARE(error->text(), u"ada@example.com: <b>refused</b>\nb@x: "_s + QString(300, u'e'));
    QVERIFY(error->height() > 5 * error->fontMetrics().lineSpacing()); // as many lines as it needs
    for (const QLabel *each : panel->view->findChildren<QLabel *>()) {
        if (each->isVisible() && each != error)
            QVERIFY(each->mapTo(panel->view.get(), QPoint()).y() < error->mapTo(panel->view.get(), QPoint()).y());
    }
    // The panel's own error comes first, and a later one replaces it.
    panel->view->setError(u"Sign-in was cancelled."_s);
    QCOMPARE(error->text(), u"Sign-in was cancelled."_s);
    panel->view->setError(u"Sign-in timed out."_s);
    QCOMPARE(error->text(), u"Sign-in timed out."_s);
    panel->click(u"Add account"_s); // a new attempt
    QVERIFY(error->text().startsWith(u"ada@example.com"_s));
    panel->bring({}, {});
    QVERIFY(!error->isVisible());
}

void tst_SettingsView::refreshesAndQuitsFromTheHeader()
{
    panel->open({ada});
    QVERIFY(!panel->scheduler->isRefreshing());
    panel->click(u"Refresh calendar"_s);
    QVERIFY(panel->scheduler->isRefreshing());
    for (const QString &name : {u"Refresh calendar"_s, u"Pause Kelp"_s, u"Quit Kelp"_s}) {
        QAbstractButton *button = panel->button(name);
        QCOMPARE(button->toolTip(), name);
        QCOMPARE(button->size(), QSize(22, 22));
    }
    QVERIFY(panel->button(u"Refresh calendar"_s)->x() < panel->button(u"Pause Kelp"_s)->x());
    QVERIFY(panel->button(u"Pause Kelp"_s)->x() < panel->button(u"Quit Kelp"_s)->x());
    // Quit works from within the loop that it ends.
    QTimer::singleShot(0, panel->view.get(), [this] { panel->click(u"Quit Kelp"_s); });
    QCOMPARE(QCoreApplication::exec(), 0);
}

void tst_SettingsView::pausesForAnHourOrUntilTomorrow()
{
    panel->open({ada});
    QCOMPARE(panel->menu(u"Pause Kelp"_s), (QStringList{u"For 1 hour"_s, u"Until tomorrow"_s}));
    panel->choose(u"Pause Kelp"_s, u"For 1 hour"_s);
    QCOMPARE(panel->preferences.get(preference::pausedUntil), nine + 3600);
    QVERIFY(panel->reads(u"Paused until 10:00"_s));
    panel->choose(u"Pause Kelp"_s, u"Until tomorrow"_s);
    QCOMPARE(panel->preferences.get(preference::pausedUntil), Instant{1767312000}); // Friday, 00:00
    QVERIFY(panel->reads(u"Paused until Fri 00:00"_s));
}

void tst_SettingsView::pausesUntilTheNextMeetingEnds()
{
    panel->open({ada});
    panel->bring(dozen(ada), {meeting(u"Stand-up"_s, nine + 600), meeting(u"Review"_s, nine + 7200)});
    QCOMPARE(panel->menu(u"Pause Kelp"_s),
             (QStringList{u"For 1 hour"_s, u"Until Stand-up ends"_s, u"Until tomorrow"_s}));
    panel->clock.jump(nine + 2400); // it has just ended
    QCOMPARE(panel->menu(u"Pause Kelp"_s).at(1), u"Until Review ends"_s);
    panel->choose(u"Pause Kelp"_s, u"Until Review ends"_s);
    QCOMPARE(panel->preferences.get(preference::pausedUntil), nine + 9000);
}

void tst_SettingsView::pauseMenuTakesTitlesAsTheyAre()
{
    panel->open({ada});
    const auto item = [this](const QString &title) {
        panel->bring(dozen(ada), {meeting(title, nine + 600)});
        return panel->menu(u"Pause Kelp"_s).value(1);
    };
    QCOMPARE(item(u"R&D\n<b>"_s), u"Until R&D <b> ends"_s);
    QCOMPARE(item(u"פגישה"_s), u"Until פגישה ends"_s);
    const QString longest = item(QString(200, u'W'));
    QVERIFY2(longest.endsWith(u"… ends"_s) && longest.size() < 60, qPrintable(longest));
}

void tst_SettingsView::resumesFromTheBanner()
{
    panel->open({ada});
    QVERIFY(!panel->button(u"Resume"_s));
    panel->scheduler->setPausedUntil(nine + 60);
    QVERIFY(panel->reads(u"Paused until 09:01"_s));
    panel->click(u"Resume"_s);
    QVERIFY(!panel->scheduler->pausedUntil());
    QVERIFY(!panel->preferences.contains(preference::pausedUntil));
    QVERIFY(!panel->button(u"Resume"_s));
}

void tst_SettingsView::theBannerGoesWhenThePauseEnds()
{
    panel->open({ada});
    panel->scheduler->setPausedUntil(nine + 60);
    panel->clock.advance(59);
    QVERIFY(panel->button(u"Resume"_s));
    panel->clock.advance(2);
    QVERIFY(!panel->button(u"Resume"_s));
}

void tst_SettingsView::saysWhenThereIsNothingNext()
{
    panel->open({ada});
    QVERIFY(panel->reads(u"Up next"_s));
    QVERIFY(panel->reads(u"No meetings in the next 24 hours"_s));
    panel->bring(dozen(ada), {meeting(u"Review"_s, nine + 600)});
    QVERIFY(!panel->reads(u"No meetings in the next 24 hours"_s));
    panel->bring(dozen(ada), {});
    QVERIFY(panel->reads(u"No meetings in the next 24 hours"_s));
    QVERIFY(!panel->reads(u"Review"_s));
}

void tst_SettingsView::listsTheNextMeetingAndTheFollowingOnes()
{
    panel->open({ada});
    panel->bring(dozen(ada), {meeting(u"A & <i>B</i>"_s, nine + 600), meeting(u"Second"_s, nine + 3600),
                              meeting(u"Third"_s, nine + 7200), meeting(u"Tomorrow's"_s, nine + 86000),
                              meeting(u"Fifth"_s, nine + 86200)});
    const QStringList texts = panel->texts();
    const qsizetype first = texts.indexOf(u"Up next"_s);
    QCOMPARE(texts.mid(first, 10),
             (QStringList{u"Up next"_s, u"A & <i>B</i>"_s, u"Today, 09:10 – 09:40"_s, u"Kelp in 10 min"_s, u"10:00"_s,
                          u"Second"_s, u"11:00"_s, u"Third"_s, u"Fri 08:53"_s, u"Tomorrow's"_s}));
    QVERIFY(!texts.contains(u"Fifth"_s));
    // The column is as wide as it has to be.
    for (const QLabel *each : panel->view->findChildren<QLabel *>()) {
        if (each->isVisible() && each->text() == u"Second"_s)
            QVERIFY(each->x() >= 14 + 64);
    }
}

void tst_SettingsView::countsDownWhileItIsOpen()
{
    panel->open({ada});
    panel->bring(dozen(ada), {meeting(u"Review"_s, nine + 180, meetLink)});
    QVERIFY(panel->reads(u"Kelp in 3 min"_s)); // a minute before the start
    panel->clock.advance(61);
    QVERIFY(panel->reads(u"Kelp in 59s"_s));
    panel->clock.advance(1);
    QVERIFY(panel->reads(u"Kelp in 58s"_s));
    panel->clock.advance(58);
    QVERIFY(panel->reads(u"now"_s));
    panel->clock.advance(61);
    QVERIFY(panel->reads(u"Started just now"_s));
    panel->clock.advance(125);
    QVERIFY(panel->reads(u"Started 2 min ago"_s));
    panel->preferences.set(preference::leadMinutes, 10);
    panel->bring(dozen(ada), {meeting(u"Review"_s, nine + 7200, meetLink)});
    QVERIFY(panel->reads(u"Kelp in 1 h 45 min"_s));
}

void tst_SettingsView::doesNothingWhileItIsClosed()
{
    panel->open({ada});
    const int before = panel->clock.wakeUps();
    panel->clock.advance(10.1);
    QCOMPARE(panel->clock.wakeUps(), before + 10);
    panel->view->hide();
    panel->clock.advance(600);
    QCOMPARE(panel->clock.wakeUps(), before + 10);
    panel->bring(dozen(ada), {meeting(u"Review"_s, nine + 3600)});
    panel->view->show();
    QVERIFY(panel->reads(u"Kelp in 49 min"_s)); // at once, not at the next second
}

void tst_SettingsView::offersToJoinAroundTheStart_data()
{
    QTest::addColumn<double>("now"); // seconds from the start
    QTest::addColumn<bool>("offered");
    QTest::newRow("11 minutes before") << -660.0 << false;
    QTest::newRow("just over 10 minutes before") << -601.0 << false;
    QTest::newRow("10 minutes before") << -600.0 << true;
    QTest::newRow("at the start") << 0.0 << true;
    QTest::newRow("a second before the end") << 1799.0 << true;
    QTest::newRow("at the end") << 1800.0 << false;
}

void tst_SettingsView::offersToJoinAroundTheStart()
{
    QFETCH(double, now);
    QFETCH(bool, offered);
    panel->open({ada});
    const Meeting review = meeting(u"Review"_s, nine + 3600, meetLink);
    panel->bring(dozen(ada), {review, meeting(u"Later"_s, nine + 36000)});
    panel->scheduler->snooze(review, 7200); // or it would be too late for its reminder
    panel->clock.jump(nine + 3600 + now);
    Q_EMIT panel->scheduler->stateChanged();
    QCOMPARE(panel->button(u"Join Google Meet"_s) != nullptr, offered);
    if (!offered)
        return;
    panel->click(u"Join Google Meet"_s);
    QCOMPARE(panel->opener.opened, QStringList{meetLink});
}

void tst_SettingsView::namesTheProviderOfTheCall_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("button");
    QTest::newRow("Meet") << meetLink << u"Join Google Meet"_s;
    QTest::newRow("Zoom") << u"https://us02web.zoom.us/j/85551234567"_s << u"Join Zoom"_s;
    QTest::newRow("unknown") << u"https://calls.example.org/42"_s << u"Join"_s;
    QTest::newRow("no web link") << u"file:///etc/passwd"_s << QString();
    QTest::newRow("no link") << QString() << QString();
}

void tst_SettingsView::namesTheProviderOfTheCall()
{
    QFETCH(QString, url);
    QFETCH(QString, button);
    panel->open({ada});
    Meeting review = meeting(u"Review"_s, nine + 60);
    if (!url.isEmpty())
        review.joinURL = MeetingLink::fromText(url);
    panel->bring(dozen(ada), {review});
    QStringList joins;
    for (const QAbstractButton *each : panel->view->findChildren<QAbstractButton *>()) {
        if (each->isVisible() && each->text().startsWith(u"Join"_s))
            joins.append(each->text());
    }
    QCOMPARE(joins, button.isEmpty() ? QStringList() : QStringList{button});
}

void tst_SettingsView::offersTheLeadTimesThereAre()
{
    panel->open({ada});
    QStringList choices;
    for (int i = 0; i < lead()->count(); ++i)
        choices.append(lead()->itemText(i));
    QCOMPARE(choices, (QStringList{u"When it starts"_s, u"1 min before"_s, u"2 min before"_s, u"5 min before"_s,
                                   u"10 min before"_s}));
    QCOMPARE(lead()->currentText(), u"1 min before"_s);
    QCOMPARE(lead()->accessibleName(), u"Remind me"_s);
    lead()->setFocus();
    const QList<std::int64_t> minutes{2, 5, 10};
    for (const std::int64_t each : minutes) {
        QTest::keyClick(lead(), Qt::Key_Down);
        QCOMPARE(panel->preferences.get(preference::leadMinutes), each);
    }
    QTest::keyClick(lead(), Qt::Key_Home);
    QCOMPARE(panel->preferences.get(preference::leadMinutes), 0);
    QCOMPARE(lead()->currentText(), u"When it starts"_s);
    // The wheel scrolls the panel.
    QWheelEvent wheel({5, 5}, lead()->mapToGlobal(QPointF(5, 5)), {0, -120}, {0, -120}, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(lead(), &wheel);
    QCOMPARE(panel->preferences.get(preference::leadMinutes), 0);
}

void tst_SettingsView::showsNoChoiceForAnotherLeadTime_data()
{
    QTest::addColumn<qint64>("minutes");
    QTest::newRow("3") << qint64(3);
    QTest::newRow("15") << qint64(15);
    QTest::newRow("-1") << qint64(-1);
    QTest::newRow("greatest") << std::numeric_limits<qint64>::max();
}

void tst_SettingsView::showsNoChoiceForAnotherLeadTime()
{
    QFETCH(qint64, minutes);
    panel->preferences.set(preference::leadMinutes, minutes);
    panel->open({ada});
    QCOMPARE(lead()->currentIndex(), -1);
    QCOMPARE(lead()->currentText(), QString());
    QCOMPARE(lead()->count(), 5);
    QCOMPARE(panel->preferences.get(preference::leadMinutes), minutes); // and it is left alone
    panel->preferences.set(preference::leadMinutes, 5);
    QCOMPARE(lead()->currentText(), u"5 min before"_s);
}

void tst_SettingsView::switchesWriteTheirPreferenceAtOnce_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("first");
    QTest::newRow("video") << u"Video meetings only"_s << u"onlyWithVideo"_s << false;
    QTest::newRow("hotkey") << u"Press / twice to open Kelp"_s << u"doubleSlash"_s << true;
}

void tst_SettingsView::switchesWriteTheirPreferenceAtOnce()
{
    QFETCH(QString, name);
    QFETCH(QString, key);
    QFETCH(bool, first);
    panel->open({ada});
    QCOMPARE(isOn(name), first);
    panel->click(name);
    QCOMPARE(panel->preferences.values().value(key).toBool(first), !first);
    QTest::keyClick(panel->button(name), Qt::Key_Space);
    QCOMPARE(panel->preferences.values().value(key).toBool(!first), first);
    QTest::keyClick(panel->button(name), Qt::Key_Return);
    QCOMPARE(isOn(name), !first);
    // Others may change it, too.
    if (key == u"doubleSlash"_s)
        panel->preferences.set(preference::doubleSlash, first);
    else
        panel->preferences.set(preference::onlyWithVideo, first);
    QCOMPARE(isOn(name), first);
}

void tst_SettingsView::survivesPreferencesOfWrongTypes()
{
    const QJsonObject nonsense{{u"leadMinutes"_s, u"soon"_s},     {u"onlyWithVideo"_s, 7},
                               {u"doubleSlash"_s, u"no"_s},       {u"calendarChoices"_s, QJsonArray{1, 2}},
                               {u"pausedUntil"_s, u"for ever"_s}, {u"clientID"_s, QJsonObject()}};
    Preferences stored(nonsense);
    panel->open({ada});
    SettingsView view({*panel->auth, *panel->scheduler, stored, panel->clock, panel->opener, panel->loginItem});
    view.show();
    QCOMPARE(view.findChild<Picker *>()->currentText(), u"When it starts"_s);
    for (const QAbstractButton *each : view.findChildren<QAbstractButton *>())
        QVERIFY(!each->isChecked());
    QCOMPARE(stored.values(), nonsense);
}

void tst_SettingsView::showsWhetherKelpIsReallyLaunchedAtLogin()
{
    const QString name = u"Launch at login"_s;
    panel->loginItem.enabled = true;
    panel->open({ada});
    QVERIFY(isOn(name));
    panel->click(name);
    QVERIFY(!panel->loginItem.enabled && !isOn(name));
    panel->click(name);
    QVERIFY(panel->loginItem.enabled && isOn(name));
    // Another tool.
    panel->loginItem.enabled = false;
    panel->clock.advance(1.1);
    QVERIFY(!isOn(name));
    panel->view->hide();
    panel->loginItem.enabled = true;
    panel->view->show();
    QVERIFY(isOn(name));
}

void tst_SettingsView::tellsWhyLaunchAtLoginFailed()
{
    const QString name = u"Launch at login"_s;
    panel->loginItem.error = u"/home/ada/.config/autostart: Permission denied"_s;
    panel->open({ada});
    panel->click(name);
    QVERIFY(!isOn(name));
    QVERIFY(panel->reads(u"Launch at login: /home/ada/.config/autostart: Permission denied"_s));
    panel->loginItem.error.clear();
    panel->click(name);
    QVERIFY(isOn(name));
    QVERIFY(panel->texts().filter(u"Permission denied"_s).isEmpty());
}

void tst_SettingsView::tellsWhereTheHotkeyCannotBeHeard()
{
    const QString name = u"Press / twice to open Kelp"_s;
    panel->open({ada});
    QCOMPARE(panel->button(name)->toolTip(), QString());
    panel->view->isHotkeyTrusted = [] { return false; };
    panel->clock.advance(1.1);
    QVERIFY(panel->button(name)->toolTip().contains(u"bind a key to the command kelp"_s));
    QCOMPARE(panel->button(name)->accessibleDescription(), panel->button(name)->toolTip());
    QVERIFY(panel->button(name)->isEnabled());
    panel->view->isHotkeyTrusted = [] { return true; };
    panel->clock.advance(1.1);
    QCOMPARE(panel->button(name)->toolTip(), QString());
    panel->view->isHotkeyTrusted = {};
    panel->clock.advance(1.1);
    QVERIFY(!panel->button(name)->toolTip().isEmpty());
}

void tst_SettingsView::opensTheAppearanceWindow()
{
    panel->open({ada});
    int opened = 0;
    panel->view->onAppearance = [&] { ++opened; };
    panel->click(u"Themes, sounds & more"_s);
    QTest::keyClick(panel->button(u"Themes, sounds & more"_s), Qt::Key_Return);
    QCOMPARE(opened, 2);
    panel->view->onAppearance = {};
    panel->clock.advance(1.1);
    QVERIFY(!panel->button(u"Themes, sounds & more"_s));
}

QTEST_MAIN(tst_SettingsView)
#include "tst_SettingsView.moc"
