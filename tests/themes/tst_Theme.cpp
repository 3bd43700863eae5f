#include "themes/Theme.h"

#include "preferences/Preferences.h"

#include <QHash>
#include <QTest>

#include <utility>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_Theme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void midnightIsFirst();
    void theCatalogueIsExact_data();
    void theCatalogueIsExact();
    void onlyPaperHasGrain();
    void randomNeverRepeatsNorShowsTheUsersPicture();
    void everyBuiltInThemeCanBeTheRandomOne();
    void theUsersPictureIsShownWhenItIsAskedFor();
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

namespace {

OverlayTheme themed(const char *id, const char *name, ThemeBackground background, std::optional<AnimatedKind> animation,
                    const char *accent, const char *accentText, const char *text, FontDesign font,
                    FontDesign countdownFont, QFont::Weight weight, ButtonLook button, bool glow, bool cursor)
{
    return {QString::fromLatin1(id),
            QString::fromLatin1(name),
            std::move(background),
            animation,
            QColor(QLatin1StringView(accent)),
            QColor(QLatin1StringView(accentText)),
            QColor(QLatin1StringView(text)),
            font,
            countdownFont,
            weight,
            button,
            glow,
            cursor};
}

} // namespace

void tst_Theme::theCatalogueIsExact_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<OverlayTheme>("expected");
    using enum FontDesign;
    const auto solid = [](const char *colour, bool grain = false) {
        return SolidBackground{QColor(QLatin1StringView(colour)), grain};
    };
    const std::vector<OverlayTheme> expected{
        themed("midnight", "Midnight", BlurBackground{}, {}, "#ffffff", "#000000", "#ffffff", Default, Rounded,
               QFont::Bold, ButtonLook::Pill, false, false),
        themed("aurora", "Aurora", solid("#050812"), AnimatedKind::Aurora, "#73ffc7", "#000000", "#ffffff", Rounded,
               Rounded, QFont::Bold, ButtonLook::Pill, true, false),
        themed("synthwave", "Synthwave", solid("#0d031f"), AnimatedKind::Synthwave, "#ff38ad", "#ffffff", "#ffffff",
               Default, Monospaced, QFont::ExtraBold, ButtonLook::Outline, true, false),
        themed("paper", "Paper", solid("#f5f0e3", true), {}, "#211f1c", "#f5f0e3", "#211f1c", Serif, Serif,
               QFont::DemiBold, ButtonLook::Pill, false, false),
        themed("terminal", "Terminal", solid("#030a05"), AnimatedKind::Scanlines, "#4cff73", "#000000", "#4cff73",
               Monospaced, Monospaced, QFont::Medium, ButtonLook::Terminal, true, true),
        themed("zen", "Zen", ImageBackground{u"zen"_s, 0.12}, AnimatedKind::Fog, "#ede6d6", "#26262b", "#ffffff", Serif,
               Serif, QFont::Normal, ButtonLook::Pill, false, false),
        themed("space", "Deep Space", ImageBackground{u"space"_s, 0.2}, AnimatedKind::Starfield, "#b8c2ff", "#000000",
               "#ffffff", Default, Rounded, QFont::Light, ButtonLook::Pill, true, false),
        themed("lofi", "Lo-fi Rain", ImageBackground{u"lofi"_s, 0.2}, AnimatedKind::Rain, "#ffb86b", "#000000",
               "#ffffff", Rounded, Rounded, QFont::Bold, ButtonLook::Pill, false, false),
        themed("custom", "Your image", CustomBackground{}, {}, "#ffffff", "#000000", "#ffffff", Default, Rounded,
               QFont::Bold, ButtonLook::Pill, false, false)};
    QCOMPARE(OverlayTheme::all().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        QTest::newRow(qPrintable(expected[i].id)) << static_cast<int>(i) << expected[i];
}

void tst_Theme::theCatalogueIsExact()
{
    QFETCH(int, index);
    QFETCH(OverlayTheme, expected);
    OverlayTheme actual = OverlayTheme::all()[static_cast<std::size_t>(index)];
    QCOMPARE(OverlayTheme::named(actual.id), actual);
    // The expected colours are rounded to 8 bits; a component of exactly half a step may fall to either side.
    const auto close = [](const QColor &a, const QColor &b) {
        return std::abs(a.redF() - b.redF()) <= 0.0022F && std::abs(a.greenF() - b.greenF()) <= 0.0022F &&
               std::abs(a.blueF() - b.blueF()) <= 0.0022F && a.alphaF() == 1.0F;
    };
    QVERIFY(close(actual.accent, expected.accent));
    QVERIFY(close(actual.accentText, expected.accentText));
    QVERIFY(close(actual.text, expected.text));
    actual.accent = expected.accent;
    actual.accentText = expected.accentText;
    actual.text = expected.text;
    if (auto *solid = std::get_if<SolidBackground>(&actual.background)) {
        const QColor colour = std::get<SolidBackground>(expected.background).colour;
        QVERIFY(close(solid->colour, colour));
        solid->colour = colour;
    }
    QCOMPARE(actual, expected);
}

void tst_Theme::onlyPaperHasGrain()
{
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        if (const auto *solid = std::get_if<SolidBackground>(&theme.background))
            QCOMPARE(solid->grain, theme.id == u"paper");
    }
}

void tst_Theme::randomNeverRepeatsNorShowsTheUsersPicture()
{
    Preferences preferences;
    preferences.set(preference::theme, u"random"_s);
    QString last;
    for (int i = 0; i < 500; ++i) {
        const QString id = OverlayTheme::forNextOverlay(preferences).id;
        QVERIFY(id != last);
        QVERIFY(id != u"custom");
        last = id;
    }
}

void tst_Theme::everyBuiltInThemeCanBeTheRandomOne()
{
    Preferences preferences;
    preferences.set(preference::theme, u"random"_s);
    QHash<QString, int> seen;
    constexpr int times = 4000;
    for (int i = 0; i < times; ++i)
        ++seen[OverlayTheme::forNextOverlay(preferences).id];
    QCOMPARE(seen.size(), 8);
    for (const int count : std::as_const(seen))
        QVERIFY(std::abs(count - times / 8) < 150); // seven times the deviation
}

void tst_Theme::theUsersPictureIsShownWhenItIsAskedFor()
{
    Preferences preferences;
    preferences.set(preference::theme, u"custom"_s);
    QCOMPARE(OverlayTheme::forNextOverlay(preferences).id, u"custom"_s);
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
