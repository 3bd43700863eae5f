#pragma once

#include "sound/ChimeSynth.h"

#include <span>

namespace kelp {

/// One voice of a synthesized sound: a struck tone whose pitch may slide and whose loudness may flutter, or, without
/// overtones, a breath of noise. The same layer gives the same samples every time.
struct SoundLayer
{
    double frequency = 440;                          ///< Hz; of noise the middle of its band
    std::span<const ChimeSynth::Overtone> overtones; ///< empty for noise
    double at = 0;                                   ///< seconds from the start of the sound
    double attack = 0.004;                           ///< seconds, linear
    double decay = 0.3;                              ///< seconds until it has fallen to 1/e
    double gain = 1;
    double slideFrom = 1; ///< the pitch at the strike, as a multiple of `frequency`
    double slide = 0;     ///< seconds until 1/e of the way is left
    double flutter = 0;   ///< times a second
    double flutterDepth = 0.8;
    double band = 1000; ///< Hz; width of the noise

    /// Adds it to `samples`, whose first one is the start of the sound.
    void addTo(std::span<double> samples) const;

private:
    void addTone(std::span<double> samples) const;
    void addSlidingTone(std::span<double> samples) const;
    void addNoise(std::span<double> samples) const;
    [[nodiscard]] double envelope(double seconds) const;
};

} // namespace kelp
