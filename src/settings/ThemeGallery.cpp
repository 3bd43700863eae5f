#include "settings/ThemeGallery.h"

#include "settings/GridTile.h"
#include "settings/InsetScrollArea.h"
#include "settings/OverlayPreview.h"
#include "settings/ThemeGrid.h"

#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace kelp {

namespace {

constexpr int margin = 20;
constexpr int distance = 12;          // between the preview and the grid
constexpr int leastOfGrid = 170;      // a row and the beginning of the next
constexpr double mostOfHeight = 0.66; // that the preview takes
constexpr int leastPreview = 120;     // points high

} // namespace

ThemeGallery::ThemeGallery(OverlayPreview *preview, ThemeGrid *grid, QWidget *parent)
    : QWidget(parent), m_preview(preview), m_grid(grid)
{
    m_preview->setParent(this);
    // The pictures, not their rings, are in line with the edges of the preview.
    constexpr int side = margin - GridTile::ringRoom;
    m_scroll = new InsetScrollArea({side, 0, side, margin - 6}, this);
    m_scroll->column().addWidget(m_grid);
    m_scroll->column().addStretch(1);
    connect(m_grid, &ThemeGrid::tileFocused, this,
            [this](QWidget *tile) { m_scroll->ensureWidgetVisible(tile, 0, distance); });
}

void ThemeGallery::resizeEvent(QResizeEvent *)
{
    const int room = width() - 2 * margin;
    const double most =
        std::min(mostOfHeight * height(), static_cast<double>(height() - margin - distance - leastOfGrid));
    const double high = std::max<double>(leastPreview, std::min(room / OverlayPreview::aspect, most));
    const int wide = static_cast<int>(std::lround(high * OverlayPreview::aspect));
    m_preview->setGeometry((width() - wide) / 2, margin, wide, static_cast<int>(std::lround(high)));
    const int top = m_preview->geometry().bottom() + 1 + distance - GridTile::ringRoom;
    m_scroll->setGeometry(0, top, width(), height() - top);
}

} // namespace kelp
