#include "settings/HoverRow.h"

#include "settings/PanelLabel.h"
#include "settings/Rows.h"
#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QHBoxLayout>
#include <QHelpEvent>
#include <QPainter>

namespace kelp {

HoverRow::HoverRow(QWidget *parent) : QPushButton(parent), m_row(new QHBoxLayout(this))
{
    m_row->setContentsMargins(rowInset, 0, rowInset, 0);
    m_row->setSpacing(8);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAutoDefault(true); // Return presses it
    setAttribute(Qt::WA_Hover);
}

QSize HoverRow::sizeHint() const
{
    return m_row->sizeHint().expandedTo({0, leastHeight});
}

QSize HoverRow::minimumSizeHint() const
{
    return m_row->minimumSize().expandedTo({0, leastHeight});
}

bool HoverRow::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        // Its labels, through which the pointer falls, have the same tips as anywhere else.
        const auto *help = static_cast<QHelpEvent *>(event);
        for (const PanelLabel *label : findChildren<PanelLabel *>(Qt::FindDirectChildrenOnly)) {
            if (label->geometry().contains(help->pos()) && label->isCut()) {
                showPlainTip(help->globalPos(), label->text(), this);
                return true;
            }
        }
    }
    return QPushButton::event(event);
}

void HoverRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(rowHoverInset, rowHoverInset, -rowHoverInset, -rowHoverInset);
    if (underMouse() || isDown())
        paintBox(painter, frame, rowRadius, DesktopColours::of(palette()).hover, Qt::transparent);
    if (hasFocus())
        paintFocusRing(painter, frame.adjusted(1, 1, -1, -1), rowRadius - 1, palette());
}

} // namespace kelp
