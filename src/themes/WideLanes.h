#pragma once

#include "themes/Lanes.h"

#ifdef __x86_64__
#include <immintrin.h>

/// Marks a function for processors with registers of 256 bits; call it only where `hasWideLanes`. Each is a faster form
/// of one that works on Words, with the same results.
#define KELP_WIDE __attribute__((target("avx2")))
#define KELP_WIDE_LANES

namespace kelp {

inline const bool hasWideLanes = __builtin_cpu_supports("avx2");

KELP_WIDE inline __m256i loadFour(const std::int16_t *words)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(words));
}

/// The way from `a` to `b`; `part` is in 1/32768.
KELP_WIDE inline __m256i betweenWide(__m256i a, __m256i b, __m256i part)
{
    const __m256i half = _mm256_mulhi_epi16(_mm256_sub_epi16(b, a), part);
    return _mm256_add_epi16(a, _mm256_add_epi16(half, half));
}

/// Eight pixels as bytes, in their order; what does not fit into a byte is clamped.
KELP_WIDE inline __m256i packEight(__m256i first, __m256i second)
{
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8);
}

/// Writes eight pixels, past the cache where their place allows it: a whole screen is larger than that, and next read
/// by the display server.
KELP_WIDE inline void streamEight(std::uint32_t *target, __m256i eight)
{
    const auto place = reinterpret_cast<std::uintptr_t>(target);
    if (place % 32 == 0) {
        _mm256_stream_si256(reinterpret_cast<__m256i *>(target), eight);
    } else if (place % 16 == 0) {
        _mm_stream_si128(reinterpret_cast<__m128i *>(target), _mm256_castsi256_si128(eight));
        _mm_stream_si128(reinterpret_cast<__m128i *>(target + 4), _mm256_extracti128_si256(eight, 1));
    } else {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(target), eight);
    }
}

} // namespace kelp
#endif
