#pragma once

#include "overlay/OverlayScene.h"

#include <QImage>
#include <QSize>

namespace kelp {

/// A small picture of an overlay as it looks on a screen of `screen` points. Painted by what paints the overlay itself,
/// and scaled down.
class PreviewPicture
{
public:
    static constexpr QSize screen{1440, 900};

    explicit PreviewPicture(OverlayScene scene);

    /// The overlay at that time, in so many pixels. The next moment, in the same size, is cheap.
    [[nodiscard]] QImage paint(Instant now, const QSize &pixels);

    /// Seconds from the last picture until it looks different; infinite where it stands still.
    [[nodiscard]] double untilChange() const;

private:
    void paintCard(Instant now, double density);

    OverlayScene m_scene;
    ThemeBackgroundView m_background;
    QImage m_frame;
    QImage m_card;
    QPointF m_cardPosition; ///< of the picture, not of the card in it
    Instant m_cardTime;
    double m_cardLasts = 0; ///< seconds after `m_cardTime` in which the card looks the same
};

} // namespace kelp
