#include "desktop/OneAccount.h"
#include "support/KelpProcess.h"
#include "support/TrayPanel.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDir>
#include <QImage>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Kelp's item in the panel of a real desktop.
class tst_TrayX11 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void aClickTogglesThePanel();
    void thePanelIsInNoListOfWindows();
    void aClickThatTookTheKeyboardCountsAsOneInThePanel();
    void showsTheMinutes_data();
    void showsTheMinutes();
    void showsThePauseSignUntilThePauseEnds();
    void isTintedForLightAndDarkPanels_data();
    void isTintedForLightAndDarkPanels();
    void comesBackWithAPanelThatCrashed();
    void goesWithKelp();

private:
    void startKelp(const QJsonArray &events = {}, const QJsonObject &morePreferences = {});
    void click(const QString &button = u"1"_s);
    [[nodiscard]] QVariant property(const QString &name);
    [[nodiscard]] QString icon() { return property(u"IconName"_s).toString(); }
    [[nodiscard]] bool isShown() { return !(look = panel->settled()).isNull(); }
    [[nodiscard]] int ink() { return TrayPanel::inkOf(panel->picture()); }
    void store(const QImage &image, const QString &name) const;

    std::unique_ptr<PrivateDesktop> desktop;
    std::unique_ptr<TrayPanel> panel;
    std::unique_ptr<Sandbox> sandbox;
    std::unique_ptr<KelpProcess> kelp;
    QImage look; ///< at the item that is shown
};

/// A desktop of its own each time: the panel's settings are kept by a service on its bus.
void tst_TrayX11::init()
{
    desktop = std::make_unique<PrivateDesktop>();
    QVERIFY2(desktop->start(), qPrintable(desktop->problem()));
    panel = std::make_unique<TrayPanel>(*desktop);
}

void tst_TrayX11::cleanup()
{
    if (QTest::currentTestFailed() && kelp)
        qInfo().noquote() << kelp->output();
    kelp.reset();
    sandbox.reset();
    QVERIFY(panel->end());
    panel.reset();
    desktop.reset();
}

