#include "themes/SoftImage.h"

#include <QImage>
#include <QTest>

using namespace kelp;

class tst_SoftImage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsTheBrightestLightBright_data();
    void keepsTheBrightestLightBright();
};

void tst_SoftImage::keepsTheBrightestLightBright_data()
{
    QTest::addColumn<float>("light");
    QTest::addColumn<int>("shown");
    QTest::newRow("none") << 0.0F << 0;
    QTest::newRow("full") << 1.0F << 255;
    QTest::newRow("a little more") << 1.003F << 255;
    QTest::newRow("twice") << 2.0F << 255;
}

void tst_SoftImage::keepsTheBrightestLightBright()
{
    QFETCH(float, light);
    QFETCH(int, shown);
    const QSize size(130, 70);
    SoftImage soft;
    soft.prepare(size);
    soft.fill(Floats{light, light, light, 1});
    QImage image(size, QImage::Format_RGB32);
    soft.enlargeInto(image, image.rect());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            QCOMPARE(image.pixel(x, y), qRgb(shown, shown, shown));
    }
}

QTEST_APPLESS_MAIN(tst_SoftImage)
#include "tst_SoftImage.moc"
