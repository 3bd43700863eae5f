#pragma once

class QColor;
class QPainter;
class QRectF;
class QString;

namespace kelp {

/// Paints resources/symbols/<name>.svg in one colour. The file's shapes are black; only their coverage counts.
void paintSymbol(QPainter &painter, const QRectF &frame, const QString &name, const QColor &colour);

} // namespace kelp
