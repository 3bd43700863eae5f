#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace kelp {

/// What full scale is written as: not 32767, which leaves a fixed headroom.
inline constexpr double fullScale = 32000;
/// How loud the loudest sample of a sound is by default; 1 is full scale.
inline constexpr double usualPeak = 0.8;

/// So many samples fit into a WAV file at most: their bytes, and the 36 of the header that count, are told in 32 bits.
inline constexpr std::size_t mostSamples = (std::numeric_limits<std::uint32_t>::max() - 36) / 2;

/// The bytes of a WAV file, mono, 16 bits, `sampleRate`, with `samples` scaled so that the loudest is at `peak`.
/// Silence stays silence. Fractions of a step are truncated toward zero.
[[nodiscard]] QByteArray waveFile(std::span<const double> samples, double peak = usualPeak);

} // namespace kelp
