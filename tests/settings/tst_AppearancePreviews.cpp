#include "overlay/OverlayContent.h"
#include "settings/AppearanceFixture.h"
#include "settings/GridTile.h"
#include "settings/OverlayPreview.h"
#include "settings/PreviewPicture.h"
#include "settings/ThemeCard.h"
#include "settings/ThemeGrid.h"
#include "settings/WidgetPicture.h"
#include "themes/Theme.h"
#include "ui/DesktopColours.h"
#include "ui/DesktopPalette.h"

#include <QApplication>
#include <QTest>

#include <algorithm>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// What the large preview and the tiles below it show: compared with the overlay that is chosen there.
class tst_AppearancePreviews : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setPalette(ownPalette(false, {})); }
    void init();
    void cleanup() { window.reset(); }
    void cleanupTestCase() { QApplication::setPalette(QPalette()); }

    void showsTheChosenTheme_data();
    void showsTheChosenTheme();
    void showsTheOptions_data();
    void showsTheOptions();
    void followsAnOption();
    void eachCardShowsItsTheme_data();
    void eachCardShowsItsTheme();
    void cardsFollowTheOptions();
    void onlyTheChosenTileHasACheckMark_data();
    void onlyTheChosenTileHasACheckMark();

private:
    [[nodiscard]] OverlayPreview *preview() const { return window->view->findChild<OverlayPreview *>(); }
    [[nodiscard]] GridTile *tile(const QString &id) const;
    [[nodiscard]] QImage expected(const QString &themeID, const OverlayOptions &options, const QSize &size) const;
    [[nodiscard]] QImage shown();
    [[nodiscard]] QImage expectedPreview(const QString &themeID, const OverlayOptions &options = {}) const;
    [[nodiscard]] QImage markCorner(const QString &id) const;

    std::unique_ptr<AppearanceFixture> window;
    Instant m_opened;
};

namespace {

/// Without the rounded corners, the edge and the caption.
QImage inner(const QImage &image)
{
    return image.copy(image.rect().adjusted(16, 16, -16, -60)).convertToFormat(QImage::Format_RGB32);
}

/// 0…255, as qGray.
int brightest(const QImage &image)
{
    int gray = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            gray = std::max(gray, qGray(image.pixel(x, y)));
    }
    return gray;
}

} // namespace

void tst_AppearancePreviews::init()
{
    window = std::make_unique<AppearanceFixture>();
    window->view->setMotion(false); // nothing fades or moves
    m_opened = window->clock.now();
}

GridTile *tst_AppearancePreviews::tile(const QString &id) const
{
    for (GridTile *each : window->view->findChildren<GridTile *>()) {
        if (each->id() == id)
            return each;
    }
    return nullptr;
}

QImage tst_AppearancePreviews::expected(const QString &themeID, const OverlayOptions &options, const QSize &size) const
{
    const MeetingContent content{AppearanceView::sampleMeeting(m_opened), {}};
    return PreviewPicture({content, OverlayTheme::named(themeID), options, {}}).paint(m_opened, size);
}

QImage tst_AppearancePreviews::shown()
{
    window->settle();
    return inner(picture(*preview(), 1));
}

QImage tst_AppearancePreviews::expectedPreview(const QString &themeID, const OverlayOptions &options) const
{
    return inner(expected(themeID, options, preview()->size()));
}

void tst_AppearancePreviews::showsTheChosenTheme_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("theme");
    for (const OverlayTheme &each : OverlayTheme::all())
        QTest::addRow("%s", qPrintable(each.id)) << each.id << each.id;
    QTest::newRow("random") << u"random"_s << u"midnight"_s;
    QTest::newRow("unknown") << u"nope"_s << u"midnight"_s;
}

void tst_AppearancePreviews::showsTheChosenTheme()
{
    QFETCH(QString, stored);
    QFETCH(QString, theme);
    window->preferences.set(preference::theme, stored);
    window->open();
    QCOMPARE(shown(), expectedPreview(theme));
    if (theme != u"midnight")
        QVERIFY(shown() != expectedPreview(u"midnight"_s));
}

void tst_AppearancePreviews::showsTheOptions_data()
{
    QTest::addColumn<bool>("ring");
    QTest::addColumn<bool>("attendees");
    QTest::addColumn<bool>("calendar");
    QTest::addColumn<int>("snooze");
    QTest::newRow("ring") << true << true << true << 1;
    QTest::newRow("without the number of people") << false << false << true << 1;
    QTest::newRow("without the calendar") << false << true << false << 1;
    QTest::newRow("a long snooze") << false << true << true << 10;
}

