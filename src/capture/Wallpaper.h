#pragma once

class QPainter;
class QSizeF;

namespace kelp {

/// The mock desktop's background: a calm sea in the morning.
void paintWallpaper(QPainter &painter, const QSizeF &size);

} // namespace kelp
