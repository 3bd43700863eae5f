#include "capture/LumaChroma.h"

#include "themes/WideLanes.h"

#include <QImage>

#include <algorithm>

namespace kelp {

namespace {

// BT.709: how bright each of the primaries is.
constexpr double redLight = 0.2126;
constexpr double blueLight = 0.0722;

constexpr int pointBits = 15; ///< behind the point of a factor
constexpr int chromaBits = 3; ///< chroma is the mean of pixels that weigh 8 together

constexpr int fixed(double factor)
{
    return static_cast<int>(factor * (1 << pointBits) + (factor < 0 ? -0.5 : 0.5));
}

struct Factors
{
    int blue;
    int green;
    int red;
};

// Green gets what is left: whatever the rounding, white is 235 and grey has no chroma.
constexpr Factors lumaFactors{fixed(blueLight * 219 / 255),
                              fixed(219.0 / 255) - fixed(blueLight * 219 / 255) - fixed(redLight * 219 / 255),
                              fixed(redLight * 219 / 255)};

constexpr Factors differenceFactors(double blue, double red)
{
    return {fixed(blue * 224 / 255), -fixed(blue * 224 / 255) - fixed(red * 224 / 255), fixed(red * 224 / 255)};
}

// (blue − luma) and (red − luma), each made as large as it may get: half of the range to either side.
constexpr Factors blueFactors = differenceFactors(0.5, -redLight / 2 / (1 - blueLight));
constexpr Factors redFactors = differenceFactors(-blueLight / 2 / (1 - redLight), 0.5);

// What is added before the bits behind the point are cut off: the value of no light, and a half.
constexpr int lumaShift = pointBits;
constexpr int lumaBase = (16 << lumaShift) + (1 << (lumaShift - 1));
constexpr int chromaShift = pointBits + chromaBits;
constexpr int chromaBase = (128 << chromaShift) + (1 << (chromaShift - 1));

/// Two rows, which share their chroma.
struct RowPair
{
    const std::uint32_t *upper;
    const std::uint32_t *lower;
    std::uint8_t *upperLuma;
    std::uint8_t *lowerLuma;
    std::uint8_t *blue;
    std::uint8_t *red;
};

/// The columns from `from`, an even one, up to `to`.
void convert(const RowPair &rows, int width, int from, int to)
{
    const auto weighed = [](const Factors &factors, const Factors &light) {
        return factors.blue * light.blue + factors.green * light.green + factors.red * light.red;
    };
    const auto lightOf = [](std::uint32_t pixel) {
        return Factors{static_cast<int>(pixel & 0xFF), static_cast<int>(pixel >> 8 & 0xFF),
                       static_cast<int>(pixel >> 16 & 0xFF)};
    };
    for (int x = from; x < to; ++x) {
        rows.upperLuma[x] =
            static_cast<std::uint8_t>((weighed(lumaFactors, lightOf(rows.upper[x])) + lumaBase) >> lumaShift);
        rows.lowerLuma[x] =
            static_cast<std::uint8_t>((weighed(lumaFactors, lightOf(rows.lower[x])) + lumaBase) >> lumaShift);
    }
    for (int x = from; x < to; x += 2) {
        Factors sum{};
        for (const int column : {std::max(x - 1, 0), x, x, std::min(x + 1, width - 1)}) {
            for (const std::uint32_t *row : {rows.upper, rows.lower}) {
                const Factors light = lightOf(row[column]);
                sum = {sum.blue + light.blue, sum.green + light.green, sum.red + light.red};
            }
        }
        rows.blue[x / 2] = static_cast<std::uint8_t>((weighed(blueFactors, sum) + chromaBase) >> chromaShift);
        rows.red[x / 2] = static_cast<std::uint8_t>((weighed(redFactors, sum) + chromaBase) >> chromaShift);
    }
}

#ifdef KELP_WIDE_LANES
#define KELP_WIDE_STEP KELP_WIDE __attribute__((always_inline)) inline

/// The light of eight pixels, or what to multiply it with: two registers with a lane of 32 bits for each pixel, which
/// holds blue below red, and green below what is not used.
struct Lanes
{
    __m256i blueRed;
    __m256i green;
};

KELP_WIDE_STEP Lanes lanesOf(const Factors &factors)
{
    return {_mm256_set1_epi32((factors.red << 16) | (factors.blue & 0xFFFF)),
            _mm256_set1_epi32(factors.green & 0xFFFF)};
}

KELP_WIDE_STEP Lanes lightAt(const std::uint32_t *pixels)
{
    const __m256i eight = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(pixels));
    return {_mm256_and_si256(eight, _mm256_set1_epi32(0x00FF00FF)), _mm256_srli_epi16(eight, 8)};
}

KELP_WIDE_STEP Lanes plus(const Lanes &a, const Lanes &b)
{
    return {_mm256_add_epi16(a.blueRed, b.blueRed), _mm256_add_epi16(a.green, b.green)};
}

KELP_WIDE_STEP __m256i weighed(const Lanes &factors, const Lanes &light)
{
    return _mm256_add_epi32(_mm256_madd_epi16(light.blueRed, factors.blueRed),
                            _mm256_madd_epi16(light.green, factors.green));
}

KELP_WIDE_STEP __m256i luma(const Lanes &factors, const Lanes &light)
{
    return _mm256_srai_epi32(_mm256_add_epi32(weighed(factors, light), _mm256_set1_epi32(lumaBase)), lumaShift);
}

/// Of two groups of eight pixels: a column with its left neighbour, and with its right one, lie side by side.
KELP_WIDE_STEP __m256i chroma(const Lanes &factors, const Lanes &first, const Lanes &second)
{
    const __m256 one = _mm256_castsi256_ps(weighed(factors, first));
    const __m256 two = _mm256_castsi256_ps(weighed(factors, second));
    const __m256i left = _mm256_castps_si256(_mm256_shuffle_ps(one, two, 0x88));
    const __m256i right = _mm256_castps_si256(_mm256_shuffle_ps(one, two, 0xDD));
    return _mm256_srai_epi32(_mm256_add_epi32(_mm256_add_epi32(left, right), _mm256_set1_epi32(chromaBase)),
                             chromaShift);
}

KELP_WIDE_STEP void storeLuma(std::uint8_t *target, const __m256i (&groups)[4])
{
    const __m256i bytes =
        _mm256_packus_epi16(_mm256_packs_epi32(groups[0], groups[1]), _mm256_packs_epi32(groups[2], groups[3]));
    // Packing works in halves of the register.
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(target), _mm256_permutevar8x32_epi32(bytes, order));
}

