#include "ui/Digits.h"

#include "ui/TextFit.h"

#include <QPainter>

#include <vector>

using namespace Qt::StringLiterals;

namespace kelp {

std::shared_ptr<const Digits> Digits::of(const QFont &font, const QColor &colour)
{
    // Not kept for longer than they are used: what Qt holds of a font must be gone before the application is.
    static thread_local std::vector<std::weak_ptr<const Digits>> known;
    std::erase_if(known, [](const std::weak_ptr<const Digits> &each) { return each.expired(); });
    for (const std::weak_ptr<const Digits> &each : known) {
        std::shared_ptr<const Digits> digits = each.lock();
        if (digits->m_font == font && digits->m_colour == colour)
            return digits;
    }
    const std::shared_ptr<const Digits> made(new Digits(font, colour));
    known.push_back(made);
    return made;
}

Digits::Digits(const QFont &font, const QColor &colour) : m_font(font), m_colour(colour)
{
    // The mean looks evenly spaced where the widest digit's room would leave gaps beside a 1 or a 7; the widest gives
    // up no more than the white at its sides.
    m_cell = advanceOf(u"0123456789"_s, font) / 10;
    for (std::size_t i = 0; i < m_shapes.size(); ++i) {
        const QString digit(QChar(static_cast<char16_t>(u'0' + i)));
        Shape &shape = m_shapes[i];
        shape.width = advanceOf(digit, font);
        shape.text.setText(digit);
        shape.text.setTextFormat(Qt::PlainText);
        shape.text.prepare({}, font);
    }
}

void Digits::paint(QPainter &painter, char16_t digit, QPointF corner) const
{
    const Shape &shape = m_shapes.at(digit - u'0');
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(m_font);
    painter.setPen(m_colour);
    painter.drawStaticText(corner + QPointF((m_cell - shape.width) / 2, 0), shape.text);
}

} // namespace kelp
