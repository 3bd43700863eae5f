#include "support/ChildProcess.h"
#include "support/StillPicture.h"
#include "support/WaylandDesktop.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray accounts = R"([{"email":"robin@example.com","refreshToken":"1//robin"}])";
const QByteArray barConfiguration = R"({"layer": "top", "position": "top", "height": 30, "modules-left": ["tray"],
    "tray": {"icon-size": 22, "spacing": 4}})";

} // namespace

/// Kelp's item in the tray of a bar on a Wayland desktop, and its panel there.
class tst_TrayWayland : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void aClickTogglesThePanel();
    void aClickBringsThePanelForward();
    void isSeenOnEveryBar_data();
    void isSeenOnEveryBar();
    void comesBackWithABarThatCrashed();
    void twoSlashesInThePanelCloseIt();

private:
    void startBar(const QByteArray &colour = "black");
    void startKelp();
    void click();
    [[nodiscard]] bool panelIsShown() const { return desktop->window(kelp.processId()).has_value(); }
    [[nodiscard]] bool panelIsActive() const;
    /// Waits for an icon that is at rest.
    [[nodiscard]] bool isShown();

    std::unique_ptr<WaylandDesktop> desktop;
    QProcess bar;
    QProcess kelp;
    QImage shown; ///< the corner of the screen with the icon
};

void tst_TrayWayland::init()
{
    desktop = std::make_unique<WaylandDesktop>();
    QVERIFY2(desktop->start(), qPrintable(desktop->problem()));
    // Signed in, so that the panel does not open by itself. Nobody answers at this address.
    QVERIFY(desktop->write(u"home/.local/share/Kelp/accounts.json"_s, accounts));
}

void tst_TrayWayland::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo().noquote() << kelp.readAll();
    end(kelp);
    end(bar);
    desktop.reset();
}

void tst_TrayWayland::startBar(const QByteArray &colour)
{
    QVERIFY(desktop->write(u"bar.json"_s, barConfiguration));
    QVERIFY(desktop->write(u"bar.css"_s, "window { background: " + colour + "; }"));
    QVERIFY(desktop->launch(bar, u"waybar"_s,
                            {u"-c"_s, desktop->folder(u"bar.json"_s), u"-s"_s, desktop->folder(u"bar.css"_s)}));
}

void tst_TrayWayland::startKelp()
{
    QProcessEnvironment environment = desktop->environment();
    environment.insert(u"KELP_GOOGLE_TOKEN"_s, u"http://127.0.0.1:9/token"_s);
    environment.insert(u"KELP_GOOGLE_API"_s, u"http://127.0.0.1:9/calendar/v3"_s);
    endWithTest(kelp);
    kelp.setProcessEnvironment(environment);
    kelp.setProcessChannelMode(QProcess::MergedChannels);
    kelp.start(qEnvironmentVariable("KELP_BINARY_DIR") + u"/kelp"_s, {});
    QVERIFY(kelp.waitForStarted());
    QVERIFY(isShown());
}

void tst_TrayWayland::click()
{
    desktop->point({15, 15});
    QVERIFY(isShown()); // the bar has taken notice
    desktop->click();
}

bool tst_TrayWayland::panelIsActive() const
{
    const auto window = desktop->window(kelp.processId());
    return window && window->value("focused"_L1).toBool();
}

bool tst_TrayWayland::isShown()
{
    shown = stillPicture([this] {
        const QImage seen = desktop->picture({0, 0, 32, 30});
        int ink = 0;
        for (int y = 0; y < seen.height(); ++y) {
            for (int x = 0; x < seen.width(); ++x)
                ink += std::abs(seen.pixelColor(x, y).lightness() - seen.pixelColor(31, 0).lightness()) > 60;
        }
        return ink > 30 ? seen : QImage();
    });
    return !shown.isNull();
}

void tst_TrayWayland::aClickTogglesThePanel()
{
    startBar();
    startKelp();
    for (int round = 0; round < 3; ++round) {
        QVERIFY(!panelIsShown());
        click();
        QTRY_VERIFY(panelIsActive());
        click();
        QTRY_VERIFY(!panelIsShown());
    }
}

void tst_TrayWayland::aClickBringsThePanelForward()
{
    startBar();
    startKelp();
    click();
    QTRY_VERIFY(panelIsActive());
    // Another window, which takes the keyboard: the panel of a Kelp with another configuration.
    QProcess other;
    QProcessEnvironment environment = desktop->environment();
    environment.insert(u"XDG_CONFIG_HOME"_s, desktop->folder(u"other"_s));
    environment.insert(u"XDG_DATA_HOME"_s, desktop->folder(u"other"_s));
    endWithTest(other);
    other.setProcessEnvironment(environment);
    other.start(kelp.program(), {});
    QTRY_VERIFY_WITH_TIMEOUT(desktop->window(other.processId()).has_value(), 12'000);
    QTRY_VERIFY(!panelIsActive());
    // Somebody types there, which takes longer than a click in the tray would count as one in the panel.
    desktop->run(u"wtype"_s, {u"-s"_s, u"400"_s, u"a"_s});
    click();
    QTRY_VERIFY(panelIsActive());
    end(other);
}

void tst_TrayWayland::isSeenOnEveryBar_data()
{
    QTest::addColumn<QByteArray>("colour");
    for (const char *colour : {"black", "white", "gray"})
        QTest::newRow(colour) << QByteArray(colour);
}

void tst_TrayWayland::isSeenOnEveryBar()
{
    QFETCH(QByteArray, colour);
    startBar(colour);
    startKelp();
    const QString folder = qEnvironmentVariable("KELP_BINARY_DIR") + u"/pictures"_s;
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(shown.save(folder + u"/tray bar "_s + QString::fromLatin1(colour) + u".png"_s));
}

void tst_TrayWayland::comesBackWithABarThatCrashed()
{
    startBar();
    startKelp();
    for (int round = 0; round < 2; ++round) {
        bar.kill();
        QVERIFY(bar.waitForFinished());
        startBar();
        QVERIFY(isShown());
        click();
        QTRY_VERIFY(panelIsActive());
        click();
        QTRY_VERIFY(!panelIsShown());
    }
}

void tst_TrayWayland::twoSlashesInThePanelCloseIt()
{
    startBar();
    startKelp();
    click();
    QTRY_VERIFY(panelIsActive());
    desktop->run(u"wtype"_s, {u"-s"_s, u"800"_s, u"/"_s, u"-s"_s, u"100"_s, u"/"_s});
    QTRY_VERIFY(!panelIsShown());
}

QTEST_GUILESS_MAIN(tst_TrayWayland)

#include "tst_TrayWayland.moc"
