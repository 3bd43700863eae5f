#pragma once

#include <QObject>
#include <QWidget>

#include <cstdint>

struct wl_surface;
struct zwlr_layer_surface_v1;

namespace kelp {

/// What makes a hidden window a cover of its whole screen, above everything else. Has to go before the window is hidden
/// or destroyed.
class LayerSurface final : public QObject
{
    Q_OBJECT

public:
    /// Takes `layerSurface`, the role of `surface`, which is that of `window`.
    LayerSurface(QWidget &window, wl_surface *surface, zwlr_layer_surface_v1 *layerSurface);
    ~LayerSurface() override;

    /// Shows the window as soon as the compositor has said how large it is to be.
    void show();
    /// Whether all keys go to this window.
    void setHasKeyboard(bool has);

Q_SIGNALS:
    /// The compositor has taken the window down; this is of no use any more.
    void closed();

private:
    struct Events;
    void configure(std::uint32_t serial, const QSize &nativeSize);

    QWidget &m_window;
    wl_surface *m_surface;
    zwlr_layer_surface_v1 *m_layerSurface;
    bool m_isConfigured = false;
};

} // namespace kelp
