#include "settings/AppearanceFixture.h"
#include "settings/PreviewPicture.h"
#include "settings/WidgetPicture.h"
#include "themes/Theme.h"
#include "ui/DesktopPalette.h"
#include "ui/KelpStyle.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Renders the appearance window in its states, light and dark. With KELP_PICTURES set to a folder, the pictures are
/// left there to be looked at.
class tst_AppearancePictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void paintsAllOfTheWindow_data();
    void paintsAllOfTheWindow();
    void listsTheSounds_data();
    void listsTheSounds();
    void previewIsTheOverlayItself_data();
    void previewIsTheOverlayItself();
};

namespace {

using Setting = std::function<void(AppearanceFixture &)>;

void withImage(AppearanceFixture &window)
{
    window.preferences.set(preference::customImagePath, window.makePicture(u"own.png"_s));
    window.preferences.set(preference::theme, u"custom"_s);
    window.open();
}

} // namespace

void tst_AppearancePictures::initTestCase()
{
    QApplication::setStyle(new KelpStyle);
}

void tst_AppearancePictures::cleanupTestCase()
{
    QApplication::setPalette(QPalette());
}

void tst_AppearancePictures::paintsAllOfTheWindow_data()
{
    QTest::addColumn<Setting>("set");
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QSize>("size");
    const auto row = [](const char *name, const Setting &set, const QSize &size = AppearanceView::usualSize) {
        for (const bool dark : {false, true})
            QTest::addRow("%s-%s", name, dark ? "dark" : "light") << set << dark << size;
    };
    const auto theme = [](const QString &id) {
        return [id](AppearanceFixture &window) {
            window.preferences.set(preference::theme, id);
            window.open();
        };
    };
    row("midnight", theme(u"midnight"_s));
    row("aurora", theme(u"aurora"_s));
    row("paper", theme(u"paper"_s));
    row("random", theme(u"random"_s));
    row("unknown", theme(u"nope"_s));
    row("image", withImage);
    row("image-missing", [](AppearanceFixture &window) {
        window.preferences.set(preference::customImagePath, window.path(u"gone.png"_s));
        window.preferences.set(preference::theme, u"custom"_s);
        window.open();
    });
    row("spotify", [](AppearanceFixture &window) {
        window.preferences.set(preference::sound, u"spotify"_s);
        window.preferences.set(preference::spotifyLink, u"https://example.com/not-a-song"_s);
        window.preferences.set(preference::theme, u"synthwave"_s);
        window.preferences.set(preference::countdownStyle, u"ring"_s);
        window.open();
    });
    row("everything", [](AppearanceFixture &window) {
        window.preferences.set(preference::sound, u"custom"_s);
        window.preferences.set(preference::customSoundPath, u"/nowhere/bell.ogg"_s);
        window.preferences.set(preference::customSoundName, u"The bell of the old tower, recorded on a Sunday"_s);
        withImage(window);
        window.click(u"Change image…"_s);
        QVERIFY(QTest::qWaitFor([&] { return window.dialog() != nullptr; }));
        const QString broken = window.path(u"broken.png"_s);
        QFile file(broken);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no picture") > 0);
        file.close();
        window.answer(broken);
    });
    row("focus", [](AppearanceFixture &window) {
        window.preferences.set(preference::theme, u"zen"_s);
        window.open();
        window.button(u"Zen"_s)->setFocus(Qt::TabFocusReason);
        QTest::mouseMove(window.button(u"Lo-fi Rain"_s));
        window.settle();
    });
    row("focus-options", [](AppearanceFixture &window) {
        window.preferences.set(preference::theme, u"terminal"_s);
        window.open();
        window.button(u"Pill"_s)->setFocus(Qt::TabFocusReason);
    });
    row("small", theme(u"space"_s), QSize(820, 560));
    row("least", theme(u"space"_s), QSize(740, 500));
    row("wide", theme(u"lofi"_s), QSize(1500, 900));
    row("right-to-left", [](AppearanceFixture &window) {
        window.view->setLayoutDirection(Qt::RightToLeft);
        window.preferences.set(preference::theme, u"aurora"_s);
        window.open();
    });
}

void tst_AppearancePictures::paintsAllOfTheWindow()
{
    QFETCH(Setting, set);
    QFETCH(bool, dark);
    QFETCH(QSize, size);
    QApplication::setPalette(ownPalette(dark, {}));
    AppearanceFixture window;
    window.view->resize(size);
    set(window);
    for (int i = 0; i < 12; ++i) // a thumbnail each
        window.settle();
    QCOMPARE(window.view->size(), size);
    const QImage image = picture(*window.view, 1);
    save(image, QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(!hasMagenta(image));
    if (size == AppearanceView::usualSize)
        save(picture(*window.view, 2), QString::fromLatin1(QTest::currentDataTag()) + u"@2"_s);
    QCOMPARE(qGray(image.pixel(3, 3)) < 128, dark);
}

void tst_AppearancePictures::listsTheSounds_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("sounds-light") << false;
    QTest::newRow("sounds-dark") << true;
}

void tst_AppearancePictures::listsTheSounds()
{
    QFETCH(bool, dark);
    QApplication::setPalette(ownPalette(dark, {}));
    AppearanceFixture window;
    window.open();
    auto *box = window.control<QComboBox>(u"Sound"_s);
    QVERIFY(box);
    box->showPopup();
    QWidget *popup = QApplication::activePopupWidget();
    QVERIFY(popup);
    window.settle();
    const QImage image = picture(*popup, 2);
    save(image, QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(!hasMagenta(image));
    box->hidePopup();
}

void tst_AppearancePictures::previewIsTheOverlayItself_data()
{
    QTest::addColumn<QString>("id");
    for (const OverlayTheme &each : OverlayTheme::all())
        QTest::addRow("%s", qPrintable(each.id)) << each.id;
}

void tst_AppearancePictures::previewIsTheOverlayItself()
{
    QFETCH(QString, id);
    constexpr Instant now{1767258000};
    const OverlayScene scene{MeetingContent{AppearanceView::sampleMeeting(now), {}}, OverlayTheme::named(id), {}, {}};
    const QImage small = PreviewPicture(scene).paint(now, PreviewPicture::screen);
    QImage whole(PreviewPicture::screen, QImage::Format_RGB32);
    QPainter painter(&whole);
    scene.paint(painter, PreviewPicture::screen, now);
    painter.end();
    QCOMPARE(small, whole);
}

QTEST_MAIN(tst_AppearancePictures)
#include "tst_AppearancePictures.moc"
