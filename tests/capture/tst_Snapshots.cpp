#include "capture/CaptureProcess.h"
#include "capture/DesktopScene.h"
#include "capture/Recorder.h"
#include "capture/SampleMeeting.h"
#include "overlay/OverlayScene.h"
#include "shell/MenuBarIcon.h"

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Runs `kelp --snapshot` and looks at the pictures.
class tst_Snapshots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void writesAStillOfEveryThemeAndTheIcons();
    void isQuiet();
    void showsWhatTheOverlayDraws_data();
    void showsWhatTheOverlayDraws();
    void drawsTheIconOnBothKindsOfBars_data();
    void drawsTheIconOnBothKindsOfBars();
    void isTheSameByteForByteWhenRunAgain();
    void showsAnotherTimeAtAnotherTime();
    void leavesNothingOfItsOwnInTheUsersFolders();
    void showsTheUsersPictureAndLeavesTheSettingsAlone();
    void writesNothingWhereItMayNot();

private:
    [[nodiscard]] QString home() const { return m_folder.filePath(u"home"_s); }
    [[nodiscard]] QString stills() const { return m_folder.filePath(u"new/stills"_s); }
    [[nodiscard]] QImage still(const QString &name) const { return QImage(stills() + u'/' + name + u".png"_s); }

    QTemporaryDir m_folder;
    CaptureResult m_result;
    QImage m_desktop; ///< what a theme blurs
};

namespace {

constexpr Instant now{1767607153}; // 2026-01-05 09:59:13 UTC

QStringList filesBelow(const QString &folder)
{
    QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    names.sort();
    return names;
}

} // namespace

void tst_Snapshots::initTestCase()
{
    QVERIFY(QDir().mkpath(home()));
    // It is the runtime folder, too, which Qt wants to be private.
    QVERIFY(QFile::setPermissions(home(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    m_result = runKelp({u"--snapshot"_s, stills()}, bareEnvironment(home()));
    QCOMPARE(m_result.status, 0);
    // Before anything else, as kelp draws it: with other letters kept, Qt draws some of their edges a shade different.
    m_desktop = DesktopScene().picture(Recorder::density);
}

void tst_Snapshots::writesAStillOfEveryThemeAndTheIcons()
{
    QStringList expected{u"menubar-big.png"_s, u"menubar-dark.png"_s, u"menubar-light.png"_s};
    for (const char *id : {"midnight", "aurora", "synthwave", "paper", "terminal", "zen", "space", "lofi", "custom"}) {
        for (const char *ending : {"", "-ring"}) {
            const QString name = QString::fromLatin1(id) + QString::fromLatin1(ending);
            expected.append(name + u".png"_s);
            QCOMPARE(still(name).size(), QSize(1440, 900));
        }
    }
    expected.sort();
    QCOMPARE(filesBelow(stills()), expected);
}

void tst_Snapshots::isQuiet()
{
    QCOMPARE(m_result.output, QString());
    QCOMPARE(m_result.errors, QString());
}

void tst_Snapshots::showsWhatTheOverlayDraws_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("ring");
    QTest::newRow("pill") << u"aurora"_s << false;
    QTest::newRow("ring") << u"aurora"_s << true;
    QTest::newRow("picture") << u"zen"_s << false;
    QTest::newRow("cursor") << u"terminal"_s << true;
    QTest::newRow("blurred desktop") << u"midnight"_s << false;
}

void tst_Snapshots::showsWhatTheOverlayDraws()
{
    QFETCH(QString, theme);
    QFETCH(bool, ring);
    const Meeting meeting = sampleMeeting(u"snapshot"_s, now + 47);
    QCOMPARE(meeting.title, u"Weekly design review"_s);
    QCOMPARE(meeting.end - meeting.start, 1800.0);
    QVERIFY(meeting.canJoin());
    QImage expected(1440, 900, QImage::Format_RGB32);
    QPainter painter(&expected);
    const OverlayScene scene{
        MeetingContent{meeting, {}}, OverlayTheme::named(theme), {.ringCountdown = ring}, {.backdrop = m_desktop}};
    QCOMPARE(scene.countdown(now), ring ? u"0:47 until start"_s : u"Starts in 0:47"_s);
    scene.paint(painter, expected.size(), now);
    painter.end();
    QCOMPARE(still(theme + (ring ? u"-ring"_s : QString())).convertToFormat(QImage::Format_RGB32), expected);
}

void tst_Snapshots::drawsTheIconOnBothKindsOfBars_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("size");
    QTest::addColumn<QColor>("bar");
    QTest::addColumn<QColor>("icon");
    const QColor light(237, 237, 237); // white 0.93
    const QColor dark(31, 31, 31);     // white 0.12
    QTest::newRow("light") << u"menubar-light"_s << 36 << light << QColor(Qt::black);
    QTest::newRow("dark") << u"menubar-dark"_s << 36 << dark << QColor(Qt::white);
    QTest::newRow("big") << u"menubar-big"_s << 288 << light << QColor(Qt::black);
}

void tst_Snapshots::drawsTheIconOnBothKindsOfBars()
{
    QFETCH(QString, name);
    QFETCH(int, size);
    QFETCH(QColor, bar);
    QFETCH(QColor, icon);
    const QImage image = still(name);
    QCOMPARE(image.size(), QSize(size, size));
    QCOMPARE(image.pixelColor(0, 0), bar);
    // In the curtain, at (6, 6) from the lower left of 18 × 18.
    QCOMPARE(image.pixelColor(6 * size / 18, 12 * size / 18), icon);
    QImage expected(size, size, QImage::Format_RGB32);
    expected.fill(bar);
    QPainter(&expected).drawImage(0, 0, MenuBarIcon::make(size, {}, icon));
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x)
            QVERIFY(std::abs(qGray(expected.pixel(x, y)) - qGray(image.pixel(x, y))) <= 2); // blended in two steps
    }
}

