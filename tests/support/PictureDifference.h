#pragma once

#include <QImage>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace kelp::test {

/// Of any channel of any pixel, 0 to 255; far more than that where the pictures are not of the same size.
inline int greatestDifference(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return std::numeric_limits<int>::max();
    const QImage a = one.convertToFormat(QImage::Format_ARGB32);
    const QImage b = other.convertToFormat(QImage::Format_ARGB32);
    int greatest = 0;
    for (int y = 0; y < a.height(); ++y) {
        const uchar *left = a.constScanLine(y);
        const uchar *right = b.constScanLine(y);
        for (int i = 0; i < a.width() * 4; ++i)
            greatest = std::max(greatest, std::abs(left[i] - right[i]));
    }
    return greatest;
}

} // namespace kelp::test
