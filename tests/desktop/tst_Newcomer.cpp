#include "desktop/TwoAccounts.h"
#include "support/Browser.h"
#include "support/KelpRig.h"
#include "support/TrayPanel.h"

#include <QDir>
#include <QImage>
#include <QTest>

using namespace kelp::test;
using namespace kelp::test::twoAccounts;
using namespace Qt::StringLiterals;

/// All that someone new to Kelp does with it on the first day, from signing in to removing it again: once with the
/// mouse alone and once with the keyboard alone. What is said comes from the accessibility tree; what is done shows in
/// the preferences file.
class tst_Newcomer : public QObject, private KelpRig
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { endKelp(); }

    void byMouse();
    void byKeyboard();

private:
    enum class By { Mouse, Keyboard };
    using Towards = Person::Towards;

    void journey();

    // The steps.
    void signIn();
    void dismissTheWelcome();
    void seeTheNextMeeting();
    void addTheOtherAccount();
    void pauseAndResume();
    void toggleCalendars();
    void openAppearance();
    void chooseEveryTheme();
    void leaveTheChooserOfPictures();
    void chooseEverySound();
    void previewOnAllDisplays();
    void leaveAppearance();
    void removeAnAccount();
    void quit();

    // What they are made of.
    [[nodiscard]] bool use(const QString &control, Towards towards = Towards::Next);
    [[nodiscard]] bool chooseFrom(const QString &control, const QString &item);
    [[nodiscard]] bool callPanel();
    [[nodiscard]] bool leaveDialog();
    void allow(const QString &email);
    void allowByKeyboard(const QString &email);
    void toggle(const QString &calendar, int number);
    void chooseSoundsByMouse();
    void chooseSoundsByKeyboard();
    void checkSound(const QString &name, const QString &value);
    [[nodiscard]] bool isActive();
    void keepPicture(const QString &name);

    By by = By::Mouse;
    Browser browser;
    TrayPanel tray{desktop};
};

namespace {

constexpr int soon = 20'000; // ms: the machine may be busy

struct Choice
{
    QString name;
    QString value; ///< in the preferences
};

const QList<Choice> themes{
    {u"Midnight"_s, u"midnight"_s}, {u"Aurora"_s, u"aurora"_s},     {u"Synthwave"_s, u"synthwave"_s},
    {u"Paper"_s, u"paper"_s},       {u"Terminal"_s, u"terminal"_s}, {u"Zen"_s, u"zen"_s},
    {u"Deep Space"_s, u"space"_s},  {u"Lo-fi Rain"_s, u"lofi"_s},   {u"Surprise me"_s, u"random"_s}};
const QString ownPicture = u"Choose image…"_s;

/// Those that are chosen by their names.
const QStringList sounds{u"None"_s,    u"Chime"_s,        u"Bells"_s,  u"Doorbell"_s, u"Marimba"_s, u"Harp"_s,
                         u"Crystal"_s, u"Singing bowl"_s, u"Arcade"_s, u"Glass"_s,    u"Hero"_s,    u"Submarine"_s,
                         u"Ping"_s,    u"Purr"_s,         u"Funk"_s,   u"Blow"_s,     u"Pop"_s,     u"Tink"_s};
const QString usualSound = u"Glass"_s;
const QString ownSound = u"Audio file…"_s;
const QString spotify = u"Spotify song"_s;

} // namespace

void tst_Newcomer::initTestCase()
{
    QVERIFY(startDesktop());
    QVERIFY2(browser.start(), qPrintable(browser.problem()));
    QVERIFY(tray.start());
}

void tst_Newcomer::init()
{
    desktop.forget();
    desktop.writePreferences(oneAccount::preferences());
    QVERIFY(startSandbox(seed()));
}

void tst_Newcomer::byMouse()
{
    by = By::Mouse;
    journey();
}

void tst_Newcomer::byKeyboard()
{
    by = By::Keyboard;
    journey();
}

