#include "themes/PaintTarget.h"

#include <QScreen>
#include <QTest>
#include <QWidget>

#include <functional>

using namespace kelp;

class tst_PaintTarget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aViewHasAllThePixelsThatItTouches();
    void onlyPixelsThatAreJustTheViewsAreReached_data();
    void onlyPixelsThatAreJustTheViewsAreReached();
    void aFreePainterPaintsOnTheSamePixels_data();
    void aFreePainterPaintsOnTheSamePixels();
    void aFreePainterIsNotHeldByTheClipOfAWidget();
};

namespace {

using Change = std::function<void(QPainter &)>;

/// A window of which only the left half is painted again, and all of it written to.
class Window final : public QWidget
{
public:
    bool isFree = false;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        FreePainter free(painter, size());
        isFree = &free.painter() != &painter;
        free.painter().fillRect(rect(), m_isFirst ? Qt::black : Qt::white);
        m_isFirst = false;
    }

private:
    bool m_isFirst = true;
};

} // namespace

void tst_PaintTarget::aViewHasAllThePixelsThatItTouches()
{
    QCOMPARE(pixelsOf(QSizeF(400, 301), 1), QSize(400, 301));
    QCOMPARE(pixelsOf(QSizeF(400, 301), 1.5), QSize(600, 452));
    QCOMPARE(pixelsOf(QSizeF(0, 0), 2), QSize(1, 1));
}

void tst_PaintTarget::onlyPixelsThatAreJustTheViewsAreReached_data()
{
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("isReached");
    const auto row = [](const char *name, bool isReached, const Change &change,
                        QImage::Format format = QImage::Format_RGB32,
                        const QSize &size = {40, 30}) { QTest::newRow(name) << format << size << change << isReached; };
    row("plain", true, [](QPainter &) {});
    row(
        "translucent", true, [](QPainter &) {}, QImage::Format_ARGB32_Premultiplied);
    row(
        "of another format", false, [](QPainter &) {}, QImage::Format_RGB888);
    row("of another size", false, [](QPainter &) {}, QImage::Format_RGB32, {41, 30});
    row("clipped", false, [](QPainter &painter) { painter.setClipRect(0, 0, 10, 10); });
    row("fading", false, [](QPainter &painter) { painter.setOpacity(0.5); });
    row("moved", false, [](QPainter &painter) { painter.translate(1, 0); });
    row("scaled", false, [](QPainter &painter) { painter.scale(2, 2); });
    row("blended in another way", false,
        [](QPainter &painter) { painter.setCompositionMode(QPainter::CompositionMode_Plus); });
}

void tst_PaintTarget::onlyPixelsThatAreJustTheViewsAreReached()
{
    QFETCH(QImage::Format, format);
    QFETCH(QSize, size);
    QFETCH(Change, change);
    QFETCH(bool, isReached);
    QImage image(size, format);
    image.fill(Qt::black);
    QPainter painter(&image);
    change(painter);
    QCOMPARE(plainTarget(painter, QSize(40, 30), 1) != nullptr, isReached);
    FreePainter free(painter, QSizeF(40, 30));
    QCOMPARE(&free.painter() != &painter, isReached);
}

void tst_PaintTarget::aFreePainterPaintsOnTheSamePixels_data()
{
    QTest::addColumn<double>("density");
    for (const double density : {1.0, 1.25, 2.0})
        QTest::addRow("%g", density) << density;
}

void tst_PaintTarget::aFreePainterPaintsOnTheSamePixels()
{
    QFETCH(double, density);
    QImage image(pixelsOf(QSizeF(40, 30), density), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::black);
    QImage expected = image;
    const auto draw = [](QPainter &painter) { painter.fillRect(10, 10, 10, 10, Qt::white); };
    {
        QPainter painter(&expected);
        draw(painter);
    }
    {
        QPainter painter(&image);
        FreePainter free(painter, QSizeF(40, 30));
        QVERIFY(&free.painter() != &painter);
        draw(free.painter());
    }
    QCOMPARE(image, expected);
}

void tst_PaintTarget::aFreePainterIsNotHeldByTheClipOfAWidget()
{
    Window window;
    window.setAttribute(Qt::WA_OpaquePaintEvent);
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.repaint(0, 0, 100, 100);
    QVERIFY(window.isFree);
    const QImage seen = window.screen()->grabWindow(window.winId()).toImage();
    QCOMPARE(seen.pixel(50, 50), qRgb(255, 255, 255));
    QCOMPARE(seen.pixel(150, 50), qRgb(255, 255, 255));
}

QTEST_MAIN(tst_PaintTarget)
#include "tst_PaintTarget.moc"
