#include "sound/SystemSynth.h"

#include <QTest>
#include <QtEndian>

#include <cmath>
#include <vector>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

std::vector<double> samplesOf(const QByteArray &wav)
{
    std::vector<double> samples;
    for (qsizetype at = 44; at + 1 < wav.size(); at += 2)
        samples.push_back(qFromLittleEndian<qint16>(wav.constData() + at) / 32768.0);
    return samples;
}

/// The level of the loudest 0.1 s, in decibels below full scale.
double loudness(const std::vector<double> &samples)
{
    constexpr std::size_t window = 4410;
    double loudest = 0;
    for (std::size_t start = 0; start < samples.size(); start += window / 4) {
        double sum = 0;
        for (std::size_t i = start; i < std::min(samples.size(), start + window); ++i)
            sum += samples[i] * samples[i];
        loudest = std::max(loudest, sum / window);
    }
    return 10 * std::log10(loudest);
}

std::vector<double> bands(const std::vector<double> &samples)
{
    std::vector<double> result;
    for (double frequency = 88; frequency < 12000; frequency *= 2) {
        // Goertzel's algorithm, at three places of the octave.
        double power = 1e-2; // what nobody hears makes no difference
        for (const double part : {0.8, 1.0, 1.26}) {
            const double factor = 2 * std::cos(2 * M_PI * frequency * part / 44100);
            for (std::size_t start = 0; start + 512 <= samples.size(); start += 512) {
                double before = 0;
                double last = 0;
                for (std::size_t i = start; i < start + 512; ++i)
                    before = std::exchange(last, samples[i] + factor * last - before);
                power += last * last + before * before - factor * last * before;
            }
        }
        result.push_back(10 * std::log10(power));
    }
    return result;
}

/// How much power is in the bands of an octave each from 62.5 Hz on, in decibels, for each of the first three quarters
/// of a second.
std::vector<double> character(std::vector<double> samples)
{
    constexpr std::size_t quarter = 11025;
    std::vector<double> result;
    samples.resize(std::max(samples.size(), 3 * quarter));
    for (std::size_t part = 0; part < 3; ++part) {
        const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(part * quarter);
        const std::vector<double> powers = bands({begin, begin + quarter});
        result.insert(result.end(), powers.begin(), powers.end());
    }
    return result;
}

} // namespace

class tst_SystemSynth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void offersNineNamesInOrder();
    void isASound_data();
    void isASound();
    void isTheSameEveryTime();
    void soundsUnlikeAllOthers();
    void hasNoOtherSound_data();
    void hasNoOtherSound();
};

void tst_SystemSynth::offersNineNamesInOrder()
{
    QCOMPARE(SystemSynth::names(), (QStringList{u"Glass"_s, u"Hero"_s, u"Submarine"_s, u"Ping"_s, u"Purr"_s, u"Funk"_s,
                                                u"Blow"_s, u"Pop"_s, u"Tink"_s}));
}

void tst_SystemSynth::isASound_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &each : SystemSynth::names())
        QTest::newRow(qPrintable(each)) << each;
}

void tst_SystemSynth::isASound()
{
    QFETCH(QString, name);
    const std::optional<QByteArray> wav = SystemSynth::wav(name);
    QVERIFY(wav);
    QCOMPARE(wav->left(4), "RIFF"_ba);
    QCOMPARE(qFromLittleEndian<quint32>(wav->constData() + 40), static_cast<quint32>(wav->size() - 44));
    const std::vector<double> samples = samplesOf(*wav);
    QVERIFY(samples.size() > 13230 && samples.size() < 44100 * 2);
    // It begins at once, ends in silence, and is as loud as the others.
    QVERIFY(loudness({samples.begin(), samples.begin() + 8820}) > -30);
    QVERIFY(std::abs(samples.front()) < 0.02);
    QVERIFY(std::abs(samples.back()) < 0.001);
    const double level = loudness(samples);
    QVERIFY2(level > -20 && level < -9, qPrintable(QString::number(level)));
}

void tst_SystemSynth::isTheSameEveryTime()
{
    for (const QString &each : SystemSynth::names())
        QCOMPARE(SystemSynth::wav(each), SystemSynth::wav(each));
}

void tst_SystemSynth::soundsUnlikeAllOthers()
{
    std::vector<std::vector<double>> all;
    for (const QString &each : SystemSynth::names())
        all.push_back(character(samplesOf(*SystemSynth::wav(each))));
    for (std::size_t a = 0; a < all.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            double distance = 0;
            for (std::size_t band = 0; band < all[a].size(); ++band)
                distance = std::max(distance, std::abs(all[a][band] - all[b][band]));
            const auto index = [](std::size_t i) { return SystemSynth::names().at(static_cast<qsizetype>(i)); };
            QVERIFY2(distance > 10, qPrintable(u"%1 and %2: %3 dB"_s.arg(index(a), index(b)).arg(distance)));
        }
    }
}

void tst_SystemSynth::hasNoOtherSound_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << QString();
    QTest::newRow("another case") << u"glass"_s;
    QTest::newRow("a chime") << u"Bells"_s;
    QTest::newRow("a path") << u"../Glass"_s;
}

void tst_SystemSynth::hasNoOtherSound()
{
    QFETCH(QString, name);
    QVERIFY(!SystemSynth::wav(name));
}

QTEST_GUILESS_MAIN(tst_SystemSynth)
#include "tst_SystemSynth.moc"
