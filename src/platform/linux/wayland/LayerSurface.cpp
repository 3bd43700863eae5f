#include "platform/linux/wayland/LayerSurface.h"

#include <QWindow>

#include <private/qhighdpiscaling_p.h>

#include <layer-shell.h>
#include <wayland-client.h>

#include <utility>

namespace kelp {

namespace {

// https://wayland.app/protocols/wlr-layer-shell-unstable-v1
constexpr std::uint32_t allEdges = 1 | 2 | 4 | 8;
constexpr std::int32_t overPanels = -1; ///< the exclusive zones of panels are not kept free
constexpr std::uint32_t noKeyboard = 0;
constexpr std::uint32_t exclusiveKeyboard = 1;

} // namespace

struct LayerSurface::Events
{
    static void configure(void *data, zwlr_layer_surface_v1 *, std::uint32_t serial, std::uint32_t width,
                          std::uint32_t height)
    {
        static_cast<LayerSurface *>(data)->configure(serial, {static_cast<int>(width), static_cast<int>(height)});
    }
    static void closed(void *data, zwlr_layer_surface_v1 *)
    {
        // Queued, because whoever hears it destroys the sender.
        auto *self = static_cast<LayerSurface *>(data);
        QMetaObject::invokeMethod(
            self, [self] { Q_EMIT self->closed(); }, Qt::QueuedConnection);
    }
    static constexpr zwlr_layer_surface_v1_listener listener{configure, closed};
};

LayerSurface::LayerSurface(QWidget &window, wl_surface *surface, zwlr_layer_surface_v1 *layerSurface)
    : m_window(window), m_surface(surface), m_layerSurface(layerSurface)
{
    zwlr_layer_surface_v1_add_listener(m_layerSurface, &Events::listener, this);
    zwlr_layer_surface_v1_set_anchor(m_layerSurface, allEdges);
    zwlr_layer_surface_v1_set_exclusive_zone(m_layerSurface, overPanels);
}

LayerSurface::~LayerSurface()
{
    zwlr_layer_surface_v1_destroy(m_layerSurface);
}

void LayerSurface::show()
{
    wl_surface_commit(m_surface); // without a picture: asks for the size
}

void LayerSurface::setHasKeyboard(bool has)
{
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_layerSurface, has ? exclusiveKeyboard : noKeyboard);
    wl_surface_commit(m_surface);
}

void LayerSurface::configure(std::uint32_t serial, const QSize &nativeSize)
{
    zwlr_layer_surface_v1_ack_configure(m_layerSurface, serial);
    // Queued, because both have Qt paint and talk to the compositor, whose event this still is, perhaps in the middle
    // of painting.
    QMetaObject::invokeMethod(
        this,
        [this, nativeSize] {
            m_window.resize(QHighDpi::fromNativePixels(nativeSize, m_window.windowHandle()));
            if (!std::exchange(m_isConfigured, true))
                m_window.show();
        },
        Qt::QueuedConnection);
}

} // namespace kelp
