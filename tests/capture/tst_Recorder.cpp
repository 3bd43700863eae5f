#include "base/Clock.h"
#include "capture/CaptureProcess.h"
#include "capture/ClipFile.h"
#include "capture/ClipFrames.h"
#include "capture/Progress.h"
#include "capture/Recorder.h"
#include "capture/SocialPicture.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QPainter>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Records clips and lets ffprobe look at them, which shares no code with what made them. With KELP_PICTURES set to a
/// folder, some frames of each clip are left there.
class tst_Recorder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void offersTheHeroEveryThemeAndTheRing();
    void aClipIsWhatPlayersExpect();
    void coloursComeBackAsTheyWere_data();
    void coloursComeBackAsTheyWere();
    void thePosterIsTheFrameOfItsTime();
    void thePosterIsOfTheQualityOfPictures();
    void aFrameThatDoesNotChangeIsShownAgain();
    void drawsTheSameFramesOnEveryRun_data();
    void drawsTheSameFramesOnEveryRun();
    void theCountdownRunsWithTheClip();
    void writesTheSocialPictureAlone();
    void leavesOutWhatIsNotNamed();
    void goesOnWhereAFolderIsClosed();
    void goesOnWhereTheDiskIsFull();
    void saysWhatIsMissing();
    void tellsHowFarItIs();

private:
    [[nodiscard]] QString folder() const { return m_folder.path(); }
    /// Half a second and a bit of a moving square.
    [[nodiscard]] static Recorder::Clip shortClip(const QString &name);
    static CaptureResult kelp(const QStringList &arguments, const QString &home,
                              const QHash<QString, QString> &variables = {});

    QTemporaryDir m_folder;
    ClipFile m_clip; ///< of `shortClip`
};

namespace {

constexpr double seconds = 4.4;
constexpr double poster = 0.5;

QByteArray digest(const QImage &image)
{
    return QCryptographicHash::hash(
        QByteArrayView(reinterpret_cast<const char *>(image.constBits()), image.sizeInBytes()),
        QCryptographicHash::Sha256);
}

/// What a file of that picture holds.
QByteArray jpegOf(const QImage &image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "jpg", quality);
    return bytes;
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

} // namespace

Recorder::Clip tst_Recorder::shortClip(const QString &name)
{
    return {name, seconds, poster, [] {
                return [](QPainter &painter, double t) {
                    painter.fillRect(QRectF(0, 0, 1440, 900), QColor(20, 60, 90));
                    painter.fillRect(QRectF(900, 100, 300, 300), QColor(246, 240, 228));
                    painter.fillRect(QRectF(100 + 100 * t, 300, 200, 200), QColor(250, 120, 40));
                    return true;
                };
            }};
}

CaptureResult tst_Recorder::kelp(const QStringList &arguments, const QString &home,
                                 const QHash<QString, QString> &variables)
{
    QProcessEnvironment environment = bareEnvironment(home);
    for (auto each = variables.begin(); each != variables.end(); ++each)
        environment.insert(each.key(), each.value());
    return runKelp(arguments, environment);
}

void tst_Recorder::initTestCase()
{
    if (QStandardPaths::findExecutable(u"ffprobe"_s).isEmpty())
        QFAIL("ffprobe is not installed");
    const SystemClock clock;
    Progress progress(0, clock.now());
    Recorder::record(shortClip(u"short"_s), folder(), progress, clock);
    m_clip = ClipFile::probe(folder() + u"/short.mp4"_s);
}

void tst_Recorder::offersTheHeroEveryThemeAndTheRing()
{
    QStringList names;
    for (const Recorder::Clip &clip : Recorder::clips({})) {
        names.append(clip.name);
        const bool isHero = clip.name == u"hero";
        QCOMPARE(clip.seconds, isHero ? 10.0 : 8.0);
        QCOMPARE(clip.poster, isHero ? 5.0 : 1.5);
        QCOMPARE(clip.frameCount(), isHero ? 300 : 240);
    }
    QCOMPARE(names, (QStringList{u"hero"_s, u"midnight"_s, u"aurora"_s, u"synthwave"_s, u"paper"_s, u"terminal"_s,
                                 u"zen"_s, u"space"_s, u"lofi"_s, u"custom"_s, u"ring"_s}));
}

void tst_Recorder::aClipIsWhatPlayersExpect()
{
    QCOMPARE(m_clip.streams, 1);
    QCOMPARE(m_clip.codec, u"h264"_s);
    QCOMPARE(m_clip.profile, u"High"_s);
    QCOMPARE(m_clip.size, QSize(1920, 1200));
    QCOMPARE(m_clip.rate, u"30/1"_s);
    QCOMPARE(m_clip.frames, 132);
    QVERIFY(std::abs(m_clip.seconds - seconds) < 0.001);
    QCOMPARE(m_clip.keyFrames, (QList<int>{0, 60, 120}));
    QCOMPARE(m_clip.colours, u"tv bt709 bt709 bt709"_s);
    QCOMPARE(m_clip.boxes.first(), "ftyp");
    QVERIFY(m_clip.boxes.contains("mdat"));
    QVERIFY2(m_clip.boxes.indexOf("moov") < m_clip.boxes.indexOf("mdat"), "the index has to come first");
    // A picture that anyone may read.
    QVERIFY(QFileInfo(folder() + u"/short.mp4"_s).permissions().testFlag(QFile::ReadUser));
}

