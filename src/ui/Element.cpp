#include "ui/ElementNode.h"
#include "ui/Glow.h"
#include "ui/Symbols.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelp {

namespace {

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

class Drawing final : public Element::Node
{
public:
    Drawing(const QSizeF &size, double reach, Picture picture)
        : m_size(size), m_reach(reach), m_picture(std::move(picture))
    {
    }

    [[nodiscard]] Arrangement arrange(double) const override
    {
        Arrangement result(m_size);
        result.addPicture(result.frame().adjusted(-m_reach, -m_reach, m_reach, m_reach), m_picture);
        return result;
    }

private:
    QSizeF m_size;
    double m_reach;
    Picture m_picture;
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
                               if (pen.style() == Qt::NoPen && fillsAllThatIsPainted(painter, frame, radius, brush))
                                   return;
                               painter.setRenderHint(QPainter::Antialiasing);
                               painter.setBrush(brush);
                               painter.setPen(pen);
                               painter.drawRoundedRect(frame, radius, radius);
                           });
        result.addChild(child, QPointF());
        return result;
    }

private:
    /// Whether a rectangle lies in a frame with rounded corners, and not at its edge.
    static bool isWithin(const QRectF &rectangle, const QRectF &frame, double radius)
    {
        const QRectF centres = frame.adjusted(radius, radius, -radius, -radius); // of the corners' circles
        for (const QPointF &corner :
             {rectangle.topLeft(), rectangle.topRight(), rectangle.bottomLeft(), rectangle.bottomRight()}) {
            const QPointF beyond(std::max({centres.left() - corner.x(), corner.x() - centres.right(), 0.0}),
                                 std::max({centres.top() - corner.y(), corner.y() - centres.bottom(), 0.0}));
            if (std::hypot(beyond.x(), beyond.y()) > radius)
                return false;
        }
        return true;
    }

    /// Where nothing of the edge is to be painted, a rectangle does for the shape. For more than a few spans, as shapes
    /// have them, Qt wakes a pool of threads, which costs more than to fill what lies behind a countdown.
    static bool fillsAllThatIsPainted(QPainter &painter, const QRectF &frame, double radius, const QBrush &brush)
    {
        if (!painter.hasClipping())
            return false;
        const QRectF all = painter.clipBoundingRect().adjusted(-1, -1, 1, 1); // and what a rounded clip may add
        if (!isWithin(all, frame, radius))
            return false;
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(all, brush);
        return true;
    }

    Shape m_shape;
    QBrush m_brush;
    QPen m_pen;
    double m_outset;
    Element m_child;
};

class Glowing final : public Element::Node
{
public:
    Glowing(double radius, const QColor &colour, Element child)
        : m_radius(radius), m_colour(colour), m_child(std::move(child))
    {
    }

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        const Arrangement child = m_child.arrange(maxWidth);
        if (m_colour.alpha() == 0)
            return child;
        Arrangement result(child.size());
        const auto glow = std::make_shared<Glow>(child.bounds(), m_radius, m_colour);
        result.addPicture(glow->bounds(), lightOf(child, glow), child.words());
        result.addGlow(glow);
        result.addChild(child, QPointF());
        return result;
    }

private:
    static Picture lightOf(const Arrangement &child, const std::shared_ptr<Glow> &glow)
    {
        const double reach = child.bounds().left() - glow->bounds().left();
        return {.paint = [child,
                          glow](QPainter &painter,
                                Instant now) { glow->paint(painter, [&](QPainter &mask) { child.paint(mask, now); }); },
                .untilChange = [child](Instant now, double density) { return child.untilChange(now, density); },
                .changed =
                    [child, reach](Instant from, Instant to) {
                        QRectF all;
                        for (const QRectF &part : child.changed(from, to))
                            all |= part.adjusted(-reach, -reach, reach, reach);
                        return all;
                    }};
    }

    double m_radius;
    QColor m_colour;
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

Element drawing(const QSizeF &size, double reach, Picture picture)
{
    return Element(std::make_shared<Drawing>(size, reach, std::move(picture)));
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

Element glowing(double radius, const QColor &colour, Element child)
{
    return Element(std::make_shared<Glowing>(radius, colour, std::move(child)));
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
