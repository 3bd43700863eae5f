#pragma once

#include <QColor>
#include <QImage>
#include <QString>

class QPainter;
class QSizeF;

namespace kelp::MenuBarIcon {

/// What the icon tells.
struct Content
{
    bool isPaused = false;
    QString text; ///< "5", "60", "now": drawn into the icon; empty: the calendar with its curtain

    friend bool operator==(const Content &, const Content &) = default;
};

/// One colour, and perhaps another one for a rim around all of it. A colour alone will do.
struct Colours
{
    Colours(Qt::GlobalColor colour = Qt::black) : shape(colour) {}
    Colours(const QColor &colour, const QColor &ofRim = {}) : shape(colour), rim(ofRim) {}

    QColor shape;
    QColor rim; ///< invalid: none
};

/// Paints the icon into the square at the painter's origin, `size` wide and high, in a colour whose opacity the
/// lighter parts scale down. What lies below shows through everywhere else. Edges of the text are put on whole pixels
/// of the painter's device.
void paint(QPainter &painter, const QSizeF &size, const Content &content = {}, const Colours &colours = {});

/// The same on a transparent picture of `size` × `size` points.
[[nodiscard]] QImage make(double size, const Content &content = {}, const Colours &colours = {},
                          double devicePixelRatio = 1);

/// The same as an SVG of 22 × 22 in the form that GTK and KDE tint as a symbolic icon; the colours are what others see.
/// It has shapes only, no text and no mask.
[[nodiscard]] QByteArray svg(const Content &content = {}, const Colours &colours = {});

} // namespace kelp::MenuBarIcon
