#pragma once

#include <memory>

class QScreen;
class QWidget;
struct zwlr_layer_shell_v1;

namespace kelp {

class LayerSurface;

/// The protocol by which a Wayland compositor lets clients put windows above all others (zwlr_layer_shell_v1).
class LayerShell
{
public:
    /// Null where the compositor does not offer it. Needs a QGuiApplication on the platform "wayland".
    [[nodiscard]] static std::unique_ptr<LayerShell> bind();
    ~LayerShell();
    LayerShell(const LayerShell &) = delete;
    LayerShell &operator=(const LayerShell &) = delete;

    /// The role of `window`, which has a native window and is hidden, as a cover of `screen`.
    [[nodiscard]] std::unique_ptr<LayerSurface> cover(QWidget &window, QScreen &screen) const;

private:
    explicit LayerShell(zwlr_layer_shell_v1 *shell) : m_shell(shell) {}

    zwlr_layer_shell_v1 *m_shell;
};

} // namespace kelp
