#pragma once

#include "themes/AnimatedLayer.h"
#include "themes/PictureLayer.h"
#include "themes/SoftImage.h"
#include "themes/Theme.h"

#include <QImage>
#include <QPixmap>
#include <QRegion>

#include <optional>

class QPainter;

namespace kelp {

/// What a background needs to know besides its theme.
struct BackgroundOptions
{
    bool live = false;         ///< in a real overlay; false in previews and stills
    bool animate = false;      ///< motion allowed
    double customDim = 0.45;   ///< 0…1, opacity of the black over the user's picture
    QImage customPicture{};    ///< the user's picture; null when there is none
    bool pictureComes = false; ///< the theme's picture is being decoded; until `setPicture` it is black
    QImage backdrop{};         ///< the desktop behind the view, of any size; null where it cannot be seen

    /// For an overlay that is shown in `theme`, as the preferences have it at present.
    [[nodiscard]] static BackgroundOptions forOverlay(const OverlayTheme &theme, const Preferences &preferences,
                                                      bool animate);

    friend bool operator==(const BackgroundOptions &, const BackgroundOptions &) = default;
};

/// Paints a theme's background, and the animated layer over it where the theme has one. It keeps what it has made for
/// a size, so that the next moment, or a part, is cheap.
class ThemeBackgroundView
{
public:
    explicit ThemeBackgroundView(const OverlayTheme &theme, BackgroundOptions options = {});

    /// Fills `part` (all when empty) of a view of `size` logical points as it looks at the time `shown`. Leaves no
    /// pixel of it uncovered.
    void paint(QPainter &painter, const QSizeF &size, Instant shown, const QRegion &part = {});

    /// The theme's picture, which has been decoded meanwhile; null when it cannot be read.
    void setPicture(const QImage &picture);

    /// What changes as time goes by, in points; empty for a background that stands still.
    [[nodiscard]] QRectF movingPart(const QSizeF &size) const;
    /// What of a view that shows `from` has to be painted again to show `to`.
    [[nodiscard]] QRegion changed(const QSizeF &size, Instant from, Instant to) const;
    /// Seconds: painting more often shows nothing new.
    [[nodiscard]] double leastInterval() const;

private:
    [[nodiscard]] QImage picture() const;
    [[nodiscard]] bool isComposed() const;
    [[nodiscard]] bool isBlurred() const;
    void prepare(const QSize &pixels, double density);
    void preparePicture();
    [[nodiscard]] bool isPictured() const;
    [[nodiscard]] Instant pictureTime(Instant shown) const;
    void paintPicture(QPainter &painter, double density, Instant shown, const QRegion &part);
    void paintGlow(QPainter &painter, double density, Instant shown, const QRegion &part);
    [[nodiscard]] bool hasGround() const;
    void paintGround(QPainter &painter, const QSizeF &size, double density, const QRegion &part);
    void softenAt(double t);
    void paintLayer(QPainter &painter, const QSizeF &size, double density, double t, const QRegion &part);
    void paintStill(QPainter &painter, const QSizeF &size, const QRect &part);
    void paintBase(QPainter &painter, const QSizeF &size, double density);

    OverlayTheme m_theme;
    BackgroundOptions m_options;
    std::optional<AnimatedLayer> m_layer;
    std::optional<QImage> m_given; ///< by setPicture

    QSize m_pixels;       ///< what the following was made for
    double m_density = 0; ///< and pixels per point
    QImage m_picture;     ///< of a theme with one, or what stands for it, in a size fit for drawing
    bool m_hasPicture = false;
    SoftImage m_shade; ///< what lies under the animated layer and does not change
    SoftImage m_soft;  ///< m_shade with the layer over it
    std::optional<double> m_softTime;
    QImage m_layerStill;     ///< of the animated layer what is sharp and does not move
    QImage m_ground;         ///< all that never moves under an animated layer, where that is more than m_layerStill
    QImage m_canvas;         ///< what lies under the sharp parts of the layer
    double m_canvasTime = 0; ///< for which it was made, where it is a picture
    QPixmap m_still;         ///< a background that stands still
    struct
    {
        QRect pixels;
        QPixmap picture;
    } m_atHand; ///< the small part of m_still that was painted last
};

} // namespace kelp
