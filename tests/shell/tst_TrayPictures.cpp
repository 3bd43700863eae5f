#include "shell/TrayPictures.h"

#include "shell/MenuBarIcon.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QSet>
#include <QSvgRenderer>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_TrayPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasAPictureForEveryLook();
    void showsMinutesOnlyWhereTheHostShowsNoTitle();
    void showsThePauseSignWhilePaused();
    void namesAreSafeForFiles();
    void hasTheRightPictureUnderEachName();
    void everyPictureLiesBesideKelp();
    void isSeenOnDarkAndOnLightGrounds_data();
    void isSeenOnDarkAndOnLightGrounds();
};

void tst_TrayPictures::hasAPictureForEveryLook()
{
    const QStringList names = TrayPictures::names();
    QCOMPARE(names.size(), 63);
    QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), 63);
    for (double seconds = -100; seconds < 4000; seconds += 7.5) {
        for (const bool isPaused : {false, true}) {
            const StatusLook look = statusLook(seconds, isPaused);
            QVERIFY(names.contains(look.icon));
            QVERIFY(names.contains(look.iconWithTitle));
        }
    }
    QVERIFY(names.contains(statusLook({}, false).icon));
}

void tst_TrayPictures::showsMinutesOnlyWhereTheHostShowsNoTitle()
{
    const StatusLook look = statusLook(300, false);
    QCOMPARE(look, (StatusLook{u"app.kelp.Kelp"_s, u"app.kelp.Kelp-5m"_s, u" 5m"_s, u"Kelp"_s}));
    QCOMPARE(statusLook(0, false).iconWithTitle, u"app.kelp.Kelp-now"_s);
    const StatusLook none = statusLook({}, false);
    QCOMPARE(none, (StatusLook{u"app.kelp.Kelp"_s, u"app.kelp.Kelp"_s, {}, u"Kelp"_s}));
}

void tst_TrayPictures::showsThePauseSignWhilePaused()
{
    const QString name = u"app.kelp.Kelp-paused"_s;
    QCOMPARE(statusLook(300, true), (StatusLook{name, name, {}, u"Kelp paused"_s}));
}

void tst_TrayPictures::namesAreSafeForFiles()
{
    for (const QString &name : TrayPictures::names()) {
        QVERIFY(name.startsWith("app.kelp.Kelp"_L1));
        QVERIFY(!name.contains(u'/') && !name.contains(u' '));
    }
}

void tst_TrayPictures::hasTheRightPictureUnderEachName()
{
    const auto svg = [](const MenuBarIcon::Content &content) {
        return MenuBarIcon::svg(content, QColor(0x2e, 0x34, 0x36));
    };
    QCOMPARE(TrayPictures::symbolicSvg(u"app.kelp.Kelp"_s), svg({}));
    QCOMPARE(TrayPictures::symbolicSvg(u"app.kelp.Kelp-paused"_s), svg({true, {}}));
    QCOMPARE(TrayPictures::symbolicSvg(u"app.kelp.Kelp-now"_s), svg({false, u"now"_s}));
    QCOMPARE(TrayPictures::symbolicSvg(u"app.kelp.Kelp-42m"_s), svg({false, u"42"_s}));
}

void tst_TrayPictures::everyPictureLiesBesideKelp()
{
    const QDir folder(qEnvironmentVariable("KELP_BINARY_DIR") + u"/tray"_s);
    const auto content = [&](const QString &name) {
        QFile file(folder.filePath(name + u".svg"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    for (const QString &name : TrayPictures::names()) {
        QCOMPARE(content(name), TrayPictures::svg(name));
        QCOMPARE(content(name + symbolicSuffix), TrayPictures::symbolicSvg(name));
    }
    QCOMPARE(folder.entryList(QDir::Files).size(), 2 * TrayPictures::names().size());
    // This program has none beside it.
    QCOMPARE(TrayPictures().folder(), QString());
}

void tst_TrayPictures::isSeenOnDarkAndOnLightGrounds_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : TrayPictures::names())
        QTest::newRow(qPrintable(name)) << name;
}

void tst_TrayPictures::isSeenOnDarkAndOnLightGrounds()
{
    QFETCH(QString, name);
    const TrayPictures pictures;
    for (const int size : {16, 22, 32, 64}) {
        const QImage image = pictures.image(name, size);
        QCOMPARE(image.size(), QSize(size, size));
        int light = 0;
        int dark = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const QColor pixel = image.pixelColor(x, y);
                light += pixel.alpha() > 200 && pixel.lightness() > 200;
                dark += pixel.alpha() > 40 && pixel.lightness() < 60;
            }
        }
        QVERIFY2(light > size, qPrintable(QString::number(light)));
        QVERIFY2(dark > size, qPrintable(QString::number(dark)));
        QSvgRenderer renderer(TrayPictures::svg(name));
        QImage drawn(size, size, QImage::Format_ARGB32_Premultiplied);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        renderer.render(&painter);
        painter.end();
        int differing = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x)
                differing += qAbs(qAlpha(drawn.pixel(x, y)) - qAlpha(image.pixel(x, y))) > 128;
        }
        QVERIFY2(differing < size * size / 12, qPrintable(QString::number(differing)));
    }
}

QTEST_MAIN(tst_TrayPictures)
#include "tst_TrayPictures.moc"
