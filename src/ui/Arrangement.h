#pragma once

#include <QRectF>
#include <QString>
#include <QTransform>

#include <functional>
#include <optional>
#include <vector>

class QPainter;

namespace kelp {

/// A tree of elements laid out: what to paint where, which texts there are, and where the tagged elements lie.
/// All lengths are logical points; the origin is the top left corner.
class Arrangement
{
public:
    /// A text that is no part of a tagged element.
    struct Text
    {
        QString text;
        QRectF frame;
    };
    /// A tagged element and the texts within it.
    struct Tagged
    {
        QString tag;
        QString label;
        QRectF frame;
    };

    explicit Arrangement(QSizeF size = {}) : m_size(size) {}

    [[nodiscard]] QSizeF size() const { return m_size; }
    [[nodiscard]] QRectF frame() const { return {QPointF(), m_size}; }
    [[nodiscard]] const std::vector<Text> &texts() const { return m_texts; }
    [[nodiscard]] const std::vector<Tagged> &tagged() const { return m_tagged; }
    /// The frame of the first element with this tag.
    [[nodiscard]] std::optional<QRectF> frameOf(const QString &tag) const;

    /// Paints everything that touches `dirty`; an empty rectangle stands for all of it.
    void paint(QPainter &painter, const QRectF &dirty = {}) const;

    // For the elements, which build it up from their children.
    void setSize(QSizeF size) { m_size = size; }
    /// `bounds` is all that `paint` touches.
    void addPainting(const QRectF &bounds, std::function<void(QPainter &)> paint);
    void addText(const QString &text);
    void addChild(const Arrangement &child, const QTransform &placement);
    void addChild(const Arrangement &child, QPointF position);
    /// From now on the whole is one element with this tag; the texts in it become its label.
    void becomeTagged(const QString &tag);

private:
    struct Painting
    {
        QTransform placement;
        QRectF bounds;
        std::function<void(QPainter &)> paint;
    };

    QSizeF m_size;
    std::vector<Painting> m_paintings;
    std::vector<Text> m_texts;
    std::vector<Tagged> m_tagged;
};

} // namespace kelp
