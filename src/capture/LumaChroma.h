#pragma once

#include <cstddef>
#include <cstdint>

class QImage;

namespace kelp {

/// Rows of bytes, `stride` apart.
struct Plane
{
    std::uint8_t *bytes;
    std::ptrdiff_t stride;
};

/// A picture as video has it: luma of every pixel, and the two chroma of every second one of every second row, by
/// BT.709 in 16…235 and 16…240.
///
/// Chroma belongs to the left pixel of two and to the middle between two rows: where MPEG-2 put it, and where H.264
/// expects it unless told otherwise. So it is the mean of the rows, and of a column and its two neighbours, which weigh
/// half as much. Beyond its edges a picture goes on as it ends.
struct LumaChroma
{
    Plane luma;
    Plane blue; ///< (width + 1) / 2 by (height + 1) / 2
    Plane red;

    /// Writes `picture`, in Format_RGB32, into the planes. Every value is the nearest one.
    void fill(const QImage &picture) const;
};

} // namespace kelp
