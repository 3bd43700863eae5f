#pragma once

#include "base/Instant.h"

#include <QRectF>
#include <QString>
#include <QTransform>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QPainter;

namespace kelp {

class Glow;

/// Something that paints itself. Where it changes with the time by itself, it says when and where.
struct Picture
{
    std::function<void(QPainter &painter, Instant now)> paint;
    /// Seconds from `now` until it looks different on `density` pixels per point, more than 0; infinite where it does
    /// not any more. None: it stands still.
    std::function<double(Instant now, double density)> untilChange = {};
    /// All that differs between the two moments.
    std::function<QRectF(Instant from, Instant to)> changed = {};
};

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

    /// All that is painted, which may reach beyond the frame.
    [[nodiscard]] QRectF bounds() const;
    /// All that is said in it.
    [[nodiscard]] QString words() const;

    /// Paints everything that touches `dirty`, as it looks at `now`; an empty rectangle stands for all of it.
    void paint(QPainter &painter, Instant now, const QRectF &dirty = {}) const;
    /// Seconds from `now` until something in it looks different, more than 0; infinite where all of it stands still.
    [[nodiscard]] double untilChange(Instant now, double density) const;
    /// The parts that differ between the two moments.
    [[nodiscard]] std::vector<QRectF> changed(Instant from, Instant to) const;
    /// Takes over what an earlier arrangement of the same elements has baked.
    void inheritGlows(const Arrangement &before);
    /// Lets the first element with this tag say `label`. Gives the part that looks different, empty where that is none;
    /// no part, and nothing is done, where more than its running digits would have to change.
    [[nodiscard]] std::optional<QRectF> turnDigits(const QString &tag, const QString &label);

    // For the elements, which build it up from their children.
    void setSize(QSizeF size) { m_size = size; }
    /// `bounds` is all that the picture touches; `words` is all that it says, or that lies where it does because of
    /// what is said.
    void addPicture(const QRectF &bounds, Picture picture, const QString &words = {});
    void addPainting(const QRectF &bounds, std::function<void(QPainter &)> paint, const QString &words = {});
    /// A digit of a running figure, and what any other digit in its place looks like.
    void addDigit(const QRectF &bounds, QChar digit, std::function<Picture(QChar digit)> pictureOf);
    void addGlow(std::shared_ptr<Glow> glow);
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
        Picture picture;
        QString words;
        std::function<Picture(QChar digit)> pictureOf = {};
    };

    /// Where the parts of a tagged element are among all.
    struct Place
    {
        std::size_t paintings;
        std::size_t paintingCount;
    };

    QSizeF m_size;
    std::vector<Painting> m_paintings;
    std::vector<Text> m_texts;
    std::vector<Tagged> m_tagged;
    std::vector<Place> m_places; ///< of the tagged elements, in their order
    std::vector<std::shared_ptr<Glow>> m_glows;
};

} // namespace kelp
