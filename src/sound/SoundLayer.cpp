#include "sound/SoundLayer.h"

#include "sound/Partial.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace kelp {

namespace {

constexpr double tau = 2 * std::numbers::pi;

double seconds(std::size_t samples)
{
    return static_cast<double>(samples) / sampleRate;
}

/// Lets a band of frequencies through and keeps the power of white noise, however narrow the band is. The coefficients
/// are those of the Audio EQ Cookbook's band-pass filter.
class BandPass
{
public:
    BandPass(double centre, double width)
    {
        const double angle = tau * centre / sampleRate;
        const double alpha = std::sin(angle) * width / (2 * centre);
        m_input = alpha / (1 + alpha) * std::sqrt(sampleRate / width);
        m_last = -2 * std::cos(angle) / (1 + alpha);
        m_beforeLast = (1 - alpha) / (1 + alpha);
    }

    double operator()(double sample)
    {
        const double result = m_input * (sample - m_samples[1]) - m_last * m_results[0] - m_beforeLast * m_results[1];
        m_samples[1] = std::exchange(m_samples[0], sample);
        m_results[1] = std::exchange(m_results[0], result);
        return result;
    }

private:
    double m_input;
    double m_last;
    double m_beforeLast;
    double m_samples[2]{};
    double m_results[2]{};
};

/// White noise from -1 to 1, the same every time (Marsaglia's xorshift).
class Noise
{
public:
    double operator()()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return m_state / 2147483648.0 - 1;
    }

private:
    std::uint32_t m_state = 2463534242;
};

} // namespace

void SoundLayer::addTo(std::span<double> samples) const
{
    const auto start = static_cast<std::size_t>(at * sampleRate);
    if (start >= samples.size())
        return;
    std::vector<double> own(samples.size() - start);
    if (overtones.empty())
        addNoise(own);
    else if (slide > 0)
        addSlidingTone(own);
    else
        addTone(own);
    for (std::size_t k = 0; k < own.size(); ++k) {
        const double dip = flutter > 0 ? flutterDepth * (0.5 - 0.5 * std::cos(tau * flutter * seconds(k))) : 0;
        samples[start + k] += own[k] * (1 - dip);
    }
}

double SoundLayer::envelope(double t) const
{
    return std::min(t / attack, 1.0) * std::exp(-t / decay);
}

void SoundLayer::addTone(std::span<double> samples) const
{
    for (const ChimeSynth::Overtone &each : overtones)
        Partial{frequency * each.ratio, decay / each.decayDivisor, each.weight, gain, attack}.addTo(samples);
}

void SoundLayer::addSlidingTone(std::span<double> samples) const
{
    for (std::size_t k = 0; k < samples.size(); ++k) {
        const double t = seconds(k);
        // The integral of a frequency that nears its goal exponentially.
        const double turns = frequency * (t + (slideFrom - 1) * slide * (1 - std::exp(-t / slide)));
        for (const ChimeSynth::Overtone &each : overtones) {
            const double fading = std::min(t / attack, 1.0) * std::exp(-t * each.decayDivisor / decay);
            samples[k] += gain * each.weight * fading * std::sin(tau * turns * each.ratio);
        }
    }
}

void SoundLayer::addNoise(std::span<double> samples) const
{
    Noise noise;
    BandPass filter(frequency, band);
    for (std::size_t k = 0; k < samples.size(); ++k)
        samples[k] += gain * envelope(seconds(k)) * filter(noise());
}

} // namespace kelp
