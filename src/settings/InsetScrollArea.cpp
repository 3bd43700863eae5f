#include "settings/InsetScrollArea.h"

#include <QScrollBar>
#include <QVBoxLayout>

namespace kelp {

InsetScrollArea::InsetScrollArea(const QMargins &margins, QWidget *parent) : QScrollArea(parent), m_margins(margins)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus); // what is in it has the keyboard
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    viewport()->setAutoFillBackground(false);
    auto *content = new QWidget(this);
    m_column = new QVBoxLayout(content);
    m_column->setContentsMargins(margins);
    m_column->setSpacing(0);
    setWidget(content);
    content->setAutoFillBackground(false); // which QScrollArea has just set
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, &InsetScrollArea::makeRoom);
}

void InsetScrollArea::makeRoom()
{
    const bool hasBar = verticalScrollBar()->maximum() > verticalScrollBar()->minimum();
    const int bar = hasBar ? verticalScrollBar()->sizeHint().width() : 0;
    QMargins margins = m_margins;
    if (layoutDirection() == Qt::RightToLeft)
        margins.setLeft(margins.left() - bar);
    else
        margins.setRight(margins.right() - bar);
    m_column->setContentsMargins(margins);
}

} // namespace kelp
