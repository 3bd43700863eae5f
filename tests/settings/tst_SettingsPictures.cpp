#include "settings/IconButton.h"
#include "settings/PanelFixture.h"
#include "settings/WidgetPicture.h"
#include "ui/DesktopPalette.h"
#include "ui/KelpStyle.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QImage>
#include <QMenu>
#include <QTest>
#include <QVariantAnimation>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Renders the panel in all its states, light and dark. With KELP_PICTURES set to a folder, the pictures are left there
/// to be looked at.
class tst_SettingsPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void staysWithinItsColumn_data();
    void staysWithinItsColumn();
    void menusShowTheirItems_data();
    void menusShowTheirItems();
};

namespace {

using Setting = std::function<void(PanelFixture &)>;

const QString link = u"https://meet.google.com/abc-defg-hij"_s;
constexpr Instant nine{1767258000};

/// Whether the margin at the side without a scroll bar shows nothing but the window.
bool keepsMargin(const QImage &image, double density, bool fromLeft)
{
    const int margin = static_cast<int>(8 * density);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < margin; ++x) {
            if (image.pixel(fromLeft ? x : image.width() - 1 - x, y) != image.pixel(0, 0))
                return false;
        }
    }
    return true;
}

QList<Meeting> afternoon()
{
    return {meeting(u"Design review: the quiet overlay"_s, nine + 720 + 60, link),
            meeting(u"Mika / Robin"_s, nine + 5400, link),
            meeting(u"Budget planning with the regional offices"_s, nine + 9000),
            meeting(u"Stand-up"_s, nine + 82800, link), meeting(u"Never listed"_s, nine + 84000)};
}

void withAccount(PanelFixture &panel)
{
    panel.open({ada});
    panel.bring(dozen(ada), afternoon());
}

} // namespace

void tst_SettingsPictures::initTestCase()
{
    QApplication::setStyle(new KelpStyle);
}

void tst_SettingsPictures::cleanupTestCase()
{
    QApplication::setPalette(QPalette());
}

void tst_SettingsPictures::staysWithinItsColumn_data()
{
    QTest::addColumn<Setting>("set");
    QTest::addColumn<bool>("dark");
    QTest::addColumn<double>("density");
    const auto row = [](const char *name, const Setting &set) {
        for (const bool dark : {false, true}) {
            for (const double density : {1.0, 1.25, 2.0})
                QTest::addRow("%s-%s-%g", name, dark ? "dark" : "light", density) << set << dark << density;
        }
    };
    row("sign-in", [](PanelFixture &panel) { panel.open(); });
    row("sign-in-built-in", [](PanelFixture &panel) { panel.open({}, {u"id"_s, u"secret"_s}); });
    row("signing-in", [](PanelFixture &panel) {
        panel.opener.handledSchemes = {u"https"_s};
        panel.open({}, {u"id"_s, u"secret"_s});
        panel.auth->signIn(panel.view.get(), [](const Result<Account, AuthError> &) {});
    });
    row("sign-in-failed", [](PanelFixture &panel) {
        panel.preferences.set(preference::clientID, u"1234-abcdef.apps.googleusercontent.com"_s);
        panel.preferences.set(preference::clientSecret, u"secret-of-mine"_s);
        panel.open();
        panel.view->setError(u"Google sign-in failed: access_denied"_s);
    });
    row("empty", [](PanelFixture &panel) {
        panel.open({ada});
        panel.bring(dozen(ada));
    });
    row("account", withAccount);
    row("soon", [](PanelFixture &panel) {
        withAccount(panel);
        panel.clock.advance(180);
    });
    row("started", [](PanelFixture &panel) {
        withAccount(panel);
        panel.clock.advance(720 + 60 + 130);
    });
    row("paused", [](PanelFixture &panel) {
        withAccount(panel);
        panel.scheduler->setPausedUntil(nine + 3600);
    });
    row("expanded", [](PanelFixture &panel) {
        panel.open({ada, u"ada.lovelace.the.first@analytical-engines.example.org"_s});
        panel.bring(dozen(ada) + dozen(u"ada.lovelace.the.first@analytical-engines.example.org"_s), afternoon());
        panel.click(ada);
    });
    row("loading", [](PanelFixture &panel) {
        panel.open({ada}, {u"id"_s, u"secret"_s});
        panel.click(ada);
        panel.scheduler->refresh();
    });
    row("removing", [](PanelFixture &panel) {
        withAccount(panel);
        panel.choose(u"Options for ada@example.com"_s, u"Remove account…"_s);
    });
    row("errors", [](PanelFixture &panel) {
        withAccount(panel);
        panel.view->isHotkeyTrusted = [] { return false; };
        panel.preferences.set(preference::leadMinutes, 3);
        panel.bring(
            dozen(ada), afternoon(),
            {u"ada@example.com: Google Calendar error 403: Rate Limit Exceeded"_s,
             u"mika@example.com: https://www.googleapis.com/calendar/v3/users/me/calendarList/averyveryverylong"_s});
    });
    row("many", [](PanelFixture &panel) {
        panel.open({ada});
        QList<CalendarInfo> many;
        for (int i = 0; i < 500; ++i)
            many.append(calendar(ada, u"Calendar %1"_s.arg(i), u"#4285f4"_s, i % 3 != 0));
        panel.bring(many, afternoon());
        panel.click(ada);
    });
    row("focus", [](PanelFixture &panel) {
        withAccount(panel);
        panel.click(ada);
        for (int i = 0; i < 5; ++i)
            QTest::keyClick(panel.view.get(), Qt::Key_Tab);
        QTest::mouseMove(panel.button(u"Interviews"_s));
        QTest::mouseMove(panel.button(u"Themes, sounds & more"_s), {5, 8});
    });
    row("right-to-left", [](PanelFixture &panel) {
        withAccount(panel);
        panel.view->setLayoutDirection(Qt::RightToLeft);
        panel.click(ada);
    });
}

