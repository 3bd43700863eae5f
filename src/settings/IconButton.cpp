#include "settings/IconButton.h"

#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"
#include "ui/Symbols.h"

#include <QAccessibleWidget>
#include <QMenu>
#include <QPainter>

#include <mutex>

namespace kelp {

namespace {

/// The menu, a window of its own, is otherwise found by nobody who goes through the windows.
class AccessibleIconButton final : public QAccessibleWidget
{
public:
    explicit AccessibleIconButton(IconButton *button) : QAccessibleWidget(button, QAccessible::Button) {}

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = menu() != nullptr;
        state.pressed = button()->isDown();
        return state;
    }
    [[nodiscard]] int childCount() const override { return menu() ? 1 : 0; }
    [[nodiscard]] QAccessibleInterface *child(int index) const override
    {
        return index == 0 && menu() ? QAccessible::queryAccessibleInterface(menu()) : nullptr;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override
    {
        return menu() && child->object() == menu() ? 0 : -1;
    }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] QStringList actionNames() const override
    {
        const QString action = menu() ? showMenuAction() : pressAction();
        return (isEnabled() ? QStringList{action} : QStringList()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString &action) override
    {
        if (action == pressAction() || action == showMenuAction())
            button()->click();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    [[nodiscard]] IconButton *button() const { return static_cast<IconButton *>(widget()); }
    [[nodiscard]] QMenu *menu() const { return button()->opened(); }
    [[nodiscard]] bool isEnabled() const { return button()->isEnabled(); }
};

QAccessibleInterface *makeAccessible(const QString &, QObject *object)
{
    auto *button = qobject_cast<IconButton *>(object);
    return button ? new AccessibleIconButton(button) : nullptr;
}

} // namespace

IconButton::IconButton(const QString &symbol, const QString &help, QWidget *parent)
    : QPushButton(parent), m_symbol(symbol)
{
    static std::once_flag installed;
    std::call_once(installed, [] { QAccessible::installFactory(makeAccessible); });
    setToolTip(help);
    setAccessibleName(help);
    setFixedSize(sizeHint());
    setAutoDefault(true); // Return presses it
    setAttribute(Qt::WA_Hover);
}

void IconButton::openOnClick(QMenu *menu)
{
    m_menu = menu;
    menu->setParent(this, menu->windowFlags());
    connect(this, &IconButton::clicked, menu, [this] {
        const bool mirrored = layoutDirection() == Qt::RightToLeft;
        const int x = mirrored ? width() - m_menu->sizeHint().width() : 0;
        m_menu->popup(mapToGlobal(QPoint(x, height() + 2)));
    });
    connect(menu, &QMenu::aboutToHide, this, qOverload<>(&IconButton::update));
}

void IconButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    const bool isOpen = m_menu && m_menu->isVisible();
    if (underMouse() || isDown() || isOpen)
        paintBox(painter, rect(), 6, colours.iconHover, Qt::transparent);
    constexpr double size = 12;
    const QRectF frame((width() - size) / 2, (height() - size) / 2, size, size);
    paintSymbol(painter, frame, m_symbol, isDown() || isOpen || underMouse() ? colours.primary : colours.secondary);
    if (hasFocus())
        paintFocusRing(painter, QRectF(rect()).adjusted(2, 2, -2, -2), 4, palette());
}

} // namespace kelp
