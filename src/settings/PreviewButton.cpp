#include "settings/PreviewButton.h"

#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/KelpStyle.h"
#include "ui/Symbols.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int buttonHeight = 36;
constexpr int focusRoom = 2;
constexpr double radius = 9;
constexpr double symbolSize = 17;
constexpr double gap = 8;

} // namespace

PreviewButton::PreviewButton(QWidget *parent) : QPushButton(u"Preview full screen"_s, parent)
{
    setFont(designFont(FontDesign::Default, 14, QFont::DemiBold));
    setAutoDefault(true);         // Return presses it
    setFocusPolicy(Qt::TabFocus); // a click leaves no ring behind
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize PreviewButton::sizeHint() const
{
    return {200, buttonHeight + 2 * focusRoom};
}

void PreviewButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    const QRectF frame = QRectF(rect()).adjusted(focusRoom, focusRoom, -focusRoom, -focusRoom);
    paintBox(painter, frame, radius, colours.accent, Qt::transparent);
    if (isDown() || underMouse())
        paintBox(painter, frame, radius, isDown() ? QColor(0, 0, 0, 46) : QColor(255, 255, 255, 30), Qt::transparent);
    const double text = QFontMetricsF(font()).horizontalAdvance(this->text()) + 1;
    QRectF content(0, 0, symbolSize + gap + text, frame.height());
    content.moveCenter(frame.center());
    QRectF symbol(content.left(), content.center().y() - symbolSize / 2, symbolSize, symbolSize);
    QRectF words = content.adjusted(symbolSize + gap, 0, 0, 0);
    if (layoutDirection() == Qt::RightToLeft) {
        symbol.moveRight(content.right());
        words.moveLeft(content.left());
    }
    paintSymbol(painter, symbol, u"play-rectangle-fill"_s, colours.accentText);
    painter.setFont(font());
    painter.setPen(colours.accentText);
    painter.drawText(words, Qt::AlignCenter | Qt::TextSingleLine, this->text());
    if (hasFocus())
        paintFocusRing(painter, frame, radius, palette());
}

} // namespace kelp
