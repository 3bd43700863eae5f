#include "settings/PanelOrder.h"

#include <QAbstractButton>
#include <QLayout>
#include <QScrollArea>

namespace kelp {

namespace {

/// The widgets that take the keyboard, in the order in which the layouts show them.
void collectFocus(const QWidget &parent, QList<QWidget *> &found);

void collectFocus(const QLayout &layout, QList<QWidget *> &found)
{
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem *item = layout.itemAt(i);
        if (QWidget *widget = item->widget()) {
            if (widget->focusPolicy() & Qt::TabFocus)
                found.append(widget);
            collectFocus(*widget, found);
        } else if (const QLayout *inner = item->layout()) {
            collectFocus(*inner, found);
        }
    }
}

void collectFocus(const QWidget &parent, QList<QWidget *> &found)
{
    if (const auto *area = qobject_cast<const QScrollArea *>(&parent))
        collectFocus(*area->widget(), found);
    else if (const QLayout *layout = parent.layout())
        collectFocus(*layout, found);
}

} // namespace

void arrange(const QWidget &widget)
{
    for (QObject *each : widget.children()) {
        if (const auto *child = qobject_cast<const QWidget *>(each))
            arrange(*child);
    }
    if (widget.layout())
        widget.layout()->activate();
}

void orderFocus(const QWidget &window)
{
    QList<QWidget *> order;
    collectFocus(window, order);
    for (QWidget *each : std::as_const(order)) {
        if (qobject_cast<QAbstractButton *>(each))
            each->setFocusPolicy(Qt::TabFocus);
    }
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

} // namespace kelp
