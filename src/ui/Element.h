#pragma once

#include "ui/Arrangement.h"

#include <QBrush>
#include <QFont>
#include <QMarginsF>
#include <QPen>

#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace kelp {

/// A view, declared as a small tree of immutable elements:
///
///     vertical(12, {text(u"Review"_s).font(titleFont).colour(Qt::white).lines(3).shrink(0.5),
///                   tagged(u"join"_s, filled(Shape::capsule(), Qt::white, padded({28, 14, 28, 14}, label)))})
///
/// `arrange` lays it out; the result paints itself and knows the frames of the tagged elements. Lengths are logical
/// points.
class Element
{
public:
    class Node;
    explicit Element(std::shared_ptr<const Node> node);

    /// Lays the element out, as wide as it likes to be but no wider than `maxWidth` where it can help it.
    [[nodiscard]] Arrangement arrange(double maxWidth) const;

private:
    std::shared_ptr<const Node> m_node;
};

/// How the corners of a filled frame are drawn.
struct Shape
{
    double cornerRadius; ///< half of the frame's shorter side at most
    [[nodiscard]] static Shape capsule() { return {1e6}; }
    [[nodiscard]] static Shape rounded(double radius) { return {radius}; }
    [[nodiscard]] static Shape rectangle() { return {0}; }
};

/// A text and how it is set, centred. Control characters and line ends in it become spaces; isolating marks may stay.
class Text
{
public:
    explicit Text(const QString &text);

    [[nodiscard]] Text font(const QFont &font) const; ///< with a pixel size
    [[nodiscard]] Text colour(const QColor &colour) const;
    /// At most this many lines; what goes beyond is cut with an ellipsis. One line unless told.
    [[nodiscard]] Text lines(int count) const;
    /// Before it is cut, the text shrinks down to this part of its size (0…1).
    [[nodiscard]] Text shrink(double least) const;
    /// It shrinks, as far as it may, before it is higher than that; it is never cut for it.
    [[nodiscard]] Text height(double most) const;
    /// Every digit takes the same room, so that a running figure stands still. One line, never cut.
    [[nodiscard]] Text fixedDigits() const;
    /// A cursor in this colour follows the last letter and blinks. Not said aloud.
    [[nodiscard]] Text cursor(const QColor &colour) const;

    operator Element() const; // NOLINT: a text is an element wherever one is wanted

    struct Style
    {
        QFont font;
        QColor colour = Qt::black;
        int lines = 1;
        double shrink = 1;
        double height = std::numeric_limits<double>::infinity();
        bool fixedDigits = false;
        std::optional<QColor> cursor = {};
    };

private:
    QString m_text;
    Style m_style;
};

[[nodiscard]] Text text(const QString &text);
/// One of Kelp's own symbols (resources/symbols) in one colour, `size` points high and wide.
[[nodiscard]] Element symbol(const QString &name, double size, const QColor &colour);

/// A picture that takes `size` and may reach `reach` points beyond it on every side.
[[nodiscard]] Element drawing(const QSizeF &size, double reach, Picture picture);

/// One upon the other, the first one at the back, centred.
[[nodiscard]] Element layered(std::vector<Element> children);
/// One below the other, centred, `spacing` points between them.
[[nodiscard]] Element vertical(double spacing, std::vector<Element> children);
/// Side by side, vertically centred. Where they do not fit, the widest one gets the room that is left.
[[nodiscard]] Element horizontal(double spacing, std::vector<Element> children);
[[nodiscard]] Element padded(const QMarginsF &margins, Element child);
/// The child over a frame of its size.
[[nodiscard]] Element filled(Shape shape, const QBrush &brush, Element child);
/// The child within an outline that lies `outset` points outside of its frame and takes no room.
[[nodiscard]] Element outlined(Shape shape, const QPen &pen, double outset, Element child);
/// The child in front of the light that it casts: its own shape, blurred by `radius` points, in that colour. Takes no
/// room, and a colour that cannot be seen costs nothing.
[[nodiscard]] Element glowing(double radius, const QColor &colour, Element child);
[[nodiscard]] Element atMost(double width, Element child);
/// Drawn larger or smaller about its centre; the room it takes stays the same.
[[nodiscard]] Element scaled(double factor, Element child);
/// Exactly of that size, whatever the child takes; it lies where `alignment` says, in the middle unless told.
[[nodiscard]] Element sized(const QSizeF &size, Qt::Alignment alignment, Element child);
/// One below the other, all of them beginning at the left, `spacing` points between them.
[[nodiscard]] Element leading(double spacing, std::vector<Element> children);
/// Room with nothing in it.
[[nodiscard]] Element space(double width, double height);
/// Where the element lies is reported under this name.
[[nodiscard]] Element tagged(const QString &tag, Element child);

} // namespace kelp
