#include "themes/ThemeBackgroundView.h"

#include "preferences/Preferences.h"
#include "themes/Backdrop.h"
#include "themes/GrainLayer.h"
#include "themes/PaintTarget.h"
#include "themes/Pieces.h"
#include "themes/ThemeImages.h"
#include "ui/BlankImage.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace kelp {

namespace {

/// Seconds between two positions of a wandering picture, which moves by less than half a point in them.
constexpr double slowly = 1.0 / 8;

/// Pixels of the largest part of a still background of which a copy is kept at hand: a quarter of a megabyte.
constexpr int fewPixels = 1 << 16;

QRect pixelsOf(const QRect &part, double density)
{
    return QRectF(QPointF(part.topLeft()) * density, QSizeF(part.size()) * density).toAlignedRect();
}

/// Shows `pixels` of `source` in their place. `target` are the painter's own pixels, if they can be reached.
void copyPixels(QPainter &painter, QImage *target, const QImage &source, const QRect &pixels, double density)
{
    if (!target) {
        painter.drawImage(QRectF(QPointF(pixels.topLeft()) / density, QSizeF(pixels.size()) / density), source, pixels);
        return;
    }
    const auto bytes = static_cast<std::size_t>(pixels.width()) * sizeof(QRgb);
    const std::ptrdiff_t left = std::ptrdiff_t{pixels.left()} * std::ptrdiff_t{sizeof(QRgb)};
    for (int y = pixels.top(); y <= pixels.bottom(); ++y)
        std::memcpy(target->scanLine(y) + left, source.constScanLine(y) + left, bytes);
}

/// What stands for a picture that is missing or cannot be read: the accent at 35 %, fading to black. It changes by a
/// shade only every few rows, so a pattern spreads what lies between two shades.
QImage missingPicture(const QSize &pixels, const QColor &accent)
{
    QImage image = blankImage(pixels.expandedTo({2, 2}), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        const double part = 0.35 * (1 - (y + 0.5) / image.height());
        const auto fine = [&](float channel) { return static_cast<int>(std::lround(channel * part * 255 * 128)); };
        const int red = fine(accent.redF());
        const int green = fine(accent.greenF());
        const int blue = fine(accent.blueF());
        const std::int16_t *noise = SoftImage::pattern(y);
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int more = noise[x % SoftImage::patternSide * 4];
            line[x] = qRgb((red + more) >> 7, (green + more) >> 7, (blue + more) >> 7);
        }
    }
    return image;
}

/// What is seen until the picture comes.
QImage black()
{
    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(Qt::black);
    return image;
}

} // namespace

BackgroundOptions BackgroundOptions::forOverlay(const OverlayTheme &theme, const Preferences &preferences, bool animate)
{
    BackgroundOptions options;
    options.live = true;
    options.animate = animate;
    options.customDim = std::clamp(preferences.get(preference::customDim), 0.0, 1.0);
    options.pictureComes = !ThemeImages::isReady(theme, preferences);
    if (std::holds_alternative<CustomBackground>(theme.background) && !options.pictureComes)
        options.customPicture = ThemeImages::custom(preferences);
    return options;
}

ThemeBackgroundView::ThemeBackgroundView(const OverlayTheme &theme, BackgroundOptions options)
    : m_theme(theme), m_options(std::move(options))
{
    if (theme.animation)
        m_layer = AnimatedLayer{*theme.animation, m_options.animate};
}

void ThemeBackgroundView::paint(QPainter &painter, const QSizeF &size, Instant shown, const QRegion &part)
{
    const QRegion wanted = part.isEmpty() ? QRegion(QRectF(QPointF(), size).toAlignedRect()) : part;
    const double density = painter.device()->devicePixelRatioF();
    prepare(pixelsOf(size, density), density);
    if (!isComposed())
        return forEachPiece(painter, wanted,
                            [&](const QRectF &piece) { paintStill(painter, size, piece.toAlignedRect()); });
    if (isPictured())
        paintPicture(painter, density, shown, wanted);
    else if (hasGround())
        paintGround(painter, size, density, wanted);
    else
        paintGlow(painter, density, shown, wanted);
    if (m_layer)
        paintLayer(painter, size, density, m_layer->time(shown), wanted);
}

void ThemeBackgroundView::setPicture(const QImage &picture)
{
    m_options.pictureComes = false;
    m_given = picture;
    m_pixels = QSize();
}

QRectF ThemeBackgroundView::movingPart(const QSizeF &size) const
{
    if (!m_options.live || !m_options.animate)
        return {};
    const bool hasPicture = m_pixels.isEmpty() || m_options.pictureComes || m_hasPicture;
    if (std::holds_alternative<ImageBackground>(m_theme.background) && hasPicture)
        return {QPointF(), size};
    return m_layer ? m_layer->movingPart(size) : QRectF();
}

