#include "settings/CalendarRow.h"

#include "settings/HoverRow.h"
#include "settings/PanelLabel.h"
#include "settings/Rows.h"
#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/KelpStyle.h"
#include "ui/PlainText.h"
#include "ui/Symbols.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double boxSize = 11;
constexpr double dotSize = 8;
constexpr int boxLeft = rowInset + 1;
constexpr int dotLeft = boxLeft + 11 + 10;
constexpr int nameLeft = dotLeft + 8 + 8;

} // namespace

CalendarRow::CalendarRow(const QString &name, const QColor &color, QWidget *parent)
    : QCheckBox(parent), m_name(flattened(name)), m_color(color)
{
    setAccessibleName(m_name);
    setFont(designFont(FontDesign::Default, 13));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
}

void CalendarRow::reflect(bool on)
{
    const QSignalBlocker blocker(this);
    setChecked(on);
}

QSize CalendarRow::sizeHint() const
{
    return {nameLeft + fontMetrics().horizontalAdvance(m_name) + rowInset, HoverRow::leastHeight};
}

QRect CalendarRow::nameFrame() const
{
    return QStyle::visualRect(layoutDirection(), rect(), rect().adjusted(nameLeft, 0, -rowInset, 0));
}

bool CalendarRow::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        if (fontMetrics().horizontalAdvance(m_name) > nameFrame().width())
            showPlainTip(static_cast<QHelpEvent *>(event)->globalPos(), m_name, this);
        else
            event->ignore();
        return true;
    }
    return QCheckBox::event(event);
}

void CalendarRow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QCheckBox::keyPressEvent(event);
}

void CalendarRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    const QRectF frame = QRectF(rect()).adjusted(rowHoverInset, 0, -rowHoverInset, 0);
    if (underMouse() || isDown())
        paintBox(painter, frame, rowRadius, colours.hover, Qt::transparent);

    const auto placed = [this](int left, double size) {
        const double x = layoutDirection() == Qt::RightToLeft ? width() - left - size : left;
        return QRectF(x, (height() - size) / 2, size, size);
    };
    const QRectF box = placed(boxLeft, boxSize);
    if (isChecked()) {
        paintBox(painter, box, 3, colours.accent, Qt::transparent);
        paintSymbol(painter, box.adjusted(1.5, 1.5, -1.5, -1.5), u"checkmark"_s, colours.accentText);
    } else {
        painter.setPen(QPen(colours.outline, 1.2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(box.adjusted(0.6, 0.6, -0.6, -0.6), 2.6, 2.6);
    }
    paintBox(painter, placed(dotLeft, dotSize), dotSize / 2, m_color.isValid() ? m_color : colours.outline,
             Qt::transparent);

    const QRect name = nameFrame();
    painter.setFont(font());
    painter.setPen(isChecked() ? colours.primary : colours.secondary);
    painter.setLayoutDirection(m_name.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const int side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    painter.drawText(name, side | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(m_name, Qt::ElideRight, name.width()));
    if (hasFocus())
        paintFocusRing(painter, frame.adjusted(1, 2, -1, -2), rowRadius - 1, palette());
}

} // namespace kelp