void tst_TrayX11::startKelp(const QJsonArray &events, const QJsonObject &morePreferences)
{
    sandbox = std::make_unique<Sandbox>();
    QVERIFY2(sandbox->start(oneAccount::seed(events)), qPrintable(sandbox->error()));
    oneAccount::signIn(*desktop);
    QJsonObject preferences = oneAccount::preferences();
    for (auto each = morePreferences.begin(); each != morePreferences.end(); ++each)
        preferences.insert(each.key(), each.value());
    desktop->writePreferences(preferences);
    kelp = std::make_unique<KelpProcess>(*desktop);
    kelp->use(*sandbox);
    QVERIFY(kelp->start());
    QTRY_VERIFY_WITH_TIMEOUT(!icon().isEmpty(), 20'000); // until then, what is drawn is the panel alone
    QVERIFY(isShown());
}

void tst_TrayX11::click(const QString &button)
{
    desktop->display().run(u"xdotool"_s, {u"mousemove"_s, QString::number(TrayPanel::item().x()),
                                          QString::number(TrayPanel::item().y()), u"click"_s, button});
}

QVariant tst_TrayX11::property(const QString &name)
{
    const QString interface = u"org.kde.StatusNotifierItem"_s;
    QDBusMessage call =
        QDBusMessage::createMethodCall(u"%1-%2-1"_s.arg(interface).arg(kelp->pid()), u"/StatusNotifierItem"_s,
                                       u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    call << interface << name;
    const QDBusReply<QDBusVariant> reply = desktop->sessionBus().connection().call(call, QDBus::Block, 5000);
    return reply.isValid() ? reply.value().variant() : QVariant();
}

void tst_TrayX11::store(const QImage &image, const QString &name) const
{
    const QString folder = qEnvironmentVariable("KELP_BINARY_DIR") + u"/pictures"_s;
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(image.save(folder + u'/' + name + u".png"_s));
}

void tst_TrayX11::aClickTogglesThePanel()
{
    QVERIFY(panel->start());
    startKelp();
    // The right button is the panel's own where an item has no menu.
    for (const QString &button : {u"1"_s, u"2"_s, u"1"_s}) {
        QVERIFY(kelp->windows().isEmpty());
        click(button);
        QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), 20'000);
        click(button);
        QTRY_VERIFY(kelp->windows().isEmpty());
    }
}

/// It belongs to the tray. Each time anew, for the window manager forgets that.
void tst_TrayX11::thePanelIsInNoListOfWindows()
{
    QVERIFY(panel->start());
    startKelp();
    for (int round = 0; round < 2; ++round) {
        click();
        QTRY_VERIFY(kelp->panelIsActive());
        const QString window = desktop->display().run(u"xdotool"_s, {u"getwindowfocus"_s}).trimmed();
        const QString state = desktop->display().run(u"xprop"_s, {u"-id"_s, window, u"_NET_WM_STATE"_s});
        QVERIFY2(state.contains(u"_NET_WM_STATE_SKIP_TASKBAR"_s), qPrintable(state));
        QVERIFY2(state.contains(u"_NET_WM_STATE_SKIP_PAGER"_s), qPrintable(state));
        click();
        QTRY_VERIFY(kelp->windows().isEmpty());
    }
}

/// Some panels take the keyboard with the click itself. Here another window does, just before the item is told of a
/// click.
void tst_TrayX11::aClickThatTookTheKeyboardCountsAsOneInThePanel()
{
    QVERIFY(panel->start());
    startKelp();
    QProcess other;
    QVERIFY(desktop->display().launch(other, u"xterm"_s, {u"-e"_s, u"cat"_s}));
    const auto otherHasFocus = [&] {
        desktop->display().run(u"xdotool"_s,
                               {u"search"_s, u"--onlyvisible"_s, u"--class"_s, u"xterm"_s, u"windowfocus"_s});
        return desktop->display().run(u"xdotool"_s, {u"getwindowfocus"_s, u"getwindowpid"_s}).trimmed() ==
               QString::number(other.processId());
    };
    QTRY_VERIFY(otherHasFocus());
    click();
    QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), 20'000);
    const QString window = desktop->display().run(u"xdotool"_s, {u"search"_s, u"--class"_s, u"xterm"_s}).trimmed();
    QDBusMessage activate =
        QDBusMessage::createMethodCall(u"org.kde.StatusNotifierItem-%1-1"_s.arg(kelp->pid()), u"/StatusNotifierItem"_s,
                                       u"org.kde.StatusNotifierItem"_s, u"Activate"_s);
    activate << 1 << 2;
    // On a busy machine a click may come too late and bring the panel forward, as it should then.
    bool wasHidden = false;
    for (int round = 0; round < 8 && !wasHidden; ++round) {
        desktop->display().run(u"xdotool"_s, {u"windowfocus"_s, window.section(u'\n', -1)});
        desktop->sessionBus().connection().call(activate);
        QTRY_VERIFY(kelp->panelIsActive() || kelp->windows().isEmpty());
        wasHidden = kelp->windows().isEmpty();
    }
    QVERIFY(wasHidden);
    // Long after it, a click brings the panel forward.
    click();
    QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), 20'000);
    QTRY_VERIFY(otherHasFocus());
    desktop->display().run(u"xdotool"_s, {u"sleep"_s, u"0.4"_s});
    click();
    QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), 20'000);
    other.terminate();
    QVERIFY(other.waitForFinished());
}

void tst_TrayX11::showsTheMinutes_data()
{
    QTest::addColumn<QJsonArray>("events");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("icon");
    const auto at = [](int startsIn) { return QJsonArray{oneAccount::meeting(u"m"_s, u"Design review"_s, startsIn)}; };
    QTest::newRow("no meeting") << QJsonArray() << QString() << u"app.kelp.Kelp-symbolic"_s;
    QTest::newRow("in five minutes") << at(340) << u" 5m"_s << u"app.kelp.Kelp-5m-symbolic"_s;
    QTest::newRow("in 28 minutes") << at(28 * 60 + 40) << u" 28m"_s << u"app.kelp.Kelp-28m-symbolic"_s;
    QTest::newRow("in more than an hour") << at(4000) << QString() << u"app.kelp.Kelp-symbolic"_s;
    QTest::newRow("in progress, too late for its reminder") << at(-400) << u" now"_s << u"app.kelp.Kelp-now-symbolic"_s;
}

