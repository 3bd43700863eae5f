#include "ui/ElementNode.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelp {

namespace {

class Sized final : public Element::Node
{
public:
    Sized(const QSizeF &size, Qt::Alignment alignment, Element child)
        : m_size(size), m_alignment(alignment), m_child(std::move(child))
    {
    }

    [[nodiscard]] Arrangement arrange(double) const override
    {
        const Arrangement child = m_child.arrange(m_size.width());
        const QSizeF room = m_size - child.size();
        Arrangement result(m_size);
        result.addChild(child, QPointF(part(room.width(), Qt::AlignLeft, Qt::AlignRight),
                                       part(room.height(), Qt::AlignTop, Qt::AlignBottom)));
        return result;
    }

private:
    /// Of the room that is left, what lies before the child; whole points keep the edges of shapes sharp.
    [[nodiscard]] double part(double room, Qt::AlignmentFlag before, Qt::AlignmentFlag after) const
    {
        if (m_alignment.testFlag(before))
            return 0;
        return m_alignment.testFlag(after) ? room : std::floor(room / 2);
    }

    QSizeF m_size;
    Qt::Alignment m_alignment;
    Element m_child;
};

class Leading final : public Element::Node
{
public:
    Leading(double spacing, std::vector<Element> children) : m_spacing(spacing), m_children(std::move(children)) {}

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        Arrangement result;
        double width = 0;
        double y = 0;
        for (const Element &child : m_children) {
            const Arrangement row = child.arrange(maxWidth);
            result.addChild(row, QPointF(0, y));
            width = std::max(width, row.size().width());
            y += row.size().height() + m_spacing;
        }
        result.setSize({width, std::max(0.0, y - m_spacing)});
        return result;
    }

private:
    double m_spacing;
    std::vector<Element> m_children;
};

} // namespace

Element sized(const QSizeF &size, Qt::Alignment alignment, Element child)
{
    return Element(std::make_shared<Sized>(size, alignment, std::move(child)));
}

Element leading(double spacing, std::vector<Element> children)
{
    return Element(std::make_shared<Leading>(spacing, std::move(children)));
}

Element space(double width, double height)
{
    return drawing({width, height}, 0, {.paint = [](QPainter &, Instant) {}});
}

} // namespace kelp
