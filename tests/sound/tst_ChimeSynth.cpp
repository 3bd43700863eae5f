#include "sound/ChimeSynth.h"

#include "support/ComputingTime.h"

#include <QProcess>
#include <QTest>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype header = 44;
constexpr const char *renderTooMuch = "render-too-much";

std::vector<int> samplesOf(const QByteArray &wav)
{
    std::vector<int> samples;
    for (qsizetype at = header; at + 1 < wav.size(); at += 2)
        samples.push_back(qFromLittleEndian<qint16>(wav.constData() + at));
    return samples;
}

template<typename Integer>
Integer numberAt(const QByteArray &wav, qsizetype offset)
{
    return qFromLittleEndian<Integer>(wav.constData() + offset);
}

// --- The same chimes once more, told in the plainest way: nothing of this is taken from the code under test.

struct PlainNote
{
    double freq, at, decay, amp;
};
struct PlainPartial
{
    double ratio, weight, divisor;
};
struct PlainChime
{
    const char *name;
    const char *voice;
    std::vector<PlainNote> notes;
};

const std::map<QByteArray, std::vector<PlainPartial>> plainVoices{
    {"bell", {{1.0, 1.0, 1.0}, {2.0, 0.5, 1.6}, {3.0, 0.25, 2.2}, {4.2, 0.15, 3.0}, {5.4, 0.08, 4.0}}},
    {"marimba", {{1.0, 1.0, 1.0}, {4.0, 0.35, 3.0}, {9.2, 0.08, 6.0}}},
    {"harp", {{1.0, 1.0, 1.0}, {2.0, 0.3, 1.5}, {3.0, 0.12, 2.2}}},
    {"bowl", {{1.0, 1.0, 1.0}, {1.003, 0.8, 1.0}, {2.71, 0.4, 1.4}, {5.15, 0.15, 2.0}}},
    {"arcade", {{1.0, 1.0, 1.0}, {3.0, 0.33, 1.0}, {5.0, 0.2, 1.0}, {7.0, 0.14, 1.0}}},
    {"glass", {{1.0, 1.0, 1.0}, {2.76, 0.3, 1.8}, {5.4, 0.1, 3.0}}},
};

const std::vector<PlainChime> plainChimes{
    {"Chime", "bell", {{659.25, 0.0, 0.7, 1.0}, {987.77, 0.16, 0.9, 1.0}}},
    {"Bells",
     "bell",
     {{1046.5, 0.0, 0.6, 1.0}, {1318.5, 0.12, 0.6, 1.0}, {1568.0, 0.24, 0.6, 1.0}, {2093.0, 0.36, 1.0, 1.0}}},
    {"Doorbell", "bell", {{659.25, 0.0, 1.0, 1.0}, {523.25, 0.55, 1.3, 1.0}}},
    {"Marimba",
     "marimba",
     {{523.25, 0.0, 0.25, 1.0}, {659.25, 0.11, 0.25, 1.0}, {783.99, 0.22, 0.25, 1.0}, {1046.5, 0.33, 0.45, 1.0}}},
    {"Harp",
     "harp",
     {{261.63, 0 * 0.065, 0.9, 0.7},
      {329.63, 1 * 0.065, 0.9, 0.7},
      {392.0, 2 * 0.065, 0.9, 0.7},
      {523.25, 3 * 0.065, 0.9, 0.7},
      {659.25, 4 * 0.065, 0.9, 0.7},
      {783.99, 5 * 0.065, 0.9, 0.7},
      {1046.5, 6 * 0.065, 0.9, 0.7}}},
    {"Crystal", "glass", {{1760.0, 0.0, 0.5, 0.8}, {2217.5, 0.09, 0.5, 0.7}, {2637.0, 0.18, 0.9, 0.6}}},
    {"Singing bowl", "bowl", {{220.0, 0.0, 1.8, 1.0}}},
    {"Arcade", "arcade", {{987.77, 0.0, 0.05, 0.5}, {1318.5, 0.08, 0.25, 0.5}}},
};

std::vector<double> plainMix(const std::vector<PlainNote> &notes, const std::vector<PlainPartial> &voice)
{
    double longest = notes.empty() ? 1.0 : -1e9;
    for (const PlainNote &note : notes)
        longest = std::max(longest, note.at + 6.0 * note.decay);
    std::vector<double> buffer(static_cast<std::size_t>((longest + 0.05) * 44100));
    for (const PlainNote &note : notes) {
        const auto start = static_cast<std::size_t>(note.at * 44100);
        for (const PlainPartial &partial : voice) {
            const double f = note.freq * partial.ratio;
            if (!(f < 22050))
                continue;
            const double fading = note.decay / partial.divisor;
            const double w = 2 * M_PI * f / 44100;
            for (std::size_t k = 0; start + k < buffer.size(); ++k) {
                const double t = static_cast<double>(k) / 44100;
                const double env = std::exp(-t / fading) * std::min(t / 0.004, 1.0);
                if (t > 0.01 && env < 0.0005)
                    break;
                buffer[start + k] += note.amp * (partial.weight * std::sin(w * static_cast<double>(k)) * env);
            }
        }
    }
    return buffer;
}