void tst_Newcomer::journey()
{
    for (const auto step :
         {&tst_Newcomer::signIn, &tst_Newcomer::dismissTheWelcome, &tst_Newcomer::seeTheNextMeeting,
          &tst_Newcomer::addTheOtherAccount, &tst_Newcomer::pauseAndResume, &tst_Newcomer::toggleCalendars,
          &tst_Newcomer::openAppearance, &tst_Newcomer::chooseEveryTheme, &tst_Newcomer::leaveTheChooserOfPictures,
          &tst_Newcomer::chooseEverySound, &tst_Newcomer::previewOnAllDisplays, &tst_Newcomer::leaveAppearance,
          &tst_Newcomer::removeAnAccount, &tst_Newcomer::quit}) {
        (this->*step)();
        if (QTest::currentTestFailed())
            return keepPicture(u"failed"_s);
    }
}

/// The panel opens by itself where there is no account.
void tst_Newcomer::signIn()
{
    QVERIFY(startKelp());
    QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), soon);
    QVERIFY(person->reads(
        u"Connect your Google Calendar and Kelp will take over your screen right before each meeting."_s));
    keepPicture(u"sign-in"_s);
    QVERIFY(use(u"Sign in with Google"_s));
    allow(robin);
}

void tst_Newcomer::allow(const QString &email)
{
    const qsizetype before = email == robin ? 0 : 1;
    QTRY_COMPARE_WITH_TIMEOUT(desktop.opened().size(), before + 1, soon);
    QVERIFY2(browser.open(QUrl::fromEncoded(desktop.opened().last(), QUrl::StrictMode)), qPrintable(browser.problem()));
    if (by == By::Keyboard) {
        allowByKeyboard(email);
    } else {
        QVERIFY2(browser.clickFirst(u"input[value='%1']"_s.arg(email)), qPrintable(browser.problem()));
        QVERIFY2(browser.click(u"allow"_s), qPrintable(browser.problem()));
    }
    QTRY_VERIFY2_WITH_TIMEOUT(browser.text().contains("You can close this tab and go back to Kelp."_L1),
                              qPrintable(browser.text() + browser.problem()), soon);
    QTRY_VERIFY_WITH_TIMEOUT(desktop.accounts().contains(email.toUtf8()), soon);
    QCOMPARE(preference(u"clientID"_s), QJsonValue(Sandbox::clientId()));
}

void tst_Newcomer::allowByKeyboard(const QString &email)
{
    const auto pressUntil = [this](Browser::Key key, const QString &focused) {
        for (int steps = 0; steps < 6 && browser.focused() != focused; ++steps) {
            if (!browser.press(key))
                return false;
        }
        return browser.focused() == focused;
    };
    QVERIFY2(pressUntil(Browser::Key::Tab, robin), qPrintable(browser.focused()));
    QVERIFY2(pressUntil(Browser::Key::Down, email), qPrintable(browser.focused()));
    QVERIFY2(pressUntil(Browser::Key::Tab, u"allow"_s), qPrintable(browser.focused()));
    QVERIFY2(browser.press(Browser::Key::Return), qPrintable(browser.problem()));
}

void tst_Newcomer::dismissTheWelcome()
{
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows(), PrivateDesktop::monitors(), soon);
    QVERIFY(person->reads(u"Kelp is set up"_s));
    QVERIFY(person->reads(u"Connected to robin@example.com · 12 calendars"_s));
    QVERIFY(person->readsBeginning(u"Next meeting: Design review at "_s));
    if (by == By::Mouse)
        QVERIFY(person->click(u"Got it"_s));
    else
        person->press({u"Return"_s});
    QTRY_VERIFY_WITH_TIMEOUT(kelp->windows().isEmpty(), soon);
    QVERIFY(preference(u"shownMeetings"_s).toObject().isEmpty());
}

void tst_Newcomer::seeTheNextMeeting()
{
    QVERIFY(callPanel());
    QVERIFY(person->reads(u"Up next"_s));
    QVERIFY(person->reads(u"Design review"_s));
    QVERIFY(person->readsBeginning(u"Kelp in 1 h "_s));
    QVERIFY(person->reads(u"12 of 12"_s));
    keepPicture(u"next meeting"_s);
}

