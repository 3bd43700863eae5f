#include "themes/ThemeImages.h"

#include "base/Folders.h"
#include "preferences/Preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

/// The user's picture where Kelp's own folder is not what it should be.
class tst_CustomPicture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatCannotBeWrittenLeavesThePreviousPicture();
};

void tst_CustomPicture::whatCannotBeWrittenLeavesThePreviousPicture()
{
    const QTemporaryDir folder;
    qputenv("XDG_DATA_HOME", QFile::encodeName(folder.filePath(u"data"_s)));
    const auto saved = [&](const QString &name) {
        QImage image(8, 6, QImage::Format_RGB32);
        image.fill(Qt::red);
        return image.save(folder.filePath(name)) ? folder.filePath(name) : QString();
    };
    const QString before = saved(u"before.png"_s);
    const QString picture = saved(u"chosen.png"_s);
    // A plain file in the place of the folder: nobody can write there, whatever they may do.
    QVERIFY(QDir().mkpath(QFileInfo(folders::data()).path()));
    QFile obstacle(folders::data());
    QVERIFY(obstacle.open(QIODevice::WriteOnly));
    obstacle.close();

    Preferences preferences;
    preferences.set(preference::customImagePath, before);
    const auto result = ThemeImages::setCustom(picture, preferences, Instant{1767261600});
    QVERIFY(!result);
    QVERIFY(!result.error().description().isEmpty());
    QCOMPARE(preferences.get(preference::customImagePath), before);
    QCOMPARE(ThemeImages::custom(preferences).pixelColor(0, 0), QColor(Qt::red));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files, QDir::Name), (QStringList{u"before.png"_s, u"chosen.png"_s}));
    const QFileInfo info(folders::data());
    QCOMPARE(info.dir().entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
             QStringList{info.fileName()});
    QCOMPARE(info.size(), 0);
}

QTEST_GUILESS_MAIN(tst_CustomPicture)
#include "tst_CustomPicture.moc"
