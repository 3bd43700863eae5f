#include "ui/BlankImage.h"

#include "base/Memory.h"

namespace kelp {

QImage blankImage(const QSize &pixels, QImage::Format format)
{
    QImage image(pixels, format);
    memory::populate(image.bits(), static_cast<std::size_t>(image.sizeInBytes()));
    return image;
}

QImage transparentImage(const QSizeF &points, double density)
{
    QImage image = blankImage((points * density).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(density);
    image.fill(Qt::transparent);
    return image;
}

} // namespace kelp
