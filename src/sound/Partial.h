#pragma once

#include <cstddef>
#include <span>

namespace kelp {

/// Samples per second of every sound that Kelp makes itself.
inline constexpr int sampleRate = 44100;

/// One sine wave that is struck, swells for `attack` and then dies away: what every pitched sound of Kelp is made of.
struct Partial
{
    double frequency = 0; ///< Hz
    double decay = 0;     ///< seconds until it has fallen to 1/e
    double weight = 1;    ///< peak amplitude
    double gain = 1;
    double attack = 0.004; ///< seconds, linear

    /// What it adds to the sample number `k` from its start; 0 once it cannot be heard any more. Its phase starts at 0.
    /// From the Nyquist frequency on it adds nothing, because it would come out as another pitch.
    [[nodiscard]] double at(std::size_t k) const;

    /// Adds it to `samples`, the first of which is its start: the same as `at` but for rounding errors, at a tenth of
    /// the cost. The error is below `addError` for each unit of amplitude, up to a minute of sound.
    void addTo(std::span<double> samples) const;
    static constexpr double addError = 1e-10;
};

} // namespace kelp
