#include "settings/Rows.h"

#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QPainter>
#include <QVBoxLayout>

namespace kelp {

namespace {

constexpr double groupRadius = 10;

} // namespace

SectionTitle::SectionTitle(const QString &text, QWidget *parent)
    : PanelLabel(12, QFont::DemiBold, Ink::Secondary, parent)
{
    setText(text);
    setContentsMargins(textInset, 0, textInset, 0);
}

Divider::Divider(QWidget *parent) : QWidget(parent)
{
    setFixedHeight(1);
}

void Divider::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(QRectF(0, 0, width(), 1 / painter.device()->devicePixelRatioF()),
                     DesktopColours::of(palette()).hairline);
}

RowGroup::RowGroup(QWidget *parent) : QWidget(parent), m_rows(new QVBoxLayout(this))
{
    m_rows->setContentsMargins({});
    m_rows->setSpacing(0);
}

void RowGroup::addRow(QWidget *row)
{
    m_rows->addWidget(row);
}

void RowGroup::insertRow(int index, QWidget *row)
{
    m_rows->insertWidget(index, row);
}

void RowGroup::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    paintBox(painter, rect(), groupRadius, colours.group, colours.hairline);
    const double line = 1 / painter.device()->devicePixelRatioF();
    bool isFirst = true;
    for (int i = 0; i < m_rows->count(); ++i) {
        const QWidget *row = m_rows->itemAt(i)->widget();
        if (row->isHidden())
            continue;
        if (!isFirst)
            painter.fillRect(QRectF(rowInset, row->y(), width() - rowInset, line), colours.hairline);
        isFirst = false;
    }
}

} // namespace kelp
