#pragma once

class QImage;
class QPainter;
class QRectF;

namespace kelp {

struct DesktopColours;

/// Fills `frame`, with smooth round corners, with the picture, stretched where it has another size.
void paintRounded(QPainter &painter, const QRectF &frame, double radius, const QImage &picture);
/// The hairline that holds a picture together with the window around it, whatever the colours of both.
void paintEdge(QPainter &painter, const QRectF &frame, double radius, const DesktopColours &colours);

} // namespace kelp