void tst_Newcomer::addTheOtherAccount()
{
    QVERIFY(use(u"Add account"_s, Towards::Previous));
    allow(mika);
    QVERIFY(person->reads(mika));
    QVERIFY(person->reads(u"Plans for the week"_s));
    QVERIFY(desktop.accounts().contains(robin.toUtf8()));
    QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), soon);
}

void tst_Newcomer::pauseAndResume()
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    QVERIFY(chooseFrom(u"Pause Kelp"_s, u"For 1 hour"_s));
    QTRY_VERIFY_WITH_TIMEOUT(preference(u"pausedUntil"_s).isObject(), soon);
    const QDateTime until =
        QDateTime::fromString(preference(u"pausedUntil"_s)[u"date"_s].toString(), Qt::ISODateWithMs);
    QVERIFY(until >= before.addSecs(3599) && until <= QDateTime::currentDateTimeUtc().addSecs(3600));
    QVERIFY(person->readsBeginning(u"Paused until "_s));
    keepPicture(u"paused"_s);
    QVERIFY(use(u"Resume"_s));
    QTRY_VERIFY_WITH_TIMEOUT(preference(u"pausedUntil"_s).isUndefined(), soon);
    QTRY_VERIFY_WITH_TIMEOUT(!reader->control(u"Resume"_s), soon);
}

void tst_Newcomer::toggleCalendars()
{
    QVERIFY(use(robin));
    QTRY_VERIFY_WITH_TIMEOUT(reader->isChecked(withEmoji).has_value(), soon);
    toggle(veryLong, 11);
    toggle(rightToLeft, 10);
    toggle(withEmoji, 9);
}

/// Off and on again.
void tst_Newcomer::toggle(const QString &calendar, int number)
{
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(reader->isChecked(calendar), std::optional(true));
    const auto choice = [&] { return preference(u"calendarChoices"_s)[calendarKey(robin, number)]; };
    QVERIFY(use(calendar));
    QTRY_COMPARE_WITH_TIMEOUT(choice(), QJsonValue(false), soon);
    QTRY_COMPARE_WITH_TIMEOUT(reader->isChecked(calendar), std::optional(false), soon);
    QVERIFY(person->reads(u"11 of 12"_s));
    keepPicture(u"calendar %1"_s.arg(number));
    QVERIFY(use(calendar));
    QTRY_COMPARE_WITH_TIMEOUT(choice(), QJsonValue(true), soon);
    QTRY_COMPARE_WITH_TIMEOUT(reader->isChecked(calendar), std::optional(true), soon);
    QVERIFY(person->noLongerReads(u"11 of 12"_s));
}

void tst_Newcomer::openAppearance()
{
    QVERIFY(use(u"Themes, sounds & more"_s, Towards::Previous));
    QVERIFY(person->reads(u"Overlay"_s));
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows().size(), 1, soon); // the panel has gone
    QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), soon);      // and this one has the keyboard
}

void tst_Newcomer::chooseEveryTheme()
{
    QTRY_COMPARE_WITH_TIMEOUT(reader->isChecked(themes.first().name), std::optional(true), soon);
    if (by == By::Keyboard) {
        QVERIFY(person->tabTo(themes.first().name));
        person->press({u"Right"_s}); // away from it, in order to come back
    } else {
        QVERIFY(person->click(themes.last().name));
    }
    QTRY_VERIFY_WITH_TIMEOUT(preference(u"theme"_s).isString(), soon);
    for (const Choice &theme : themes) {
        if (by == By::Mouse)
            QVERIFY(person->click(theme.name));
        else
            person->press({theme.name == themes.first().name ? u"Home"_s : u"Right"_s});
        QTRY_COMPARE_WITH_TIMEOUT(preference(u"theme"_s), QJsonValue(theme.value), soon);
        QTRY_COMPARE_WITH_TIMEOUT(reader->isChecked(theme.name), std::optional(true), soon);
        keepPicture(u"theme "_s + theme.value);
    }
    QVERIFY(person->reads(u"A different theme each meeting"_s));
}

