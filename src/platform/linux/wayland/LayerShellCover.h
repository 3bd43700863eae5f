#pragma once

#include "platform/ScreenCover.h"
#include "platform/linux/wayland/LayerShell.h"

#include <QWidget>

#include <map>

namespace kelp {

/// Covers screens under Wayland where the compositor has a layer shell: above full-screen windows and panels, on every
/// workspace, with the keyboard. Clients do not know where the pointer is before it is over one of their windows; the
/// keyboard follows it there.
class LayerShellCover final : public ScreenCover
{
    Q_OBJECT

public:
    /// Before there are other threads: the environment tells Qt to leave such windows alone.
    static void allow();

    explicit LayerShellCover(std::unique_ptr<LayerShell> shell, QObject *parent = nullptr);
    ~LayerShellCover() override;

    void prepare(QWidget &window, QScreen &screen) override;
    void fit(QWidget &, QScreen &) override {} // the compositor tells the new size
    void show(QWidget &window) override;
    void hide(QWidget &window) override;
    void takeKeyboard(QWidget &window) override;
    void giveBackKeyboard() override;
    [[nodiscard]] QSet<quint32> heldKeys() const override { return {}; } // no client hears of those
    [[nodiscard]] QScreen *currentScreen() const override;
    [[nodiscard]] Fade fade() const override { return Fade::Transparency; }
    [[nodiscard]] QPixmap picture(QScreen &) const override { return {}; }

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    std::unique_ptr<LayerShell> m_shell;
    std::map<const QWidget *, std::unique_ptr<LayerSurface>> m_surfaces;
    const QWidget *m_keyboardWindow = nullptr; ///< one of those with a surface
};

} // namespace kelp
