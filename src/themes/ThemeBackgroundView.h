#pragma once

#include "themes/Theme.h"

#include <QPixmap>

class QPainter;

namespace kelp {

/// Paints a theme's background. It keeps what it has baked for a size, so that repainting a part is cheap.
class ThemeBackgroundView
{
public:
    explicit ThemeBackgroundView(const OverlayTheme &theme);

    /// Fills a view of `size` logical points; the painter's clip says which part is wanted. Leaves no pixel uncovered.
    void paint(QPainter &painter, const QSizeF &size);

private:
    OverlayTheme m_theme;
    QPixmap m_tile;
};

} // namespace kelp