void tst_Newcomer::leaveTheChooserOfPictures()
{
    if (by == By::Keyboard) {
        person->press({u"Right"_s});
        QTRY_COMPARE_WITH_TIMEOUT(reader->focused(), ownPicture, soon);
        person->press({u"space"_s});
    } else {
        QVERIFY(person->click(ownPicture));
    }
    QVERIFY(leaveDialog());
    QCOMPARE(preference(u"theme"_s), QJsonValue(u"random"_s));
    QVERIFY(preference(u"customImagePath"_s).isUndefined());
}

void tst_Newcomer::chooseEverySound()
{
    if (by == By::Mouse)
        chooseSoundsByMouse();
    else
        chooseSoundsByKeyboard();
}

void tst_Newcomer::chooseSoundsByMouse()
{
    QString last = usualSound;
    for (const QString &each : sounds) {
        QVERIFY(chooseFrom(last, each));
        checkSound(each, each);
        if (QTest::currentTestFailed())
            return;
        last = each;
    }
    QVERIFY(chooseFrom(last, ownSound));
    QVERIFY(leaveDialog());
    checkSound(last, last);
    QVERIFY(chooseFrom(last, spotify));
    checkSound(spotify, u"spotify"_s);
}

void tst_Newcomer::chooseSoundsByKeyboard()
{
    QVERIFY(person->tabTo(usualSound));
    for (const QString &each : sounds) {
        person->press({each == sounds.first() ? u"Home"_s : u"Down"_s});
        checkSound(each, each);
        if (QTest::currentTestFailed())
            return;
    }
    // These two from the open list, like everything else from there.
    QVERIFY(chooseFrom(sounds.last(), ownSound));
    QVERIFY(leaveDialog());
    checkSound(sounds.last(), sounds.last());
    QVERIFY(chooseFrom(sounds.last(), spotify));
    checkSound(spotify, u"spotify"_s);
}

void tst_Newcomer::checkSound(const QString &name, const QString &value)
{
    QTRY_COMPARE_WITH_TIMEOUT(preference(u"sound"_s), QJsonValue(value), soon);
    QTRY_VERIFY_WITH_TIMEOUT(reader->control(name), soon);
    QCOMPARE(reader->control(u"Volume"_s).has_value(), value != u"None"_s);
    if (value == u"spotify"_s)
        QVERIFY(person->reads(u"Spotify isn't installed, so Kelp will play Glass instead."_s));
    keepPicture(u"sound "_s + value);
}

void tst_Newcomer::previewOnAllDisplays()
{
    QVERIFY(use(u"Preview full screen"_s));
    const auto coversAll = [this] {
        const QList<QRect> shown = kelp->windows();
        const QList<QRect> monitors = PrivateDesktop::monitors();
        return std::all_of(monitors.begin(), monitors.end(), [&](const QRect &each) { return shown.contains(each); });
    };
    QTRY_VERIFY_WITH_TIMEOUT(coversAll(), soon);
    QVERIFY(person->reads(u"Test meeting"_s));
    keepPicture(u"preview"_s);
    if (by == By::Mouse)
        QVERIFY(person->click(u"Dismiss"_s));
    else
        person->press({u"Escape"_s});
    QTRY_VERIFY_WITH_TIMEOUT(!kelp->coversAny(), soon);
    QVERIFY(person->reads(u"Overlay"_s));
    QCOMPARE(preference(u"theme"_s), QJsonValue(u"random"_s));
    QVERIFY(preference(u"shownMeetings"_s).toObject().isEmpty());
}

/// With the keyboard it stays open, and the panel comes in front of it.
void tst_Newcomer::leaveAppearance()
{
    QTRY_VERIFY_WITH_TIMEOUT(isActive(), soon);
    if (by == By::Mouse) {
        QVERIFY(person->closeWindow());
        QTRY_VERIFY_WITH_TIMEOUT(kelp->windows().isEmpty(), soon);
    }
    QVERIFY(callPanel());
    QVERIFY(person->reads(u"Design review"_s));
}

