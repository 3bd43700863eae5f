#include "ui/ElementNode.h"
#include "ui/Symbols.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace kelp {

namespace {

/// Wider than any screen: "as wide as it likes to be".
constexpr double unbounded = 1e5;

class Symbol final : public Element::Node
{
public:
    Symbol(QString name, double size, QColor colour) : m_name(std::move(name)), m_size(size), m_colour(colour) {}

    [[nodiscard]] Arrangement arrange(double) const override
    {
        Arrangement result(QSizeF(m_size, m_size));
        const QRectF frame = result.frame();
        result.addPainting(frame, [name = m_name, colour = m_colour, frame](QPainter &painter) {
            paintSymbol(painter, frame, name, colour);
        });
        return result;
    }

private:
    QString m_name;
    double m_size;
    QColor m_colour;
};

class Vertical final : public Element::Node
{
public:
    Vertical(double spacing, std::vector<Element> children) : m_spacing(spacing), m_children(std::move(children)) {}

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        std::vector<Arrangement> rows;
        double width = 0;
        for (const Element &child : m_children) {
            rows.push_back(child.arrange(maxWidth));
            width = std::max(width, rows.back().size().width());
        }
        Arrangement result;
        double y = 0;
        for (const Arrangement &row : rows) {
            // Whole points keep the edges of shapes sharp.
            result.addChild(row, QPointF(std::floor((width - row.size().width()) / 2), y));
            y += row.size().height() + m_spacing;
        }
        result.setSize({width, std::max(0.0, y - m_spacing)});
        return result;
    }

private:
    double m_spacing;
    std::vector<Element> m_children;
};

class Horizontal final : public Element::Node
{
public:
    Horizontal(double spacing, std::vector<Element> children) : m_spacing(spacing), m_children(std::move(children)) {}

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        std::vector<Arrangement> columns;
        for (const Element &child : m_children)
            columns.push_back(child.arrange(unbounded));
        narrowWidest(columns, maxWidth);

        double height = 0;
        for (const Arrangement &column : columns)
            height = std::max(height, column.size().height());
        Arrangement result;
        double x = 0;
        for (const Arrangement &column : columns) {
            result.addChild(column, QPointF(x, std::floor((height - column.size().height()) / 2)));
            x += column.size().width() + m_spacing;
        }
        result.setSize({std::max(0.0, x - m_spacing), height});
        return result;
    }

private:
    void narrowWidest(std::vector<Arrangement> &columns, double maxWidth) const
    {
        if (columns.empty())
            return;
        const double gaps = m_spacing * static_cast<double>(columns.size() - 1);
        const double total =
            std::accumulate(columns.begin(), columns.end(), gaps,
                            [](double sum, const Arrangement &each) { return sum + each.size().width(); });
        if (total <= maxWidth)
            return;
        const auto widest =
            std::max_element(columns.begin(), columns.end(), [](const Arrangement &a, const Arrangement &b) {
                return a.size().width() < b.size().width();
            });
        const auto index = static_cast<std::size_t>(widest - columns.begin());
        *widest = m_children[index].arrange(std::max(0.0, widest->size().width() - (total - maxWidth)));
    }

    double m_spacing;
    std::vector<Element> m_children;
};

class Padded final : public Element::Node
{
public:
    Padded(QMarginsF margins, Element child) : m_margins(margins), m_child(std::move(child)) {}

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        const double inset = m_margins.left() + m_margins.right();
        const Arrangement child = m_child.arrange(std::max(0.0, maxWidth - inset));
        Arrangement result(child.size() + QSizeF(inset, m_margins.top() + m_margins.bottom()));
        result.addChild(child, QPointF(m_margins.left(), m_margins.top()));
        return result;
    }

private:
    QMarginsF m_margins;
    Element m_child;
};