void tst_Snapshots::isTheSameByteForByteWhenRunAgain()
{
    const QString again = m_folder.filePath(u"again"_s);
    QVERIFY(QDir().mkpath(again));
    // What is there already is replaced.
    QFile old(again + u"/paper.png"_s);
    QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    QCOMPARE(runKelp({u"--snapshot"_s, again}, bareEnvironment(home())).status, 0);
    QCOMPARE(filesBelow(again), filesBelow(stills()));
    for (const QString &name : filesBelow(again))
        QVERIFY2(contentOf(again + u'/' + name) == contentOf(stills() + u'/' + name), qPrintable(name));
}

void tst_Snapshots::showsAnotherTimeAtAnotherTime()
{
    const QString later = m_folder.filePath(u"later"_s);
    QProcessEnvironment environment = bareEnvironment(home());
    environment.insert(u"KELP_CAPTURE_TIME"_s, u"2026-01-05T12:34:56Z"_s);
    QCOMPARE(runKelp({u"--snapshot"_s, later}, environment).status, 0);
    QVERIFY(QImage(later + u"/paper.png"_s) != still(u"paper"_s));
    QVERIFY(QImage(later + u"/menubar-big.png"_s) == still(u"menubar-big"_s));
}

void tst_Snapshots::leavesNothingOfItsOwnInTheUsersFolders()
{
    QVERIFY(!QFileInfo::exists(home() + u"/.config/Kelp"_s));
    QVERIFY(!QFileInfo::exists(home() + u"/.local/share/Kelp"_s));
}

void tst_Snapshots::showsTheUsersPictureAndLeavesTheSettingsAlone()
{
    const QString user = m_folder.filePath(u"user"_s);
    QVERIFY(QDir().mkpath(user + u"/.config/Kelp"_s));
    QImage picture(1440, 900, QImage::Format_RGB32);
    picture.fill(QColor(0, 100, 200));
    QVERIFY(picture.save(user + u"/own.png"_s));
    const QByteArray settings = "{\"customImagePath\": \"" + (user + u"/own.png"_s).toUtf8() +
                                "\", \"customDim\": 0.9, \"countdownStyle\": \"ring\", \"showAttendees\": false}";
    QFile file(user + u"/.config/Kelp/preferences.json"_s);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(settings) == settings.size());
    file.close();

    const QString folder = m_folder.filePath(u"of-user"_s);
    QCOMPARE(runKelp({u"--snapshot"_s, folder}, bareEnvironment(user)).status, 0);
    const QColor middle = QImage(folder + u"/custom.png"_s).pixelColor(720, 200); // above the card
    QVERIFY(std::abs(middle.blue() - 200 * (1 - 0.45)) < 12);                     // less some vignette
    QVERIFY(std::abs(middle.green() - 100 * (1 - 0.45)) < 6);
    // How they like their card is not asked for.
    QCOMPARE(contentOf(folder + u"/paper.png"_s), contentOf(stills() + u"/paper.png"_s));
    QCOMPARE(contentOf(file.fileName()), settings);
    QCOMPARE(filesBelow(user + u"/.config/Kelp"_s), QStringList{u"preferences.json"_s});
}

void tst_Snapshots::writesNothingWhereItMayNot()
{
    QFile file(m_folder.filePath(u"a-file"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const CaptureResult result = runKelp({u"--snapshot"_s, file.fileName() + u"/below"_s}, bareEnvironment(home()));
    QCOMPARE(result.status, 0);
    QCOMPARE(result.output, QString());
    QVERIFY(QFileInfo(file.fileName()).isFile());
    QCOMPARE(file.size(), 0);
}

QTEST_MAIN(tst_Snapshots)
#include "tst_Snapshots.moc"
