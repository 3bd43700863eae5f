#include "settings/SymbolView.h"

#include "ui/DesktopColours.h"
#include "ui/Symbols.h"

#include <QPainter>

namespace kelp {

SymbolView::SymbolView(const QString &symbol, int size, Ink ink, QWidget *parent)
    : QWidget(parent), m_symbol(symbol), m_ink(ink)
{
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SymbolView::present(const QString &symbol, Ink ink)
{
    if (m_symbol == symbol && m_ink == ink)
        return;
    m_symbol = symbol;
    m_ink = ink;
    update();
}

void SymbolView::turn(double degrees)
{
    m_degrees = degrees;
    update();
}

void SymbolView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF frame = rect();
    painter.translate(frame.center());
    if (layoutDirection() == Qt::RightToLeft && m_symbol.startsWith(QLatin1String("chevron")))
        painter.scale(-1, 1);
    painter.rotate(m_degrees);
    painter.translate(-frame.center());
    paintSymbol(painter, frame, m_symbol, inkColour(m_ink, palette()));
}

} // namespace kelp
