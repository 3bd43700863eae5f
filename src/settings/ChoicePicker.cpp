#include "settings/ChoicePicker.h"

#include "ui/DesktopColours.h"
#include "ui/Fonts.h"

#include <QCursor>
#include <QStandardItemModel>
#include <QStyleOption>
#include <QStylePainter>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int asksRole = Qt::UserRole + 1; // bool, of an item

} // namespace

ChoicePicker::ChoicePicker(const QString &name, QWidget *parent) : QComboBox(parent)
{
    setAccessibleName(name);
    setFont(designFont(FontDesign::Default, 13));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    // A file may have any name: it is not to decide how wide the window is.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(6);
    connect(this, &QComboBox::activated, this, [this](int index) { Q_EMIT chosen(itemData(index)); });
}

void ChoicePicker::addChoice(const QString &text, const QVariant &value)
{
    addItem(text, value);
}

void ChoicePicker::addSection(const QString &title)
{
    auto *item = new QStandardItem(title);
    item->setFlags(Qt::NoItemFlags);
    item->setData(u"separator"_s, Qt::AccessibleDescriptionRole);
    item->setData(designFont(FontDesign::Default, 11, QFont::DemiBold), Qt::FontRole);
    static_cast<QStandardItemModel *>(model())->appendRow(item);
}

void ChoicePicker::rename(const QVariant &value, const QString &text)
{
    setItemText(findData(value), text);
}

void ChoicePicker::setAsks(const QVariant &value, bool asks)
{
    setItemData(findData(value), asks, asksRole);
}

void ChoicePicker::show(const QVariant &value)
{
    setCurrentIndex(value.isValid() ? findData(value) : -1);
    setToolTip(currentText().size() > 24 ? currentText() : QString());
}

void ChoicePicker::setAskingEnabled(bool enabled)
{
    const auto *items = static_cast<const QStandardItemModel *>(model());
    for (int i = 0; i < items->rowCount(); ++i) {
        if (QStandardItem *item = items->item(i); item->data(asksRole).toBool())
            item->setEnabled(enabled);
    }
}

/// These are the keys of a closed list; an opened one takes its own.
void ChoicePicker::keyPressEvent(QKeyEvent *event)
{
    setAskingEnabled(false); // such items are stepped over
    QComboBox::keyPressEvent(event);
    setAskingEnabled(true);
}

void ChoicePicker::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    painter.setPen(DesktopColours::of(palette()).primary);
    painter.drawText(field, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(currentText(), Qt::ElideMiddle, field.width()));
}

void ChoicePicker::hidePopup()
{
    QComboBox::hidePopup();
    // The list took the pointer away without a word.
    setAttribute(Qt::WA_UnderMouse, rect().contains(mapFromGlobal(QCursor::pos())));
    update();
}

void ChoicePicker::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // scrolls what it lies in
}

} // namespace kelp