void tst_Recorder::coloursComeBackAsTheyWere_data()
{
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("ground") << QPoint(1700, 1000) << QColor(20, 60, 90);
    QTest::newRow("square") << QPoint(280, 540) << QColor(250, 120, 40); // at the time 0.5
    QTest::newRow("paper") << QPoint(1400, 330) << QColor(246, 240, 228);
}

void tst_Recorder::coloursComeBackAsTheyWere()
{
    QFETCH(QPoint, place);
    QFETCH(QColor, colour);
    const QImage frame = ClipFile::frame(folder() + u"/short.mp4"_s, 15);
    QCOMPARE(frame.size(), Recorder::pixels);
    const QColor found = frame.pixelColor(place);
    // BT.601 instead of BT.709 would be off by 20, and values cut off instead of rounded by 6.
    QVERIFY2(std::abs(found.red() - colour.red()) <= 3 && std::abs(found.green() - colour.green()) <= 3 &&
                 std::abs(found.blue() - colour.blue()) <= 3,
             qPrintable(found.name()));
}

void tst_Recorder::thePosterIsTheFrameOfItsTime()
{
    const QImage still(folder() + u"/short.jpg"_s);
    QCOMPARE(still.size(), Recorder::pixels);
    const auto difference = [&](const QImage &frame) { return ClipFile::meanDifference(still, frame); };
    QVERIFY(difference(frameOf(shortClip({}).frames(), poster)) < 1);
    // Three frames later the square has moved by 13 pixels.
    const double found = difference(ClipFile::frame(folder() + u"/short.mp4"_s, 15));
    QVERIFY2(found < 3 && found + 0.3 < difference(ClipFile::frame(folder() + u"/short.mp4"_s, 18)),
             QByteArray::number(found).constData());
}

void tst_Recorder::thePosterIsOfTheQualityOfPictures()
{
    const QImage frame = frameOf(shortClip({}).frames(), poster);
    QVERIFY(jpegOf(frame, 82) != jpegOf(frame, 81));
    QVERIFY(contentOf(folder() + u"/short.jpg"_s) == jpegOf(frame, 82));
}

void tst_Recorder::aFrameThatDoesNotChangeIsShownAgain()
{
    const Recorder::Clip clip{u"still"_s, 0.5, 0.2, [] {
                                  return [](QPainter &painter, double t) {
                                      if (t == 0)
                                          painter.fillRect(QRectF(0, 0, 1440, 900), QColor(80, 160, 60));
                                      return t == 0;
                                  };
                              }};
    const SystemClock clock;
    Progress progress(0, clock.now());
    Recorder::record(clip, folder(), progress, clock);
    const QString path = folder() + u"/still.mp4"_s;
    QCOMPARE(ClipFile::probe(path).frames, 15);
    QVERIFY(std::abs(ClipFile::frame(path, 14).pixelColor(900, 600).green() - 160) <= 5);
    QVERIFY(std::abs(QImage(folder() + u"/still.jpg"_s).pixelColor(900, 600).green() - 160) <= 2);
}

void tst_Recorder::drawsTheSameFramesOnEveryRun_data()
{
    QTest::addColumn<QString>("name");
    for (const Recorder::Clip &clip : Recorder::clips({}))
        QTest::newRow(qPrintable(clip.name)) << clip.name;
}

void tst_Recorder::drawsTheSameFramesOnEveryRun()
{
    QFETCH(QString, name);
    const Recorder::Frame first = clipNamed(name).frames();
    const Recorder::Frame second = clipNamed(name).frames();
    QImage one = blankFrame();
    QImage other = blankFrame();
    QSet<QByteArray> different;
    for (const double t : {0.0, 1.5, 2.2, 2.7, 5.0, 7.2, 7.9}) {
        QPainter painter(&one);
        first(painter, t);
        painter.end();
        painter.begin(&other);
        second(painter, t);
        painter.end();
        QCOMPARE(digest(one), digest(other));
        if (const QString kept = qEnvironmentVariable("KELP_PICTURES"); !kept.isEmpty())
            QVERIFY(one.save(u"%1/%2-%3.png"_s.arg(kept, name).arg(t, 0, 'f', 1)));
        different.insert(digest(one));
    }
    QVERIFY2(different.size() >= 4, "the clip hardly moves");
    // A frame does not depend on those before it, up to what a fade rounds.
    QVERIFY(ClipFile::meanDifference(one, frameOf(clipNamed(name).frames(), 7.9)) < 0.1);
}

