#include "sound/SystemSynth.h"

#include "sound/Partial.h"
#include "sound/SoundLayer.h"
#include "sound/WaveFile.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

using Overtone = ChimeSynth::Overtone;

/// The whole sound again, fainter each time.
struct Echo
{
    double delay = 0; ///< seconds
    double gain = 0;
};

struct Recipe
{
    QString name;
    double seconds;
    double peak; ///< of full scale; chosen so that all sounds seem equally loud
    std::vector<SoundLayer> layers;
    Echo echo{};
};

/// The sound dies away in so many seconds at its end, whatever is still ringing then.
constexpr double fadeOut = 0.06;

// How the things sound that the layers below are made of: ratio, weight, decay divisor.
constexpr Overtone crystal[]{{1, 1, 1}, {1.0015, 0.5, 1}, {2.76, 0.42, 1.7}, {5.4, 0.18, 2.8}, {8.93, 0.07, 4}};
constexpr Overtone brass[]{{1, 1, 1}, {2, 0.7, 1.15}, {3, 0.5, 1.35}, {4, 0.35, 1.6}, {5, 0.22, 1.9}, {6, 0.14, 2.2}};
constexpr Overtone horn[]{{1, 1, 1}, {1.004, 0.6, 1}, {2, 0.45, 1.3}, {3, 0.25, 1.6}, {4, 0.12, 2}};
constexpr Overtone sonar[]{{1, 1, 1}, {1.003, 0.4, 1}, {2, 0.1, 2}};
constexpr Overtone throat[]{{1, 1, 1}, {2, 0.8, 1}, {3, 0.7, 1}, {4, 0.55, 1}, {5, 0.4, 1}, {6, 0.3, 1}, {8, 0.2, 1}};
constexpr Overtone bass[]{{1, 1, 1},     {2, 0.85, 1.5}, {3, 0.75, 2.2}, {4, 0.6, 3},
                          {5, 0.5, 3.8}, {6, 0.4, 4.6},  {7, 0.3, 5.5},  {8, 0.25, 6.5}};
constexpr Overtone flute[]{{1, 1, 1}, {2, 0.15, 1.2}, {3, 0.06, 1.5}};
constexpr Overtone bubble[]{{1, 1, 1}, {2, 0.18, 2}};
constexpr Overtone needle[]{{1, 1, 1}, {1.506, 0.5, 1.3}, {2.76, 0.25, 2}};

