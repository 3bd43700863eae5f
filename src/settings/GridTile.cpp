#include "settings/GridTile.h"

#include "settings/Pictures.h"
#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/KelpStyle.h"
#include "ui/Symbols.h"

#include <QKeyEvent>
#include <QPainter>

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr QSizeF usualPicture(150, 93.75);
constexpr double ringWidth = 2.5;
constexpr double markSize = 20;
constexpr double markDistance = 6; // from the corner of the picture

QColor faded(QColor colour, float opacity)
{
    colour.setAlphaF(opacity);
    return colour;
}

} // namespace

GridTile::GridTile(QString id, const QString &name, QWidget *parent) : QRadioButton(name, parent), m_id(std::move(id))
{
    setFont(designFont(FontDesign::Default, 12, QFont::Medium));
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
}

QSize GridTile::sizeFor(const QSizeF &picture)
{
    return {static_cast<int>(picture.width()) + 2 * ringRoom,
            static_cast<int>(picture.height()) + 2 * ringRoom + nameHeight};
}

QSize GridTile::sizeHint() const
{
    return sizeFor(usualPicture);
}

QRectF GridTile::pictureFrame() const
{
    return QRectF(ringRoom, ringRoom, width() - 2 * ringRoom, height() - 2 * ringRoom - nameHeight);
}

void GridTile::focusInEvent(QFocusEvent *event)
{
    if (event->reason() == Qt::MouseFocusReason)
        m_byKeyboard = false;
    else if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        m_byKeyboard = true;
    QRadioButton::focusInEvent(event);
}

/// The arrow keys are the grid's.
void GridTile::keyPressEvent(QKeyEvent *event)
{
    m_byKeyboard = true;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        click();
        break;
    case Qt::Key_Space:
        QRadioButton::keyPressEvent(event);
        break;
    default:
        event->ignore();
    }
}

void GridTile::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    const QRectF frame = pictureFrame();
    paintPicture(painter, frame);
    if (isChecked()) {
        const double outset = ringRoom - ringWidth / 2;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colours.accentInk, ringWidth));
        painter.drawRoundedRect(frame.adjusted(-outset, -outset, outset, outset), radius + outset, radius + outset);
        const QRectF mark(frame.right() - markDistance - markSize, frame.bottom() - markDistance - markSize, markSize,
                          markSize);
        // A disc behind the symbol: its checkmark is a hole.
        paintBox(painter, mark.adjusted(-1.5, -1.5, 1.5, 1.5), markSize, QColor(0, 0, 0, 70), Qt::transparent);
        paintBox(painter, mark.adjusted(1, 1, -1, -1), markSize, colours.accentText, Qt::transparent);
        paintSymbol(painter, mark, u"checkmark-circle"_s, colours.accent);
    } else {
        const bool isOver = underMouse() || isDown();
        const QColor line = faded(colours.primary, isOver ? 0.3F : 0.1F);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(line, isOver ? 1.5 : 1));
        painter.drawRoundedRect(frame.adjusted(0.5, 0.5, -0.5, -0.5), radius - 0.5, radius - 0.5);
    }
    if (isDown())
        paintBox(painter, frame, radius, QColor(0, 0, 0, 40), Qt::transparent);
    if (!caption().isEmpty())
        paintCaption(painter, frame);
    else if (showsFocus())
        paintFocusRing(painter, frame.adjusted(2.5, 2.5, -2.5, -2.5), radius - 2.5, palette());
}

void GridTile::paintCaption(QPainter &painter, const QRectF &picture)
{
    const DesktopColours colours = DesktopColours::of(palette());
    QFont shown = font();
    if (isChecked())
        shown.setWeight(QFont::DemiBold);
    painter.setFont(shown);
    const double room = picture.width() - 12;
    const QString text = QFontMetricsF(shown).elidedText(caption(), Qt::ElideRight, room);
    const QSizeF size(QFontMetricsF(shown).horizontalAdvance(text), 17);
    const double top = picture.bottom() + ringRoom + 2;
    const QRectF label(picture.center().x() - size.width() / 2, top, size.width(), size.height());
    if (showsFocus())
        paintBox(painter, label.adjusted(-7, 0, 7, 0), size.height() / 2, colours.accent, Qt::transparent);
    painter.setPen(showsFocus()                  ? colours.accentText
                   : isChecked() || underMouse() ? colours.primary
                                                 : colours.secondary);
    painter.drawText(label.adjusted(-2, 0, 2, 0), Qt::AlignCenter | Qt::TextSingleLine, text);
}

void GridTile::paintNote(QPainter &painter, const QRectF &frame, const QString &symbol, double symbolSize,
                         const QString &text)
{
    const DesktopColours colours = DesktopColours::of(palette());
    const QColor ink = underMouse() || isChecked() ? colours.primary : colours.secondary;
    constexpr double gap = 7;
    constexpr double line = 16;
    const double top = frame.center().y() - (symbolSize + gap + line) / 2;
    paintSymbol(painter, QRectF(frame.center().x() - symbolSize / 2, top, symbolSize, symbolSize), symbol, ink);
    painter.setFont(font());
    painter.setPen(ink);
    painter.drawText(QRectF(frame.left(), top + symbolSize + gap, frame.width(), line),
                     Qt::AlignCenter | Qt::TextSingleLine, text);
}

} // namespace kelp