void tst_SettingsPictures::staysWithinItsColumn()
{
    QFETCH(Setting, set);
    QFETCH(bool, dark);
    QFETCH(double, density);
    QApplication::setPalette(ownPalette(dark, {}));
    PanelFixture panel;
    set(panel);
    PanelFixture::settle();
    for (const QVariantAnimation *each : panel.view->findChildren<QVariantAnimation *>())
        QTRY_COMPARE(each->state(), QAbstractAnimation::Stopped);
    QCOMPARE(panel.view->width(), 320);
    const QImage image = picture(*panel.view, density);
    save(image, QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(!hasMagenta(image));
    QVERIFY(keepsMargin(image, density, panel.view->layoutDirection() == Qt::LeftToRight));
    QCOMPARE(qGray(image.pixel(0, 0)) < 128, dark);
}

void tst_SettingsPictures::menusShowTheirItems_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("menus-light") << false;
    QTest::newRow("menus-dark") << true;
}

void tst_SettingsPictures::menusShowTheirItems()
{
    QFETCH(bool, dark);
    QApplication::setPalette(ownPalette(dark, {}));
    PanelFixture panel;
    withAccount(panel);
    const QString name = QString::fromLatin1(QTest::currentDataTag());

    auto *pause = qobject_cast<IconButton *>(panel.button(u"Pause Kelp"_s));
    QTest::mouseClick(pause, Qt::LeftButton);
    QTRY_VERIFY(pause->opened()->isVisible());
    QTest::keyClick(pause->opened(), Qt::Key_Down);
    save(picture(*pause->opened(), 2), name + u"-pause"_s);
    QVERIFY(!hasMagenta(picture(*pause->opened(), 2)));
    pause->opened()->close();

    auto *lead = panel.view->findChild<QComboBox *>();
    lead->showPopup();
    QWidget *popup = QApplication::activePopupWidget();
    QVERIFY(popup);
    save(picture(*popup, 2), name + u"-lead"_s);
    QVERIFY(!hasMagenta(picture(*popup, 2)));
    lead->hidePopup();
}

QTEST_MAIN(tst_SettingsPictures)
#include "tst_SettingsPictures.moc"
