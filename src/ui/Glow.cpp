#include "ui/Glow.h"

#include "ui/Blur.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace kelp {

namespace {

constexpr std::size_t kept = 2;

/// Pixels per point at which the light is baked. A blurred picture holds no detail that the full number would show: one
/// pixel for each sixth of the radius is plenty.
double bakedDensity(double radius, double density)
{
    return density / std::max(1.0, std::floor(radius * density / 6));
}

} // namespace

Glow::Glow(const QRectF &bounds, double radius, const QColor &colour)
    : m_bounds(bounds), m_radius(radius), m_colour(colour)
{
}

QRectF Glow::bounds() const
{
    // The light of the coarsest bake reaches farthest.
    const double reach = 1.5 * m_radius + 4;
    return m_bounds.adjusted(-reach, -reach, reach, reach);
}

/// Where the baked picture lies.
QRectF Glow::litFrame(double density) const
{
    const double reach = (blurReach(m_radius * density) + 1) / density;
    const QRectF frame = m_bounds.adjusted(-reach, -reach, reach, reach);
    const auto pixels = [density](double length) { return std::ceil(length * density) / density; };
    return {frame.topLeft(), QSizeF(pixels(frame.width()), pixels(frame.height()))};
}

void Glow::paint(QPainter &painter, const std::function<void(QPainter &)> &shape)
{
    // What scales the painter scales the picture: a button that swells does not need a light of its own for each size.
    const double density = bakedDensity(m_radius, painter.device()->devicePixelRatioF());
    const QRectF frame = litFrame(density);
    QImage drawn((frame.size() * density).toSize().expandedTo({1, 1}), QImage::Format_ARGB32_Premultiplied);
    drawn.fill(Qt::transparent);
    QPainter maskPainter(&drawn);
    maskPainter.scale(density, density); // Qt takes no device pixel ratio below 1
    maskPainter.translate(-frame.topLeft());
    shape(maskPainter);
    maskPainter.end();

    const QImage mask = drawn.convertToFormat(QImage::Format_Alpha8);
    const auto found =
        std::find_if(m_baked.begin(), m_baked.end(), [&](const Light &each) { return each.mask == mask; });
    if (found == m_baked.end()) {
        m_baked.insert(m_baked.begin(), {mask, tinted(blurred(mask, m_radius * density))});
        m_baked.resize(std::min(m_baked.size(), kept));
    } else {
        std::rotate(m_baked.begin(), found, found + 1);
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(frame, m_baked.front().picture);
}

void Glow::inherit(const Glow &before)
{
    if (m_radius == before.m_radius && m_colour == before.m_colour)
        m_baked = before.m_baked;
}

QImage Glow::tinted(const QImage &mask) const
{
    std::array<QRgb, 256> shades{};
    for (std::size_t level = 0; level < shades.size(); ++level) {
        const float alpha = static_cast<float>(level) * m_colour.alphaF();
        const auto part = [alpha](float value) { return static_cast<int>(std::lround(alpha * value)); };
        shades[level] = qRgba(part(m_colour.redF()), part(m_colour.greenF()), part(m_colour.blueF()), part(1));
    }
    QImage result(mask.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < mask.height(); ++y) {
        const uchar *from = mask.constScanLine(y);
        std::transform(from, from + mask.width(), reinterpret_cast<QRgb *>(result.scanLine(y)),
                       [&](uchar level) { return shades[level]; });
    }
    return result;
}

} // namespace kelp
