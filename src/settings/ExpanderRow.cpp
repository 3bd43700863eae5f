#include "settings/ExpanderRow.h"

#include <QAccessibleWidget>

#include <mutex>

namespace kelp {

namespace {

class AccessibleExpanderRow final : public QAccessibleWidget
{
public:
    explicit AccessibleExpanderRow(ExpanderRow *row) : QAccessibleWidget(row, QAccessible::Button) {}

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = row()->isExpanded();
        state.collapsed = !row()->isExpanded();
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override
    {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(const QString &action) override
    {
        if (action == pressAction())
            row()->click();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    [[nodiscard]] ExpanderRow *row() const { return static_cast<ExpanderRow *>(widget()); }
};

QAccessibleInterface *makeAccessible(const QString &, QObject *object)
{
    auto *row = qobject_cast<ExpanderRow *>(object);
    return row ? new AccessibleExpanderRow(row) : nullptr;
}

} // namespace

ExpanderRow::ExpanderRow(const QString &name, QWidget *parent) : HoverRow(parent)
{
    static std::once_flag installed;
    std::call_once(installed, [] { QAccessible::installFactory(makeAccessible); });
    setAccessibleName(name);
}

void ExpanderRow::setExpanded(bool isExpanded)
{
    if (m_isExpanded == isExpanded)
        return;
    m_isExpanded = isExpanded;
    QAccessible::State changed;
    changed.expanded = true;
    changed.collapsed = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

} // namespace kelp
