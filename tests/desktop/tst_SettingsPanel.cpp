#include "desktop/OneAccount.h"
#include "support/FakePortal.h"
#include "support/KelpRig.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

/// The panel of the running application, as a person uses it: with the mouse alone, and with the keyboard alone. What
/// is said comes from the accessibility tree; what is done shows in the files.
class tst_SettingsPanel : public QObject, private KelpRig
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { endKelp(); }

    void worksWithTheMouseAlone();
    void worksWithTheKeyboardAlone();
    void tellsThatAnAccountWasRevokedWhileItIsOpen();
    void tellsWhyLaunchAtLoginCannotBeChanged();
    void followsTheDesktopsColours();

private:
    void openPanelWithMeetings();
    [[nodiscard]] QStringList textsThatBegin(const QString &beginning);
    [[nodiscard]] QString autostart() const { return desktop.folder(u".config/autostart/app.kelp.Kelp.desktop"_s); }
};

namespace {

const QString email = oneAccount::email;
const QString holidays = u"Holidays"_s;
const QString holidaysKey = email + u"|en.german#holiday@group.v.calendar.google.com"_s;
constexpr int soon = 12'000; // ms: the machine may be busy

} // namespace

void tst_SettingsPanel::initTestCase()
{
    QVERIFY(startDesktop());
}

void tst_SettingsPanel::init()
{
    desktop.forget();
    QFile::remove(autostart());
    oneAccount::signIn(desktop);
    QVERIFY(startSandbox(oneAccount::seed({oneAccount::meeting(u"review"_s, u"Design review"_s, 7200)})));
}

void tst_SettingsPanel::openPanelWithMeetings()
{
    QVERIFY(startKelp());
    QTRY_COMPARE_WITH_TIMEOUT(sandbox->requests().size(), 4, soon); // everything is there
    QVERIFY(openPanel());
    QVERIFY(person->reads(u"Design review"_s));
}

QStringList tst_SettingsPanel::textsThatBegin(const QString &beginning)
{
    QStringList texts = reader->texts();
    texts.removeIf([&](const QString &each) { return !each.startsWith(beginning); });
    return texts;
}

void tst_SettingsPanel::worksWithTheMouseAlone()
{
    openPanelWithMeetings();
    QVERIFY(!textsThatBegin(u"Kelp in 2 h "_s).isEmpty() || !textsThatBegin(u"Kelp in 1 h "_s).isEmpty());

    QVERIFY(person->click(u"Pause Kelp"_s));
    QVERIFY(person->choose(u"For 1 hour"_s));
    QTRY_VERIFY(preference(u"pausedUntil"_s).isObject());
    QTRY_COMPARE(textsThatBegin(u"Paused until "_s).size(), 1);
    QVERIFY(person->click(u"Resume"_s));
    QTRY_VERIFY(preference(u"pausedUntil"_s).isUndefined());
    QTRY_COMPARE(textsThatBegin(u"Paused until "_s).size(), 0);

    QVERIFY(person->click(u"1 min before"_s));
    QVERIFY(person->choose(u"5 min before"_s));
    QTRY_COMPARE(preference(u"leadMinutes"_s).toInt(), 5);
    QTRY_VERIFY(reader->control(u"5 min before"_s));
    QCOMPARE(reader->isChecked(u"Video meetings only"_s), std::optional(false));
    QVERIFY(person->click(u"Video meetings only"_s));
    QTRY_COMPARE(preference(u"onlyWithVideo"_s), QJsonValue(true));
    QTRY_COMPARE(reader->isChecked(u"Video meetings only"_s), std::optional(true));
    QVERIFY(person->click(u"Press / twice to open Kelp"_s));
    QTRY_COMPARE(preference(u"doubleSlash"_s), QJsonValue(false));

    QVERIFY(person->click(u"Launch at login"_s));
    QTRY_VERIFY(QFileInfo::exists(autostart()));
    QTRY_COMPARE(reader->isChecked(u"Launch at login"_s), std::optional(true));
    QVERIFY(QFile::remove(autostart())); // with another tool
    QTRY_COMPARE(reader->isChecked(u"Launch at login"_s), std::optional(false));

    QVERIFY(!reader->control(holidays));
    QVERIFY(person->click(email));
    QTRY_COMPARE(reader->isChecked(holidays), std::optional(true));
    QVERIFY(reader->reads(u"2 of 3"_s));
    QVERIFY(person->click(holidays));
    QTRY_COMPARE(preference(u"calendarChoices"_s)[holidaysKey], QJsonValue(false));
    QTRY_VERIFY(reader->reads(u"1 of 3"_s));

    QVERIFY(person->click(u"Options for "_s + email));
    QVERIFY(person->choose(u"Remove account…"_s));
    QTRY_VERIFY(reader->reads(u"Remove "_s + email));
    QVERIFY(person->click(u"Cancel"_s));
    QTRY_VERIFY(!reader->reads(u"Remove "_s + email));
    QVERIFY(desktop.accounts().contains(email.toUtf8()));
    QVERIFY(person->click(u"Options for "_s + email));
    QVERIFY(person->choose(u"Remove account…"_s));
    QVERIFY(person->click(u"Remove"_s));
    QTRY_VERIFY(!desktop.accounts().contains(email.toUtf8()));
    QTRY_VERIFY(reader->button(u"Sign in with Google"_s));
    QVERIFY(!reader->reads(u"Design review"_s));

    QVERIFY(person->click(u"Quit Kelp"_s));
    QCOMPARE(kelp->exitStatus(), 0);
}