void tst_Newcomer::removeAnAccount()
{
    const QString options = u"Options for "_s + robin;
    QVERIFY(chooseFrom(options, u"Remove account…"_s));
    QVERIFY(person->reads(u"Remove "_s + robin));
    QVERIFY(use(u"Cancel"_s));
    QVERIFY(person->noLongerReads(u"Remove "_s + robin));
    QVERIFY(desktop.accounts().contains(robin.toUtf8()));

    QVERIFY(chooseFrom(options, u"Remove account…"_s));
    QVERIFY(person->reads(u"Remove "_s + robin));
    keepPicture(u"removal"_s);
    QVERIFY(use(u"Remove"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!desktop.accounts().contains(robin.toUtf8()), soon);
    QVERIFY(desktop.accounts().contains(mika.toUtf8()));
    QVERIFY(person->noLongerReads(robin));
    QVERIFY(person->noLongerReads(u"Design review"_s));
    QVERIFY(person->reads(u"Plans for the week"_s));

    QVERIFY(chooseFrom(u"Options for "_s + mika, u"Remove account…"_s));
    QVERIFY(use(u"Remove"_s));
    QVERIFY(person->reads(
        u"Connect your Google Calendar and Kelp will take over your screen right before each meeting."_s));
    QTRY_VERIFY_WITH_TIMEOUT(!desktop.accounts().contains(mika.toUtf8()), soon);
    QCOMPARE(preference(u"sound"_s), QJsonValue(u"spotify"_s)); // the choices stay
}

void tst_Newcomer::quit()
{
    keepPicture(u"signed out"_s);
    const QJsonObject before = desktop.preferences();
    QVERIFY(use(u"Quit Kelp"_s));
    QCOMPARE(kelp->exitStatus(), 0);
    QCOMPARE(desktop.preferences(), before);
}

/// Clicks on it, or goes there and presses it: some with Return, some with the space bar.
bool tst_Newcomer::use(const QString &control, Towards towards)
{
    if (by == By::Mouse)
        return person->click(control);
    if (!person->tabTo(control, towards))
        return false;
    person->press({control.size() % 2 ? u"Return"_s : u"space"_s});
    return true;
}

bool tst_Newcomer::chooseFrom(const QString &control, const QString &item)
{
    if (by == By::Mouse)
        return person->click(control) && person->choose(item);
    if (!person->tabTo(control))
        return false;
    person->press({u"space"_s});
    if (!person->goTo(item))
        return false;
    person->press({u"Return"_s});
    return true;
}

bool tst_Newcomer::callPanel()
{
    if (by == By::Mouse) {
        if (tray.settled().isNull())
            return false;
        person->clickAt(TrayPanel::item());
    } else {
        person->pressSlashes();
    }
    return QTest::qWaitFor([this] { return isActive() && reader->reads(u"Up next"_s); }, soon);
}

/// The file dialog that is about to open.
bool tst_Newcomer::leaveDialog()
{
    if (!QTest::qWaitFor([this] { return kelp->windows().size() == 2; }, soon) || !person->reads(u"Look in:"_s))
        return false;
    if (by == By::Mouse) {
        if (!person->click(u"Cancel"_s))
            return false;
    } else {
        person->press({u"Escape"_s});
    }
    return QTest::qWaitFor([this] { return kelp->panelIsActive(); }, soon);
}

/// Whether Kelp has the keyboard.
bool tst_Newcomer::isActive()
{
    const QString owner = desktop.display().run(u"xdotool"_s, {u"getwindowfocus"_s, u"getwindowpid"_s});
    return owner.trimmed() == QString::number(kelp->pid());
}

/// For the eye, where somebody wants to look.
void tst_Newcomer::keepPicture(const QString &name)
{
    const QString folder = qEnvironmentVariable("KELP_PICTURES");
    if (folder.isEmpty())
        return;
    QVERIFY(QDir().mkpath(folder));
    const QString way = by == By::Mouse ? u"mouse"_s : u"keyboard"_s;
    QVERIFY(desktop.display().picture().save(u"%1/newcomer %2 %3.png"_s.arg(folder, way, name)));
}

QTEST_GUILESS_MAIN(tst_Newcomer)

#include "tst_Newcomer.moc"
