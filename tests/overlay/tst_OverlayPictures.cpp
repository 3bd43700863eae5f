#include "overlay/CardTags.h"
#include "overlay/OverlayScene.h"
#include "overlay/OverlayView.h"
#include "support/PictureDifference.h"
#include "support/SampleMeetings.h"
#include "support/SampleThemes.h"

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Renders the overlay for many kinds of content and sizes. With KELP_PICTURES set to a folder, the pictures are left
/// there to be looked at.
class tst_OverlayPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void staysWithinTheScreenAndKeepsItsMargins_data();
    void staysWithinTheScreenAndKeepsItsMargins();
    void liveWindowShowsTheSamePicture_data();
    void liveWindowShowsTheSamePicture();
};

namespace {

QImage blank(QSize size, double density)
{
    QImage image((QSizeF(size) * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::magenta); // shows through where nothing is painted
    return image;
}

void save(const QImage &image, const QString &name)
{
    const QString folder = qEnvironmentVariable("KELP_PICTURES");
    if (folder.isEmpty())
        return;
    QDir().mkpath(folder);
    QVERIFY(image.save(folder + u'/' + name + u".png"_s));
}

/// Everything that differs from the background at the same height.
QRect inked(const QImage &image)
{
    QRect result;
    for (int y = 0; y < image.height(); ++y) {
        const int ground = qGray(image.pixel(0, y));
        for (int x = 0; x < image.width(); ++x) {
            if (std::abs(qGray(image.pixel(x, y)) - ground) > 3)
                result |= QRect(x, y, 1, 1);
        }
    }
    return result;
}

} // namespace

void tst_OverlayPictures::staysWithinTheScreenAndKeepsItsMargins_data()
{
    QTest::addColumn<OverlayContent>("content");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("density");
    QTest::addColumn<ButtonStates>("buttons");
    QTest::addColumn<OverlayTheme>("theme");
    QTest::addColumn<bool>("ring");

    using sample::designReview;
    using sample::titled;
    const OverlayContent review = MeetingContent{designReview(), {}};
    const OverlayContent withPrevious = MeetingContent{designReview(), sample::budgetPlanning()};
    QTest::newRow("1440x900") << review << QSize(1440, 900) << 1.0 << ButtonStates() << OverlayTheme::midnight()
                              << false;
    QTest::newRow("1280x720") << withPrevious << QSize(1280, 720) << 1.0 << ButtonStates() << OverlayTheme::midnight()
                              << false;
    QTest::newRow("3840x2160") << withPrevious << QSize(1920, 1080) << 2.0 << ButtonStates() << OverlayTheme::midnight()
                               << false;
    QTest::newRow("1080x1920") << review << QSize(1080, 1920) << 1.0 << ButtonStates() << OverlayTheme::midnight()
                               << false;
    QTest::newRow("800x600") << withPrevious << QSize(800, 600) << 1.0 << ButtonStates() << OverlayTheme::midnight()
                             << false;
    QTest::newRow("fraction") << review << QSize(1440, 900) << 1.5 << ButtonStates() << OverlayTheme::midnight()
                              << false;
    const auto title = [&](const char *name, const QString &words) {
        QTest::newRow(name) << OverlayContent(MeetingContent{titled(designReview(), words),
                                                             titled(sample::budgetPlanning(), words)})
                            << QSize(1280, 720) << 1.0 << ButtonStates() << OverlayTheme::midnight() << false;
    };
    title("long title",
          u"Quarterly planning for the northern region with everybody who has a say in it and some who do not, "
          "followed by a discussion of the open points of last time, the budget, the holidays, the new "
          "coffee machine, the reorganisation of the shared folders and whatever else comes up on the day"_s);
    title("two lines", u"Interview: Senior Engineer, Platform & Reliability (second round)"_s);
    title("one word", QString(300, u'W'));
    title("right to left", u"مراجعة التصميم الأسبوعية مع فريق Kelp"_s);
    title("cjk", u"毎週のデザインレビュー会議（新製品の計画について）"_s);
    title("emoji", u"🎉 Launch party 🚀 with the team 👩‍💻"_s);
    title("hostile", u"<b>Bold</b>\n\tline\r\n\u202Eoverridden\u0007 &amp; &File"_s);
    QTest::newRow("no link") << OverlayContent(MeetingContent{sample::withoutLink(designReview()), {}})
                             << QSize(1440, 900) << 1.0 << ButtonStates() << OverlayTheme::midnight() << false;
    const ButtonStates inUse{{tag::join, {.focused = true}},
                             {tag::snooze, {.hover = 1, .scale = 1.03}},
                             {tag::dismiss, {.hover = 1, .scale = 0.96}},
                             {tag::joinPrevious, {.hover = 1, .focused = true}}};
    QTest::newRow("buttons in use") << withPrevious << QSize(1440, 900) << 1.0 << inUse << OverlayTheme::midnight()
                                    << false;
    QTest::newRow("welcome") << OverlayContent(WelcomeContent{u"ada@example.com"_s, 3, designReview()})
                             << QSize(1440, 900) << 1.0 << ButtonStates() << OverlayTheme::midnight() << false;
    const auto withRing = [&](const char *name, QSize size, double density, const OverlayTheme &theme,
                              const OverlayContent &content) {
        QTest::newRow(name) << content << size << density << inUse << theme << true;
    };
    withRing("ring 1440x900", {1440, 900}, 1, OverlayTheme::midnight(), withPrevious);
    withRing("ring 1280x720", {1280, 720}, 1, OverlayTheme::midnight(), withPrevious);
    withRing("ring 960x540", {960, 540}, 2, OverlayTheme::midnight(), withPrevious);
    withRing("ring 911x512", {911, 512}, 1.5, sample::glowing(),
             MeetingContent{titled(designReview(), u"Interview: Senior Engineer, Platform & Reliability"_s),
                            sample::budgetPlanning()});
    withRing("ring 3840x2160", {1920, 1080}, 2, OverlayTheme::midnight(), review);
    withRing("glowing ring 1440x900", {1440, 900}, 1, sample::glowing(), withPrevious);
    withRing("glowing ring 1280x720", {1280, 720}, 1, sample::glowing(), withPrevious);
    withRing("glowing ring 3840x2160", {1920, 1080}, 2, sample::glowing(), review);
    withRing("terminal ring", {1440, 900}, 1, sample::terminal(), review);
    withRing("glowing welcome", {1440, 900}, 1, sample::glowing(), WelcomeContent{u"ada@example.com"_s, 3, {}});
}

void tst_OverlayPictures::staysWithinTheScreenAndKeepsItsMargins()
{
    QFETCH(OverlayContent, content);
    QFETCH(QSize, size);
    QFETCH(double, density);
    QFETCH(ButtonStates, buttons);
    QFETCH(OverlayTheme, theme);
    QFETCH(bool, ring);
    QImage image = blank(size, density);
    QPainter painter(&image);
    const OverlayScene scene{content, theme, {.ringCountdown = ring, .snoozeMinutes = 5}};
    scene.paint(painter, size, sample::ten - 47, buttons);
    painter.end();
    save(image, u"overlay-"_s + QLatin1StringView(QTest::currentDataTag()).toString().replace(u' ', u'-'));

    const QRect ink = inked(image);
    QVERIFY(!ink.isEmpty());
    const int margin = qRound(24 * density);
    QVERIFY2(image.rect().adjusted(margin, margin, -margin, -margin).contains(ink),
             qPrintable(u"%1,%2 %3x%4"_s.arg(ink.x()).arg(ink.y()).arg(ink.width()).arg(ink.height())));
    // In the middle, up to the room that letters leave beside and above them.
    QVERIFY(std::abs(ink.center().x() - image.rect().center().x()) <= 24 * density);
    QVERIFY(std::abs(ink.center().y() - image.rect().center().y()) <= 24 * density);
}

void tst_OverlayPictures::liveWindowShowsTheSamePicture_data()
{
    QTest::addColumn<OverlayTheme>("theme");
    QTest::addColumn<bool>("ring");
    QTest::newRow("pill") << OverlayTheme::midnight() << false;
    QTest::newRow("ring") << OverlayTheme::midnight() << true;
    QTest::newRow("glowing ring") << sample::glowing() << true;
    QTest::newRow("cursor") << sample::terminal() << false;
}

void tst_OverlayPictures::liveWindowShowsTheSamePicture()
{
    QFETCH(OverlayTheme, theme);
    QFETCH(bool, ring);
    const QSize size(1280, 720);
    const OverlayScene scene{
        MeetingContent{sample::designReview(), sample::budgetPlanning()}, theme, {.ringCountdown = ring}};
    QImage still = blank(size, 1);
    QPainter painter(&still);
    scene.paint(painter, size, sample::ten - 9);
    painter.end();

    // Through a change of the countdown's width and one that leaves it, as when time goes by.
    OverlayView view(scene, sample::ten - 605);
    QImage live = blank(size, 1);
    view.resize(size);
    view.render(&live);
    QVERIFY(test::greatestDifference(live, still) > 100);
    for (double remaining = 10.3; remaining > 9; remaining -= 0.05)
        view.setNow(sample::ten - remaining);
    view.setNow(sample::ten - 9);
    view.render(&live);
    QVERIFY(test::greatestDifference(live, still) <= 2); // blending in two steps rounds twice
}

QTEST_MAIN(tst_OverlayPictures)
#include "tst_OverlayPictures.moc"