const std::vector<Recipe> &recipes()
{
    static const std::vector<Recipe> list{
        // A fingernail on a thin glass.
        {u"Glass"_s,
         1.6,
         0.78,
         {{.frequency = 1567.98, .overtones = crystal, .attack = 0.001, .decay = 0.42},
          {.frequency = 6500, .attack = 0.0005, .decay = 0.004, .gain = 0.5, .band = 4000}}},
        // A fanfare that climbs to a chord.
        {u"Hero"_s,
         1.9,
         0.64,
         {{.frequency = 392.0, .overtones = brass, .attack = 0.02, .decay = 0.2},
          {.frequency = 523.25, .overtones = brass, .at = 0.12, .attack = 0.02, .decay = 0.22},
          {.frequency = 659.25, .overtones = brass, .at = 0.24, .attack = 0.02, .decay = 0.4},
          {.frequency = 783.99, .overtones = brass, .at = 0.36, .attack = 0.02, .decay = 0.5},
          {.frequency = 261.63, .overtones = brass, .at = 0.36, .attack = 0.03, .decay = 0.5, .gain = 0.8}}},
        // Two low calls of a horn, and what the water gives back of them.
        {u"Submarine"_s,
         1.9,
         0.54,
         {{.frequency = 246.94, .overtones = horn, .attack = 0.05, .decay = 0.2},
          {.frequency = 185.0,
           .overtones = horn,
           .at = 0.34,
           .attack = 0.05,
           .decay = 0.32,
           .flutter = 7,
           .flutterDepth = 0.35}},
         {0.21, 0.3}},
        // One clear pulse and its echoes.
        {u"Ping"_s,
         1.9,
         0.62,
         {{.frequency = 698.46, .overtones = sonar, .attack = 0.003, .decay = 0.22, .slideFrom = 1.02, .slide = 0.03}},
         {0.38, 0.3}},
        // A contented cat: a low tone that flutters.
        {u"Purr"_s,
         1.2,
         0.95,
         {{.frequency = 110.0, .overtones = throat, .attack = 0.12, .decay = 0.4, .flutter = 24, .flutterDepth = 0.75},
          {.frequency = 400,
           .attack = 0.12,
           .decay = 0.3,
           .gain = 0.25,
           .flutter = 24,
           .flutterDepth = 0.9,
           .band = 500}}},
        // Three slapped notes on a bass.
        {u"Funk"_s,
         1.1,
         0.95,
         {{.frequency = 98.0, .overtones = bass, .attack = 0.002, .decay = 0.16},
          {.frequency = 196.0, .overtones = bass, .at = 0.17, .attack = 0.002, .decay = 0.1},
          {.frequency = 233.08,
           .overtones = bass,
           .at = 0.3,
           .attack = 0.002,
           .decay = 0.26,
           .slideFrom = 0.84,
           .slide = 0.025},
          {.frequency = 2500, .attack = 0.001, .decay = 0.007, .gain = 0.45, .band = 2500},
          {.frequency = 2500, .at = 0.17, .attack = 0.001, .decay = 0.007, .gain = 0.45, .band = 2500}}},
        // Breath over the neck of a bottle.
        {u"Blow"_s,
         1.0,
         0.9,
         {{.frequency = 466.16, .attack = 0.09, .decay = 0.2, .gain = 0.6, .band = 90},
          {.frequency = 1400, .attack = 0.06, .decay = 0.16, .gain = 0.3, .band = 1600},
          {.frequency = 466.16,
           .overtones = flute,
           .attack = 0.1,
           .decay = 0.2,
           .gain = 0.7,
           .slideFrom = 0.96,
           .slide = 0.05}}},
        // Two bubbles that burst.
        {u"Pop"_s,
         0.45,
         0.9,
         {{.frequency = 640, .overtones = bubble, .attack = 0.002, .decay = 0.05, .slideFrom = 0.4, .slide = 0.03},
          {.frequency = 900,
           .overtones = bubble,
           .at = 0.12,
           .attack = 0.002,
           .decay = 0.04,
           .gain = 0.6,
           .slideFrom = 0.4,
           .slide = 0.025}}},
        // A needle on a metal cup.
        {u"Tink"_s,
         0.6,
         0.95,
         {{.frequency = 3322.44, .overtones = needle, .attack = 0.0005, .decay = 0.09},
          {.frequency = 9000, .attack = 0.0003, .decay = 0.0025, .gain = 0.6, .band = 6000}}},
    };
    return list;
}

std::size_t samplesIn(double seconds)
{
    return static_cast<std::size_t>(seconds * sampleRate);
}

void addEchoes(std::vector<double> &samples, const Echo &echo)
{
    const std::size_t delay = samplesIn(echo.delay);
    if (delay == 0)
        return;
    for (std::size_t k = delay; k < samples.size(); ++k)
        samples[k] += echo.gain * samples[k - delay];
}

void fadeEnd(std::vector<double> &samples)
{
    const std::size_t length = std::min(samples.size(), samplesIn(fadeOut));
    for (std::size_t k = 0; k < length; ++k)
        samples[samples.size() - 1 - k] *= static_cast<double>(k) / static_cast<double>(length);
}

} // namespace

const QStringList &SystemSynth::names()
{
    static const QStringList list = [] {
        QStringList names;
        for (const Recipe &each : recipes())
            names.append(each.name);
        return names;
    }();
    return list;
}

std::optional<QByteArray> SystemSynth::wav(const QString &name)
{
    const auto recipe =
        std::find_if(recipes().begin(), recipes().end(), [&](const Recipe &each) { return each.name == name; });
    if (recipe == recipes().end())
        return {};
    std::vector<double> samples(samplesIn(recipe->seconds));
    for (const SoundLayer &layer : recipe->layers)
        layer.addTo(samples);
    addEchoes(samples, recipe->echo);
    fadeEnd(samples);
    return waveFile(samples, recipe->peak);
}

} // namespace kelp
