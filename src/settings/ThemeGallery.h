#pragma once

#include <QWidget>

namespace kelp {

class InsetScrollArea;
class OverlayPreview;
class ThemeGrid;

/// The large preview, which always stays in sight, above the grid of themes, which scrolls. The preview is as wide as
/// there is room, as long as enough of the grid can be seen.
class ThemeGallery final : public QWidget
{
    Q_OBJECT

public:
    /// Takes both.
    ThemeGallery(OverlayPreview *preview, ThemeGrid *grid, QWidget *parent = nullptr);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    OverlayPreview *m_preview;
    ThemeGrid *m_grid;
    InsetScrollArea *m_scroll;
};

} // namespace kelp
