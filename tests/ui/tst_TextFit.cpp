#include "ui/TextFit.h"

#include "ui/Fonts.h"

#include <QFontMetricsF>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_TextFit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsTheSizeWhereTheTextFits();
    void usesMoreLinesBeforeItShrinks();
    void shrinksBeforeItCuts();
    void takesTheGreatestSizeThatFits();
    void cutsAtTheSmallestSize_data();
    void cutsAtTheSmallestSize();
    void shrinksToAHeightWithoutBeingCutForIt();
    void balancesItsLines();
    void knowsTheDirectionOfTheText();
    void anEmptyTextHasNoWidth();
    void answersEachQuestionByItself();
};

namespace {

const QFont font = designFont(FontDesign::Default, 60, QFont::Bold);
constexpr double width = 1000;

FittedText fit(const QString &text)
{
    return fitText(text, font, width, 3, 0.5);
}

} // namespace

void tst_TextFit::keepsTheSizeWhereTheTextFits()
{
    const FittedText fitted = fit(u"Weekly design review"_s);
    QCOMPARE(fitted.font.pixelSize(), 60);
    QCOMPARE(fitted.lines, QStringList{u"Weekly design review"_s});
    QCOMPARE(fitted.width, QFontMetricsF(font).horizontalAdvance(u"Weekly design review"_s));
}

void tst_TextFit::usesMoreLinesBeforeItShrinks()
{
    const FittedText fitted = fit(u"word "_s.repeated(16).trimmed());
    QCOMPARE(fitted.font.pixelSize(), 60);
    QVERIFY(fitted.lines.size() > 1 && fitted.lines.size() <= 3);
    QCOMPARE(fitted.lines.join(u' '), u"word "_s.repeated(16).trimmed());
}

void tst_TextFit::shrinksBeforeItCuts()
{
    const QString text = u"word "_s.repeated(30).trimmed();
    const FittedText fitted = fit(text);
    QVERIFY(fitted.font.pixelSize() < 60);
    QVERIFY(fitted.font.pixelSize() >= 30);
    QCOMPARE(fitted.lines.size(), 3);
    QCOMPARE(fitted.lines.join(u' '), text);
    QVERIFY(fitted.width <= width);
}

void tst_TextFit::takesTheGreatestSizeThatFits()
{
    const QString word(30, u'm'); // too long for a line of the full size
    const FittedText fitted = fit(word);
    QCOMPARE(fitted.lines, QStringList{word});
    QFont larger = fitted.font;
    larger.setPixelSize(fitted.font.pixelSize() + 1);
    QVERIFY(QFontMetricsF(larger).horizontalAdvance(word) > width);
}

void tst_TextFit::cutsAtTheSmallestSize_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("words") << u"word "_s.repeated(200).trimmed();
    QTest::newRow("one word") << QString(900, u'W');
    QTest::newRow("cjk") << u"設計会議"_s.repeated(100);
    QTest::newRow("right to left") << u"مراجعة التصميم "_s.repeated(60).trimmed();
}

void tst_TextFit::cutsAtTheSmallestSize()
{
    QFETCH(QString, text);
    const FittedText fitted = fit(text);
    QCOMPARE(fitted.font.pixelSize(), 30);
    QCOMPARE(fitted.lines.size(), 3);
    QVERIFY(fitted.lines.constLast().contains(u'…'));
    QVERIFY(text.startsWith(fitted.lines.constFirst()));
    QVERIFY2(fitted.width <= width + 1, qPrintable(QString::number(fitted.width)));
}

void tst_TextFit::shrinksToAHeightWithoutBeingCutForIt()
{
    const QString text = u"word "_s.repeated(16).trimmed();
    const FittedText whole = fit(text);
    const double height = whole.lineHeight * static_cast<double>(whole.lines.size());
    QCOMPARE(whole.lineHeight, std::ceil(QFontMetricsF(font).height()));
    QCOMPARE(fitText(text, font, width, 3, 0.5, height).font.pixelSize(), 60);
    const FittedText lower = fitText(text, font, width, 3, 0.5, height - 1);
    QVERIFY(lower.font.pixelSize() < 60 && lower.font.pixelSize() > 30);
    QVERIFY(lower.lineHeight * static_cast<double>(lower.lines.size()) < height);
    QCOMPARE(lower.lines.join(u' '), text);
    for (const double tooLow : {20.0, 0.0, -50.0}) {
        const FittedText least = fitText(text, font, width, 3, 0.5, tooLow);
        QCOMPARE(least.font.pixelSize(), 30);
        QCOMPARE(least.lines.join(u' '), text);
    }
}

void tst_TextFit::balancesItsLines()
{
    // At its full width the first line would take all but the last word.
    const QFontMetricsF metrics(font);
    QString text = u"Interview with a"_s;
    while (metrics.horizontalAdvance(text + u" very"_s) <= width)
        text += u" very"_s;
    const FittedText fitted = fit(text + u" last"_s);
    QCOMPARE(fitted.lines.size(), 2);
    QVERIFY(metrics.horizontalAdvance(fitted.lines.at(1)) > metrics.horizontalAdvance(fitted.lines.at(0)) / 2);
}

void tst_TextFit::knowsTheDirectionOfTheText()
{
    QVERIFY(fit(u"مراجعة Kelp"_s).rightToLeft);
    QVERIFY(!fit(u"Kelp مراجعة"_s).rightToLeft);
}

void tst_TextFit::anEmptyTextHasNoWidth()
{
    QCOMPARE(fit({}).width, 0.0);
}

void tst_TextFit::answersEachQuestionByItself()
{
    const QString text = u"Weekly design review of everything that was drawn"_s;
    const QFont serif = designFont(FontDesign::Serif, 60, QFont::Bold);
    // More of them than are kept, each asked for again.
    for (int round = 0; round < 2; ++round) {
        for (int wide = 300; wide < 1000; wide += 10) {
            QVERIFY(fitText(text, font, wide, 9, 0.1).width <= wide);
            QVERIFY(fitText(text, font, wide, 1, 0.1).lines.size() == 1);
        }
        QVERIFY(fitText(text, serif, 1e6, 1, 1).width != fitText(text, font, 1e6, 1, 1).width);
        QVERIFY(fitText(text, font, 500, 9, 0.2, 40).lineHeight <= 40);
        QVERIFY(fitText(text, font, 500, 9, 0.2).lineHeight > 40);
        QVERIFY(fitText(text, font, 300, 1, 0.9).font.pixelSize() > fitText(text, font, 300, 1, 0.2).font.pixelSize());
        for (const QFont &each : {font, serif})
            QCOMPARE(advanceOf(u"10"_s, each), QFontMetricsF(each).horizontalAdvance(u"10"_s));
        QVERIFY(advanceOf(u"10"_s, font) != advanceOf(u"1"_s, font));
    }
}

QTEST_MAIN(tst_TextFit)
#include "tst_TextFit.moc"
