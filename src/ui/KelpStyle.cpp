#include "ui/KelpStyle.h"

#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/Symbols.h"

#include <QComboBox>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double fieldRadius = 7;
constexpr int menuPadding = 5; // around the items
constexpr int menuItemHeight = 28;
constexpr int menuTextInset = 10; // within an item
constexpr int checkColumn = 22;   // before the texts of a menu of choices
constexpr int scrollBarExtent = 10;

bool isChoiceMenu(const QStyleOptionMenuItem &item)
{
    return item.menuHasCheckableItems || item.checkType != QStyleOptionMenuItem::NotCheckable;
}

void paintMenuItem(QPainter &painter, const QStyleOptionMenuItem &item, bool isInMenu)
{
    const DesktopColours colours = DesktopColours::of(item.palette);
    QRectF frame = QRectF(item.rect);
    if (!isInMenu) {
        // The list of a combo box has no padding and a ground of its own.
        painter.fillRect(frame, colours.group);
        frame.adjust(menuPadding - 1, 0, 1 - menuPadding, 0);
    }
    if (item.menuItemType == QStyleOptionMenuItem::Separator && !item.text.isEmpty()) { // heads a section
        painter.setFont(item.font);
        painter.setPen(colours.secondary);
        const QRect text = frame.toRect().adjusted(menuTextInset - 2, 0, -menuTextInset, -4);
        const auto flags = QStyle::visualAlignment(item.direction, Qt::AlignLeft | Qt::AlignBottom) |
                           Qt::TextSingleLine | Qt::TextHideMnemonic;
        painter.drawText(QStyle::visualRect(item.direction, item.rect, text), static_cast<int>(flags), item.text);
        return;
    }
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        painter.fillRect(QRectF(frame.left() + menuTextInset, frame.center().y(), frame.width() - 2 * menuTextInset, 1),
                         colours.hairline);
        return;
    }
    const bool isEnabled = item.state.testFlag(QStyle::State_Enabled);
    const bool isSelected = item.state.testFlag(QStyle::State_Selected) && isEnabled;
    painter.setRenderHint(QPainter::Antialiasing);
    if (isSelected)
        paintBox(painter, frame, fieldRadius - 2, colours.accent, Qt::transparent);
    const QColor ink = isSelected ? colours.accentText : isEnabled ? colours.primary : colours.secondary;
    QRectF text = frame.adjusted(menuTextInset, 0, -menuTextInset, 0);
    if (isChoiceMenu(item)) {
        if (item.checked) {
            const QRectF mark(frame.left() + menuTextInset - 2, frame.center().y() - 5, 11, 11);
            paintSymbol(painter, QStyle::visualRect(item.direction, item.rect, mark.toRect()), u"checkmark"_s, ink);
        }
        text.setLeft(frame.left() + checkColumn + 4);
    }
    painter.setFont(item.font);
    painter.setPen(ink);
    painter.drawText(QStyle::visualRect(item.direction, item.rect, text.toRect()),
                     static_cast<int>(QStyle::visualAlignment(item.direction, Qt::AlignLeft | Qt::AlignVCenter)) |
                         Qt::TextSingleLine | Qt::TextHideMnemonic,
                     item.text.section(u'\t', 0, 0));
}

void paintComboBox(QPainter &painter, const QStyleOptionComboBox &box)
{
    const DesktopColours colours = DesktopColours::of(box.palette);
    const bool isOver = box.state.testFlag(QStyle::State_MouseOver) && box.state.testFlag(QStyle::State_Enabled);
    const QRectF frame = QRectF(box.rect).adjusted(2, 2, -2, -2);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBox(painter, frame, fieldRadius - 1, colours.hover, Qt::transparent);
    if (isOver)
        paintBox(painter, frame, fieldRadius - 1, colours.hover, Qt::transparent);
    constexpr double size = 11;
    const bool mirrored = box.direction == Qt::RightToLeft;
    const double x = mirrored ? frame.left() + 7 : frame.right() - 7 - size;
    paintSymbol(painter, QRectF(x, frame.center().y() - size / 2, size, size), u"chevron-up-down"_s, colours.secondary);
    if (box.state.testFlag(QStyle::State_HasFocus))
        paintFocusRing(painter, frame, fieldRadius - 1, box.palette);
}

void paintScrollBar(QPainter &painter, const QStyleOptionSlider &bar, const QRect &handle)
{
    const bool isOver = bar.state.testFlag(QStyle::State_MouseOver) || bar.state.testFlag(QStyle::State_Sunken);
    QColor ink = DesktopColours::of(bar.palette).primary;
    ink.setAlphaF(isOver ? 0.5F : 0.28F);
    const double inset = isOver ? 2 : 3;
    const QRectF frame = bar.orientation == Qt::Vertical ? QRectF(handle).adjusted(inset, 2, -inset, -2)
                                                         : QRectF(handle).adjusted(2, inset, -2, -inset);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBox(painter, frame, std::min(frame.width(), frame.height()) / 2, ink, Qt::transparent);
}

} // namespace

void paintBox(QPainter &painter, const QRectF &frame, double radius, const QColor &fill, const QColor &line)
{
    const double width = 1 / painter.device()->devicePixelRatioF();
    const bool hasLine = line.alpha() > 0;
    painter.setPen(hasLine ? QPen(line, width) : QPen(Qt::NoPen));
    painter.setBrush(fill);
    const double inset = hasLine ? width / 2 : 0;
    painter.drawRoundedRect(frame.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
}

void paintFocusRing(QPainter &painter, const QRectF &frame, double radius, const QPalette &palette)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(DesktopColours::of(palette).accentInk, 2));
    painter.drawRoundedRect(frame.adjusted(-1, -1, 1, 1), radius + 1, radius + 1);
}

