#include "themes/ThemeImages.h"

#include "base/Folders.h"
#include "preferences/Preferences.h"
#include "themes/Theme.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QThreadPool>

#include <cerrno>
#include <memory>
#include <optional>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_ThemeImages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void builtInPicturesAreLargeAndKept_data();
    void builtInPicturesAreLargeAndKept();
    void thereIsNoOtherBuiltInPicture();
    void noPictureIsChosenAtFirst();
    void aChosenPictureIsCopiedAndShown();
    void aNameWithoutExtensionGetsImg_data();
    void aNameWithoutExtensionGetsImg();
    void theCopyOfThePreviousPictureIsRemoved();
    void aFileOfTheUsersIsNeverRemoved_data();
    void aFileOfTheUsersIsNeverRemoved();
    void kelpsOwnCopyCanBeChosenAgain_data();
    void kelpsOwnCopyCanBeChosenAgain();
    void whatCannotBeCopiedLeavesThePreviousPicture_data();
    void whatCannotBeCopiedLeavesThePreviousPicture();
    void aDecodedPictureIsKept();
    void offersOnlyWhatItCanDecode();
    void whatIsNoRasterImageIsNoPicture_data();
    void whatIsNoRasterImageIsNoPicture();
    void aPictureThatClaimsToBeLongTakesNoMemory();
    void aLargePictureIsScaledDown();
    void aPictureIsLoadedWithoutWaiting();
    void noMoreIsKeptThanAViewShows_data();
    void noMoreIsKeptThanAViewShows();
    void whatCannotBeReadIsLoadedAsNoPicture();
    void nothingIsLoadedForSomethingThatIsGone();
    void transparencyIsBlack();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString write(const QString &name, const QByteArray &content) const;
    QString writePicture(const QString &name, const QColor &colour, QSize size = {8, 6}) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

constexpr Instant now{1767261600.75};

QByteArray png(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

Preferences *chosen(const QString &path, QObject *parent)
{
    auto *preferences = new Preferences({}, parent);
    preferences->set(preference::customImagePath, path);
    return preferences;
}

} // namespace

void tst_ThemeImages::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s)));
    ThemeImages::forgetDecoded();
}

QString tst_ThemeImages::write(const QString &name, const QByteArray &content) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QString tst_ThemeImages::writePicture(const QString &name, const QColor &colour, QSize size) const
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return write(name, png(image));
}

void tst_ThemeImages::builtInPicturesAreLargeAndKept_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"zen", "space", "lofi"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_ThemeImages::builtInPicturesAreLargeAndKept()
{
    QFETCH(QString, name);
    const QImage image = ThemeImages::bundled(name);
    QCOMPARE(image.size(), QSize(2560, 1600));
    QCOMPARE(ThemeImages::bundled(name).constBits(), image.constBits());
}

void tst_ThemeImages::thereIsNoOtherBuiltInPicture()
{
    QVERIFY(ThemeImages::bundled(u"Zen"_s).isNull());
    QVERIFY(ThemeImages::bundled(QString()).isNull());
}

void tst_ThemeImages::noPictureIsChosenAtFirst()
{
    QVERIFY(ThemeImages::custom(Preferences()).isNull());
    QVERIFY(ThemeImages::custom(*chosen(QString(), this)).isNull());
}

void tst_ThemeImages::aChosenPictureIsCopiedAndShown()
{
    Preferences preferences;
    const QString original = writePicture(u"holiday.png"_s, Qt::red);
    QVERIFY(ThemeImages::setCustom(original, preferences, now));
    const QString copy = preferences.get(preference::customImagePath);
    QCOMPARE(copy, folders::data() + u"/background-1767261600.png"_s); // whole seconds, truncated
    QVERIFY(QFile::exists(original));
    QCOMPARE(ThemeImages::custom(preferences).pixelColor(3, 3), QColor(Qt::red));
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(copy).constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0600U);
}

void tst_ThemeImages::aNameWithoutExtensionGetsImg_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::newRow("none") << u"photo"_s << u"img"_s;
    QTest::newRow("hidden") << u".photo"_s << u"img"_s;
    QTest::newRow("dot at the end") << u"photo."_s << u"img"_s;
    QTest::newRow("two") << u"photo.tar.JPG"_s << u"JPG"_s;
}

