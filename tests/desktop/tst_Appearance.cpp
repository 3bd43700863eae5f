#include "desktop/OneAccount.h"
#include "support/KelpRig.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTest>

#include <algorithm>

using namespace kelp::test;
using namespace Qt::StringLiterals;

/// The appearance window of the running application, as a person uses it: with the mouse alone, and with the keyboard
/// alone. What is said comes from the accessibility tree; what is done shows in the preferences file.
class tst_Appearance : public QObject, private KelpRig
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { endKelp(); }

    void worksWithTheMouseAlone();
    void worksWithTheKeyboardAlone();
    void takesAPictureFromTheFileDialog();
    void comesBackWhereItWasPut();

private:
    void openWindow();
    void openWindowAgain();
    [[nodiscard]] bool coversBothMonitors() const;
};

namespace {

constexpr int soon = 15'000; // ms: the machine may be busy

} // namespace

void tst_Appearance::initTestCase()
{
    QVERIFY(startDesktop());
}

void tst_Appearance::init()
{
    desktop.forget();
    QJsonObject preferences = oneAccount::preferences();
    preferences.insert(u"sound"_s, u"None"_s);
    desktop.writePreferences(preferences);
    desktop.writeAccount(oneAccount::email, oneAccount::refreshToken);
    QVERIFY(startSandbox(oneAccount::seed()));
}

/// By way of the panel, which a second start opens.
void tst_Appearance::openWindow()
{
    QVERIFY(startKelp());
    QTRY_VERIFY_WITH_TIMEOUT(oneAccount::refreshes(*sandbox) >= 1, soon);
    openWindowAgain();
    QCOMPARE(kelp->windows().first().width(), 960);
}

void tst_Appearance::openWindowAgain()
{
    QVERIFY(openPanel());
    QVERIFY(person->click(u"Themes, sounds & more"_s));
    QTRY_VERIFY_WITH_TIMEOUT(reader->reads(u"Overlay"_s), soon);
    QTRY_COMPARE(kelp->windows().size(), 1); // the panel has gone
    QTRY_VERIFY(kelp->panelIsActive());      // and this one has the keyboard
}

/// The window lies behind.
bool tst_Appearance::coversBothMonitors() const
{
    const QList<QRect> shown = kelp->windows();
    const QList<QRect> monitors = PrivateDesktop::monitors();
    return std::all_of(monitors.begin(), monitors.end(), [&](const QRect &each) { return shown.contains(each); });
}

