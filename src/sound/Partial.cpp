#include "sound/Partial.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelp {

namespace {

/// An envelope below this is silence, once the attack is certainly over.
constexpr double silence = 0.0005;
constexpr double earliestSilence = 0.01; // seconds

/// For so many samples a sine and an exponential are carried on by multiplication before they are computed afresh.
constexpr std::size_t stretch = 64;

double seconds(std::size_t samples)
{
    return static_cast<double>(samples) / sampleRate;
}

double stepOf(double frequency)
{
    return 2 * std::numbers::pi * frequency / sampleRate;
}

bool isAudible(double frequency)
{
    return frequency < sampleRate / 2.0;
}

} // namespace

double Partial::at(std::size_t k) const
{
    const double t = seconds(k);
    const double envelope = std::exp(-t / decay) * std::min(t / attack, 1.0);
    if (!isAudible(frequency) || (t > earliestSilence && envelope < silence))
        return 0;
    return gain * (weight * std::sin(stepOf(frequency) * static_cast<double>(k)) * envelope);
}

void Partial::addTo(std::span<double> samples) const
{
    if (!isAudible(frequency))
        return;
    std::size_t k = 0;
    for (; k < samples.size() && seconds(k) <= std::max(attack, earliestSilence); ++k)
        samples[k] += at(k);

    const double step = stepOf(frequency);
    const double stepSine = std::sin(step);
    const double stepCosine = std::cos(step);
    const double fading = std::exp(-1 / (sampleRate * decay));
    while (k < samples.size()) {
        const std::size_t end = std::min(samples.size(), k + stretch);
        double sine = std::sin(step * static_cast<double>(k));
        double cosine = std::cos(step * static_cast<double>(k));
        double envelope = std::exp(-seconds(k) / decay);
        for (; k < end; ++k) {
            // Where it is close, the exact value decides.
            if (envelope < silence * (1 + addError) && std::exp(-seconds(k) / decay) < silence)
                return;
            samples[k] += gain * (weight * sine * envelope);
            const double next = sine * stepCosine + cosine * stepSine;
            cosine = cosine * stepCosine - sine * stepSine;
            sine = next;
            envelope *= fading;
        }
    }
}

} // namespace kelp
