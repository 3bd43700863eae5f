#include "settings/AppearanceFixture.h"
#include "settings/CaptionPill.h"
#include "settings/SymbolView.h"
#include "settings/WidgetPicture.h"
#include "ui/DesktopColours.h"
#include "ui/DesktopPalette.h"
#include "ui/Symbols.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QSlider>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Which symbols the appearance window shows, found in its picture.
class tst_AppearanceSymbols : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setPalette(ownPalette(false, {})); }
    void init();
    void cleanup() { window.reset(); }
    void cleanupTestCase() { QApplication::setPalette(QPalette()); }

    void controlsShowTheirSymbols_data();
    void controlsShowTheirSymbols();
    void sliderEndsShowTheirSymbols_data();
    void sliderEndsShowTheirSymbols();
    void theSurpriseIsCaptionedWithItsSymbol();

private:
    std::unique_ptr<AppearanceFixture> window;
};

namespace {

/// How well `symbol` covers the part of `image` at (left, top), whatever the two colours are: the absolute value of
/// their correlation, 0…1. Both are gray.
double likeness(const QImage &image, const QImage &symbol, int left, int top)
{
    qint64 sumA = 0;
    qint64 sumB = 0;
    qint64 sumAA = 0;
    qint64 sumBB = 0;
    qint64 sumAB = 0;
    for (int y = 0; y < symbol.height(); ++y) {
        const uchar *a = image.constScanLine(top + y) + left;
        const uchar *b = symbol.constScanLine(y);
        for (int x = 0; x < symbol.width(); ++x) {
            sumA += a[x];
            sumB += b[x];
            sumAA += a[x] * a[x];
            sumBB += b[x] * b[x];
            sumAB += a[x] * b[x];
        }
    }
    const qint64 count = qint64{symbol.width()} * symbol.height();
    const auto spreadA = static_cast<double>(count * sumAA - sumA * sumA);
    const auto spreadB = static_cast<double>(count * sumBB - sumB * sumB);
    const auto shared = static_cast<double>(count * sumAB - sumA * sumB);
    return spreadA <= 0 || spreadB <= 0 ? 0 : std::abs(shared) / std::sqrt(spreadA * spreadB);
}

double bestLikeness(const QImage &image, const QString &name, int size)
{
    QImage symbol(size, size, QImage::Format_Grayscale8);
    symbol.fill(Qt::white);
    QPainter painter(&symbol);
    paintSymbol(painter, symbol.rect(), name, Qt::black);
    painter.end();
    double best = 0;
    for (int top = 0; top + size <= image.height(); ++top) {
        for (int left = 0; left + size <= image.width(); ++left)
            best = std::max(best, likeness(image, symbol, left, top));
    }
    return best;
}

/// The symbol that is most likely in the picture in that size, in pixels; empty where none is.
QString symbolIn(const QImage &image, int size)
{
    QRect middle(0, 0, std::min(image.width(), 260), std::min(image.height(), 70)); // the rest is empty, or a name
    middle.moveCenter(image.rect().center());
    const QImage gray = image.copy(middle).convertToFormat(QImage::Format_Grayscale8);
    QString found;
    double best = 0.8; // one that lies between two pixels is still more alike
    for (const QString &file : QDir(u":/symbols"_s).entryList()) {
        const QString name = file.chopped(4); // ".svg"
        if (const double like = bestLikeness(gray, name, size); like > best) {
            best = like;
            found = name;
        }
    }
    return found;
}

/// 0…255, as qGray.
int darkest(const QImage &image)
{
    int gray = 255;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            gray = std::min(gray, qGray(image.pixel(x, y)));
    }
    return gray;
}

} // namespace

void tst_AppearanceSymbols::init()
{
    window = std::make_unique<AppearanceFixture>();
}

void tst_AppearanceSymbols::controlsShowTheirSymbols_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("symbol");
    QTest::newRow("play") << u"Play sound"_s << 12 << u"play-fill"_s;
    QTest::newRow("stop") << u"Stop"_s << 12 << u"stop-fill"_s;
    QTest::newRow("surprise") << u"Surprise me"_s << 18 << u"shuffle"_s;
    QTest::newRow("own picture") << u"Choose image…"_s << 20 << u"photo-badge-plus"_s;
    QTest::newRow("preview") << u"Preview full screen"_s << 17 << u"play-rectangle-fill"_s;
}

void tst_AppearanceSymbols::controlsShowTheirSymbols()
{
    QFETCH(QString, control);
    QFETCH(int, size);
    QFETCH(QString, symbol);
    window->open();
    QAbstractButton *shown = window->button(control);
    QVERIFY(shown);
    QCOMPARE(symbolIn(picture(*shown, 1), size), symbol);
}

void tst_AppearanceSymbols::sliderEndsShowTheirSymbols_data()
{
    QTest::addColumn<QString>("slider");
    QTest::addColumn<QStringList>("symbols");
    QTest::newRow("volume") << u"Volume"_s << QStringList{u"speaker-fill"_s, u"speaker-wave-3-fill"_s};
    QTest::newRow("dim") << u"Darken the image"_s << QStringList{u"sun-max"_s, u"moon-fill"_s};
}

void tst_AppearanceSymbols::sliderEndsShowTheirSymbols()
{
    QFETCH(QString, slider);
    QFETCH(QStringList, symbols);
    window->preferences.set(preference::theme, u"custom"_s);
    window->open();
    const auto *control = window->control<QSlider>(slider);
    QVERIFY(control);
    auto ends = control->parentWidget()->findChildren<SymbolView *>();
    std::sort(ends.begin(), ends.end(), [](const SymbolView *a, const SymbolView *b) { return a->x() < b->x(); });
    QCOMPARE(ends.size(), 2);
    QVERIFY(ends.first()->x() < control->x() && control->x() < ends.last()->x());
    const int secondary = qGray(DesktopColours::of(control->palette()).secondary.rgb());
    for (qsizetype i = 0; i < 2; ++i) {
        const QImage shown = picture(*ends[i], 1);
        QCOMPARE(symbolIn(shown, shown.width()), symbols[i]);
        const int ink = darkest(shown); // thin lines cover few pixels whole
        QVERIFY2(ink > secondary - 10 && ink < secondary + 70, qPrintable(QString::number(ink)));
    }
}

void tst_AppearanceSymbols::theSurpriseIsCaptionedWithItsSymbol()
{
    window->preferences.set(preference::theme, u"random"_s);
    window->open();
    auto *caption = window->view->findChild<CaptionPill *>();
    QVERIFY(caption && caption->isVisible());
    QCOMPARE(symbolIn(picture(*caption, 1), 14), u"shuffle"_s);
}

QTEST_MAIN(tst_AppearanceSymbols)
#include "tst_AppearanceSymbols.moc"