void tst_TrayX11::showsTheMinutes()
{
    QFETCH(QJsonArray, events);
    QFETCH(QString, title);
    QFETCH(QString, icon);
    QVERIFY(panel->start());
    startKelp(events);
    QTRY_COMPARE(sandbox->requests().size(), 4); // it has read the calendars
    QTRY_COMPARE(property(u"Title"_s).toString(), title);
    QTRY_COMPARE(this->icon(), icon); // an item that does not answer has an empty title, too
    QCOMPARE(property(u"XAyatanaLabel"_s).toString(), title);
    QVERIFY(kelp->windows().isEmpty());
    // The panel has the picture of that name.
    QVERIFY(isShown());
    store(look, u"tray "_s + QString::fromUtf8(QTest::currentDataTag()));
}

void tst_TrayX11::showsThePauseSignUntilThePauseEnds()
{
    QVERIFY(panel->start());
    const QDateTime end = QDateTime::currentDateTimeUtc().addSecs(6);
    startKelp({oneAccount::meeting(u"m"_s, u"Design review"_s, 1400)},
              {{u"pausedUntil"_s, QJsonObject{{u"date"_s, end.toString(Qt::ISODateWithMs)}}}});
    QTRY_COMPARE(icon(), u"app.kelp.Kelp-paused-symbolic"_s);
    QCOMPARE(property(u"IconAccessibleDesc"_s).toString(), u"Kelp paused"_s);
    QCOMPARE(property(u"Title"_s).toString(), QString());
    QVERIFY(isShown());
    store(look, u"tray paused"_s);
    // At the first tick after it, icon and title come back together.
    QTRY_VERIFY_WITH_TIMEOUT(icon() != u"app.kelp.Kelp-paused-symbolic"_s, 15'000);
    QCOMPARE(icon(), u"app.kelp.Kelp-23m-symbolic"_s);
    QCOMPARE(property(u"Title"_s).toString(), u" 23m"_s);
    QCOMPARE(property(u"IconAccessibleDesc"_s).toString(), u"Kelp"_s);
    QVERIFY(QDateTime::currentDateTimeUtc() >= end);
}

void tst_TrayX11::isTintedForLightAndDarkPanels_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void tst_TrayX11::isTintedForLightAndDarkPanels()
{
    QFETCH(bool, isDark);
    QVERIFY(panel->start(isDark));
    startKelp({oneAccount::meeting(u"m"_s, u"Design review"_s, 28 * 60 + 40)});
    QTRY_COMPARE(icon(), u"app.kelp.Kelp-28m-symbolic"_s);
    QVERIFY(isShown());
    const QImage shown = look;
    store(shown, isDark ? u"tray on dark"_s : u"tray on light"_s);
    int darkest = 255;
    int lightest = 0;
    for (int y = 0; y < shown.height() - 2; ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            darkest = std::min(darkest, shown.pixelColor(x, y).lightness());
            lightest = std::max(lightest, shown.pixelColor(x, y).lightness());
        }
    }
    const int ground = shown.pixelColor(0, 0).lightness();
    if (isDark)
        QVERIFY2(ground < 90 && lightest > 200, qPrintable(u"%1 on %2"_s.arg(lightest).arg(ground)));
    else
        QVERIFY2(ground > 200 && darkest < 90, qPrintable(u"%1 on %2"_s.arg(darkest).arg(ground)));
}

void tst_TrayX11::comesBackWithAPanelThatCrashed()
{
    QVERIFY(panel->start());
    startKelp();
    for (int round = 0; round < 2; ++round) {
        QVERIFY(panel->crash());
        QTRY_COMPARE(ink(), 0);
        QVERIFY(panel->start());
        QVERIFY(isShown());
        click();
        QTRY_VERIFY_WITH_TIMEOUT(kelp->panelIsActive(), 20'000);
        click();
        QTRY_VERIFY(kelp->windows().isEmpty());
    }
}

void tst_TrayX11::goesWithKelp()
{
    QVERIFY(panel->start());
    startKelp();
    kelp->killHard();
    QTRY_COMPARE(ink(), 0);
}

QTEST_GUILESS_MAIN(tst_TrayX11)

#include "tst_TrayX11.moc"