void tst_ThemeImages::aNameWithoutExtensionGetsImg()
{
    QFETCH(QString, name);
    QFETCH(QString, extension);
    Preferences preferences;
    QVERIFY(ThemeImages::setCustom(writePicture(name, Qt::green), preferences, now));
    QCOMPARE(preferences.get(preference::customImagePath), folders::data() + u"/background-1767261600."_s + extension);
    QCOMPARE(ThemeImages::custom(preferences).pixelColor(0, 0), QColor(Qt::green)); // the content counts
}

void tst_ThemeImages::theCopyOfThePreviousPictureIsRemoved()
{
    Preferences preferences;
    QVERIFY(ThemeImages::setCustom(writePicture(u"a.png"_s, Qt::red), preferences, now));
    QVERIFY(!ThemeImages::custom(preferences).isNull());
    const QString first = preferences.get(preference::customImagePath);
    QVERIFY(ThemeImages::setCustom(writePicture(u"b.png"_s, Qt::blue), preferences, now + 60));
    QVERIFY(!QFile::exists(first));
    QCOMPARE(ThemeImages::custom(preferences).pixelColor(0, 0), QColor(Qt::blue));
    QCOMPARE(QDir(folders::data()).entryList(QDir::Files), QStringList{u"background-1767261660.png"_s});
    QVERIFY(ThemeImages::custom(*chosen(first, this)).isNull()); // nor is it remembered
}

void tst_ThemeImages::aFileOfTheUsersIsNeverRemoved_data()
{
    QTest::addColumn<QString>("name"); // relative to the folder above Kelp's
    QTest::newRow("elsewhere") << u"holiday.png"_s;
    QTest::newRow("elsewhere, named like a copy") << u"background-1.png"_s;
    QTest::newRow("another file of Kelp's") << u"data/Kelp/accounts.json"_s;
    QTest::newRow("by way of Kelp's folder") << u"data/Kelp/../background-1.png"_s;
}

void tst_ThemeImages::aFileOfTheUsersIsNeverRemoved()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkpath(folders::data()));
    const QString precious = writePicture(name, Qt::red);
    Preferences *preferences = chosen(precious, this);
    QVERIFY(ThemeImages::setCustom(writePicture(u"new.png"_s, Qt::blue), *preferences, now));
    QVERIFY(QFile::exists(precious));
    QVERIFY(preferences->get(preference::customImagePath) != precious);
}

void tst_ThemeImages::kelpsOwnCopyCanBeChosenAgain_data()
{
    QTest::addColumn<double>("later");
    QTest::newRow("in the same second") << 0.1;
    QTest::newRow("later") << 60.0;
}

void tst_ThemeImages::kelpsOwnCopyCanBeChosenAgain()
{
    QFETCH(double, later);
    Preferences preferences;
    QVERIFY(ThemeImages::setCustom(writePicture(u"a.png"_s, Qt::red), preferences, now));
    QVERIFY(ThemeImages::setCustom(preferences.get(preference::customImagePath), preferences, now + later));
    QCOMPARE(ThemeImages::custom(preferences).pixelColor(0, 0), QColor(Qt::red));
    QCOMPARE(QDir(folders::data()).entryList(QDir::Files).size(), 1);
}

void tst_ThemeImages::whatCannotBeCopiedLeavesThePreviousPicture_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("code");
    QTest::newRow("missing") << u"missing.png"_s << ENOENT;
    QTest::newRow("folder") << u"data"_s << EISDIR;
    QTest::newRow("pipe") << u"pipe.png"_s << EINVAL;
    QTest::newRow("too large") << u"large.png"_s << EFBIG;
}

void tst_ThemeImages::whatCannotBeCopiedLeavesThePreviousPicture()
{
    QFETCH(QString, name);
    QFETCH(int, code);
    QCOMPARE(::mkfifo(QFile::encodeName(path(u"pipe.png"_s)).constData(), 0600), 0);
    QFile large(path(u"large.png"_s));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(50 * 1024 * 1024 + 1));
    Preferences preferences;
    QVERIFY(ThemeImages::setCustom(writePicture(u"a.png"_s, Qt::red), preferences, now));
    const QString before = preferences.get(preference::customImagePath);
    const auto result = ThemeImages::setCustom(path(name), preferences, now + 60);
    QVERIFY(!result);
    QCOMPARE(result.error().code, code);
    QCOMPARE(preferences.get(preference::customImagePath), before);
    QCOMPARE(ThemeImages::custom(preferences).pixelColor(0, 0), QColor(Qt::red));
}