void tst_Recorder::theCountdownRunsWithTheClip()
{
    QCOMPARE(Recorder::reference().toLocalDateTime().toString(u"ddd d MMM hh:mm:ss"_s), u"Wed 29 Oct 09:59:08"_s);
    // The words turn half a second after every whole one.
    const Recorder::Frame frame = clipNamed(u"paper"_s).frames();
    const QImage before = frameOf(frame, 0.4);
    QCOMPARE(frameOf(clipNamed(u"paper"_s).frames(), 0.1), before);
    QVERIFY(frameOf(clipNamed(u"paper"_s).frames(), 0.6) != before);
}

void tst_Recorder::writesTheSocialPictureAlone()
{
    const QString home = m_folder.filePath(u"og-home"_s);
    QVERIFY(QDir().mkpath(home));
    const QString target = m_folder.filePath(u"og/new"_s);
    const CaptureResult result = kelp({u"--record"_s, target, u"og"_s}, home);
    QCOMPARE(result.status, 0);
    QCOMPARE(result.output, QString());
    QCOMPARE(filesIn(target), QStringList{u"og.jpg"_s});
    QVERIFY(contentOf(target + u"/og.jpg"_s) == jpegOf(socialPicture(), 82));
    QVERIFY(!QFileInfo::exists(home + u"/.config/Kelp"_s));
}

void tst_Recorder::leavesOutWhatIsNotNamed()
{
    const QString target = m_folder.filePath(u"unknown"_s);
    const CaptureResult result = kelp({u"--record"_s, target, u"heroes"_s, u"--snapshot"_s}, folder());
    QCOMPARE(result.status, 0);
    QCOMPARE(result.output, QString());
    QVERIFY2(result.errors.contains(u"there is no \"heroes\"; there are hero, midnight"_s), qPrintable(result.errors));
    QCOMPARE(filesIn(target), QStringList());
}

void tst_Recorder::goesOnWhereAFolderIsClosed()
{
    const QString target = folder() + u"/short.mp4/below"_s;
    const CaptureResult result = kelp({u"--record"_s, target}, folder());
    QCOMPARE(result.status, 0);
    QStringList expected;
    for (const Recorder::Clip &clip : Recorder::clips({}))
        expected.append(u"Could not create %1.mp4\n"_s.arg(clip.name));
    QCOMPARE(result.output, expected.join(QString()));
}

void tst_Recorder::goesOnWhereTheDiskIsFull()
{
    const QTemporaryDir narrow;
    const SystemClock clock;
    Progress progress(0, clock.now());
    QString output;
    {
        // As on a disk without room, a file can be made but not be written to its end.
        const ClipFile::RoomLimit limit(static_cast<rlim_t>(QFileInfo(folder() + u"/short.mp4"_s).size() / 2));
        const ClipFile::Output printed;
        Recorder::record(shortClip(u"large"_s), narrow.path(), progress, clock);
        output = printed.text();
    }
    QVERIFY2(output.startsWith(u"Video error: "_s) && output.count(u'\n') == 1, qPrintable(output));
    QVERIFY2(!filesIn(narrow.path()).contains(u"large.mp4"_s), "half a clip is there");
    QVERIFY(filesIn(narrow.path()).filter(u".tmp"_s).isEmpty());
    Recorder::record(shortClip(u"next"_s), narrow.path(), progress, clock);
    QCOMPARE(ClipFile::probe(narrow.filePath(u"next.mp4"_s)).frames, 132);
}

void tst_Recorder::saysWhatIsMissing()
{
    const QString home = m_folder.filePath(u"bare-home"_s);
    QVERIFY(QDir().mkpath(home + u"/plugins"_s));
    const QString target = m_folder.filePath(u"bare"_s);
    const CaptureResult result =
        kelp({u"--record"_s, target, u"ring"_s, u"og"_s}, home,
             {{u"GST_PLUGIN_SYSTEM_PATH_1_0"_s, home + u"/plugins"_s}, {u"GST_REGISTRY"_s, home + u"/registry"_s}});
    QCOMPARE(result.status, 0);
    QCOMPARE(result.output, u"Could not create ring.mp4\n"_s);
    QVERIFY2(result.errors.contains(u"gstreamer1.0-plugins-ugly"_s), qPrintable(result.errors));
    QCOMPARE(filesIn(target), QStringList{u"og.jpg"_s});
}

void tst_Recorder::tellsHowFarItIs()
{
    QCOMPARE(Progress::line(u"hero"_s, 120, 300, 64.2), u"hero 120/300 · 1:05 left"_s);
    QCOMPARE(Progress::line(u"hero"_s, 300, 300, 0), u"hero 300/300 · 0:00 left"_s);
}

QTEST_MAIN(tst_Recorder)
#include "tst_Recorder.moc"
