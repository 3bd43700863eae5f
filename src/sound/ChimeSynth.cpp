#include "sound/ChimeSynth.h"

#include "sound/Partial.h"
#include "sound/WaveFile.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// A note rings for so many of its time constants.
constexpr double ringing = 6;
constexpr double tail = 0.05;       // seconds after the last note
constexpr double emptyFigure = 1.0; // seconds

constexpr ChimeSynth::Overtone bell[]{
    {1.0, 1.0, 1.0}, {2.0, 0.5, 1.6}, {3.0, 0.25, 2.2}, {4.2, 0.15, 3.0}, {5.4, 0.08, 4.0}};
constexpr ChimeSynth::Overtone marimba[]{{1.0, 1.0, 1.0}, {4.0, 0.35, 3.0}, {9.2, 0.08, 6.0}};
constexpr ChimeSynth::Overtone harp[]{{1.0, 1.0, 1.0}, {2.0, 0.3, 1.5}, {3.0, 0.12, 2.2}};
// The second one beats slowly against the fundamental: the shimmer of a singing bowl.
constexpr ChimeSynth::Overtone bowl[]{{1.0, 1.0, 1.0}, {1.003, 0.8, 1.0}, {2.71, 0.4, 1.4}, {5.15, 0.15, 2.0}};
// Odd harmonics that die together: a soft square wave.
constexpr ChimeSynth::Overtone arcade[]{{1.0, 1.0, 1.0}, {3.0, 0.33, 1.0}, {5.0, 0.2, 1.0}, {7.0, 0.14, 1.0}};
constexpr ChimeSynth::Overtone glass[]{{1.0, 1.0, 1.0}, {2.76, 0.3, 1.8}, {5.4, 0.1, 3.0}};

/// A rising C-major arpeggio over two octaves.
QList<ChimeSynth::Note> arpeggio()
{
    QList<ChimeSynth::Note> notes;
    for (const double freq : {261.63, 329.63, 392.0, 523.25, 659.25, 783.99, 1046.5})
        notes.append({freq, static_cast<double>(notes.size()) * 0.065, 0.9, 0.7});
    return notes;
}

/// `seconds` in whole samples, truncated.
std::size_t samplesIn(double seconds)
{
    const double samples = seconds * sampleRate;
    if (!(samples > -1 && samples <= static_cast<double>(mostSamples)))
        qFatal("a chime cannot have %f samples", samples);
    return static_cast<std::size_t>(samples);
}

std::size_t length(const QList<ChimeSynth::Note> &notes)
{
    if (notes.isEmpty())
        return samplesIn(emptyFigure + tail);
    double end = -std::numeric_limits<double>::infinity();
    for (const ChimeSynth::Note &note : notes)
        end = std::max(end, note.at + ringing * note.decay);
    return samplesIn(end + tail);
}

struct StruckPartial
{
    std::size_t start;
    Partial partial;
};
using StruckPartials = std::vector<StruckPartial>;

StruckPartials struckPartials(const ChimeSynth::Preset &preset)
{
    StruckPartials result;
    for (const ChimeSynth::Note &note : preset.notes) {
        for (const ChimeSynth::Overtone &each : ChimeSynth::partials(preset.voice))
            result.push_back(
                {samplesIn(note.at), {note.freq * each.ratio, note.decay / each.decayDivisor, each.weight, note.amp}});
    }
    return result;
}

double exactSample(const StruckPartials &partials, std::size_t index)
{
    double sum = 0;
    for (const auto &[start, partial] : partials) {
        if (index >= start)
            sum += partial.at(index - start);
    }
    return sum;
}

/// Computes afresh the samples that fast mixing leaves in doubt, so that not one of them is truncated to its neighbour:
/// the loudest, which all others are scaled by, and those next to a whole number of steps.
void settleDoubts(std::vector<double> &samples, const StruckPartials &partials)
{
    constexpr double doubt = 1e-5; // steps of a 16-bit sample: far above 32000 times the error of mixing
    const auto loudest = [&] {
        return std::accumulate(samples.begin(), samples.end(), 0.0,
                               [](double most, double each) { return std::max(most, std::abs(each)); });
    };
    const double nearlyLoudest = loudest() * (1 - doubt);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (std::abs(samples[i]) >= nearlyLoudest)
            samples[i] = exactSample(partials, i);
    }
    const double steps = usualPeak * fullScale / loudest();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double value = samples[i] * steps;
        if (samples[i] != 0 && std::abs(value - std::nearbyint(value)) < doubt)
            samples[i] = exactSample(partials, i);
    }
}

std::vector<double> mixed(const StruckPartials &partials, std::size_t size)
{
    std::vector<double> samples(size);
    for (const auto &[start, partial] : partials) {
        if (start < size)
            partial.addTo(std::span(samples).subspan(start));
    }
    settleDoubts(samples, partials);
    return samples;
}

} // namespace

std::span<const ChimeSynth::Overtone> ChimeSynth::partials(Voice voice)
{
    switch (voice) {
    case Voice::bell:
        return bell;
    case Voice::marimba:
        return marimba;
    case Voice::harp:
        return harp;
    case Voice::bowl:
        return bowl;
    case Voice::arcade:
        return arcade;
    case Voice::glass:
        return glass;
    }
    Q_UNREACHABLE();
}

const QList<ChimeSynth::Preset> &ChimeSynth::presets()
{
    static const QList<Preset> list{
        {u"Chime"_s, Voice::bell, {{659.25, 0.0, 0.7}, {987.77, 0.16, 0.9}}},
        {u"Bells"_s, Voice::bell, {{1046.5, 0.0, 0.6}, {1318.5, 0.12, 0.6}, {1568.0, 0.24, 0.6}, {2093.0, 0.36, 1.0}}},
        {u"Doorbell"_s, Voice::bell, {{659.25, 0.0, 1.0}, {523.25, 0.55, 1.3}}},
        {u"Marimba"_s,
         Voice::marimba,
         {{523.25, 0.0, 0.25}, {659.25, 0.11, 0.25}, {783.99, 0.22, 0.25}, {1046.5, 0.33, 0.45}}},
        {u"Harp"_s, Voice::harp, arpeggio()},
        {u"Crystal"_s, Voice::glass, {{1760.0, 0.0, 0.5, 0.8}, {2217.5, 0.09, 0.5, 0.7}, {2637.0, 0.18, 0.9, 0.6}}},
        {u"Singing bowl"_s, Voice::bowl, {{220.0, 0.0, 1.8}}},
        {u"Arcade"_s, Voice::arcade, {{987.77, 0.0, 0.05, 0.5}, {1318.5, 0.08, 0.25, 0.5}}},
    };
    return list;
}

QByteArray ChimeSynth::wav(const Preset &preset)
{
    return waveFile(mixed(struckPartials(preset), length(preset.notes)));
}

} // namespace kelp