void tst_ThemeImages::aDecodedPictureIsKept()
{
    const QString file = writePicture(u"a.png"_s, Qt::red);
    Preferences *preferences = chosen(file, this);
    QVERIFY(!ThemeImages::custom(*preferences).isNull());
    QVERIFY(QFile::remove(file));
    QVERIFY(!ThemeImages::custom(*preferences).isNull());
    ThemeImages::forgetDecoded();
    QVERIFY(ThemeImages::custom(*preferences).isNull());
    // What could not be decoded is not remembered.
    writePicture(u"a.png"_s, Qt::blue);
    QCOMPARE(ThemeImages::custom(*preferences).pixelColor(0, 0), QColor(Qt::blue));
}

void tst_ThemeImages::offersOnlyWhatItCanDecode()
{
    const QStringList formats = ThemeImages::formats();
    QVERIFY(formats.contains(u"png"_s) && formats.contains(u"jpg"_s) && formats.contains(u"jpeg"_s));
    QVERIFY(formats.contains(u"webp"_s)); // from a package beside Qt's own
    QVERIFY(!formats.contains(u"svg"_s)); // though there is a plugin for it
    QVERIFY(QImageReader::supportedImageFormats().contains("svg"));
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::red);
    for (const QString &format : formats) {
        QVERIFY2(QImageReader::supportedImageFormats().contains(format.toLatin1()), qPrintable(format));
        QByteArray content;
        QBuffer buffer(&content);
        buffer.open(QIODevice::WriteOnly);
        if (!image.save(&buffer, format.toLatin1().constData())) // Qt reads GIF and does not write it
            continue;
        QVERIFY2(!ThemeImages::custom(*chosen(write(u"picture."_s + format, content), this)).isNull(),
                 qPrintable(format));
    }
}

void tst_ThemeImages::whatIsNoRasterImageIsNoPicture_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("HTML") << QByteArray("<!DOCTYPE html><html><body>not found</body></html>");
    QTest::newRow("SVG") << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\">"
                                       "<rect width=\"9\" height=\"9\"/></svg>");
    QTest::newRow("SVG with a declaration")
        << QByteArray("<?xml version=\"1.0\"?><svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"/>");
    QImage image(64, 64, QImage::Format_RGB32);
    image.fill(Qt::red);
    QTest::newRow("broken") << png(image).left(60);
    QTest::newRow("noise") << QByteArray(4096, '\xff');
    // A PNG's header that promises 10,000 × 10,000 pixels.
    QByteArray huge = png(image);
    huge.replace(16, 8, QByteArray::fromHex("0000271000002710"));
    QTest::newRow("a hundred megapixels") << huge;
    QTest::newRow("too many bytes") << png(image) + QByteArray(50 * 1024 * 1024, '\0');
}

void tst_ThemeImages::whatIsNoRasterImageIsNoPicture()
{
    QFETCH(QByteArray, content);
    QVERIFY(ThemeImages::custom(*chosen(write(u"picture.jpg"_s, content), this)).isNull());
}

void tst_ThemeImages::aPictureThatClaimsToBeLongTakesNoMemory()
{
    QImage image(64, 64, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray text = QByteArray::fromHex("30303a3074455874") + QByteArray(20, 'a'); // a comment of 800 MB
    QByteArray content = png(image);
    content.insert(content.indexOf("IEND") - 4, text);
    const auto mostMemory = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss / 1024; // MB
    };
    const auto before = mostMemory();
    QVERIFY(ThemeImages::custom(*chosen(write(u"picture.png"_s, content), this)).isNull());
    QVERIFY2(mostMemory() < before + 100, qPrintable(QString::number(mostMemory() - before) + u" MB"_s));
    // What follows the end of the picture does not matter.
    QVERIFY(!ThemeImages::custom(*chosen(write(u"longer.png"_s, png(image) + text), this)).isNull());
}

