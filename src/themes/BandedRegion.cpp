#include "themes/BandedRegion.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kelp {

namespace {

constexpr int bandHeight = 32;  // points
constexpr int smallestGap = 16; // points

using Interval = std::pair<int, int>; ///< from a column up to, not including, another

/// Sorted, and those that nearly touch made one.
void merge(std::vector<Interval> &intervals)
{
    std::sort(intervals.begin(), intervals.end());
    std::size_t kept = 0;
    for (std::size_t i = 1; i < intervals.size(); ++i) {
        if (intervals[i].first <= intervals[kept].second + smallestGap)
            intervals[kept].second = std::max(intervals[kept].second, intervals[i].second);
        else
            intervals[++kept] = intervals[i];
    }
    intervals.resize(std::min(intervals.size(), kept + 1));
}

} // namespace

QRegion bandedRegion(const std::vector<QRectF> &frames, const QRect &view)
{
    std::vector<std::vector<Interval>> bands(static_cast<std::size_t>((view.height() + bandHeight - 1) / bandHeight));
    for (const QRectF &frame : frames) {
        const QRect seen = frame.toAlignedRect() & view;
        if (seen.isEmpty())
            continue;
        const int last = (seen.bottom() - view.top()) / bandHeight;
        for (int band = (seen.top() - view.top()) / bandHeight; band <= last; ++band)
            bands[static_cast<std::size_t>(band)].emplace_back(seen.left(), seen.right() + 1);
    }
    std::vector<QRect> rectangles;
    std::vector<Interval> above;
    int top = view.top();
    for (std::vector<Interval> &band : bands) {
        merge(band);
        const int height = std::min(bandHeight, view.bottom() + 1 - top);
        if (!band.empty() && band == above) { // regions have no two alike
            for (auto each = rectangles.end() - std::ssize(band); each != rectangles.end(); ++each)
                each->setHeight(each->height() + height);
        } else {
            for (const auto &[from, to] : band)
                rectangles.emplace_back(from, top, to - from, height);
        }
        above = std::move(band);
        top += bandHeight;
    }
    QRegion region;
    region.setRects(rectangles.data(), static_cast<int>(rectangles.size())); // in the order that it asks for
    return region;
}

} // namespace kelp
