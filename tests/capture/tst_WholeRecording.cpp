#include "capture/CaptureProcess.h"
#include "capture/ClipFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Records everything with `kelp --record`, as for a release. Takes minutes. With KELP_PICTURES set to a folder, what
/// was written is left there.
class tst_WholeRecording : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void saysWhatItWrote();
    void writesAClipAndAPosterOfEach();
    void clipsAreWhatTheyShouldBe_data();
    void clipsAreWhatTheyShouldBe();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_target + u'/' + name; }

    QTemporaryDir m_folder;
    QString m_target;
    CaptureResult m_result;
};

namespace {

constexpr double configuredRate = 4.5e6; // bits per second

struct Expected
{
    const char *name;
    int frames;
    int poster; ///< the frame that is the still
    bool moves; ///< all over the picture
};

constexpr Expected expected[] = {
    {"hero", 300, 150, true},  {"midnight", 240, 45, false}, {"aurora", 240, 45, true}, {"synthwave", 240, 45, true},
    {"paper", 240, 45, false}, {"terminal", 240, 45, true},  {"zen", 240, 45, true},    {"space", 240, 45, true},
    {"lofi", 240, 45, true},   {"custom", 240, 45, false},   {"ring", 240, 45, true}};

} // namespace

void tst_WholeRecording::initTestCase()
{
    const QString kept = qEnvironmentVariable("KELP_PICTURES");
    m_target = kept.isEmpty() ? m_folder.filePath(u"clips"_s) : kept;
    m_result = runKelp({u"--record"_s, m_target}, bareEnvironment(m_folder.path()));
    QCOMPARE(m_result.status, 0);
}

void tst_WholeRecording::saysWhatItWrote()
{
    QString lines;
    for (const Expected &each : expected)
        lines += u"Wrote %1.mp4 (%2 frames)\n"_s.arg(QLatin1StringView(each.name)).arg(each.frames);
    QCOMPARE(m_result.output, lines);
    QCOMPARE(m_result.errors, QString()); // no progress where there is no terminal
}

void tst_WholeRecording::writesAClipAndAPosterOfEach()
{
    QStringList names{u"og.jpg"_s};
    for (const Expected &each : expected)
        names << QLatin1StringView(each.name) + u".mp4"_s << QLatin1StringView(each.name) + u".jpg"_s;
    names.sort();
    QCOMPARE(QDir(m_target).entryList(QDir::Files | QDir::Hidden, QDir::Name), names);
}

void tst_WholeRecording::clipsAreWhatTheyShouldBe_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("poster");
    QTest::addColumn<bool>("moves");
    for (const Expected &each : expected)
        QTest::newRow(each.name) << QString::fromLatin1(each.name) << each.frames << each.poster << each.moves;
}

void tst_WholeRecording::clipsAreWhatTheyShouldBe()
{
    QFETCH(QString, name);
    QFETCH(int, frames);
    QFETCH(int, poster);
    QFETCH(bool, moves);
    const ClipFile clip = ClipFile::probe(path(name + u".mp4"_s));
    QCOMPARE(clip.codec, u"h264"_s);
    QCOMPARE(clip.profile, u"High"_s);
    QCOMPARE(clip.size, QSize(1920, 1200));
    QCOMPARE(clip.rate, u"30/1"_s);
    QCOMPARE(clip.frames, frames);
    QVERIFY(std::abs(clip.seconds - frames / 30.0) < 0.001);
    QCOMPARE(clip.keyFrames.size(), (frames + 59) / 60);
    for (qsizetype i = 0; i < clip.keyFrames.size(); ++i)
        QCOMPARE(clip.keyFrames[i], 60 * i);
    QVERIFY(clip.boxes.indexOf("moov") >= 0 && clip.boxes.indexOf("moov") < clip.boxes.indexOf("mdat"));
    const QByteArray rate = QByteArray::number(clip.bitsPerSecond / 1e6) + " Mbit/s";
    QVERIFY2(clip.bitsPerSecond <= 5.2e6, rate.constData());
    if (moves)
        QVERIFY2(std::abs(clip.bitsPerSecond - configuredRate) <= 0.15 * configuredRate, rate.constData());
    const QImage still(path(name + u".jpg"_s));
    QCOMPARE(still.size(), clip.size);
    // A clip does not keep the finest grain, of paper for example: a quarter of the size tells whether it is the same.
    const auto coarse = [](const QImage &image) {
        return image.scaled(image.size() / 4, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const double difference =
        ClipFile::meanDifference(coarse(still), coarse(ClipFile::frame(path(name + u".mp4"_s), poster)));
    QVERIFY2(difference < 3, QByteArray::number(difference).constData());
}

QTEST_GUILESS_MAIN(tst_WholeRecording)
#include "tst_WholeRecording.moc"