void tst_ThemeImages::aLargePictureIsScaledDown()
{
    const QString file = writePicture(u"wide.png"_s, Qt::red, {8000, 1000});
    QCOMPARE(ThemeImages::custom(*chosen(file, this)).size(), QSize(4096, 512));
}

void tst_ThemeImages::aPictureIsLoadedWithoutWaiting()
{
    const Preferences preferences;
    const OverlayTheme zen = OverlayTheme::named(u"zen"_s);
    QVERIFY(ThemeImages::isReady(OverlayTheme::midnight(), preferences)); // has none
    QVERIFY(ThemeImages::isReady(OverlayTheme::named(u"custom"_s), preferences));
    QVERIFY(!ThemeImages::isReady(zen, preferences));
    QImage loaded;
    QObject context;
    ThemeImages::load(zen, preferences, {}, &context, [&](const QImage &image) {
        QCOMPARE(QThread::currentThread(), qApp->thread());
        loaded = image;
    });
    QVERIFY(loaded.isNull());
    QTRY_VERIFY(!loaded.isNull());
    QVERIFY(ThemeImages::isReady(zen, preferences));
    QCOMPARE(ThemeImages::bundled(u"zen"_s).cacheKey(), loaded.cacheKey());
    ThemeImages::forgetDecoded();
    QVERIFY(!ThemeImages::isReady(zen, preferences));
}

void tst_ThemeImages::noMoreIsKeptThanAViewShows_data()
{
    QTest::addColumn<QSize>("view");
    QTest::addColumn<QSize>("kept");
    QTest::newRow("a small screen") << QSize(800, 600) << QSize(920, 690); // 1.15 times: as close as it comes
    QTest::newRow("a large one") << QSize(3840, 2160) << QSize(2560, 1600);
    QTest::newRow("one that is high") << QSize(1080, 1920) << QSize(2560, 1600);
}

void tst_ThemeImages::noMoreIsKeptThanAViewShows()
{
    QFETCH(QSize, view);
    QFETCH(QSize, kept);
    std::optional<QImage> loaded;
    ThemeImages::load(OverlayTheme::named(u"zen"_s), Preferences(), view, this,
                      [&](const QImage &image) { loaded = image; });
    QTRY_VERIFY(loaded);
    QCOMPARE(loaded->size(), kept);
    QCOMPARE(loaded->format(), QImage::Format_RGB32);
}

void tst_ThemeImages::whatCannotBeReadIsLoadedAsNoPicture()
{
    const Preferences *preferences = chosen(write(u"a.png"_s, "nothing of the kind"), this);
    const OverlayTheme custom = OverlayTheme::named(u"custom"_s);
    std::optional<QImage> loaded;
    ThemeImages::load(custom, *preferences, {}, this, [&](const QImage &image) { loaded = image; });
    QTRY_VERIFY(loaded);
    QVERIFY(loaded->isNull());
    QVERIFY(!ThemeImages::isReady(custom, *preferences));
}

void tst_ThemeImages::nothingIsLoadedForSomethingThatIsGone()
{
    const Preferences preferences;
    const OverlayTheme zen = OverlayTheme::named(u"zen"_s);
    auto context = std::make_unique<QObject>();
    bool isCalled = false;
    ThemeImages::load(zen, preferences, {}, context.get(), [&](const QImage &) { isCalled = true; });
    context.reset();
    // What was asked for first is here first: the pool's threads are done, then this thread gets to hear of it.
    QVERIFY(QThreadPool::globalInstance()->waitForDone(20'000));
    QCoreApplication::sendPostedEvents();
    QVERIFY(!isCalled);
    QVERIFY(!ThemeImages::isReady(zen, preferences));
}

void tst_ThemeImages::transparencyIsBlack()
{
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(QColor(255, 255, 255, 128));
    const QImage shown = ThemeImages::custom(*chosen(write(u"glass.png"_s, png(image)), this));
    QCOMPARE(shown.pixelColor(1, 1), QColor(128, 128, 128));
}

QTEST_MAIN(tst_ThemeImages)
#include "tst_ThemeImages.moc"
