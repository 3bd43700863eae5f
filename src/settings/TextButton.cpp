#include "settings/TextButton.h"

#include "settings/Rows.h"
#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/KelpStyle.h"

#include <QPainter>

namespace kelp {

namespace {

constexpr int focusRoom = 2; // for the ring, on each side
constexpr double radius = 7;

struct Paint
{
    QColor fill;
    QColor ink;
};

Paint paintOf(TextButton::Look look, const DesktopColours &colours)
{
    switch (look) {
    case TextButton::Look::Prominent:
        return {colours.accent, colours.accentText};
    case TextButton::Look::Quiet:
        return {colours.hover, colours.primary};
    case TextButton::Look::Plain:
        return {Qt::transparent, colours.accentInk};
    case TextButton::Look::Destructive:
        return {colours.danger, colours.dangerText};
    }
    Q_UNREACHABLE();
}

QColor faded(QColor colour, double share)
{
    colour.setAlphaF(colour.alphaF() * static_cast<float>(share));
    return colour;
}

} // namespace

TextButton::TextButton(const QString &text, Look look, QWidget *parent) : QPushButton(text, parent), m_look(look)
{
    setFont(designFont(FontDesign::Default, 13, look == Look::Quiet ? QFont::Medium : QFont::DemiBold));
    setAutoDefault(true); // Return presses it
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize TextButton::sizeHint() const
{
    const int padding = m_look == Look::Plain ? rowInset - focusRoom : 14;
    return {fontMetrics().horizontalAdvance(text()) + 2 * (padding + focusRoom), 28 + 2 * focusRoom};
}

QSize TextButton::minimumSizeHint() const
{
    return {60, sizeHint().height()};
}

void TextButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    Paint paint = paintOf(m_look, colours);
    const QRectF frame = QRectF(rect()).adjusted(focusRoom, focusRoom, -focusRoom, -focusRoom);
    if (!isEnabled())
        paint = {m_look == Look::Plain ? QColor(Qt::transparent) : colours.hover, faded(colours.secondary, 0.75)};
    paintBox(painter, frame, radius, paint.fill, Qt::transparent);
    if (isEnabled() && (underMouse() || isDown())) {
        const bool isFilled = m_look == Look::Prominent || m_look == Look::Destructive;
        const QColor veil = isFilled ? faded(isDown() ? Qt::black : Qt::white, isDown() ? 0.18 : 0.12)
                                     : faded(colours.primary, isDown() ? 0.12 : 0.06);
        paintBox(painter, frame, radius, veil, Qt::transparent);
    }
    painter.setFont(font());
    painter.setPen(paint.ink);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, static_cast<int>(frame.width()) - 8);
    painter.drawText(frame, Qt::AlignCenter | Qt::TextSingleLine, shown);
    if (hasFocus())
        paintFocusRing(painter, frame, radius, palette());
}

} // namespace kelp
