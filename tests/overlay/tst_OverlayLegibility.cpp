#include "overlay/CardTags.h"
#include "overlay/OverlayScene.h"
#include "support/SampleMeetings.h"
#include "themes/ThemeBackgroundView.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace kelp;
using namespace Qt::StringLiterals;

/// That letters stand out from what can lie behind them, measured as the contrast ratio of WCAG 2.1. The table of the
/// figures is printed for every theme.
class tst_OverlayLegibility : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsStandOut_data();
    void textsStandOut();
};

namespace {

struct Rgb
{
    double red;
    double green;
    double blue;

    explicit Rgb(const QColor &colour) : red(colour.redF()), green(colour.greenF()), blue(colour.blueF()) {}

    [[nodiscard]] Rgb covered(const QColor &colour, double opacity) const
    {
        const Rgb top(colour);
        Rgb result = *this;
        result.red += (top.red - red) * opacity;
        result.green += (top.green - green) * opacity;
        result.blue += (top.blue - blue) * opacity;
        return result;
    }

    [[nodiscard]] double luminance() const
    {
        const auto linear = [](double value) {
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
    }
};

double contrast(const Rgb &a, const Rgb &b)
{
    const double first = a.luminance() + 0.05;
    const double second = b.luminance() + 0.05;
    return std::max(first, second) / std::min(first, second);
}

/// A text of the card: how strong its letters are, and how strong the panel of the same colour is that they lie on.
struct Ink
{
    QString name;
    QRectF frame;
    double letters;
    double panel;
    double wanted; ///< contrast ratio

    [[nodiscard]] double contrastOn(const Rgb &ground, const QColor &colour) const
    {
        const Rgb behind = ground.covered(colour, panel);
        return contrast(behind.covered(colour, letters), behind);
    }
};

/// The texts that lie on the background, with their places in a view of `size`. Primary buttons bring their own ground.
std::vector<Ink> inksOf(const OverlayScene &scene, const QSizeF &size)
{
    const auto &content = std::get<MeetingContent>(scene.content);
    const Arrangement card = scene.card(size, sample::ten - 47, {});
    const QPointF position = OverlayScene::cardPosition(size, card);
    std::vector<Ink> inks;
    for (const Arrangement::Text &each : card.texts()) {
        const QRectF frame = each.frame.translated(position);
        if (each.text == content.meeting.title)
            inks.push_back({u"title"_s, frame, 1, 0, 7});
        else if (each.text.contains(u"people"))
            inks.push_back({u"details"_s, frame, 0.6, 0, 4.5});
        else if (each.text.contains(u"Still on"))
            inks.push_back({u"previous"_s, frame, 0.55, 0, 4.5});
        else if (each.text.contains(u"Esc"))
            inks.push_back({u"hint"_s, frame, 0.4, 0, 4.5});
    }
    const double fill = scene.theme.button == ButtonLook::Pill ? 0.14 : 0.1;
    for (const Arrangement::Tagged &each : card.tagged()) {
        const QRectF frame = each.frame.translated(position);
        if (each.tag == tag::countdown)
            inks.push_back({u"countdown"_s, frame, 0.8, 0.12, 4.5});
        else if (each.tag == tag::snooze || each.tag == tag::dismiss)
            inks.push_back({each.tag, frame, 1, fill, 7});
    }
    return inks;
}

/// The least contrast within the frame, the least favourable hundredth of the pixels left out: single stars and dots of
/// grain do not make a letter illegible.
double leastContrast(const QImage &background, const Ink &ink, const QColor &colour)
{
    std::vector<double> contrasts;
    const QRect part = ink.frame.toAlignedRect().intersected(background.rect());
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); x += 2)
            contrasts.push_back(ink.contrastOn(Rgb(background.pixelColor(x, y)), colour));
    }
    const auto hundredth = contrasts.begin() + static_cast<std::ptrdiff_t>(contrasts.size() / 100);
    std::nth_element(contrasts.begin(), hundredth, contrasts.end());
    return *hundredth;
}

QImage backgroundAt(const OverlayTheme &theme, const QSize &size, double seconds)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    ThemeBackgroundView(theme, {.live = true, .animate = seconds > 0})
        .paint(painter, size, Instant{1767261600 + seconds});
    return image;
}

} // namespace

void tst_OverlayLegibility::textsStandOut_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("title");
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        const auto row = [&](const char *name, QSize size, const QString &title) {
            QTest::addRow("%s, %s", qPrintable(theme.id), name) << theme.id << size << title;
        };
        row("1440x900", {1440, 900}, sample::designReview().title);
        row("1280x720, three lines", {1280, 720},
            u"Quarterly planning for the northern region with everybody who has a say in it and some who do not"_s);
    }
}

/// At the still moment and at others. Where the letters are so faint that no ground of the theme would do, or none but
/// the plainest, they must reach nearly what they would there.
void tst_OverlayLegibility::textsStandOut()
{
    QFETCH(QString, id);
    QFETCH(QSize, size);
    QFETCH(QString, title);
    const OverlayTheme theme = OverlayTheme::named(id);
    const bool isCrowded = size.height() < 800;
    const auto previous = isCrowded ? std::optional<Meeting>() : sample::budgetPlanning();
    const OverlayScene scene{MeetingContent{sample::titled(sample::designReview(), title), previous},
                             theme,
                             {.showAttendees = true, .showCalendar = true, .snoozeMinutes = 5}};
    const std::vector<Ink> inks = inksOf(scene, size);
    QVERIFY(inks.size() >= 6);
    std::vector<double> least(inks.size(), 21);
    for (int moment = 0; moment < 8; ++moment) {
        const QImage background = backgroundAt(theme, size, 7.3 * moment);
        for (std::size_t i = 0; i < inks.size(); ++i)
            least[i] = std::min(least[i], leastContrast(background, inks[i], theme.text));
    }
    // The plainest ground: black under light letters, the paper under dark ones.
    const auto *flat = std::get_if<SolidBackground>(&theme.background);
    const Rgb plain(flat && flat->grain ? flat->colour : QColor(Qt::black));
    constexpr double nearly = 0.8;
    // A card that fills most of a small screen reaches where the scenes are bright: Zen's sun wanders into the end of
    // its title's lines, Synthwave's floor begins above its hint.
    const double share = isCrowded ? 0.75 : 1;
    QString table = id.leftJustified(10);
    QStringList faint;
    for (std::size_t i = 0; i < inks.size(); ++i) {
        const double best = inks[i].contrastOn(plain, theme.text);
        const QString figure = u"%1 %2"_s.arg(inks[i].name).arg(least[i], 0, 'f', 1);
        table += figure + u" (of %1)  "_s.arg(best, 0, 'f', 1);
        if (least[i] < share * std::min(inks[i].wanted, nearly * best))
            faint.append(figure);
    }
    const double button = contrast(Rgb(theme.accentText), Rgb(theme.accent));
    qInfo("%s", qPrintable(table + u"join %1"_s.arg(button, 0, 'f', 1)));
    QVERIFY2(faint.isEmpty(), qPrintable(faint.join(u", ")));
}

QTEST_MAIN(tst_OverlayLegibility)
#include "tst_OverlayLegibility.moc"
