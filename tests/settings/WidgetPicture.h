#pragma once

#include <QDir>
#include <QImage>
#include <QTest>
#include <QWidget>

#include <cstdlib>

namespace kelp::test {

/// The widget as it paints itself, magenta where it paints nothing.
[[nodiscard]] inline QImage picture(QWidget &widget, double density)
{
    QImage image((QSizeF(widget.size()) * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    image.fill(Qt::magenta);
    widget.render(&image);
    return image;
}

/// Keeps it as NAME.png in $KELP_PICTURES, if that is set.
inline void save(const QImage &image, const QString &name)
{
    const QString folder = qEnvironmentVariable("KELP_PICTURES");
    if (folder.isEmpty())
        return;
    QDir().mkpath(folder);
    QVERIFY(image.save(folder + QLatin1Char('/') + name + QStringLiteral(".png")));
}

/// Whether something was left unpainted.
[[nodiscard]] inline bool hasMagenta(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) == qRgb(255, 0, 255))
                return true;
        }
    }
    return false;
}

/// How many pixels have that colour, as far as can be seen.
[[nodiscard]] inline int pixelsLike(const QImage &image, const QColor &colour)
{
    constexpr int unseen = 24; // of 765: the sum over red, green and blue
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            const int distance = std::abs(pixel.red() - colour.red()) + std::abs(pixel.green() - colour.green()) +
                                 std::abs(pixel.blue() - colour.blue());
            count += distance < unseen ? 1 : 0;
        }
    }
    return count;
}

} // namespace kelp::test