QRegion ThemeBackgroundView::changed(const QSizeF &size, Instant from, Instant to) const
{
    const QRegion moving = movingPart(size).toAlignedRect();
    if (m_pixels.isEmpty() || !isPictured() || pictureTime(from) != pictureTime(to))
        return moving;
    if (!m_layer)
        return {};
    return moving & (m_layer->sharpPart(size, m_layer->time(from)) | m_layer->sharpPart(size, m_layer->time(to)));
}

double ThemeBackgroundView::leastInterval() const
{
    const double ofLayer = m_layer ? m_layer->leastInterval() : slowly;
    return std::holds_alternative<ImageBackground>(m_theme.background) ? std::min(ofLayer, slowly) : ofLayer;
}

QImage ThemeBackgroundView::picture() const
{
    if (m_given || m_options.pictureComes)
        return m_given.value_or(QImage());
    if (const auto *image = std::get_if<ImageBackground>(&m_theme.background))
        return ThemeImages::bundled(image->name);
    return std::holds_alternative<CustomBackground>(m_theme.background) ? m_options.customPicture : QImage();
}

/// Whether each frame is put together from its layers; otherwise it is painted once and copied.
bool ThemeBackgroundView::isComposed() const
{
    return m_layer || isBlurred() || (m_hasPicture && std::holds_alternative<ImageBackground>(m_theme.background));
}

/// Whether there is a picture under the layers, or what stands for it.
bool ThemeBackgroundView::isPictured() const
{
    return !m_picture.isNull();
}

/// Whether the desktop is seen through it.
bool ThemeBackgroundView::isBlurred() const
{
    return std::holds_alternative<BlurBackground>(m_theme.background) && !m_options.backdrop.isNull();
}

/// Makes what only depends on the size, in pixels and in points.
void ThemeBackgroundView::prepare(const QSize &pixels, double density)
{
    if (m_pixels == pixels && m_density == density)
        return;
    m_pixels = pixels;
    m_density = density;
    m_softTime.reset();
    m_layerStill = {};
    m_ground = {};
    m_canvas = {};
    m_still = {};
    m_atHand = {};
    m_shade.prepare(pixels);
    preparePicture();
    if (const auto *solid = std::get_if<SolidBackground>(&m_theme.background)) {
        m_shade.fill(SoftPixel::opaque(solid->colour));
    } else if (isBlurred()) {
        Backdrop::soften(m_shade, m_options.backdrop, pixels, density);
    } else if (m_hasPicture) {
        const auto *image = std::get_if<ImageBackground>(&m_theme.background);
        PictureLayer::addShade(m_shade, image ? image->dim : m_options.customDim);
    }
}

void ThemeBackgroundView::preparePicture()
{
    m_picture = picture();
    m_hasPicture = !m_picture.isNull();
    if (m_hasPicture)
        m_picture = PictureLayer::fitted(m_picture, m_pixels);
    else if (std::holds_alternative<ImageBackground>(m_theme.background) ||
             std::holds_alternative<CustomBackground>(m_theme.background))
        m_picture = m_options.pictureComes ? black() : missingPicture(m_pixels, m_theme.accent);
}

void ThemeBackgroundView::softenAt(double t)
{
    if (m_softTime == t)
        return;
    m_softTime = t;
    m_soft = m_shade;
    if (m_layer)
        m_layer->paintSoft(m_soft, t);
}

/// The time that the picture under a layer shows: it is too slow to be made for every frame.
Instant ThemeBackgroundView::pictureTime(Instant shown) const
{
    const double step = m_layer ? m_layer->softInterval() : slowly;
    return m_options.live ? Instant{std::floor(shown.secondsSince1970 / step) * step} : shown;
}

/// The moved picture, its shade and what is soft of the layer: too slow to change with every frame, and kept until it
/// does.
void ThemeBackgroundView::paintPicture(QPainter &painter, double density, Instant shown, const QRegion &part)
{
    const Instant step = pictureTime(shown);
    const double drift = m_options.animate ? step.secondsSince1970 : 0;
    QImage *target = plainTarget(painter, m_pixels, density);
    if (m_canvas.size() != m_pixels || m_canvasTime != drift) {
        m_canvasTime = drift;
        softenAt(m_layer ? m_layer->time(step) : 0);
        const bool drifts = m_hasPicture && std::holds_alternative<ImageBackground>(m_theme.background);
        const Drift moved = drifts ? Drift::at(drift) : Drift();
        const QRect view = QRectF(QPointF(), QSizeF(m_pixels) / density).toAlignedRect();
        const bool isWhole = part.boundingRect().contains(view) && part.rectCount() == 1;
        if (isWhole && target && !m_options.live) { // every frame is another one: nothing is worth keeping
            m_canvas = {};
            return PictureLayer::paint(*target, nullptr, m_picture, moved, m_soft);
        }
        if (m_canvas.size() != m_pixels)
            m_canvas = blankImage(m_pixels, QImage::Format_RGB32);
        PictureLayer::paint(m_canvas, isWhole ? target : nullptr, m_picture, moved, m_soft);
        if (isWhole && target)
            return;
    }
    for (const QRect &each : part)
        copyPixels(painter, target, m_canvas, pixelsOf(each, density) & m_canvas.rect(), density);
}