/// A frame behind the child, filled, stroked or both.
class Framed final : public Element::Node
{
public:
    Framed(Shape shape, QBrush brush, QPen pen, double outset, Element child)
        : m_shape(shape), m_brush(std::move(brush)), m_pen(std::move(pen)), m_outset(outset), m_child(std::move(child))
    {
    }

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        const Arrangement child = m_child.arrange(maxWidth);
        Arrangement result(child.size());
        const QRectF frame = result.frame().adjusted(-m_outset, -m_outset, m_outset, m_outset);
        const double line = m_pen.style() == Qt::NoPen ? 0 : m_pen.widthF();
        const double radius = std::min({m_shape.cornerRadius + m_outset, frame.width() / 2, frame.height() / 2});
        result.addPainting(frame.adjusted(-line, -line, line, line),
                           [frame, radius, brush = m_brush, pen = m_pen](QPainter &painter) {
                               painter.setRenderHint(QPainter::Antialiasing);
                               painter.setBrush(brush);
                               painter.setPen(pen);
                               painter.drawRoundedRect(frame, radius, radius);
                           });
        result.addChild(child, QPointF());
        return result;
    }

private:
    Shape m_shape;
    QBrush m_brush;
    QPen m_pen;
    double m_outset;
    Element m_child;
};

class AtMost final : public Element::Node
{
public:
    AtMost(double width, Element child) : m_width(width), m_child(std::move(child)) {}
    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        return m_child.arrange(std::min(m_width, maxWidth));
    }

private:
    double m_width;
    Element m_child;
};

class Scaled final : public Element::Node
{
public:
    Scaled(double factor, Element child) : m_factor(factor), m_child(std::move(child)) {}

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        const Arrangement child = m_child.arrange(maxWidth);
        Arrangement result(child.size());
        const QPointF centre = child.frame().center();
        result.addChild(child, QTransform::fromTranslate(-centre.x(), -centre.y()) *
                                   QTransform::fromScale(m_factor, m_factor) *
                                   QTransform::fromTranslate(centre.x(), centre.y()));
        return result;
    }

private:
    double m_factor;
    Element m_child;
};

class TaggedNode final : public Element::Node
{
public:
    TaggedNode(QString tag, Element child) : m_tag(std::move(tag)), m_child(std::move(child)) {}

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        Arrangement result = m_child.arrange(maxWidth);
        result.becomeTagged(m_tag);
        return result;
    }

private:
    QString m_tag;
    Element m_child;
};

} // namespace

Element::Element(std::shared_ptr<const Node> node) : m_node(std::move(node)) {}

Arrangement Element::arrange(double maxWidth) const
{
    return m_node->arrange(maxWidth);
}

Element symbol(const QString &name, double size, const QColor &colour)
{
    return Element(std::make_shared<Symbol>(name, size, colour));
}

Element vertical(double spacing, std::vector<Element> children)
{
    return Element(std::make_shared<Vertical>(spacing, std::move(children)));
}

Element horizontal(double spacing, std::vector<Element> children)
{
    return Element(std::make_shared<Horizontal>(spacing, std::move(children)));
}

Element padded(const QMarginsF &margins, Element child)
{
    return Element(std::make_shared<Padded>(margins, std::move(child)));
}

Element filled(Shape shape, const QBrush &brush, Element child)
{
    return Element(std::make_shared<Framed>(shape, brush, QPen(Qt::NoPen), 0, std::move(child)));
}

Element outlined(Shape shape, const QPen &pen, double outset, Element child)
{
    return Element(std::make_shared<Framed>(shape, QBrush(Qt::NoBrush), pen, outset, std::move(child)));
}

Element atMost(double width, Element child)
{
    return Element(std::make_shared<AtMost>(width, std::move(child)));
}

Element scaled(double factor, Element child)
{
    return Element(std::make_shared<Scaled>(factor, std::move(child)));
}

Element tagged(const QString &tag, Element child)
{
    return Element(std::make_shared<TaggedNode>(tag, std::move(child)));
}

} // namespace kelp