KelpStyle::KelpStyle() : QProxyStyle(u"fusion"_s) {}

void KelpStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QMenu *>(widget))
        widget->setFont(designFont(FontDesign::Default, 13));
    if (qobject_cast<QComboBox *>(widget) || qobject_cast<QScrollBar *>(widget))
        widget->setAttribute(Qt::WA_Hover);
}

void KelpStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                              const QWidget *widget) const
{
    const DesktopColours colours = DesktopColours::of(option->palette);
    const QRectF frame = QRectF(option->rect);
    switch (element) {
    case PE_PanelLineEdit: {
        const QRectF box = frame.adjusted(2, 2, -2, -2);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        paintBox(*painter, box, fieldRadius, colours.field, colours.outline);
        if (option->state.testFlag(State_HasFocus))
            paintFocusRing(*painter, box.adjusted(1, 1, -1, -1), fieldRadius - 1, option->palette);
        painter->restore();
        return;
    }
    case PE_FrameLineEdit:
    case PE_FrameFocusRect:
        return;
    case PE_PanelMenu:
    case PE_FrameMenu:
        painter->save();
        painter->fillRect(option->rect, colours.group);
        painter->setRenderHint(QPainter::Antialiasing);
        paintBox(*painter, frame, 0, Qt::transparent, colours.outline);
        painter->restore();
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void KelpStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                            const QWidget *widget) const
{
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (element == CE_MenuItem && item) {
        painter->save();
        paintMenuItem(*painter, *item, qobject_cast<const QMenu *>(widget) != nullptr);
        painter->restore();
    } else if (element == CE_MenuEmptyArea) {
        painter->fillRect(option->rect, DesktopColours::of(option->palette).group);
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void KelpStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                                   const QWidget *widget) const
{
    const auto *box = qstyleoption_cast<const QStyleOptionComboBox *>(option);
    const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    painter->save();
    if (control == CC_ComboBox && box && !box->editable)
        paintComboBox(*painter, *box);
    else if (control == CC_ScrollBar && bar)
        paintScrollBar(*painter, *bar, subControlRect(control, option, SC_ScrollBarSlider, widget));
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    painter->restore();
}

QSize KelpStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                                  const QWidget *widget) const
{
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (type == CT_MenuItem && item) {
        if (item->menuItemType == QStyleOptionMenuItem::Separator && item->text.isEmpty())
            return {size.width(), 9};
        const QFontMetrics metrics(item->font);
        const int text = metrics.size(Qt::TextSingleLine | Qt::TextHideMnemonic, item->text).width();
        return {text + 2 * menuTextInset + (isChoiceMenu(*item) ? checkColumn : 0) + 6, menuItemHeight};
    }
    if (type == CT_ComboBox)
        return {size.width() + 40, std::max(size.height() + 10, 30)};
    if (type == CT_LineEdit)
        return {size.width(), std::max(size.height() + 14, 36)};
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}

QRect KelpStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                                const QWidget *widget) const
{
    if (control == CC_ComboBox && part == SC_ComboBoxEditField)
        return visualRect(option->direction, option->rect, option->rect.adjusted(12, 2, -24, -2));
    if (control == CC_ScrollBar) {
        const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
        if (part == SC_ScrollBarAddLine || part == SC_ScrollBarSubLine)
            return {};
        if (bar && (part == SC_ScrollBarSlider || part == SC_ScrollBarGroove)) {
            if (part == SC_ScrollBarGroove || bar->maximum <= bar->minimum)
                return bar->rect;
            const bool isVertical = bar->orientation == Qt::Vertical;
            const int room = isVertical ? bar->rect.height() : bar->rect.width();
            const qint64 range = qint64(bar->maximum) - bar->minimum;
            const int length = std::max(32, int(qint64(bar->pageStep) * room / (range + bar->pageStep)));
            const int start = sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition, room - length,
                                                      bar->upsideDown);
            return isVertical ? QRect(bar->rect.left(), bar->rect.top() + start, bar->rect.width(), length)
                              : QRect(bar->rect.left() + start, bar->rect.top(), length, bar->rect.height());
        }
    }
    return QProxyStyle::subControlRect(control, option, part, widget);
}

QRect KelpStyle::subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const
{
    switch (element) {
    case SE_LineEditContents:
        return option->rect.adjusted(10, 2, -10, -2);
    case SE_CheckBoxClickRect:
    case SE_RadioButtonClickRect:
        // Kelp's switches and tiles are clicked anywhere, and assistive technology is told the same.
        return option->rect;
    default:
        return QProxyStyle::subElementRect(element, option, widget);
    }
}

int KelpStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return menuPadding;
    case PM_MenuPanelWidth:
        return 1;
    case PM_ScrollBarExtent:
        return scrollBarExtent;
    case PM_DefaultFrameWidth:
        return qobject_cast<const QMenu *>(widget) ? 1 : QProxyStyle::pixelMetric(metric, option, widget);
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int KelpStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                         QStyleHintReturn *data) const
{
    switch (hint) {
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_UnderlineShortcut:
    case SH_ComboBox_AllowWheelScrolling:
        return 0;
    case SH_ToolTipLabel_Opacity:
        return 255;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

} // namespace kelp
