#include "settings/SmallSwitch.h"

#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/KelpStyle.h"

#include <QKeyEvent>
#include <QPainter>

namespace kelp {

namespace {

constexpr double trackWidth = 26;
constexpr double trackHeight = 16;
constexpr int focusRoom = 2; // around the track, for the ring
constexpr int gap = 6;
constexpr int switchHeight = 24;

} // namespace

SmallSwitch::SmallSwitch(const QString &label, QWidget *parent) : QCheckBox(label, parent)
{
    setFont(designFont(FontDesign::Default, 12));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
}

void SmallSwitch::show(bool on)
{
    const QSignalBlocker blocker(this);
    setChecked(on);
    update();
}

QSize SmallSwitch::sizeHint() const
{
    return {2 * focusRoom + static_cast<int>(trackWidth) + gap + fontMetrics().horizontalAdvance(text()) + 1,
            switchHeight};
}

void SmallSwitch::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QCheckBox::keyPressEvent(event);
}

void SmallSwitch::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const double left = mirrored ? width() - focusRoom - trackWidth : focusRoom;
    const QRectF track(left, (height() - trackHeight) / 2, trackWidth, trackHeight);
    paintBox(painter, track, trackHeight / 2, isChecked() ? colours.accent : colours.trackOff, Qt::transparent);
    if (underMouse())
        paintBox(painter, track, trackHeight / 2, colours.hover, Qt::transparent);
    constexpr double inset = 2;
    constexpr double size = trackHeight - 2 * inset;
    const bool atRight = isChecked() != mirrored;
    const QRectF knob(atRight ? track.right() - inset - size : track.left() + inset, track.top() + inset, size, size);
    paintBox(painter, knob.translated(0, 0.6), size / 2, QColor(0, 0, 0, 40), Qt::transparent);
    paintBox(painter, knob, size / 2, Qt::white, Qt::transparent);
    const QRect words(focusRoom + static_cast<int>(trackWidth) + gap, 0, width(), height());
    painter.setFont(font());
    painter.setPen(colours.primary);
    painter.drawText(QStyle::visualRect(layoutDirection(), rect(), words.intersected(rect())),
                     Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine, text());
    if (hasFocus())
        paintFocusRing(painter, track.adjusted(1, 1, -1, -1), trackHeight / 2, palette());
}

} // namespace kelp