QByteArray plainFile(const std::vector<double> &buffer)
{
    double peak = 0;
    for (const double sample : buffer)
        peak = std::max(peak, std::fabs(sample));
    const double scale = peak > 0 ? 0.8 / peak : 0;
    QByteArray file;
    const auto put = [&](quint64 value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file.append(static_cast<char>(value >> (8 * i)));
    };
    const quint64 size = 2 * buffer.size();
    file += "RIFF";
    put(36 + size, 4);
    file += "WAVEfmt ";
    put(16, 4);
    put(1, 2);
    put(1, 2);
    put(44100, 4);
    put(88200, 4);
    put(2, 2);
    put(16, 2);
    file += "data";
    put(size, 4);
    for (const double sample : buffer)
        put(static_cast<quint64>(static_cast<qint64>(std::clamp(scale * sample, -1.0, 1.0) * 32000)), 2);
    return file;
}

} // namespace

class tst_ChimeSynth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasEightPresetsInOrder();
    void isByteExact_data();
    void isByteExact();
    void aPartialFromTheNyquistFrequencyOnIsSilent_data();
    void aPartialFromTheNyquistFrequencyOnIsSilent();
    void theHeaderCountsTheSamples();
    void theLoudestSampleIsFourFifths_data();
    void theLoudestSampleIsFourFifths();
    void aFigureWithoutNotesIsSilent();
    void theHarpRisesInEvenSteps();
    void theSamePresetGivesTheSameBytes();
    void strikesOddFiguresExactly_data();
    void strikesOddFiguresExactly();
    void rendersQuickly();
    void refusesWhatNoFileCanHold();
};

void tst_ChimeSynth::hasEightPresetsInOrder()
{
    QStringList names;
    for (const ChimeSynth::Preset &each : ChimeSynth::presets())
        names.append(each.name);
    QCOMPARE(names, (QStringList{u"Chime"_s, u"Bells"_s, u"Doorbell"_s, u"Marimba"_s, u"Harp"_s, u"Crystal"_s,
                                 u"Singing bowl"_s, u"Arcade"_s}));
}

void tst_ChimeSynth::isByteExact_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < static_cast<int>(plainChimes.size()); ++i)
        QTest::newRow(plainChimes[static_cast<std::size_t>(i)].name) << i;
}

void tst_ChimeSynth::isByteExact()
{
    QFETCH(int, index);
    const PlainChime &plain = plainChimes[static_cast<std::size_t>(index)];
    const ChimeSynth::Preset &preset = ChimeSynth::presets().at(index);
    QCOMPARE(preset.name, QString::fromLatin1(plain.name));
    const QByteArray expected = plainFile(plainMix(plain.notes, plainVoices.at(plain.voice)));
    const QByteArray actual = ChimeSynth::wav(preset);
    QCOMPARE(actual.size(), expected.size());
    // Not QCOMPARE, which would print a megabyte.
    QVERIFY(actual == expected);
}

void tst_ChimeSynth::aPartialFromTheNyquistFrequencyOnIsSilent_data()
{
    QTest::addColumn<double>("freq");
    QTest::newRow("above: the bell's fifth") << 5000.0;
    QTest::newRow("exactly there: the bell's second") << 11025.0;
    QTest::newRow("the fundamental") << 30000.0;
}

void tst_ChimeSynth::aPartialFromTheNyquistFrequencyOnIsSilent()
{
    QFETCH(double, freq);
    std::vector<PlainPartial> audible;
    for (const PlainPartial &each : plainVoices.at("bell")) {
        if (freq * each.ratio < 22050)
            audible.push_back(each);
    }
    QVERIFY(audible.size() < 5);
    const QByteArray expected = plainFile(plainMix({{freq, 0, 0.2, 1}}, audible));
    QVERIFY(ChimeSynth::wav({u"high"_s, ChimeSynth::Voice::bell, {{freq, 0, 0.2}}}) == expected);
}

void tst_ChimeSynth::theHeaderCountsTheSamples()
{
    const QByteArray wav = ChimeSynth::wav(ChimeSynth::presets().first());
    constexpr quint32 samples = 247401;
    QCOMPARE(wav.size(), header + 2 * static_cast<qsizetype>(samples));
    QCOMPARE(numberAt<quint32>(wav, 4), 36 + 2 * samples);
    QCOMPARE(numberAt<quint32>(wav, 40), 2 * samples);
    QCOMPARE(wav.left(4), "RIFF"_ba);
    QCOMPARE(wav.mid(8, 8), "WAVEfmt "_ba);
    QCOMPARE(numberAt<quint32>(wav, 24), 44100U);
    QCOMPARE(samplesOf(ChimeSynth::wav(ChimeSynth::presets().at(6))).size(), std::size_t{478485});
}

