#include "settings/Picker.h"

#include "ui/DesktopColours.h"
#include "ui/Fonts.h"

#include <QAbstractItemView>
#include <QCursor>
#include <QStyleOption>
#include <QStylePainter>
#include <QWheelEvent>

namespace kelp {

namespace {

constexpr int popupInset = 6; // of the chosen item's ground, on each side

} // namespace

Picker::Picker(QWidget *parent) : QComboBox(parent)
{
    setFont(designFont(FontDesign::Default, 13));
    setSizeAdjustPolicy(QComboBox::AdjustToContents);
}

void Picker::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    painter.setPen(DesktopColours::of(palette()).primary);
    const int side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    painter.drawText(field, side | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine, currentText());
}

void Picker::showPopup()
{
    // The list is wider than the box by the column of its mark.
    view()->setMinimumWidth(view()->sizeHintForColumn(0) + 2 * popupInset);
    QComboBox::showPopup();
}

void Picker::hidePopup()
{
    QComboBox::hidePopup();
    // The list took the pointer away without a word.
    setAttribute(Qt::WA_UnderMouse, rect().contains(mapFromGlobal(QCursor::pos())));
    update();
}

void Picker::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

} // namespace kelp