void tst_AppearancePreviews::showsTheOptions()
{
    QFETCH(bool, ring);
    QFETCH(bool, attendees);
    QFETCH(bool, calendar);
    QFETCH(int, snooze);
    window->preferences.set(preference::countdownStyle, ring ? u"ring"_s : u"pill"_s);
    window->preferences.set(preference::showAttendees, attendees);
    window->preferences.set(preference::showCalendar, calendar);
    window->preferences.set(preference::snoozeMinutes, snooze);
    window->open();
    const OverlayOptions options{
        .ringCountdown = ring, .showAttendees = attendees, .showCalendar = calendar, .snoozeMinutes = snooze};
    QCOMPARE(shown(), expectedPreview(u"midnight"_s, options));
    QVERIFY(shown() != expectedPreview(u"midnight"_s));
}

void tst_AppearancePreviews::followsAnOption()
{
    window->open();
    QCOMPARE(shown(), expectedPreview(u"midnight"_s));
    window->click(u"Number of people"_s);
    QCOMPARE(shown(), expectedPreview(u"midnight"_s, {.showAttendees = false}));
    window->click(u"Calendar name"_s);
    QCOMPARE(shown(), expectedPreview(u"midnight"_s, {.showAttendees = false, .showCalendar = false}));
    window->click(u"Paper"_s);
    QCOMPARE(shown(), expectedPreview(u"paper"_s, {.showAttendees = false, .showCalendar = false}));
}

void tst_AppearancePreviews::eachCardShowsItsTheme_data()
{
    QTest::addColumn<QString>("id");
    for (const OverlayTheme &each : OverlayTheme::all()) {
        if (each.id != u"custom")
            QTest::addRow("%s", qPrintable(each.id)) << each.id;
    }
}

void tst_AppearancePreviews::eachCardShowsItsTheme()
{
    QFETCH(QString, id);
    window->preferences.set(preference::theme, u"random"_s);
    window->open();
    for (int i = 0; i < 10; ++i)
        window->settle(); // a thumbnail each
    auto *card = dynamic_cast<ThemeCard *>(tile(id));
    QVERIFY(card);
    const QSize size = window->view->findChild<ThemeGrid *>()->pictureSize();
    QCOMPARE(card->thumbnail(), expected(id, {}, size));
    const QRect whole = card->pictureFrame().toRect();
    const QRect middle = whole.adjusted(12, 12, -12, -12);
    QCOMPARE(picture(*card, 1).copy(middle),
             card->thumbnail().copy(middle.translated(-whole.topLeft())).convertToFormat(QImage::Format_RGB32));
}

void tst_AppearancePreviews::cardsFollowTheOptions()
{
    window->open();
    window->click(u"Calendar name"_s);
    for (int i = 0; i < 10; ++i)
        window->settle();
    const QSize size = window->view->findChild<ThemeGrid *>()->pictureSize();
    for (const QString &id : {u"paper"_s, u"zen"_s})
        QCOMPARE(dynamic_cast<ThemeCard *>(tile(id))->thumbnail(), expected(id, {.showCalendar = false}, size));
}

/// The corner where the mark belongs: 80 by 80 pixels.
QImage tst_AppearancePreviews::markCorner(const QString &id) const
{
    constexpr int density = 4;
    const QPointF corner = tile(id)->pictureFrame().bottomRight() - QPointF(26, 26);
    return picture(*tile(id), density).copy(QRect((corner * density).toPoint(), QSize(20, 20) * density));
}

void tst_AppearancePreviews::onlyTheChosenTileHasACheckMark_data()
{
    QTest::addColumn<QString>("id");
    for (const QString &id : {u"midnight"_s, u"zen"_s, u"random"_s, u"custom"_s})
        QTest::addRow("%s", qPrintable(id)) << id;
}

void tst_AppearancePreviews::onlyTheChosenTileHasACheckMark()
{
    QFETCH(QString, id);
    window->preferences.set(preference::theme, u"aurora"_s);
    window->open();
    const DesktopColours colours = DesktopColours::of(window->view->palette());
    constexpr int chance = 20; // pixels of a thumbnail
    QVERIFY(pixelsLike(markCorner(id), colours.accent) < chance);
    window->preferences.set(preference::theme, id);
    window->settle();
    QVERIFY(pixelsLike(markCorner(id), colours.accent) > 2500);    // about half of the corner
    QVERIFY(brightest(markCorner(id).copy(20, 20, 40, 40)) > 190); // the check, on an accent of 110
    QVERIFY(pixelsLike(markCorner(u"aurora"_s), colours.accent) < chance);
}

QTEST_MAIN(tst_AppearancePreviews)
#include "tst_AppearancePreviews.moc"
