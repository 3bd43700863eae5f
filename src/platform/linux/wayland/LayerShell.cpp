#include "platform/linux/wayland/LayerShell.h"

#include "platform/linux/wayland/LayerSurface.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <qpa/qplatformnativeinterface.h>

#include <layer-shell.h>
#include <wayland-client.h>

#include <algorithm>
#include <cstring>

namespace kelp {

namespace {

constexpr std::uint32_t highestVersion = 4;
constexpr std::uint32_t firstVersionWithDestroy = 3;
constexpr std::uint32_t overlayLayer =
    3; ///< above full-screen windows; https://wayland.app/protocols/wlr-layer-shell-unstable-v1

struct Found
{
    std::uint32_t name = 0; ///< 0 = nothing
    std::uint32_t version = 0;
};

constexpr wl_registry_listener registryListener{
    [](void *data, wl_registry *, std::uint32_t name, const char *interface, std::uint32_t version) {
        if (std::strcmp(interface, zwlr_layer_shell_v1_interface.name) == 0)
            *static_cast<Found *>(data) = {name, std::min(version, highestVersion)};
    },
    [](void *, wl_registry *, std::uint32_t) {},
};

} // namespace

std::unique_ptr<LayerShell> LayerShell::bind()
{
    auto *display =
        static_cast<wl_display *>(QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("display"));
    if (!display)
        return nullptr;
    // On a queue of its own: waiting for the answer must not dispatch Qt's events.
    wl_event_queue *queue = wl_display_create_queue(display);
    auto *wrapper = static_cast<wl_display *>(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(wrapper), queue);
    wl_registry *registry = wl_display_get_registry(wrapper);
    wl_proxy_wrapper_destroy(wrapper);

    Found found;
    wl_registry_add_listener(registry, &registryListener, &found);
    wl_display_roundtrip_queue(display, queue);
    zwlr_layer_shell_v1 *shell = nullptr;
    if (found.name != 0) {
        shell = static_cast<zwlr_layer_shell_v1 *>(
            wl_registry_bind(registry, found.name, &zwlr_layer_shell_v1_interface, found.version));
        // Its surfaces' events come on the queue that Qt dispatches on the main thread.
        wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(shell), nullptr);
    }
    wl_registry_destroy(registry);
    wl_event_queue_destroy(queue);
    return shell ? std::unique_ptr<LayerShell>(new LayerShell(shell)) : nullptr;
}

LayerShell::~LayerShell()
{
    if (zwlr_layer_shell_v1_get_version(m_shell) >= firstVersionWithDestroy)
        zwlr_layer_shell_v1_destroy(m_shell);
    else
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(m_shell));
}

std::unique_ptr<LayerSurface> LayerShell::cover(QWidget &window, QScreen &screen) const
{
    QPlatformNativeInterface *native = QGuiApplication::platformNativeInterface();
    auto *surface = static_cast<wl_surface *>(native->nativeResourceForWindow("surface", window.windowHandle()));
    auto *output = static_cast<wl_output *>(native->nativeResourceForScreen("output", &screen));
    if (!surface)
        return nullptr;
    return std::make_unique<LayerSurface>(
        window, surface, zwlr_layer_shell_v1_get_layer_surface(m_shell, surface, output, overlayLayer, "kelp-overlay"));
}

} // namespace kelp
