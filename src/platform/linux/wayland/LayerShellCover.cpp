#include "platform/linux/wayland/LayerShellCover.h"

#include "platform/linux/OwnEnvironment.h"

#include "base/Logging.h"
#include "platform/linux/wayland/LayerSurface.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <utility>

namespace kelp {

namespace {

/// Lets Qt leave windows that bypass the window manager without a role, so that they can be given another one.
constexpr auto noRoleVariable = "QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT";

} // namespace

void LayerShellCover::allow()
{
    ownEnvironment::set(noRoleVariable, "1");
}

LayerShellCover::LayerShellCover(std::unique_ptr<LayerShell> shell, QObject *parent)
    : ScreenCover(parent), m_shell(std::move(shell))
{
}

LayerShellCover::~LayerShellCover() = default;

void LayerShellCover::prepare(QWidget &window, QScreen &screen)
{
    window.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    window.setAttribute(Qt::WA_ShowWithoutActivating);
    window.setAttribute(Qt::WA_TranslucentBackground);
    window.setScreen(&screen);
    window.setGeometry(screen.geometry());
    window.winId(); // creates the native window, to be given its role
    std::unique_ptr<LayerSurface> surface = m_shell->cover(window, screen);
    if (!surface) {
        qCWarning(logPlatform) << "a screen cannot be covered: the window has no surface";
        return;
    }
    connect(surface.get(), &LayerSurface::closed, &window, [this, &window] { Q_EMIT closed(&window); });
    window.installEventFilter(this);
    m_surfaces[&window] = std::move(surface);
}

void LayerShellCover::show(QWidget &window)
{
    if (const auto found = m_surfaces.find(&window); found != m_surfaces.end())
        found->second->show();
}

void LayerShellCover::hide(QWidget &window)
{
    window.removeEventFilter(this);
    if (m_keyboardWindow == &window)
        m_keyboardWindow = nullptr;
    m_surfaces.erase(&window); // before the window, whose role it is
    window.hide();
}

void LayerShellCover::takeKeyboard(QWidget &window)
{
    const auto now = m_surfaces.find(&window);
    if (now == m_surfaces.end() || m_keyboardWindow == &window)
        return;
    // The new one first, so that no other client has the keyboard in between.
    now->second->setHasKeyboard(true);
    giveBackKeyboard();
    m_keyboardWindow = &window;
}

void LayerShellCover::giveBackKeyboard()
{
    const QWidget *before = std::exchange(m_keyboardWindow, nullptr);
    if (const auto found = m_surfaces.find(before); found != m_surfaces.end())
        found->second->setHasKeyboard(false);
}

QScreen *LayerShellCover::currentScreen() const
{
    if (m_keyboardWindow)
        return m_keyboardWindow->screen();
    const QWindow *focused = QGuiApplication::focusWindow();
    return focused ? focused->screen() : nullptr;
}

bool LayerShellCover::eventFilter(QObject *object, QEvent *event)
{
    auto &window = static_cast<QWidget &>(*object);
    if (event->type() == QEvent::Enter && m_keyboardWindow && window.isEnabled()) // those that fade out are not
        takeKeyboard(window);
    return false;
}

} // namespace kelp
