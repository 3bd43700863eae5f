#pragma once

#include "capture/DesktopScene.h"
#include "capture/OverlayFilm.h"

namespace kelp {

/// The story of Kelp in ten seconds and without a word: somebody writes, the reminder arrives and counts down, they
/// press Join, and the desktop is as it was.
///
///     0 s  writing   1.6 s  the overlay arrives, 60 frames   5.4 s  the pointer sets out   7.3 s  Join is pressed
///     7.5 s  the overlay leaves, 60 frames   9.5 s  calm
class Hero
{
public:
    static constexpr double seconds = 10;
    static constexpr double poster = 5;

    /// `scene` is the reminder, for clips that begin at `reference`.
    Hero(const OverlayScene &scene, Instant reference);

    /// Paints what is seen after `t` seconds on a picture of DesktopScene::size.
    void paint(QPainter &painter, double t);

    /// How much of the overlay covers the desktop, 0…1.
    [[nodiscard]] static double cover(double t);

private:
    [[nodiscard]] ButtonStates buttons(double t) const;
    void paintDesktop(QPainter &painter, double t, double covered);
    void paintOverlay(QPainter &painter, double t, double opacity);
    [[nodiscard]] QPointF pointer(double t) const;

    Instant m_reference;
    DesktopScene m_desktop;
    OverlayFilm m_film;
    QPointF m_join; ///< the middle of the button
    QImage m_soft;  ///< the desktop, blurred
    QImage m_cover; ///< the overlay's background, while it is not all that is seen
};

} // namespace kelp
