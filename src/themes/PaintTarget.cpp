#include "themes/PaintTarget.h"

#include <QPaintEngine>

#include <cmath>

namespace kelp {

QSize pixelsOf(const QSizeF &size, double density)
{
    return QSize(static_cast<int>(std::ceil(size.width() * density)),
                 static_cast<int>(std::ceil(size.height() * density)))
        .expandedTo({1, 1});
}

QImage *plainTarget(const QPainter &painter, const QSize &pixels, double density)
{
    QPaintDevice *device = painter.paintEngine() ? painter.paintEngine()->paintDevice() : nullptr;
    if (!device || device->devType() != QInternal::Image || painter.hasClipping() || painter.opacity() < 1 ||
        painter.compositionMode() != QPainter::CompositionMode_SourceOver ||
        painter.deviceTransform() != QTransform::fromScale(density, density))
        return nullptr;
    auto *image = static_cast<QImage *>(device);
    const bool fits = image->format() == QImage::Format_RGB32 || image->format() == QImage::Format_ARGB32_Premultiplied;
    return fits && image->size() == pixels ? image : nullptr;
}

FreePainter::FreePainter(QPainter &painter, const QSizeF &view) : m_given(painter)
{
    const double density = painter.device()->devicePixelRatioF();
    const QSize pixels = pixelsOf(view, density);
    QImage *target = plainTarget(painter, pixels, density);
    if (!target)
        return;
    m_pixels = QImage(target->bits(), pixels.width(), pixels.height(), target->bytesPerLine(), target->format());
    m_pixels.setDevicePixelRatio(density);
    m_own.begin(&m_pixels);
}

} // namespace kelp
