#pragma once

#include "themes/Lanes.h"

#include <QColor>
#include <QImage>
#include <QRect>

#include <vector>

namespace kelp {

/// One premultiplied colour: light to add, and how much of what lies behind it hides (alpha), all in 0…1.
struct SoftPixel
{
    Floats lanes{}; ///< blue, green, red, alpha

    /// Covers what is there with `colour`, `alpha` of it.
    void cover(Floats colour, float alpha) { lanes = lanes * (1 - alpha) + colour * alpha; }
    /// Adds light and hides nothing.
    void add(Floats light) { lanes += light; }

    /// An opaque colour.
    [[nodiscard]] static Floats opaque(double red, double green, double blue)
    {
        return Floats{static_cast<float>(blue), static_cast<float>(green), static_cast<float>(red), 1};
    }
    /// Light; scaled by a brightness it stays light.
    [[nodiscard]] static Floats light(double red, double green, double blue)
    {
        return Floats{static_cast<float>(blue), static_cast<float>(green), static_cast<float>(red), 0};
    }
    [[nodiscard]] static Floats opaque(const QColor &colour)
    {
        return opaque(colour.redF(), colour.greenF(), colour.blueF());
    }
};

/// A small picture of something smooth, laid over a large one by enlarging it 4 or 8 times. Its shades are finer than
/// those of a screen; a fixed pattern spreads them over neighbouring pixels, so that no bands show.
class SoftImage
{
public:
    /// For a target of `target` pixels: an eighth of it above 2 million pixels, else a quarter. Begins empty.
    void prepare(const QSize &target);

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] SoftPixel *row(int y) { return m_pixels.data() + std::ptrdiff_t{y} * m_width; }
    /// How often this fits into a target pixel's width: where the middle of column x lies, 0…1.
    [[nodiscard]] double across(int x) const { return (x + 0.5) * m_factor / m_target.width(); }
    [[nodiscard]] double down(int y) const { return (y + 0.5) * m_factor / m_target.height(); }

    /// The length of one of its pixels, in pixels of the target.
    [[nodiscard]] int factor() const { return m_factor; }

    void fill(const Floats &lanes);

    /// Writes it into `part` of `target`, which must have the size prepared for; for an opaque one.
    void enlargeInto(QImage &target, const QRect &part) const;

    /// Gives the rows of the enlarged picture one after the other: two pixels per Words, channels 0…32640. Each lies
    /// between two rows that are enlarged in one direction only.
    class Rows
    {
    public:
        /// Only the columns from `left` up to `right` are wanted; the rows are to be asked for from top to bottom.
        Rows(const SoftImage &image, int left, int right);
        /// Two such rows, and how far row `y` of the target lies on the way between them; what lies outside of the
        /// wanted columns is undefined.
        struct Between
        {
            const std::int16_t *upper;
            const std::int16_t *lower;
            int first;         ///< the column that they begin with, a multiple of 4; 0 where column 0 is wanted
            std::int16_t part; ///< in 1/32768
        };
        Between around(int y);

    private:
        struct Row
        {
            int index = -1;
            std::vector<std::int16_t> words;
        };
        const Row &enlarged(int index, const Row *kept);
        void widen(int index, std::vector<std::int16_t> &words) const;

        const SoftImage &m_image;
        int m_first; ///< pixels of the image
        int m_last;
        Row m_rows[2];
    };

    /// What to add to the eight channels of two neighbouring pixels before the last 7 bits are cut off, for row `y` and
    /// the pixels beginning at column 0; repeats after `patternSide` pixels.
    static constexpr int patternSide = 32;
    [[nodiscard]] static const std::int16_t *pattern(int y);

private:
    QSize m_target;
    int m_factor = 4;
    int m_width = 0;
    int m_height = 0;
    std::vector<SoftPixel> m_pixels;
};

} // namespace kelp
