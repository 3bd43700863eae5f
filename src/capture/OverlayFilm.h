#pragma once

#include "overlay/Entrance.h"
#include "overlay/OverlayScene.h"
#include "themes/ThemeBackgroundView.h"
#include "ui/Arrangement.h"

#include <QImage>
#include <QSizeF>

class QPainter;

namespace kelp {

/// An overlay in pictures that follow one another. Each shows what a live window shows at that time; what does not
/// change from one to the next is kept.
class OverlayFilm
{
public:
    /// For pictures of `size` points.
    OverlayFilm(OverlayScene scene, const QSizeF &size);

    /// Fills the picture with the background.
    void paintBackground(QPainter &painter, Instant shown);
    /// `opacity` of the card, as far as it has come up.
    void paintCard(QPainter &painter, Instant shown, const ButtonStates &buttons = {}, const Entrance &entrance = {},
                   double opacity = 1);
    /// All of it, over what it painted last; false, and nothing painted, where that shows the same.
    bool paint(QPainter &painter, Instant shown);

    /// Where the element with this tag lies at that time.
    [[nodiscard]] QRectF frameOf(const QString &tag, Instant shown) const;

private:
    /// Whether the card looks different now.
    bool updateCard(double density, Instant shown, const ButtonStates &buttons);
    void paintPart(Instant shown, const QRectF &dirty);
    [[nodiscard]] QRectF frame() const;

    OverlayScene m_scene;
    QSizeF m_size;
    ThemeBackgroundView m_background;
    bool m_moves; ///< the background does

    Arrangement m_arrangement;
    QImage m_card; ///< with room around it for what reaches beyond its frame
    Instant m_shown;
    ButtonStates m_buttons;
};

} // namespace kelp
