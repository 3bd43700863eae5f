#include "themes/SoftImage.h"

#include "themes/Scatter.h"
#include "themes/WideLanes.h"

#include <algorithm>
#include <array>

namespace kelp {

namespace {

constexpr int pixelsForAnEighth = 2'000'000;
constexpr float full = 32640; // 255 with 7 bits behind the point

/// A fixed pattern of thresholds without visible structure (interleaved gradient noise), for four channels alike.
auto makePattern()
{
    std::array<std::int16_t, SoftImage::patternSide * SoftImage::patternSide * 4> result{};
    for (int i = 0; i < static_cast<int>(result.size()); ++i) {
        const int x = i / 4 % SoftImage::patternSide;
        const int y = i / 4 / SoftImage::patternSide;
        const double noise = fract(52.9829189 * fract(0.06711056 * x + 0.00583715 * y));
        result[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(noise * 128);
    }
    return result;
}

/// A pixel's channels as words, twice.
Words twice(const SoftPixel &pixel)
{
    // At most `full`, so that the threshold that is added later does not turn the brightest light into darkness.
#ifdef __SSE2__
    const __m128i whole = _mm_cvttps_epi32(pixel.lanes * full);
    const __m128i packed = _mm_packs_epi32(whole, whole);
    return reinterpret_cast<Words>(_mm_min_epi16(packed, _mm_set1_epi16(static_cast<std::int16_t>(full))));
#else
    Words words;
    for (int i = 0; i < 8; ++i)
        words[i] = static_cast<std::int16_t>(std::clamp(pixel.lanes[i % 4] * full, -32768.0F, full));
    return words;
#endif
}

/// The enlarged pixels of the columns from `from` up to `to`, multiples of 4, at `line`.
void shade(const SoftImage::Rows::Between &rows, const std::int16_t *noise, std::uint32_t *line, int from, int to)
{
    const Words part{rows.part, rows.part, rows.part, rows.part, rows.part, rows.part, rows.part, rows.part};
    const auto two = [&](int x) {
        const std::ptrdiff_t at = std::ptrdiff_t{x - rows.first} * 4;
        const Words blend = between(loadWords(rows.upper + at), loadWords(rows.lower + at), part);
        return (blend + loadWords(noise + x % SoftImage::patternSide * 4)) >> 7;
    };
    for (int x = from; x < to; x += 4, line += 4)
        storePixels(line, two(x), two(x + 2));
}

#ifdef KELP_WIDE_LANES
KELP_WIDE inline __m256i four(const SoftImage::Rows::Between &rows, const std::int16_t *noise, int x, __m256i part)
{
    const std::ptrdiff_t at = std::ptrdiff_t{x - rows.first} * 4;
    const __m256i blend = betweenWide(loadFour(rows.upper + at), loadFour(rows.lower + at), part);
    return _mm256_srai_epi16(_mm256_add_epi16(blend, loadFour(noise + x % SoftImage::patternSide * 4)), 7);
}

/// The same; multiples of 8.
KELP_WIDE void shadeWide(const SoftImage::Rows::Between &rows, const std::int16_t *noise, std::uint32_t *line, int from,
                         int to)
{
    const __m256i part = _mm256_set1_epi16(rows.part);
    for (int x = from; x < to; x += 8)
        streamEight(line + x, packEight(four(rows, noise, x, part), four(rows, noise, x + 4, part)));
}
#endif

} // namespace

void SoftImage::prepare(const QSize &target)
{
    m_target = target;
    m_factor = qint64{target.width()} * target.height() > pixelsForAnEighth ? 8 : 4;
    m_width = (target.width() + m_factor - 1) / m_factor;
    m_height = (target.height() + m_factor - 1) / m_factor;
    m_pixels.assign(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height), SoftPixel());
}

void SoftImage::fill(const Floats &lanes)
{
    std::fill(m_pixels.begin(), m_pixels.end(), SoftPixel{lanes});
}

const std::int16_t *SoftImage::pattern(int y)
{
    static const auto all = makePattern();
    return all.data() + std::ptrdiff_t{y % patternSide} * patternSide * 4;
}

void SoftImage::enlargeInto(QImage &target, const QRect &part) const
{
    if (part.isEmpty())
        return;
    Rows rows(*this, part.left(), part.right() + 1);
    // Whole groups of four lie between the first and the last of these columns.
    const int first = (part.left() + 3) & ~3;
    const int last = std::max(first, (part.right() + 1) & ~3);
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const Rows::Between around = rows.around(y);
        const std::int16_t *noise = pattern(y);
        auto *line = reinterpret_cast<std::uint32_t *>(target.scanLine(y));
        const auto edge = [&](int from, int to) {
            if (from >= to)
                return;
            std::uint32_t four[4];
            const int group = from & ~3;
            shade(around, noise, four, group, group + 4);
            for (int x = from; x < to; ++x)
                line[x] = four[x - group];
        };
        edge(part.left(), std::min(first, part.right() + 1));
        int x = first;
#ifdef KELP_WIDE_LANES
        if (hasWideLanes) {
            const int begin = std::min(last, (first + 7) & ~7);
            const int end = std::max(begin, last & ~7);
            shade(around, noise, line + first, first, begin);
            shadeWide(around, noise, line, begin, end);
            x = end;
        }
#endif
        shade(around, noise, line + x, x, last);
        edge(std::max(last, part.left()), part.right() + 1);
    }
}