constexpr int wideColumns = 32;

/// The same for processors with wide registers, of the columns from 2, the first with a left neighbour, up to `to`: an
/// even one, and at least 34.
KELP_WIDE void convertWide(const RowPair &rows, int to)
{
    const Lanes lumaLanes = lanesOf(lumaFactors);
    const Lanes blueLanes = lanesOf(blueFactors);
    const Lanes redLanes = lanesOf(redFactors);
    // The last group may overlap the one before.
    for (int begin = 2; begin < to; begin += wideColumns) {
        const int x = std::min(begin, to - wideColumns);
        __m256i upper[4];
        __m256i lower[4];
        Lanes sums[4]; // of a column and the one before it
        for (int i = 0; i < 4; ++i) {
            const std::uint32_t *above = rows.upper + x + 8 * i;
            const std::uint32_t *below = rows.lower + x + 8 * i;
            const Lanes one = lightAt(above);
            const Lanes two = lightAt(below);
            upper[i] = luma(lumaLanes, one);
            lower[i] = luma(lumaLanes, two);
            sums[i] = plus(plus(one, two), plus(lightAt(above - 1), lightAt(below - 1)));
        }
        storeLuma(rows.upperLuma + x, upper);
        storeLuma(rows.lowerLuma + x, lower);
        const __m256i blue =
            _mm256_packs_epi32(chroma(blueLanes, sums[0], sums[1]), chroma(blueLanes, sums[2], sums[3]));
        const __m256i red = _mm256_packs_epi32(chroma(redLanes, sums[0], sums[1]), chroma(redLanes, sums[2], sums[3]));
        const __m256i bytes = _mm256_packus_epi16(blue, red);
        const __m128i even = _mm256_castsi256_si128(bytes);
        const __m128i odd = _mm256_extracti128_si256(bytes, 1);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(rows.blue + x / 2), _mm_unpacklo_epi16(even, odd));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(rows.red + x / 2), _mm_unpackhi_epi16(even, odd));
    }
}
#endif

} // namespace

void LumaChroma::fill(const QImage &picture) const
{
    const int width = picture.width();
    const int height = picture.height();
    for (int y = 0; y < height; y += 2) {
        const int below = std::min(y + 1, height - 1);
        const RowPair rows{reinterpret_cast<const std::uint32_t *>(picture.constScanLine(y)),
                           reinterpret_cast<const std::uint32_t *>(picture.constScanLine(below)),
                           luma.bytes + y * luma.stride,
                           luma.bytes + below * luma.stride,
                           blue.bytes + y / 2 * blue.stride,
                           red.bytes + y / 2 * red.stride};
#ifdef KELP_WIDE_LANES
        if (const int end = width & ~1; hasWideLanes && end >= 2 + wideColumns) {
            convert(rows, width, 0, 2);
            convertWide(rows, end);
            convert(rows, width, end, width);
            continue;
        }
#endif
        convert(rows, width, 0, width);
    }
}

} // namespace kelp
