#pragma once

#include <QColor>
#include <QFont>
#include <QStaticText>

#include <array>
#include <memory>

class QPainter;

namespace kelp {

/// The digits 0…9 of one font and colour, each taking the same room, so that a running figure stands still. They are
/// shaped once: a clock paints one of them every second, for as long as it is seen.
class Digits
{
public:
    /// `font` has a pixel size. As long as someone holds them, the same ones are given again; to be used by the thread
    /// that asked for them only.
    [[nodiscard]] static std::shared_ptr<const Digits> of(const QFont &font, const QColor &colour);

    /// The room of each, in points.
    [[nodiscard]] double cell() const { return m_cell; }
    /// Paints one in the middle of a cell that begins at `corner`, the top left one.
    void paint(QPainter &painter, char16_t digit, QPointF corner) const;

    [[nodiscard]] static bool isDigit(QChar sign) { return sign >= u'0' && sign <= u'9'; }

private:
    Digits(const QFont &font, const QColor &colour);

    struct Shape
    {
        QStaticText text;
        double width = 0;
    };

    QFont m_font;
    QColor m_colour;
    double m_cell = 0;
    std::array<Shape, 10> m_shapes;
};

} // namespace kelp