/// What is soft of the layer over the theme's colour.
void ThemeBackgroundView::paintGlow(QPainter &painter, double density, Instant shown, const QRegion &part)
{
    softenAt(m_layer ? m_layer->time(shown) : 0);
    QImage *target = plainTarget(painter, m_pixels, density);
    if (target)
        m_canvas = {};
    else if (m_canvas.size() != m_pixels)
        m_canvas = blankImage(m_pixels, QImage::Format_RGB32);
    for (const QRect &each : part) {
        const QRect pixels = pixelsOf(each, density) & QRect(QPoint(), m_pixels);
        m_soft.enlargeInto(target ? *target : m_canvas, pixels);
        if (!target)
            copyPixels(painter, nullptr, m_canvas, pixels, density);
    }
}

/// Whether all but what is sharp and moves can be made once.
bool ThemeBackgroundView::hasGround() const
{
    return m_layer && m_layer->isSoftStill() && !isPictured();
}

void ThemeBackgroundView::paintGround(QPainter &painter, const QSizeF &size, double density, const QRegion &part)
{
    if (m_ground.isNull()) {
        softenAt(0);
        m_ground = blankImage(m_pixels, QImage::Format_RGB32);
        m_soft.enlargeInto(m_ground, m_ground.rect());
        m_ground.setDevicePixelRatio(density);
        QPainter baking(&m_ground);
        m_layer->paintStill(baking, size);
        baking.end();
        m_ground.setDevicePixelRatio(1);
        m_soft = {};
        m_softTime.reset();
    }
    QImage *target = plainTarget(painter, m_pixels, density);
    for (const QRect &each : part)
        copyPixels(painter, target, m_ground, pixelsOf(each, density) & m_ground.rect(), density);
}

void ThemeBackgroundView::paintLayer(QPainter &painter, const QSizeF &size, double density, double t,
                                     const QRegion &part)
{
    const QRectF still = hasGround() ? QRectF() : m_layer->stillPart(size);
    if (!still.isEmpty() && m_layerStill.isNull()) {
        m_layerStill = blankImage(pixelsOf(still.size(), density), QImage::Format_ARGB32_Premultiplied);
        m_layerStill.setDevicePixelRatio(density);
        m_layerStill.fill(Qt::transparent);
        QPainter baking(&m_layerStill);
        baking.translate(-still.topLeft());
        m_layer->paintStill(baking, size);
    }
    if (!still.isEmpty()) {
        forEachPiece(painter, part, [&](const QRectF &piece) {
            const QRectF wanted = piece & still;
            const QRectF source(QPointF(wanted.topLeft() - still.topLeft()) * density, wanted.size() * density);
            painter.drawImage(wanted, m_layerStill, source);
        });
    }
    m_layer->paintSharp(painter, size, t, part);
}

void ThemeBackgroundView::paintStill(QPainter &painter, const QSizeF &size, const QRect &part)
{
    const double density = painter.device()->devicePixelRatioF();
    const bool isGrey = std::holds_alternative<BlurBackground>(m_theme.background);
    if (m_still.isNull()) {
        if (isGrey) {
            m_still = QPixmap::fromImage(Backdrop::plain(m_pixels.height()));
        } else {
            QImage image = blankImage(m_pixels, QImage::Format_RGB32);
            image.setDevicePixelRatio(density);
            QPainter baking(&image);
            paintBase(baking, size, density);
            baking.end();
            m_still = QPixmap::fromImage(std::move(image));
        }
        m_still.setDevicePixelRatio(density);
    }
    if (isGrey) {
        painter.drawTiledPixmap(QRectF(part), m_still, part.topLeft());
        return;
    }
    const QRectF source(QPointF(part.topLeft()) * density, QSizeF(part.size()) * density);
    const QRect pixels = pixelsOf(part, density) & m_still.rect();
    if (pixels.isEmpty() || pixels.width() * pixels.height() > fewPixels) {
        painter.drawPixmap(QRectF(part), m_still, source);
        return;
    }
    // A part this small comes back, as what lies behind a countdown does every second. In the whole picture each of its
    // rows is another page of memory, and to find some forty again after a second takes longer than all the painting.
    if (!m_atHand.pixels.contains(pixels))
        m_atHand = {pixels, m_still.copy(pixels)};
    painter.drawPixmap(QRectF(part), m_atHand.picture, source.translated(-m_atHand.pixels.topLeft()));
}

void ThemeBackgroundView::paintBase(QPainter &painter, const QSizeF &size, double density)
{
    if (const auto *solid = std::get_if<SolidBackground>(&m_theme.background)) {
        painter.fillRect(QRectF(QPointF(), size), solid->colour);
        if (solid->grain)
            GrainLayer::paint(painter, size);
    } else {
        QImage image = blankImage(m_pixels, QImage::Format_RGB32);
        PictureLayer::paint(image, nullptr, m_picture, Drift(), m_shade);
        painter.drawImage(QRectF(QPointF(), QSizeF(m_pixels) / density), image);
    }
}

} // namespace kelp
