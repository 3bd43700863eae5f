#include "themes/Theme.h"

#include "preferences/Preferences.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_Theme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void midnightIsFirst();
    void unknownIdsYieldMidnight_data();
    void unknownIdsYieldMidnight();
    void optionsFollowThePreferences();
    void optionsWithoutPreferencesAreTheDefaults();
    void onlyTheExactWordAsksForTheRing();
    void snoozeIsAtLeastAMinute_data();
    void snoozeIsAtLeastAMinute();
};

void tst_Theme::midnightIsFirst()
{
    const OverlayTheme theme = OverlayTheme::all().front();
    QCOMPARE(theme.id, u"midnight"_s);
    QCOMPARE(theme.name, u"Midnight"_s);
    QVERIFY(std::holds_alternative<BlurBackground>(theme.background));
    QVERIFY(!theme.animation);
    QCOMPARE(theme.accent, QColor(Qt::white));
    QCOMPARE(theme.accentText, QColor(Qt::black));
    QCOMPARE(theme.text, QColor(Qt::white));
    QCOMPARE(theme.font, FontDesign::Default);
    QCOMPARE(theme.countdownFont, FontDesign::Rounded);
    QCOMPARE(theme.titleWeight, QFont::Bold);
    QCOMPARE(theme.button, ButtonLook::Pill);
    QVERIFY(!theme.glow && !theme.cursor);
    QCOMPARE(OverlayTheme::midnight(), theme);
    QCOMPARE(OverlayTheme::forNextOverlay(Preferences()), theme);
}

void tst_Theme::unknownIdsYieldMidnight_data()
{
    QTest::addColumn<QString>("id");
    for (const char *id : {"Midnight", "nope", "", "midnight "})
        QTest::newRow(*id ? id : "(empty)") << QString::fromLatin1(id);
}

void tst_Theme::unknownIdsYieldMidnight()
{
    QFETCH(QString, id);
    QCOMPARE(OverlayTheme::named(id), OverlayTheme::midnight());
    Preferences preferences;
    preferences.set(preference::theme, id);
    QCOMPARE(OverlayTheme::forNextOverlay(preferences), OverlayTheme::midnight());
}

void tst_Theme::optionsFollowThePreferences()
{
    Preferences preferences;
    preferences.set(preference::countdownStyle, u"ring"_s);
    preferences.set(preference::showAttendees, false);
    preferences.set(preference::showCalendar, false);
    preferences.set(preference::snoozeMinutes, 7);
    preferences.set(preference::leadMinutes, 0);
    const OverlayOptions expected{
        .ringCountdown = true, .showAttendees = false, .showCalendar = false, .snoozeMinutes = 7, .leadMinutes = 0};
    QCOMPARE(OverlayOptions::from(preferences), expected);
}

void tst_Theme::optionsWithoutPreferencesAreTheDefaults()
{
    const OverlayOptions expected{
        .ringCountdown = false, .showAttendees = true, .showCalendar = true, .snoozeMinutes = 1, .leadMinutes = 1};
    QCOMPARE(OverlayOptions::from(Preferences()), expected);
}

void tst_Theme::onlyTheExactWordAsksForTheRing()
{
    Preferences preferences;
    preferences.set(preference::countdownStyle, u"Ring"_s);
    QVERIFY(!OverlayOptions::from(preferences).ringCountdown);
}

void tst_Theme::snoozeIsAtLeastAMinute_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("minutes");
    QTest::newRow("0") << 0 << 1;
    QTest::newRow("-5") << -5 << 1;
    QTest::newRow("1") << 1 << 1;
    QTest::newRow("90") << 90 << 90;
}

void tst_Theme::snoozeIsAtLeastAMinute()
{
    QFETCH(int, stored);
    QFETCH(int, minutes);
    Preferences preferences;
    preferences.set(preference::snoozeMinutes, stored);
    preferences.set(preference::leadMinutes, stored);
    QCOMPARE(OverlayOptions::from(preferences).snoozeMinutes, minutes);
    QCOMPARE(OverlayOptions::from(preferences).leadMinutes, stored);
}

QTEST_GUILESS_MAIN(tst_Theme)
#include "tst_Theme.moc"
