#pragma once

#include <QColor>
#include <QImage>
#include <QRectF>

#include <functional>
#include <vector>

class QPainter;

namespace kelp {

/// The light that a shape casts on what lies behind it: its blurred mask in one colour. It is baked when it is first
/// painted and again only when the shape looks different.
class Glow
{
public:
    /// `bounds` is all that the shape covers, `radius` how far its light is blurred, both in logical points.
    Glow(const QRectF &bounds, double radius, const QColor &colour);

    /// All that the light covers.
    [[nodiscard]] QRectF bounds() const;
    /// `shape` paints what casts the light.
    void paint(QPainter &painter, const std::function<void(QPainter &)> &shape);
    /// Takes over what another glow has baked, for as long as it is the same.
    void inherit(const Glow &before);

private:
    struct Light
    {
        QImage mask;
        QImage picture;
    };

    [[nodiscard]] QRectF litFrame(double density) const;
    [[nodiscard]] QImage tinted(const QImage &mask) const;

    QRectF m_bounds;
    double m_radius;
    QColor m_colour;
    std::vector<Light> m_baked; ///< the latest first; two, because a blinking shape goes to and fro
};

} // namespace kelp
