#include "overlay/CardTags.h"
#include "overlay/CountdownRing.h"
#include "overlay/MeetingCard.h"
#include "overlay/WelcomeCard.h"
#include "support/PaintRecord.h"
#include "support/SampleMeetings.h"
#include "support/SampleThemes.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <iterator>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// The sizes, weights, opacities and distances of what is on the cards.
class tst_CardFigures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void titleIsLargeInTheThemesWeight();
    void titleGlowsOnlyInAGlowingTheme();
    void titleHasACursorOnlyWhereTheThemeDoes();
    void pillIsACapsuleAroundItsWords();
    void ringHoldsItsLabelAndCaption();
    void ringsLabelKeepsWithinTheRing_data();
    void ringsLabelKeepsWithinTheRing();
    void linesOfTheMeetingCard();
    void distancesOnTheMeetingCard();
    void joinBeginsWithASymbol();
    void linesOfTheWelcomeCard();
    void checkMarkIsLargeAndGlowsWithTheTheme();
};

namespace {

const Instant now = sample::ten - 60;

/// Every value another one, so that none can be taken for another.
OverlayTheme theme()
{
    OverlayTheme result = sample::still(u"midnight"_s);
    result.accent = QColor(0, 255, 0);
    result.accentText = QColor(10, 20, 30);
    result.text = QColor(200, 150, 100);
    result.font = FontDesign::Serif;
    result.countdownFont = FontDesign::Monospaced;
    result.titleWeight = QFont::ExtraBold;
    return result;
}

OverlayTheme with(bool OverlayTheme::*flag)
{
    OverlayTheme result = theme();
    result.*flag = true;
    return result;
}

Arrangement meetingCard(const OverlayTheme &theme, bool ring = false)
{
    return MeetingCard{sample::designReview(), sample::budgetPlanning(), theme, {.ringCountdown = ring}}
        .element(now, {})
        .arrange(1000);
}

Arrangement welcomeCard(const OverlayTheme &theme)
{
    return WelcomeCard{{u"ada@example.com"_s, 2, {}}, theme}.element(now, {}).arrange(1000);
}

void record(PaintRecord &record, const Arrangement &arrangement)
{
    QPainter painter(&record);
    arrangement.paint(painter, now);
}

bool isSet(const PaintRecord &record, const QString &text, const QFont &font, const QColor &colour)
{
    const PaintRecord::Words *words = record.find(text);
    return words && words->font.families() == font.families() && words->font.pixelSize() == font.pixelSize() &&
           words->font.weight() == font.weight() && words->colour == colour;
}

QRectF frameOf(const Arrangement &arrangement, const QString &beginning)
{
    const auto found = std::find_if(arrangement.texts().begin(), arrangement.texts().end(),
                                    [&](const Arrangement::Text &each) { return each.text.startsWith(beginning); });
    return found == arrangement.texts().end() ? QRectF() : found->frame;
}

/// `part` of the arrangement, on black.
QImage picture(const Arrangement &arrangement, const QRect &part)
{
    QImage image(part.size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.translate(-part.topLeft());
    arrangement.paint(painter, now);
    return image;
}

} // namespace

void tst_CardFigures::titleIsLargeInTheThemesWeight()
{
    PaintRecord card;
    record(card, meetingCard(theme()));
    QVERIFY(isSet(card, u"Weekly design review"_s, designFont(FontDesign::Serif, 60, QFont::ExtraBold), theme().text));
}

void tst_CardFigures::titleGlowsOnlyInAGlowingTheme()
{
    const auto around = [](const OverlayTheme &theme) {
        const Arrangement card = meetingCard(theme);
        return picture(card, frameOf(card, u"Weekly"_s).toAlignedRect().adjusted(-60, -8, 60, 8));
    };
    const QImage plain = around(theme());
    const QImage glowing = around(with(&OverlayTheme::glow));
    // The same light by hand; the title alone lies in that part.
    const Element title =
        text(u"Weekly design review"_s).font(designFont(FontDesign::Serif, 60, QFont::ExtraBold)).colour(theme().text);
    const auto expected = [&](double opacity) {
        const Arrangement alone = kelp::glowing(22, faded(theme().accent, opacity), title).arrange(1000);
        return picture(alone, alone.frame().toAlignedRect().adjusted(-60, -8, 60, 8));
    };
    QCOMPARE(plain, expected(0));
    QCOMPARE(glowing, expected(0.55));
    QVERIFY(glowing != plain);
}

void tst_CardFigures::titleHasACursorOnlyWhereTheThemeDoes()
{
    const auto cursors = [](const OverlayTheme &theme, Instant at) {
        PaintRecord card;
        QPainter painter(&card);
        meetingCard(theme).paint(painter, at);
        painter.end();
        return std::count_if(card.words.begin(), card.words.end(), [&](const PaintRecord::Words &each) {
            return each.text == u"_" && each.colour == theme.accent && each.font.pixelSize() == 60;
        });
    };
    // Lit in every other period of 0.55 s since 2001-01-01.
    const double periods = std::floor((now.secondsSince1970 - 978307200) / 0.55);
    const Instant lit{978307200 + (periods + std::fmod(periods, 2) + 0.5) * 0.55};
    QCOMPARE(cursors(with(&OverlayTheme::cursor), lit), 1);
    QCOMPARE(cursors(with(&OverlayTheme::cursor), lit + 0.55), 0);
    QCOMPARE(cursors(theme(), lit), 0);
}

void tst_CardFigures::pillIsACapsuleAroundItsWords()
{
    const Arrangement arrangement = meetingCard(theme());
    PaintRecord card;
    record(card, arrangement);
    const QString words = u"Starts in 1:00"_s;
    const QFont font = designFont(FontDesign::Monospaced, 20, QFont::DemiBold);
    QVERIFY(isSet(card, words, font, faded(theme().text, 0.8)));
    QCOMPARE(card.find(words)->pieces, 5); // every digit is placed by itself

    const QRectF frame = *arrangement.frameOf(tag::countdown);
    const QFontMetricsF metrics(font);
    QVERIFY(std::abs(frame.width() - (metrics.horizontalAdvance(words) + 2 * 16)) <= 1);
    QVERIFY(std::abs(frame.height() - (metrics.height() + 2 * 6)) <= 1);
    QVERIFY(std::abs(card.find(words)->start.x() - (frame.left() + 16)) < 0.01);
    QVERIFY(std::abs(card.find(words)->start.y() - (frame.top() + 6 + metrics.ascent())) < 0.01);

    const auto capsule = std::find_if(card.frames.begin(), card.frames.end(), [&](const PaintRecord::Frame &each) {
        return each.path.boundingRect() == frame;
    });
    QVERIFY(capsule != card.frames.end());
    QCOMPARE(capsule->fill, faded(theme().text, 0.12));
    const double radius = frame.height() / 2;
    const double corner = radius * (1 - std::sqrt(0.5)); // where the diagonal meets the round end
    QVERIFY(capsule->path.contains(frame.topLeft() + QPointF(corner + 1, corner + 1)));
    QVERIFY(!capsule->path.contains(frame.topLeft() + QPointF(corner - 1, corner - 1)));
}

void tst_CardFigures::ringHoldsItsLabelAndCaption()
{
    const CountdownRing ring{sample::ten, 300, theme()};
    const Instant shown = sample::ten - 299;
    const Arrangement arrangement = ring.element(shown).arrange(500);
    PaintRecord painted;
    record(painted, arrangement);
    QVERIFY(isSet(painted, u"4:59"_s, designFont(FontDesign::Monospaced, 56, QFont::DemiBold), QColor(200, 150, 100)));
    QVERIFY(isSet(painted, u"until start"_s, designFont(FontDesign::Serif, 15), faded(theme().text, 0.55)));
    const QRectF label = frameOf(arrangement, u"4:59"_s);
    const QRectF caption = frameOf(arrangement, u"until"_s);
    QCOMPARE(caption.top() - label.bottom(), 2.0);
    const QRectF both = label | caption;
    QVERIFY((both.center() - arrangement.frame().center()).manhattanLength() <= 1);
}

void tst_CardFigures::ringsLabelKeepsWithinTheRing_data()
{
    QTest::addColumn<double>("remaining");
    QTest::addColumn<bool>("isWhole");
    QTest::newRow("minutes") << 299.0 << true;
    QTest::newRow("late") << -59.0 << true;
    QTest::newRow("an hour and more") << 4500.0 << true;
    QTest::newRow("days") << 200000.0 << false;
    QTest::newRow("for ever") << -1e12 << false;
}

void tst_CardFigures::ringsLabelKeepsWithinTheRing()
{
    QFETCH(double, remaining);
    QFETCH(bool, isWhole);
    for (const FontDesign design : {FontDesign::Default, FontDesign::Rounded, FontDesign::Serif}) {
        OverlayTheme theme = ::theme();
        theme.countdownFont = design;
        const CountdownRing ring{sample::ten, 300, theme};
        const Arrangement arrangement = ring.element(sample::ten - remaining).arrange(500);
        PaintRecord painted;
        record(painted, arrangement);
        const QString label = CountdownRing::label(remaining);
        QVERIFY(painted.find(label));
        QCOMPARE(painted.find(label)->font.pixelSize() == 56, isWhole);
        const QRectF frame = frameOf(arrangement, label);
        const double reach = std::hypot(frame.width() / 2, 105 - frame.top());
        QVERIFY2(reach <= 100, qPrintable(QString::number(reach))); // the line's inner edge
        QVERIFY(std::abs(frame.center().x() - 105) <= 1);
    }
}

void tst_CardFigures::linesOfTheMeetingCard()
{
    PaintRecord card;
    record(card, meetingCard(theme()));
    QVERIFY(isSet(card, u"10:00 – 10:30  ·  5 people  ·  Work"_s, designFont(FontDesign::Serif, 20),
                  faded(theme().text, 0.6)));
    QVERIFY(isSet(card, u"Still on: Budget planning with the regional offices ·"_s, designFont(FontDesign::Serif, 15),
                  faded(theme().text, 0.55)));
    QVERIFY(
        isSet(card, u"Return to join · Esc to dismiss"_s, designFont(FontDesign::Serif, 13), faded(theme().text, 0.4)));
}

void tst_CardFigures::distancesOnTheMeetingCard()
{
    const Arrangement card = meetingCard(theme());
    const auto frame = [&](const QString &tag) { return card.frameOf(tag).value_or(QRectF()); };
    QCOMPARE(frame(tag::snooze).left() - frame(tag::join).right(), 14.0);
    QCOMPARE(frame(tag::dismiss).left() - frame(tag::snooze).right(), 14.0);
    QCOMPARE(frame(tag::joinPrevious).left() - frameOf(card, u"Still on"_s).right(), 6.0);
    // Eighteen points more above the buttons than between other rows.
    const double between = frameOf(card, u"Return"_s).top() - frame(tag::joinPrevious).bottom();
    QCOMPARE(frame(tag::join).top() - frameOf(card, u"10:00"_s).bottom(), between + 18);

    const Arrangement welcome = welcomeCard(theme());
    const QRectF done = *welcome.frameOf(tag::dismiss);
    const double below = frameOf(welcome, u"This screen"_s).top() - done.bottom();
    QCOMPARE(done.top() - frameOf(welcome, u"No meetings"_s).bottom(), below + 18);
}

void tst_CardFigures::joinBeginsWithASymbol()
{
    const Arrangement arrangement = meetingCard(theme());
    PaintRecord card;
    record(card, arrangement);
    const auto symbols = [&](const QString &tag) {
        const QRectF frame = *arrangement.frameOf(tag);
        QList<PaintRecord::Image> result;
        std::copy_if(card.images.begin(), card.images.end(), std::back_inserter(result),
                     [&](const PaintRecord::Image &each) { return frame.contains(each.frame); });
        return result;
    };
    QCOMPARE(symbols(tag::join).size(), 1);
    const PaintRecord::Image symbol = symbols(tag::join).constFirst();
    QCOMPARE(symbol.frame.left(), arrangement.frameOf(tag::join)->left() + 28); // the button's room
    QVERIFY(symbol.frame.right() < card.find(u"Join Google Meet"_s)->start.x());
    QVERIFY(std::abs(symbol.frame.center().y() - arrangement.frameOf(tag::join)->center().y()) <= 1);
    // Some of it is drawn, in the colour of the words.
    int strongest = 0;
    for (int y = 0; y < symbol.image.height(); ++y) {
        for (int x = 0; x < symbol.image.width(); ++x) {
            if (symbol.image.pixelColor(x, y).alpha() == 255)
                QCOMPARE(symbol.image.pixelColor(x, y), theme().accentText);
            strongest = std::max(strongest, symbol.image.pixelColor(x, y).alpha());
        }
    }
    QCOMPARE(strongest, 255);
    QVERIFY(symbols(tag::snooze).isEmpty());
    QVERIFY(symbols(tag::dismiss).isEmpty());
}

void tst_CardFigures::linesOfTheWelcomeCard()
{
    PaintRecord card;
    record(card, welcomeCard(theme()));
    const QColor colour = theme().text;
    QVERIFY(isSet(card, u"Kelp is set up"_s, designFont(FontDesign::Serif, 56, QFont::ExtraBold), colour));
    const QFont line = designFont(FontDesign::Serif, 20);
    QVERIFY(isSet(card, u"Connected to ada@example.com · 2 calendars"_s, line, faded(colour, 0.7)));
    QVERIFY(isSet(card, u"No meetings in the next 24 hours"_s, line, faded(colour, 0.55)));
    QVERIFY(isSet(card, u"This screen will cover your displays right before each meeting."_s,
                  designFont(FontDesign::Serif, 13), faded(colour, 0.4)));
}

void tst_CardFigures::checkMarkIsLargeAndGlowsWithTheTheme()
{
    const auto around = [](const Arrangement &arrangement) {
        const int middle = static_cast<int>(std::floor(arrangement.size().width() / 2));
        return picture(arrangement, QRect(middle - 90, -50, 180, 125)); // the headline begins below
    };
    const auto expected = [&](double opacity) {
        const Element mark = symbol(u"checkmark-circle"_s, 72, theme().accent);
        return around(glowing(24, faded(theme().accent, opacity), mark).arrange(1000));
    };
    QCOMPARE(around(welcomeCard(theme())), expected(0));
    QCOMPARE(around(welcomeCard(with(&OverlayTheme::glow))), expected(0.7));
    QVERIFY(expected(0.7) != expected(0));
}

QTEST_MAIN(tst_CardFigures)
#include "tst_CardFigures.moc"
