#pragma once

#include <QImage>

namespace kelp {

class SoftImage;

/// How a picture, stretched to the view, is moved: scaled about the middle, then shifted by parts of the view.
struct Drift
{
    double scale = 1;
    double right = 0; ///< of the width
    double down = 0;  ///< of the height

    /// Built-in pictures wander slowly; `t` in seconds. Where they fall short of the view, by half a
    /// per cent of its width at most, the picture's edge is repeated.
    [[nodiscard]] static Drift at(double t);
    friend bool operator==(const Drift &, const Drift &) = default;
};

namespace PictureLayer {

/// Darkens: black with an opacity of `dim`, then a vignette that leaves the middle clear.
void addShade(SoftImage &veil, double dim);

/// `picture`, at least two pixels wide and high, in a size that can be drawn into a view of `size` pixels without
/// losing detail between its own pixels.
[[nodiscard]] QImage fitted(const QImage &picture, const QSize &size);

/// `picture` without what no view of `view` pixels can show of it, even when it is closest.
[[nodiscard]] QImage reduced(const QImage &picture, const QSize &view);

/// Fills `target`, and `copy` alike where it is not null, with the moved picture and `veil` over it.
void paint(QImage &target, QImage *copy, const QImage &picture, const Drift &drift, const SoftImage &veil);

} // namespace PictureLayer

} // namespace kelp