void tst_ChimeSynth::theLoudestSampleIsFourFifths_data()
{
    isByteExact_data();
}

void tst_ChimeSynth::theLoudestSampleIsFourFifths()
{
    QFETCH(int, index);
    int loudest = 0;
    for (const int sample : samplesOf(ChimeSynth::wav(ChimeSynth::presets().at(index))))
        loudest = std::max(loudest, std::abs(sample));
    QVERIFY2(loudest == 25600 || loudest == 25599, qPrintable(QString::number(loudest)));
}

void tst_ChimeSynth::aFigureWithoutNotesIsSilent()
{
    const QByteArray wav = ChimeSynth::wav({u"nothing"_s, ChimeSynth::Voice::harp, {}});
    QCOMPARE(wav.size(), header + 2 * 46305);
    QVERIFY(wav == plainFile(std::vector<double>(46305)));
}

void tst_ChimeSynth::theHarpRisesInEvenSteps()
{
    const ChimeSynth::Preset &harp = ChimeSynth::presets().at(4);
    QCOMPARE(harp.notes.size(), 7);
    for (int i = 0; i < 7; ++i) {
        QCOMPARE(harp.notes.at(i).at, i * 0.065);
        QCOMPARE(harp.notes.at(i).decay, 0.9);
        QCOMPARE(harp.notes.at(i).amp, 0.7);
        QVERIFY(i == 0 || harp.notes.at(i).freq > harp.notes.at(i - 1).freq);
    }
    QCOMPARE(harp.notes.last().at, 0.39);
}

void tst_ChimeSynth::theSamePresetGivesTheSameBytes()
{
    for (const ChimeSynth::Preset &each : ChimeSynth::presets())
        QVERIFY(ChimeSynth::wav(each) == ChimeSynth::wav(each));
}

void tst_ChimeSynth::strikesOddFiguresExactly_data()
{
    QTest::addColumn<double>("freq");
    QTest::addColumn<double>("at");
    QTest::addColumn<double>("decay");
    QTest::addColumn<double>("amp");
    QTest::newRow("dies before 10 ms are over") << 440.0 << 0.0 << 0.001 << 1.0;
    QTest::newRow("dies right after 10 ms") << 440.0 << 0.0 << 0.0013 << 1.0;
    QTest::newRow("late and long") << 97.3 << 3.21 << 3.0 << 1.0;
    QTest::newRow("silent") << 440.0 << 0.1 << 0.2 << 0.0;
    QTest::newRow("upside down") << 1234.5 << 0.01 << 0.7 << -0.3;
}

void tst_ChimeSynth::strikesOddFiguresExactly()
{
    QFETCH(double, freq);
    QFETCH(double, at);
    QFETCH(double, decay);
    QFETCH(double, amp);
    const QByteArray expected = plainFile(plainMix({{freq, at, decay, amp}}, plainVoices.at("bowl")));
    QVERIFY(ChimeSynth::wav({u"odd"_s, ChimeSynth::Voice::bowl, {{freq, at, decay, amp}}}) == expected);
}

void tst_ChimeSynth::rendersQuickly()
{
#if defined(__SANITIZE_ADDRESS__) || !defined(NDEBUG)
    constexpr double most = 350;
#else
    constexpr double most = 35;
#endif
    double longest = 0;
    for (const ChimeSynth::Preset &each : ChimeSynth::presets()) {
        double best = 1e9;
        for (int round = 0; round < 3; ++round) {
            const double begin = test::computingTime();
            const QByteArray wav = ChimeSynth::wav(each);
            best = std::min(best, test::computingTime() - begin);
        }
        longest = std::max(longest, best);
    }
    std::printf("CPU to make the longest-taking chime: %.1f ms\n", longest);
    QVERIFY(longest < most);
}

/// The program ends before it asks for the memory.
void tst_ChimeSynth::refusesWhatNoFileCanHold()
{
    QProcess render;
    render.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(renderTooMuch)});
    QVERIFY(render.waitForFinished());
    QCOMPARE(render.exitStatus(), QProcess::CrashExit);
    QVERIFY(render.readAllStandardError().contains("a chime cannot have 21679"));
}

int main(int argc, char **argv)
{
    if (argc == 2 && qstrcmp(argv[1], renderTooMuch) == 0) {
        // 49,160 s, of which a file holds 48,696.
        static_cast<void>(ChimeSynth::wav({u"long"_s, ChimeSynth::Voice::bell, {{440, 0, 8193.2, 1}}}));
        return 0;
    }
    const QCoreApplication application(argc, argv);
    tst_ChimeSynth test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ChimeSynth.moc"
