#pragma once

#include <QImage>
#include <QPainter>

namespace kelp {

/// How many pixels a view of `size` points has, at least one each way.
[[nodiscard]] QSize pixelsOf(const QSizeF &size, double density);

/// The picture that `painter` paints a view on, if its pixels are just the view's and nothing stands between: they may
/// then be written to, or painted on by others. None otherwise. `pixels` is the view's size, `density` its pixels per
/// point.
[[nodiscard]] QImage *plainTarget(const QPainter &painter, const QSize &pixels, double density);

/// Paints on what another painter paints on, past the clip that Qt gives a widget's painter. That is all that has to be
/// painted again, and every smaller clip takes a pass over all of its rectangles: hundreds, where rain falls. Whoever
/// paints here has to keep to them by itself. Where the pixels cannot be reached, it is the other painter.
class FreePainter
{
public:
    FreePainter(QPainter &painter, const QSizeF &view);
    FreePainter(const FreePainter &) = delete;
    FreePainter &operator=(const FreePainter &) = delete;

    [[nodiscard]] QPainter &painter() { return m_own.isActive() ? m_own : m_given; }

private:
    QPainter &m_given;
    QImage m_pixels; ///< shares those of the other painter
    QPainter m_own;
};

} // namespace kelp
