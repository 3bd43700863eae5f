#include "overlay/CardTags.h"
#include "overlay/OverlayScene.h"
#include "support/SampleMeetings.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <vector>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Where the parts of the card lie, on the screens that people have: none is cut off, and none lies over another.
class tst_OverlayLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingOverlapsOrLeavesTheScreen_data();
    void nothingOverlapsOrLeavesTheScreen();
    void onALowScreenTheTitleShrinksFirst();
    void picturesAreAlikeOnEveryDensity_data();
    void picturesAreAlikeOnEveryDensity();
};

namespace {

struct Sample
{
    const char *name;
    QString title;
};

std::vector<Sample> titles()
{
    return {{"short", sample::designReview().title},
            {"300 characters", u"Quarterly planning with everybody who has a say in it "_s.repeated(6).left(300)},
            {"one word", QString(300, u'W')},
            {"right to left", u"مراجعة التصميم الأسبوعية مع فريق المنتج والهندسة "_s.repeated(4)},
            {"CJK", u"毎週のデザインレビュー会議（新製品の計画について）"_s.repeated(6)},
            {"emoji", u"🎉 Launch party 🚀 with the team 👩‍💻 "_s.repeated(6)}};
}

OverlayScene sceneOf(const QString &title, const QString &theme, bool ring, bool previous)
{
    const Meeting meeting = sample::titled(sample::designReview(), title);
    return {MeetingContent{meeting,
                           previous ? std::optional(sample::titled(sample::budgetPlanning(), title)) : std::nullopt},
            OverlayTheme::named(theme),
            {.ringCountdown = ring, .showAttendees = true, .showCalendar = true, .snoozeMinutes = 10}};
}

} // namespace

void tst_OverlayLayout::nothingOverlapsOrLeavesTheScreen_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize size : {QSize(911, 512), QSize(960, 540), QSize(800, 600), QSize(1280, 720), QSize(1366, 768),
                             QSize(1440, 900), QSize(3440, 1440), QSize(3840, 2160), QSize(1080, 1920)})
        QTest::addRow("%dx%d", size.width(), size.height()) << size;
}

void tst_OverlayLayout::nothingOverlapsOrLeavesTheScreen()
{
    QFETCH(QSize, size);
    const QRectF screen(QPointF(), size);
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        for (const Sample &sample : titles()) {
            for (const bool ring : {false, true}) {
                for (const bool previous : {false, true}) {
                    const OverlayScene scene = sceneOf(sample.title, theme.id, ring, previous);
                    const Arrangement card = scene.card(size, sample::ten - 47, {});
                    const QPointF position = OverlayScene::cardPosition(size, card);
                    std::vector<QRectF> frames;
                    for (const Arrangement::Text &each : card.texts())
                        frames.push_back(each.frame.translated(position));
                    for (const Arrangement::Tagged &each : card.tagged())
                        frames.push_back(each.frame.translated(position));
                    const QString what =
                        u"%1, %2%3%4"_s.arg(theme.id, QLatin1StringView(sample.name), ring ? u", ring"_s : QString(),
                                            previous ? u", previous"_s : QString());
                    QVERIFY(frames.size() >= 6);
                    for (std::size_t i = 0; i < frames.size(); ++i) {
                        QVERIFY2(screen.contains(frames[i]), qPrintable(what));
                        for (std::size_t k = 0; k < i; ++k)
                            QVERIFY2(!frames[i].intersects(frames[k]), qPrintable(what));
                    }
                }
            }
        }
    }
}

void tst_OverlayLayout::onALowScreenTheTitleShrinksFirst()
{
    const OverlayScene scene =
        sceneOf(u"Interview: Senior Engineer, Platform & Reliability (second round)"_s, u"midnight"_s, true, true);
    const auto cardAt = [&](double height) { return scene.card({1280, height}, sample::ten - 47, {}); };
    const auto title = [](const Arrangement &card) { return card.texts().front().frame.size(); };
    const auto button = [](const Arrangement &card) { return card.frameOf(tag::join)->size(); };
    const Arrangement whole = cardAt(1000);
    const double enough = whole.size().height() + 2 * OverlayScene::bleed;
    QCOMPARE(cardAt(enough).size(), whole.size());
    const Arrangement lower = cardAt(enough - 20);
    QVERIFY(title(lower).height() <= title(whole).height() - 20);
    QVERIFY(title(lower).height() >= title(whole).height() / 2 - 2);
    QCOMPARE(button(lower), button(whole));
    QCOMPARE(lower.frameOf(tag::countdown)->size(), QSizeF(210, 210));
    QVERIFY(lower.size().height() <= enough - 20 - 2 * OverlayScene::bleed);
    // Then all of it, in proportion.
    const Arrangement low = cardAt(400);
    QCOMPARE(low.size().height(), 400 - 2 * OverlayScene::bleed);
    const double factor = button(low).width() / button(whole).width();
    QVERIFY(factor < 0.8);
    QCOMPARE(low.frameOf(tag::countdown)->size(), QSizeF(210, 210) * factor);
}

void tst_OverlayLayout::picturesAreAlikeOnEveryDensity_data()
{
    QTest::addColumn<double>("density");
    for (const double density : {1.25, 1.5, 2.0, 3.0})
        QTest::addRow("%g", density) << density;
}

/// Lengths are points: scaled down again, the picture of a dense screen is that of a plain one but for its edges.
void tst_OverlayLayout::picturesAreAlikeOnEveryDensity()
{
    QFETCH(double, density);
    const QSize size(1280, 720);
    const auto rendered = [&](double scale) {
        QImage image((QSizeF(size) * scale).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::magenta);
        QPainter painter(&image);
        sceneOf(sample::designReview().title, u"midnight"_s, true, true).paint(painter, size, sample::ten - 47);
        painter.end();
        image.setDevicePixelRatio(1);
        // Far smaller than a letter: what is left tells where things are, and how large and bright.
        return image.scaled(size / 8, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const QImage plain = rendered(1);
    const QImage dense = rendered(density);
    int greatest = 0;
    for (int y = 0; y < plain.height(); ++y) {
        for (int x = 0; x < plain.width(); ++x)
            greatest = std::max(greatest, std::abs(qGray(plain.pixel(x, y)) - qGray(dense.pixel(x, y))));
    }
    QVERIFY2(greatest <= 24, qPrintable(QString::number(greatest)));
}

QTEST_MAIN(tst_OverlayLayout)
#include "tst_OverlayLayout.moc"
