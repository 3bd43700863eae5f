#include "settings/Pictures.h"

#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QBrush>
#include <QImage>
#include <QPainter>

namespace kelp {

void paintRounded(QPainter &painter, const QRectF &frame, double radius, const QImage &picture)
{
    if (picture.isNull())
        return;
    // As a brush: the edge of a clip path is not smooth.
    QBrush brush(picture);
    QTransform placement = QTransform::fromTranslate(frame.left(), frame.top());
    placement.scale(frame.width() / picture.width(), frame.height() / picture.height());
    brush.setTransform(placement);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setPen(Qt::NoPen);
    painter.setBrush(brush);
    painter.drawRoundedRect(frame, radius, radius);
}

void paintEdge(QPainter &painter, const QRectF &frame, double radius, const DesktopColours &colours)
{
    QColor line = colours.dark ? QColor(Qt::white) : QColor(Qt::black);
    line.setAlphaF(colours.dark ? 0.14F : 0.12F);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBox(painter, frame, radius, Qt::transparent, line);
}

} // namespace kelp