void tst_SettingsPanel::worksWithTheKeyboardAlone()
{
    openPanelWithMeetings();
    QVERIFY(person->tabTo(u"Pause Kelp"_s));
    person->press({u"space"_s});
    QTRY_COMPARE(kelp->windows().size(), 2);
    person->press({u"Down"_s, u"Down"_s, u"Return"_s}); // until the meeting ends
    QTRY_VERIFY(preference(u"pausedUntil"_s).isObject());
    QTRY_COMPARE(textsThatBegin(u"Paused until "_s).size(), 1);
    QVERIFY(person->tabTo(u"Resume"_s));
    person->press({u"Return"_s});
    QTRY_VERIFY(preference(u"pausedUntil"_s).isUndefined());
    QTRY_COMPARE(kelp->windows().size(), 1);

    QVERIFY(person->tabTo(u"1 min before"_s));
    person->press({u"Down"_s});
    QTRY_COMPARE(preference(u"leadMinutes"_s).toInt(), 2);
    QVERIFY(person->tabTo(u"Video meetings only"_s));
    person->press({u"space"_s});
    QTRY_COMPARE(preference(u"onlyWithVideo"_s), QJsonValue(true));
    QVERIFY(person->tabTo(u"Launch at login"_s));
    person->press({u"Return"_s});
    QTRY_VERIFY(QFileInfo::exists(autostart()));

    QVERIFY(person->tabTo(email));
    person->press({u"Return"_s});
    QTRY_VERIFY(reader->control(holidays));
    QVERIFY(person->tabTo(holidays));
    person->press({u"space"_s});
    QTRY_COMPARE(preference(u"calendarChoices"_s)[holidaysKey], QJsonValue(false));
    person->press({u"space"_s});
    QTRY_COMPARE(preference(u"calendarChoices"_s)[holidaysKey], QJsonValue(true));

    QVERIFY(person->tabTo(u"Options for "_s + email));
    person->press({u"space"_s});
    QTRY_COMPARE(kelp->windows().size(), 2);
    person->press({u"Down"_s, u"Return"_s});
    QTRY_COMPARE(reader->focused(), u"Cancel"_s);
    person->press({u"Escape"_s});
    QTRY_VERIFY(!reader->reads(u"Remove "_s + email));
    QVERIFY(kelp->panelIsActive());
    QVERIFY(person->tabTo(u"Options for "_s + email));
    person->press({u"space"_s});
    QTRY_COMPARE(kelp->windows().size(), 2);
    person->press({u"Down"_s, u"Return"_s});
    QTRY_COMPARE(reader->focused(), u"Cancel"_s);
    QVERIFY(person->tabTo(u"Remove"_s));
    person->press({u"space"_s});
    QTRY_VERIFY(!desktop.accounts().contains(email.toUtf8()));
    QTRY_VERIFY(reader->button(u"Sign in with Google"_s));

    person->press({u"Escape"_s});
    QTRY_VERIFY(kelp->windows().isEmpty());
    QVERIFY(kelp->isRunning());
}

void tst_SettingsPanel::tellsThatAnAccountWasRevokedWhileItIsOpen()
{
    openPanelWithMeetings();
    QVERIFY(person->click(email));
    QTRY_VERIFY(reader->control(holidays));
    QVERIFY(sandbox->revoke(email));
    QVERIFY(sandbox->expireAccessTokens());
    QVERIFY(person->click(u"Refresh calendar"_s));
    QTRY_VERIFY(reader->button(u"Sign in with Google"_s));
    QVERIFY(!reader->control(holidays));
    QTRY_COMPARE(textsThatBegin(email + u": "_s).size(), 1);
    QVERIFY(kelp->isRunning());
}

void tst_SettingsPanel::tellsWhyLaunchAtLoginCannotBeChanged()
{
    openPanelWithMeetings();
    QDir(desktop.folder(u".config/autostart"_s)).removeRecursively();
    QFile inTheWay(desktop.folder(u".config/autostart"_s));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    QVERIFY(person->click(u"Launch at login"_s));
    QTRY_COMPARE(textsThatBegin(u"Launch at login: "_s).size(), 1);
    QCOMPARE(reader->isChecked(u"Launch at login"_s), std::optional(false));
    QVERIFY(inTheWay.remove());
    QVERIFY(person->click(u"Launch at login"_s));
    QTRY_VERIFY(QFileInfo::exists(autostart()));
    QTRY_COMPARE(textsThatBegin(u"Launch at login: "_s).size(), 0);
}

void tst_SettingsPanel::followsTheDesktopsColours()
{
    FakePortal portal(desktop.sessionBus().connection());
    portal.values = {{u"color-scheme"_s, 1U}};
    openPanelWithMeetings();
    const auto ground = [this] {
        const QRect panel = kelp->windows().value(0);
        return desktop.display().pixel(panel.left() + 4, panel.top() + 4).lightness();
    };
    QTRY_VERIFY(ground() < 60);
    portal.change(u"color-scheme"_s, 2U);
    QTRY_VERIFY(ground() > 200);
    portal.change(u"color-scheme"_s, 1U);
    QTRY_VERIFY(ground() < 60);
}

QTEST_GUILESS_MAIN(tst_SettingsPanel)

#include "tst_SettingsPanel.moc"