void tst_Appearance::worksWithTheMouseAlone()
{
    openWindow();
    QTRY_COMPARE(reader->isChecked(u"Midnight"_s), std::optional(true));
    QVERIFY(person->click(u"Paper"_s));
    QTRY_COMPARE(preference(u"theme"_s), QJsonValue(u"paper"_s));
    QTRY_COMPARE(reader->isChecked(u"Paper"_s), std::optional(true));
    QCOMPARE(reader->isChecked(u"Midnight"_s), std::optional(false));
    QVERIFY(person->click(u"Big ring"_s));
    QTRY_COMPARE(preference(u"countdownStyle"_s), QJsonValue(u"ring"_s));
    QVERIFY(person->click(u"Number of people"_s));
    QTRY_COMPARE(preference(u"showAttendees"_s), QJsonValue(false));
    QVERIFY(person->click(u"Calendar name"_s));
    QTRY_COMPARE(preference(u"showCalendar"_s), QJsonValue(false));
    QVERIFY(person->click(u"Pause my music"_s));
    QTRY_COMPARE(preference(u"pauseMusic"_s), QJsonValue(true));

    QVERIFY(person->click(u"Preview full screen"_s));
    QTRY_VERIFY_WITH_TIMEOUT(coversBothMonitors(), soon);
    QTRY_VERIFY(reader->reads(u"Test meeting"_s));
    QVERIFY(person->click(u"Dismiss"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!kelp->coversAny(), soon);
    QTRY_VERIFY(reader->reads(u"Overlay"_s));
}

void tst_Appearance::worksWithTheKeyboardAlone()
{
    openWindow();
    QTRY_COMPARE(reader->focused(), u"Midnight"_s);
    person->press({u"Right"_s});
    QTRY_COMPARE(preference(u"theme"_s), QJsonValue(u"aurora"_s));
    person->press({u"Down"_s});
    QTRY_COMPARE(preference(u"theme"_s), QJsonValue(u"zen"_s));
    person->press({u"End"_s, u"Left"_s});
    QTRY_COMPARE(preference(u"theme"_s), QJsonValue(u"random"_s));
    QTRY_VERIFY(reader->reads(u"A different theme each meeting"_s));
    person->press({u"Home"_s});
    QTRY_COMPARE(preference(u"theme"_s), QJsonValue(u"midnight"_s));
    QVERIFY(person->tabTo(u"Pill"_s));
    person->press({u"Right"_s});
    QTRY_COMPARE(preference(u"countdownStyle"_s), QJsonValue(u"ring"_s));
    QVERIFY(person->tabTo(u"Calendar name"_s));
    person->press({u"space"_s});
    QTRY_COMPARE(preference(u"showCalendar"_s), QJsonValue(false));
    QVERIFY(person->tabTo(u"1 min"_s));
    person->press({u"Down"_s, u"Down"_s});
    QTRY_COMPARE(preference(u"snoozeMinutes"_s), QJsonValue(5));
    QVERIFY(person->tabTo(u"None"_s));
    person->press({u"Down"_s}); // over the heading
    QTRY_COMPARE(preference(u"sound"_s), QJsonValue(u"Chime"_s));
    QVERIFY(person->tabTo(u"Volume"_s));
    person->press({u"End"_s});
    QTRY_COMPARE(preference(u"soundVolume"_s), QJsonValue(1));
    QVERIFY(person->tabTo(u"All displays"_s));
    person->press({u"Down"_s});
    QTRY_COMPARE(preference(u"displays"_s), QJsonValue(u"primary"_s));

    QVERIFY(person->tabTo(u"Preview full screen"_s));
    person->press({u"Return"_s});
    QTRY_VERIFY_WITH_TIMEOUT(kelp->coversAny(), soon);
    person->press({u"Escape"_s});
    QTRY_VERIFY_WITH_TIMEOUT(!kelp->coversAny(), soon);
    QTRY_VERIFY(kelp->panelIsActive());
    person->press({u"ctrl+w"_s});
    QTRY_COMPARE(kelp->windows().size(), 0);
    QVERIFY(kelp->isRunning());
}

void tst_Appearance::takesAPictureFromTheFileDialog()
{
    const QString picture = desktop.folder(u"beach.png"_s);
    QImage image(800, 500, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QVERIFY(image.save(picture));
    openWindow();
    person->press({u"End"_s});
    QTRY_COMPARE(reader->focused(), u"Choose image…"_s);
    person->press({u"space"_s});
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows().size(), 2, soon);
    person->press({u"Escape"_s});
    QTRY_COMPARE(kelp->windows().size(), 1);
    QVERIFY(preference(u"theme"_s).isUndefined());
    QTRY_COMPARE(reader->focused(), u"Choose image…"_s);
    person->press({u"space"_s});
    QTRY_COMPARE_WITH_TIMEOUT(kelp->windows().size(), 2, soon);
    QTRY_COMPARE(reader->focused(), u"File name:"_s);
    person->type(picture);
    person->press({u"Return"_s});
    QTRY_COMPARE_WITH_TIMEOUT(preference(u"theme"_s), QJsonValue(u"custom"_s), soon);
    QVERIFY(QFileInfo::exists(preference(u"customImagePath"_s).toString()));
    QTRY_COMPARE(reader->isChecked(u"Your image"_s), std::optional(true));
}

void tst_Appearance::comesBackWhereItWasPut()
{
    openWindow();
    // Onto the right monitor, and smaller than it came.
    const int left = PrivateDesktop::monitors().last().left() + 70;
    desktop.display().run(u"xdotool"_s, {u"getactivewindow"_s, u"windowsize"_s, u"800"_s, u"560"_s, u"windowmove"_s,
                                         QString::number(left), u"90"_s});
    QTRY_COMPARE(kelp->windows().first().size(), QSize(800, 560));
    QTRY_VERIFY(kelp->windows().first().left() >= left);
    const QList<QRect> put = kelp->windows();
    person->press({u"ctrl+w"_s});
    QTRY_COMPARE(kelp->windows().size(), 0);
    openWindowAgain();
    QTRY_COMPARE(kelp->windows(), put);
}

QTEST_GUILESS_MAIN(tst_Appearance)
#include "tst_Appearance.moc"
