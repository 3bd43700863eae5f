#pragma once

#include <QFont>
#include <QStringList>

#include <limits>
#include <vector>

namespace kelp {

/// A text broken into lines at the size at which it fits.
struct FittedText
{
    QFont font;
    QStringList lines;          ///< the last one ends with an ellipsis where the text was cut
    std::vector<double> widths; ///< of each line
    double width = 0;           ///< of the widest line
    double rise = 0;            ///< how far accents reach above the first line's height, 0 or more
    double sink = 0;            ///< how far they reach below the last line's
    double ascent = 0;
    double lineHeight = 0;
    bool rightToLeft = false;
};

/// Finds the greatest size, from that of `font` down to `shrink` times it, at which `text` takes at most `maxLines`
/// lines of `width`, and no more than `height` where the smallest size can do with that; only where the smallest size
/// is still too wide, words are broken and then the last line is cut. Lines are made about equally long.
///
/// The last results are kept: a card is laid out again with every second and every step of a button's motion, while
/// most of its texts stay as they are.
[[nodiscard]] FittedText fitText(const QString &text, const QFont &font, double width, int maxLines, double shrink,
                                 double height = std::numeric_limits<double>::infinity());

/// How far `text` advances in `font`, on one line. Kept in the same way.
[[nodiscard]] double advanceOf(const QString &text, const QFont &font);

} // namespace kelp