SoftImage::Rows::Rows(const SoftImage &image, int left, int right) : m_image(image)
{
    // Between the middles of two pixels lie `factor` columns; the first of them is in the middle of the left one.
    const int factor = image.m_factor;
    m_first = std::clamp(((left & ~3) - factor / 2) / factor, 0, image.m_width - 1);
    m_last = std::clamp((((right + 3) & ~3) + factor / 2) / factor + 1, m_first, image.m_width - 1);
    const auto words = static_cast<std::size_t>((m_last + 1 - m_first) * factor + 16) * 4;
    for (Row &row : m_rows)
        row.words.resize(words);
}

SoftImage::Rows::Between SoftImage::Rows::around(int y)
{
    const int factor = m_image.m_factor;
    const int position = std::max(0, 2 * y + 1 - factor); // in halves of a target pixel, from the first row's middle
    const int upper = std::min(position / (2 * factor), m_image.m_height - 1);
    const int lower = std::min(upper + 1, m_image.m_height - 1);
    const Row &above = enlarged(upper, nullptr);
    const Row &below = enlarged(lower, &above);
    const auto part = static_cast<std::int16_t>(position % (2 * factor) * 32768 / (2 * factor));
    return {above.words.data(), below.words.data(), m_first * factor, part};
}

const SoftImage::Rows::Row &SoftImage::Rows::enlarged(int index, const Row *kept)
{
    for (const Row &row : m_rows) {
        if (row.index == index)
            return row;
    }
    // The one with the smaller index is the older one: rows are asked for from top to bottom.
    Row &row = kept ? (kept == &m_rows[0] ? m_rows[1] : m_rows[0])
                    : (m_rows[0].index < m_rows[1].index ? m_rows[0] : m_rows[1]);
    row.index = index;
    widen(index, row.words);
    return row;
}

void SoftImage::Rows::widen(int index, std::vector<std::int16_t> &words) const
{
    const SoftPixel *pixels = m_image.m_pixels.data() + std::ptrdiff_t{index} * m_image.m_width;
    const int factor = m_image.m_factor;
    Words left = twice(pixels[m_first]);
    std::int16_t *out = words.data();
    // Before the middle of the first pixel and behind the one of the last there is nothing to blend with.
    for (int i = 0; m_first == 0 && i < factor / 2; i += 2, out += 8)
        storeWords(out, left);
    Words parts[4];
    for (int i = 0; i < factor / 2; ++i) {
        const auto one = static_cast<std::int16_t>((4 * i + 1) * 32768 / (2 * factor));
        const auto two = static_cast<std::int16_t>((4 * i + 3) * 32768 / (2 * factor));
        parts[i] = Words{one, one, one, one, two, two, two, two};
    }
    out = words.data() + std::ptrdiff_t{factor / 2} * 4;
    for (int x = m_first + 1; x <= m_last; ++x) {
        const Words right = twice(pixels[x]);
        for (int i = 0; i < factor / 2; ++i, out += 8)
            storeWords(out, between(left, right, parts[i]));
        left = right;
    }
    const std::int16_t *end = words.data() + words.size();
    for (; m_last == m_image.m_width - 1 && out < end; out += 8)
        storeWords(out, left);
}

} // namespace kelp
