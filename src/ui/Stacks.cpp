#include "ui/ElementNode.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace kelp {

namespace {

/// Wider than any screen: "as wide as it likes to be".
constexpr double unbounded = 1e5;

class Layered final : public Element::Node
{
public:
    explicit Layered(std::vector<Element> children) : m_children(std::move(children)) {}

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        std::vector<Arrangement> layers;
        QSizeF size(0, 0);
        for (const Element &child : m_children) {
            layers.push_back(child.arrange(maxWidth));
            size = size.expandedTo(layers.back().size());
        }
        Arrangement result(size);
        for (const Arrangement &layer : layers) {
            const QSizeF room = (size - layer.size()) / 2;
            result.addChild(layer, QPointF(std::floor(room.width()), std::floor(room.height())));
        }
        return result;
    }

private:
    std::vector<Element> m_children;
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

} // namespace

Element layered(std::vector<Element> children)
{
    return Element(std::make_shared<Layered>(std::move(children)));
}

Element vertical(double spacing, std::vector<Element> children)
{
    return Element(std::make_shared<Vertical>(spacing, std::move(children)));
}

Element horizontal(double spacing, std::vector<Element> children)
{
    return Element(std::make_shared<Horizontal>(spacing, std::move(children)));
}

} // namespace kelp
