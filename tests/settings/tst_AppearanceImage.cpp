#include "base/AtomicFile.h"
#include "base/Folders.h"
#include "overlay/OverlayContent.h"
#include "settings/AppearanceFixture.h"
#include "settings/GridTile.h"
#include "settings/PreviewPicture.h"
#include "settings/ThemeCard.h"
#include "settings/ThemeGrid.h"
#include "settings/WidgetPicture.h"
#include "themes/Theme.h"
#include "themes/ThemeImages.h"

#include <QDir>
#include <QHash>
#include <QSlider>
#include <QTest>

#include <cerrno>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// The user's own picture in the appearance window: its tile, how dark it is, and what cannot be taken.
class tst_AppearanceImage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theTileShowsThePicture();
    void theTileFollowsANewPicture();
    void darkeningPaintsOnlyTheOwnPicturesTile();
    void tellsThatAPictureCannotBeCopied();

private:
    [[nodiscard]] ThemeCard *card(const QString &id) const;
    [[nodiscard]] QImage expected(const QString &picture, double dim = 0.45) const;
    void openWith(const QString &picture);

    QTemporaryDir m_data;
    std::unique_ptr<AppearanceFixture> window;
    Instant m_opened;
};

void tst_AppearanceImage::initTestCase()
{
    qputenv("XDG_DATA_HOME", m_data.path().toUtf8()); // other tests take pictures at the same second
}

void tst_AppearanceImage::init()
{
    window = std::make_unique<AppearanceFixture>();
    m_opened = window->clock.now();
}

void tst_AppearanceImage::cleanup()
{
    window.reset();
    QDir(folders::data()).removeRecursively();
}

ThemeCard *tst_AppearanceImage::card(const QString &id) const
{
    for (ThemeCard *each : window->view->findChildren<ThemeCard *>()) {
        if (each->id() == id)
            return each;
    }
    return nullptr;
}

/// The thumbnail of an overlay over that picture.
QImage tst_AppearanceImage::expected(const QString &picture, double dim) const
{
    const MeetingContent content{AppearanceView::sampleMeeting(m_opened), {}};
    const BackgroundOptions background{.customDim = dim, .customPicture = ThemeImages::decoded(picture)};
    return PreviewPicture({content, OverlayTheme::named(u"custom"_s), {}, background})
        .paint(m_opened, window->view->findChild<ThemeGrid *>()->pictureSize());
}

void tst_AppearanceImage::openWith(const QString &picture)
{
    window->preferences.set(preference::customImagePath, picture);
    window->open();
    for (int i = 0; i < 12; ++i)
        window->settle(); // a thumbnail each
}

void tst_AppearanceImage::theTileShowsThePicture()
{
    const QString own = window->makePicture(u"own.png"_s, Qt::darkGreen);
    openWith(own);
    QCOMPARE(card(u"custom"_s)->thumbnail(), expected(own));
    const QRect whole = card(u"custom"_s)->pictureFrame().toRect();
    const QRect middle = whole.adjusted(12, 12, -12, -12);
    QCOMPARE(picture(*card(u"custom"_s), 1).copy(middle),
             expected(own).copy(middle.translated(-whole.topLeft())).convertToFormat(QImage::Format_RGB32));
}

void tst_AppearanceImage::theTileFollowsANewPicture()
{
    openWith(window->makePicture(u"own.png"_s, Qt::darkGreen));
    window->preferences.set(preference::theme, u"custom"_s);
    const QString another = window->makePicture(u"another.png"_s, Qt::red);
    window->click(u"Change image…"_s);
    window->answer(another);
    const QImage wanted = expected(another);
    QTRY_VERIFY((window->settle(), card(u"custom"_s)->thumbnail() == wanted));
}

void tst_AppearanceImage::darkeningPaintsOnlyTheOwnPicturesTile()
{
    const QString own = window->makePicture(u"own.png"_s, Qt::darkGreen);
    window->preferences.set(preference::theme, u"custom"_s);
    openWith(own);
    QHash<QString, qint64> before;
    for (const OverlayTheme &each : OverlayTheme::all())
        before.insert(each.id, card(each.id)->thumbnail().cacheKey());
    QTest::keyClick(window->control<QSlider>(u"Darken the image"_s), Qt::Key_End);
    for (int i = 0; i < 12; ++i)
        window->settle();
    QCOMPARE(card(u"custom"_s)->thumbnail(), expected(own, 0.85));
    for (const OverlayTheme &each : OverlayTheme::all())
        QCOMPARE(card(each.id)->thumbnail().cacheKey() == before.value(each.id), each.id != u"custom");
}

void tst_AppearanceImage::tellsThatAPictureCannotBeCopied()
{
    // A folder that is not empty, where the copy should go.
    const QString copy = folders::data() + u"/background-%1.png"_s.arg(m_opened.wholeSeconds());
    QVERIFY(QDir().mkpath(copy + u"/something"_s));
    window->open();
    window->click(u"Choose image…"_s);
    window->answer(window->makePicture(u"own.png"_s));
    const QString why = FileError{copy, EISDIR}.description();
    QTRY_VERIFY2(window->reads(u"Couldn't use that image: "_s + why), qPrintable(window->texts().join(u'\n')));
    QCOMPARE(window->preferences.get(preference::theme), u"midnight"_s);
    QCOMPARE(window->preferences.get(preference::customImagePath), QString());
    QVERIFY(window->button(u"Choose image…"_s));
}

QTEST_MAIN(tst_AppearanceImage)
#include "tst_AppearanceImage.moc"
