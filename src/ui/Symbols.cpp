#include "ui/Symbols.h"

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp {

void paintSymbol(QPainter &painter, const QRectF &frame, const QString &name, const QColor &colour)
{
    QSvgRenderer renderer(u":/symbols/"_s + name + u".svg"_s);
    Q_ASSERT_X(renderer.isValid(), "paintSymbol", qPrintable(name));
    // Not the device's own density: a widget that is rendered into a picture has that of its screen.
    const double density = std::sqrt(std::abs(painter.deviceTransform().determinant()));
    QImage image((frame.size() * density).toSize().expandedTo({1, 1}), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter mask(&image);
    mask.setRenderHint(QPainter::Antialiasing);
    renderer.render(&mask, QRectF(image.rect()));
    mask.setCompositionMode(QPainter::CompositionMode_SourceIn);
    mask.fillRect(image.rect(), colour);
    mask.end();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(frame, image);
}

} // namespace kelp
