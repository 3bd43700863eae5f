#include "sound/WaveFile.h"

#include "sound/Partial.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kelp {

namespace {

constexpr std::uint32_t headerSize = 44;
constexpr std::uint32_t sampleSize = 2;

/// What follows the first 8 bytes counts, but for the samples themselves.
constexpr std::uint32_t countedHeader = headerSize - 8;
static_assert(countedHeader + mostSamples * sampleSize <= std::numeric_limits<std::uint32_t>::max());

class Writer
{
public:
    explicit Writer(char *at) : m_at(at) {}

    void text(const char (&four)[5]) { m_at = std::copy_n(four, 4, m_at); }
    template<typename Integer>
    void number(Integer value)
    {
        qToLittleEndian(value, m_at);
        m_at += sizeof value;
    }

private:
    char *m_at;
};

void writeHeader(Writer &writer, std::uint32_t dataSize)
{
    writer.text("RIFF");
    writer.number<std::uint32_t>(countedHeader + dataSize);
    writer.text("WAVE");
    writer.text("fmt ");
    writer.number<std::uint32_t>(16); // size of this part
    writer.number<std::uint16_t>(1);  // plain samples
    writer.number<std::uint16_t>(1);  // channel
    writer.number<std::uint32_t>(sampleRate);
    writer.number<std::uint32_t>(sampleRate * sampleSize);
    writer.number<std::uint16_t>(sampleSize);
    writer.number<std::uint16_t>(sampleSize * 8);
    writer.text("data");
    writer.number<std::uint32_t>(dataSize);
}

double scaleOf(std::span<const double> samples, double peak)
{
    if (samples.empty())
        return peak;
    double loudest = 0;
    for (const double sample : samples)
        loudest = std::max(loudest, std::abs(sample));
    return loudest > 0 ? peak / loudest : 0;
}

} // namespace

QByteArray waveFile(std::span<const double> samples, double peak)
{
    if (samples.size() > mostSamples)
        qFatal("a sound of %zu samples does not fit into a WAV file", samples.size());
    const auto dataSize = static_cast<std::uint32_t>(samples.size()) * sampleSize;
    QByteArray file(static_cast<qsizetype>(headerSize) + dataSize, Qt::Uninitialized);
    Writer writer(file.data());
    writeHeader(writer, dataSize);
    const double scale = scaleOf(samples, peak);
    for (const double sample : samples)
        writer.number(static_cast<std::int16_t>(std::clamp(scale * sample, -1.0, 1.0) * fullScale));
    return file;
}

} // namespace kelp
