#pragma once

#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// Several numbers worked on at once, with the vector extension that g++ and clang share. Only what it cannot express
/// is written per processor, with a plain form beside it that gives the same results.
namespace kelp {

using Floats = float __attribute__((vector_size(16)));       // blue, green, red, alpha
using Words = std::int16_t __attribute__((vector_size(16))); // two pixels of four channels
using Unsigned = std::uint16_t __attribute__((vector_size(16)));

/// The upper halves of the products: a × b ÷ 65536.
inline Words upperProduct(Words a, Words b)
{
#ifdef __SSE2__
    return reinterpret_cast<Words>(_mm_mulhi_epi16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
    Words result;
    for (int i = 0; i < 8; ++i)
        result[i] = static_cast<std::int16_t>((std::int32_t{a[i]} * b[i]) >> 16);
    return result;
#endif
}

/// The way from `a` to `b`; `part` is in 1/32768.
inline Words between(Words a, Words b, Words part)
{
    return a + static_cast<Words>(upperProduct(b - a, part) * 2);
}

/// Four pixels as bytes at `target`, which need not be aligned; what does not fit into a byte is clamped.
inline void storePixels(std::uint32_t *target, Words first, Words second)
{
#ifdef __SSE2__
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target),
                     _mm_packus_epi16(reinterpret_cast<__m128i>(first), reinterpret_cast<__m128i>(second)));
#else
    std::uint8_t bytes[16];
    const auto clamped = [](std::int16_t value) {
        return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
    };
    for (int i = 0; i < 8; ++i) {
        bytes[i] = clamped(first[i]);
        bytes[8 + i] = clamped(second[i]);
    }
    std::memcpy(target, bytes, sizeof bytes);
#endif
}

inline Words loadWords(const std::int16_t *source)
{
    Words result;
    std::memcpy(&result, source, sizeof result);
    return result;
}

inline void storeWords(std::int16_t *target, Words value)
{
    std::memcpy(target, &value, sizeof value);
}

/// Two neighbouring pixels, each channel 0…255 in a word of its own.
inline Words unpackPixels(const std::uint32_t *source)
{
#ifdef __SSE2__
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(source));
    return reinterpret_cast<Words>(_mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
#else
    std::uint8_t bytes[8];
    std::memcpy(bytes, source, sizeof bytes);
    Words result;
    for (int i = 0; i < 8; ++i)
        result[i] = bytes[i];
    return result;
#endif
}

} // namespace kelp
