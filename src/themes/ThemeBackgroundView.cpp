#include "themes/ThemeBackgroundView.h"

#include <QImage>
#include <QLinearGradient>
#include <QPainter>

#include <cmath>

namespace kelp {

namespace {

/// What a blurred desktop comes to on the whole, where nothing behind the window can be seen.
constexpr double desktopGrey = 0.2;
/// Black over it keeps the card readable on any desktop.
constexpr double dimAtTop = 0.55;
constexpr double dimAtBottom = 0.8;

constexpr int tileWidth = 64;

/// A fixed pattern of thresholds in 0…1, without visible structure (interleaved gradient noise).
double threshold(int x, int y)
{
    const double inner = 0.06711056 * x + 0.00583715 * y;
    const double outer = 52.9829189 * (inner - std::floor(inner));
    return outer - std::floor(outer);
}

/// Grey under the dark gradient as a strip to repeat sideways. From top to bottom it passes through only a dozen of the
/// 256 levels, which shows as bands; so the levels are mixed by a threshold per pixel.
QImage dimmedGrey(int height)
{
    QImage tile(tileWidth, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        const double dim = dimAtTop + (dimAtBottom - dimAtTop) * (y + 0.5) / height;
        const double level = 255 * desktopGrey * (1 - dim);
        auto *line = reinterpret_cast<QRgb *>(tile.scanLine(y));
        for (int x = 0; x < tileWidth; ++x) {
            const int value = static_cast<int>(std::floor(level + threshold(x, y)));
            line[x] = qRgb(value, value, value);
        }
    }
    return tile;
}

/// What is drawn where a picture is missing or cannot be read.
void paintMissingPicture(QPainter &painter, const QSizeF &size, QColor accent)
{
    QLinearGradient gradient(0, 0, 0, size.height());
    accent.setAlphaF(0.35F);
    gradient.setColorAt(0, accent);
    gradient.setColorAt(1, Qt::black);
    painter.fillRect(QRectF(QPointF(), size), Qt::black);
    painter.fillRect(QRectF(QPointF(), size), gradient);
}

} // namespace

ThemeBackgroundView::ThemeBackgroundView(const OverlayTheme &theme) : m_theme(theme) {}

void ThemeBackgroundView::paint(QPainter &painter, const QSizeF &size)
{
    const QRectF frame(QPointF(), size);
    if (const auto *solid = std::get_if<SolidBackground>(&m_theme.background)) {
        painter.fillRect(frame, solid->colour);
    } else if (std::holds_alternative<BlurBackground>(m_theme.background)) {
        const double density = painter.device()->devicePixelRatioF();
        const int height = std::max(1, static_cast<int>(std::ceil(size.height() * density)));
        if (m_tile.height() != height) {
            m_tile = QPixmap::fromImage(dimmedGrey(height));
            m_tile.setDevicePixelRatio(density);
        }
        painter.drawTiledPixmap(frame, m_tile);
    } else {
        paintMissingPicture(painter, size, m_theme.accent);
    }
}

} // namespace kelp
