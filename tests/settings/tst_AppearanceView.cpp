#include "overlay/OverlayContent.h"
#include "settings/AppearanceFixture.h"
#include "settings/GridTile.h"
#include "settings/OptionSlider.h"
#include "settings/OverlayPreview.h"
#include "settings/ThemeCard.h"
#include "settings/ThemeGrid.h"
#include "sound/OverlaySounds.h"
#include "themes/Theme.h"
#include "ui/PlainText.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

class tst_AppearanceView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void samplesAMeetingThatIsAboutToBegin();
    void offersEachThemeThenASurpriseThenTheOwnPicture();
    void clickingATileChoosesItsTheme_data();
    void clickingATileChoosesItsTheme();
    void marksOnlyTheChosenTheme_data();
    void marksOnlyTheChosenTheme();
    void tellsWhatASurpriseMeans();
    void arrowKeysChooseTheNeighbour();
    void isOneStopForTheTabKey();
    void makesThumbnailsOneByOneAndDropsThemWhenHidden();

    void choosesAPictureWhereThereIsNone();
    void selectsThePictureThatIsThere();
    void takesAMissingPictureForNone();
    void tellsThatAPictureCannotBeUsed();
    void keepsEverythingWhenThePictureIsCancelled();
    void offersToDarkenOnlyTheOwnPicture();

    void namesTheGroupsInOrder();
    void writesEachOptionAtOnce();
    void offersExactlyTheseMinutes();
    void offersExactlyTheseDisplays();
    void showsNoChoiceForAStrangeValue();
    void slidersKeepWithinTheirRanges();
    void aDragIsKeptAtItsEndAtTheLatest();

    void listsTheSoundsInSections();
    void playsTheChosenSound();
    void noneNeedsNoControls();
    void asksForASoundFileWhereThereIsNone();
    void cancellingKeepsTheSoundBefore();
    void playsTheFileThatIsThere();
    void tellsThatASoundCannotBeUsed();
    void choosingSpotifyOnlyStops();
    void explainsTheSpotifyLink_data();
    void explainsTheSpotifyLink();
    void playsAndStopsOnDemand();

    void previewsFullScreen();
    void showsWhatIsChangedElsewhere();
    void countsDownWhileItIsShown();
    void controlsHaveNamesAndRoles_data();
    void controlsHaveNamesAndRoles();
    void choicesAreNamedAfterTheirGroups();
    void fitsOnASmallScreen();

private:
    [[nodiscard]] QStringList selected() const;
    [[nodiscard]] QSlider *slider(const QString &name) const { return window->control<QSlider>(name); }
    [[nodiscard]] QString theme() const { return window->preferences.get(preference::theme); }
    [[nodiscard]] QString sound() const { return window->preferences.get(preference::sound); }
    std::unique_ptr<AppearanceFixture> window;
};

void tst_AppearanceView::init()
{
    window = std::make_unique<AppearanceFixture>();
}

void tst_AppearanceView::cleanup()
{
    window.reset();
}

QStringList tst_AppearanceView::selected() const
{
    QStringList names;
    for (const GridTile *each : window->view->findChildren<GridTile *>()) {
        if (each->isChecked())
            names.append(each->id());
    }
    return names;
}

void tst_AppearanceView::samplesAMeetingThatIsAboutToBegin()
{
    const Meeting sample = AppearanceView::sampleMeeting({1000});
    QCOMPARE(sample.id, u"preview"_s);
    QCOMPARE(sample.title, u"Weekly design review"_s);
    QCOMPARE(sample.start.secondsSince1970, 1052.0);
    QCOMPARE(sample.end.secondsSince1970, 2852.0);
    QCOMPARE(sample.provider().value_or(QString()), u"Google Meet"_s);
    QCOMPARE(sample.attendeeCount, 6);
    QCOMPARE(sample.calendarName, u"Work"_s);
}

void tst_AppearanceView::offersEachThemeThenASurpriseThenTheOwnPicture()
{
    window->open();
    QStringList ids;
    QStringList names;
    for (const GridTile *each : window->view->findChildren<GridTile *>()) {
        ids.append(each->id());
        names.append(each->accessibleName().isEmpty() ? each->text() : each->accessibleName());
    }
    QCOMPARE(ids, (QStringList{u"midnight"_s, u"aurora"_s, u"synthwave"_s, u"paper"_s, u"terminal"_s, u"zen"_s,
                               u"space"_s, u"lofi"_s, u"random"_s, u"custom"_s}));
    QCOMPARE(names, (QStringList{u"Midnight"_s, u"Aurora"_s, u"Synthwave"_s, u"Paper"_s, u"Terminal"_s, u"Zen"_s,
                                 u"Deep Space"_s, u"Lo-fi Rain"_s, u"Surprise me"_s, u"Choose image…"_s}));
    const auto tiles = window->view->findChildren<GridTile *>();
    QCOMPARE(tiles.first()->pictureFrame().size(), QSizeF(150, 94));
    for (qsizetype i = 1; i < tiles.size(); ++i) // in rows, from the leading side
        QVERIFY(tiles[i]->y() > tiles[i - 1]->y() || tiles[i]->x() > tiles[i - 1]->x());
    QCOMPARE(window->view->findChild<OverlayPreview *>()->size(), QSize(620, 388));
}

void tst_AppearanceView::clickingATileChoosesItsTheme_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("id");
    for (const OverlayTheme &each : OverlayTheme::all()) {
        if (each.id != u"custom")
            QTest::addRow("%s", qPrintable(each.id)) << each.name << each.id;
    }
    QTest::newRow("random") << u"Surprise me"_s << u"random"_s;
}

void tst_AppearanceView::clickingATileChoosesItsTheme()
{
    QFETCH(QString, name);
    QFETCH(QString, id);
    window->preferences.set(preference::theme, u"nope"_s);
    window->open();
    window->click(name);
    QCOMPARE(theme(), id);
    QCOMPARE(selected(), QStringList{id});
    window->click(name); // stays chosen
    QCOMPARE(theme(), id);
    QCOMPARE(selected(), QStringList{id});
}

void tst_AppearanceView::marksOnlyTheChosenTheme_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QStringList>("marked");
    QTest::addColumn<QString>("preview");
    QTest::newRow("usual") << u"midnight"_s << QStringList{u"midnight"_s} << u"Preview of Midnight"_s;
    QTest::newRow("random") << u"random"_s << QStringList{u"random"_s} << u"Preview of a random theme"_s;
    QTest::newRow("unknown") << u"nope"_s << QStringList{} << u"Preview of Midnight"_s;
    QTest::newRow("wrong case") << u"Paper"_s << QStringList{} << u"Preview of Midnight"_s;
    QTest::newRow("own, without a picture") << u"custom"_s << QStringList{u"custom"_s} << u"Preview of Your image"_s;
}

void tst_AppearanceView::marksOnlyTheChosenTheme()
{
    QFETCH(QString, stored);
    QFETCH(QStringList, marked);
    QFETCH(QString, preview);
    window->preferences.set(preference::theme, stored);
    window->open();
    QCOMPARE(selected(), marked);
    QCOMPARE(window->view->findChild<OverlayPreview *>()->accessibleName(), preview);
    QCOMPARE(theme(), stored); // looking changes nothing
}

void tst_AppearanceView::tellsWhatASurpriseMeans()
{
    window->open();
    QVERIFY(!window->reads(u"A different theme each meeting"_s));
    window->click(u"Surprise me"_s);
    QVERIFY(window->reads(u"A different theme each meeting"_s));
    window->click(u"Paper"_s);
    QVERIFY(!window->reads(u"A different theme each meeting"_s));
}

void tst_AppearanceView::arrowKeysChooseTheNeighbour()
{
    window->open();
    window->click(u"Midnight"_s);
    const auto press = [&](Qt::Key key) {
        QTest::keyClick(QApplication::focusWidget(), key);
        window->settle();
    };
    press(Qt::Key_Right);
    QCOMPARE(theme(), u"aurora"_s);
    press(Qt::Key_Down); // four columns
    QCOMPARE(theme(), u"zen"_s);
    press(Qt::Key_Left);
    QCOMPARE(theme(), u"terminal"_s);
    press(Qt::Key_Up);
    QCOMPARE(theme(), u"midnight"_s);
    press(Qt::Key_Up); // nothing above
    QCOMPARE(theme(), u"midnight"_s);
    press(Qt::Key_End); // the own picture, of which there is none: no dialog by an arrow key
    QCOMPARE(theme(), u"midnight"_s);
    QVERIFY(!window->dialog());
    QCOMPARE(QApplication::focusWidget(), window->button(u"Choose image…"_s));
    press(Qt::Key_Left);
    QCOMPARE(theme(), u"random"_s);
    press(Qt::Key_Home);
    QCOMPARE(theme(), u"midnight"_s);
}

void tst_AppearanceView::isOneStopForTheTabKey()
{
    window->preferences.set(preference::theme, u"zen"_s);
    window->open();
    window->button(u"Zen"_s)->setFocus();
    QTest::keyClick(window->view.get(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), window->button(u"Pill"_s));
    QTest::keyClick(window->view.get(), Qt::Key_Backtab);
    QCOMPARE(QApplication::focusWidget(), window->button(u"Zen"_s));
}

void tst_AppearanceView::makesThumbnailsOneByOneAndDropsThemWhenHidden()
{
    const auto made = [this] {
        int count = 0;
        for (const ThemeCard *each : window->view->findChildren<ThemeCard *>())
            count += each->thumbnail().isNull() ? 0 : 1;
        return count;
    };
    window->view->show();
    QVERIFY(QTest::qWaitForWindowExposed(window->view.get()));
    QCOMPARE(made(), 0); // the window is there before its pictures
    window->clock.advance(0);
    QVERIFY(made() >= 1);
    for (int i = 0; i < 10; ++i)
        window->clock.advance(0.001);
    QCOMPARE(made(), 8);
    window->view->hide();
    QCOMPARE(made(), 0);
    const int before = window->clock.wakeUps();
    window->clock.advance(60);
    QCOMPARE(window->clock.wakeUps(), before); // closed, it does nothing
}

void tst_AppearanceView::choosesAPictureWhereThereIsNone()
{
    window->open();
    window->click(u"Choose image…"_s);
    QVERIFY(window->dialog());
    QCOMPARE(window->dialog()->windowTitle(), u"Choose a background for the meeting overlay"_s);
    QCOMPARE(window->dialog()->fileMode(), QFileDialog::ExistingFile);
    QVERIFY(window->dialog()->nameFilters().size() == 1);
    QVERIFY(window->dialog()->nameFilters().first().contains(u"*.png"_s));
    QVERIFY(!window->dialog()->nameFilters().first().contains(u"*.svg"_s));
    QCOMPARE(theme(), u"midnight"_s);
    window->answer(window->makePicture(u"beach.png"_s));
    QTRY_COMPARE(theme(), u"custom"_s);
    const QString copy = window->preferences.get(preference::customImagePath);
    QCOMPARE(QFileInfo(copy).fileName(), u"background-1767258000.png"_s);
    QVERIFY(QFile::exists(copy));
    window->settle();
    QTRY_VERIFY(window->button(u"Your image"_s));
    QVERIFY(window->reads(u"Your image"_s)); // the group
}

void tst_AppearanceView::selectsThePictureThatIsThere()
{
    window->preferences.set(preference::customImagePath, window->makePicture(u"own.png"_s));
    window->open();
    QTRY_VERIFY(window->button(u"Your image"_s));
    window->click(u"Your image"_s);
    QVERIFY(!window->dialog());
    QCOMPARE(theme(), u"custom"_s);
    window->click(u"Change image…"_s);
    QVERIFY(window->dialog());
    window->answer({});
    QCOMPARE(theme(), u"custom"_s);
}

void tst_AppearanceView::takesAMissingPictureForNone()
{
    window->preferences.set(preference::customImagePath, window->path(u"gone.png"_s));
    window->open();
    QTRY_VERIFY(window->button(u"Choose image…"_s));
    window->click(u"Choose image…"_s);
    QVERIFY(window->dialog());
    window->answer({});
    QCOMPARE(theme(), u"midnight"_s);
}

void tst_AppearanceView::tellsThatAPictureCannotBeUsed()
{
    window->preferences.set(preference::customImagePath, window->makePicture(u"own.png"_s));
    const QString before = window->preferences.get(preference::customImagePath);
    window->preferences.set(preference::theme, u"custom"_s);
    window->open();
    const QString broken = window->path(u"broken.png"_s);
    QFile file(broken);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no picture") > 0);
    file.close();
    window->click(u"Change image…"_s);
    window->answer(broken);
    QTRY_VERIFY(window->reads(u"Couldn't use that image: it is not a picture that Kelp can show."_s));
    QCOMPARE(window->preferences.get(preference::customImagePath), before);
    QVERIFY(QFile::exists(before));

    window->click(u"Change image…"_s); // a good one takes the message away
    window->answer(window->makePicture(u"good.png"_s, Qt::red));
    QTRY_VERIFY(window->preferences.get(preference::customImagePath) != before);
    QVERIFY(window->texts().filter(u"Couldn't"_s).isEmpty());
}

void tst_AppearanceView::keepsEverythingWhenThePictureIsCancelled()
{
    window->open();
    const QJsonObject before = window->preferences.values();
    window->click(u"Choose image…"_s);
    window->answer({});
    QCOMPARE(window->preferences.values(), before);
    QCOMPARE(selected(), QStringList{u"midnight"_s});
}

void tst_AppearanceView::offersToDarkenOnlyTheOwnPicture()
{
    window->open();
    QVERIFY(!window->reads(u"Your image"_s));
    QVERIFY(!window->button(u"Change image…"_s));
    window->preferences.set(preference::theme, u"custom"_s);
    QVERIFY(window->reads(u"Your image"_s));
    QVERIFY(window->button(u"Change image…"_s));
    QVERIFY(window->reads(u"Darken the image so text stays readable."_s));
    QCOMPARE(slider(u"Darken the image"_s)->value(), 45);
    window->preferences.set(preference::theme, u"random"_s);
    QVERIFY(!window->reads(u"Your image"_s));
}

void tst_AppearanceView::namesTheGroupsInOrder()
{
    window->preferences.set(preference::theme, u"custom"_s);
    window->open();
    const QStringList texts = window->texts();
    QList<qsizetype> places;
    for (const QString &each :
         {u"Overlay"_s, u"Your image"_s, u"Countdown"_s, u"Show"_s, u"Snooze for"_s, u"Sound"_s, u"Cover"_s}) {
        const auto labels = window->view->findChildren<QLabel *>();
        const auto found =
            std::find_if(labels.begin(), labels.end(), [&](QLabel *label) { return label->text() == each; });
        QVERIFY2(found != labels.end(), qPrintable(each));
        places.append((*found)->mapTo(window->view.get(), QPoint()).y());
    }
    QVERIFY(std::is_sorted(places.begin(), places.end()));
    QVERIFY(texts.contains(u"Pauses Spotify and Apple Music when the overlay opens."_s));
    QVERIFY(texts.contains(u"Esc closes the preview."_s));
}

void tst_AppearanceView::writesEachOptionAtOnce()
{
    window->open();
    window->click(u"Big ring"_s);
    QCOMPARE(window->preferences.get(preference::countdownStyle), u"ring"_s);
    window->click(u"Pill"_s);
    QCOMPARE(window->preferences.get(preference::countdownStyle), u"pill"_s);
    window->click(u"Number of people"_s);
    QCOMPARE(window->preferences.get(preference::showAttendees), false);
    window->click(u"Calendar name"_s);
    QCOMPARE(window->preferences.get(preference::showCalendar), false);
    window->click(u"Pause my music"_s);
    QCOMPARE(window->preferences.get(preference::pauseMusic), true);
    window->choose(u"Snooze for"_s, u"10 min"_s);
    QCOMPARE(window->preferences.get(preference::snoozeMinutes), 10);
    QVERIFY(window->preferences.values().value(u"snoozeMinutes"_s).isDouble());
    window->choose(u"Cover"_s, u"Main display"_s);
    QCOMPARE(window->preferences.get(preference::displays), u"primary"_s);
    window->choose(u"Cover"_s, u"All displays"_s);
    QCOMPARE(window->preferences.get(preference::displays), u"all"_s);
    QTest::keyClick(slider(u"Volume"_s), Qt::Key_Right);
    QCOMPARE(window->preferences.get(preference::soundVolume), 0.85);
}

void tst_AppearanceView::offersExactlyTheseMinutes()
{
    window->open();
    const auto *box = window->control<QComboBox>(u"Snooze for"_s);
    QStringList items;
    for (int i = 0; i < box->count(); ++i)
        items.append(box->itemText(i));
    QCOMPARE(items, (QStringList{u"1 min"_s, u"2 min"_s, u"5 min"_s, u"10 min"_s}));
    QCOMPARE(box->currentText(), u"1 min"_s);
}

void tst_AppearanceView::offersExactlyTheseDisplays()
{
    window->open();
    const auto *box = window->control<QComboBox>(u"Cover"_s);
    QCOMPARE(box->count(), 2);
    QCOMPARE(box->itemText(0), u"All displays"_s);
    QCOMPARE(box->itemText(1), u"Main display"_s);
    QCOMPARE(box->currentText(), u"All displays"_s);
}

void tst_AppearanceView::showsNoChoiceForAStrangeValue()
{
    window = std::make_unique<AppearanceFixture>(QJsonObject{{u"snoozeMinutes"_s, 3},
                                                             {u"displays"_s, u"some"_s},
                                                             {u"sound"_s, u"Kazoo"_s},
                                                             {u"countdownStyle"_s, u"Ring"_s},
                                                             {u"soundVolume"_s, u"loud"_s},
                                                             {u"customDim"_s, 7}});
    window->preferences.set(preference::theme, u"custom"_s);
    const QJsonObject before = window->preferences.values();
    window->open();
    for (const QString &name : {u"Snooze for"_s, u"Cover"_s, u"Sound"_s})
        QCOMPARE(window->control<QComboBox>(name)->currentIndex(), -1);
    QVERIFY(!static_cast<QRadioButton *>(window->button(u"Pill"_s))->isChecked());
    QVERIFY(!static_cast<QRadioButton *>(window->button(u"Big ring"_s))->isChecked());
    QCOMPARE(slider(u"Volume"_s)->value(), 10);
    QCOMPARE(slider(u"Darken the image"_s)->value(), 85);
    QCOMPARE(window->preferences.values(), before);
}

void tst_AppearanceView::slidersKeepWithinTheirRanges()
{
    window->preferences.set(preference::theme, u"custom"_s);
    window->open();
    QSlider *volume = slider(u"Volume"_s);
    QSlider *dim = slider(u"Darken the image"_s);
    QTest::keyClick(volume, Qt::Key_Home);
    QTest::keyClick(volume, Qt::Key_Left);
    QCOMPARE(window->preferences.get(preference::soundVolume), 0.1);
    QTest::keyClick(volume, Qt::Key_End);
    QTest::keyClick(volume, Qt::Key_Right);
    QCOMPARE(window->preferences.get(preference::soundVolume), 1.0);
    QTest::keyClick(dim, Qt::Key_End);
    QTest::keyClick(dim, Qt::Key_Right);
    QCOMPARE(window->preferences.get(preference::customDim), 0.85);
    QTest::keyClick(dim, Qt::Key_Home);
    QCOMPARE(window->preferences.get(preference::customDim), 0.0);
    QTest::mouseClick(volume, Qt::LeftButton, {}, {0, volume->height() / 2});
    QCOMPARE(window->preferences.get(preference::soundVolume), 0.1);
    QTest::mouseClick(volume, Qt::LeftButton, {}, {volume->width() - 1, volume->height() / 2});
    QCOMPARE(window->preferences.get(preference::soundVolume), 1.0);
}

void tst_AppearanceView::aDragIsKeptAtItsEndAtTheLatest()
{
    window->open();
    QSlider *volume = slider(u"Volume"_s);
    int writes = 0;
    window->preferences.observe(preference::soundVolume, window->view.get(), [&writes] { ++writes; });
    const int middle = volume->height() / 2;
    QTest::mousePress(volume, Qt::LeftButton, {}, {volume->width() - 1, middle});
    for (int x = volume->width() - 2; x > 20; --x)
        QTest::mouseMove(volume, {x, middle});
    QVERIFY(writes <= 1);
    window->clock.advance(0.11);
    const int during = writes;
    QVERIFY(during >= 1);
    QTest::mouseMove(volume, {2, middle});
    QTest::mouseRelease(volume, Qt::LeftButton, {}, {2, middle});
    QCOMPARE(writes, during + 1);
    QCOMPARE(window->preferences.get(preference::soundVolume), 0.1);
}

void tst_AppearanceView::listsTheSoundsInSections()
{
    window->open();
    const auto *box = window->control<QComboBox>(u"Sound"_s);
    QStringList expected{u"None"_s, u"[Kelp chimes]"_s};
    expected += OverlaySounds::chimes();
    expected += u"[Mac sounds]"_s;
    expected += OverlaySounds::system();
    expected += {u"[Your own]"_s, u"Audio file…"_s, u"Spotify song"_s};
    QStringList items;
    for (int i = 0; i < box->count(); ++i) {
        const bool isChoice = box->model()->flags(box->model()->index(i, 0)).testFlag(Qt::ItemIsSelectable);
        items.append(isChoice ? box->itemText(i) : u"[%1]"_s.arg(box->itemText(i)));
    }
    QCOMPARE(items, expected);
    QCOMPARE(box->count(), 1 + 8 + 9 + 2 + 3);
    QCOMPARE(box->currentText(), u"Glass"_s);
    window->preferences.set(preference::customSoundPath, u"/x/bell.ogg"_s);
    window->preferences.set(preference::customSoundName, u"a & b\n"_s);
    QCOMPARE(withoutIsolates(box->itemText(box->count() - 2)), u"File: a & b"_s);
}

void tst_AppearanceView::playsTheChosenSound()
{
    window->open();
    window->choose(u"Sound"_s, u"Bells"_s);
    QCOMPARE(sound(), u"Bells"_s);
    QCOMPARE(window->heard, QStringList{u"play Bells"_s});
    window->choose(u"Sound"_s, u"Bells"_s); // no change
    QCOMPARE(window->heard.size(), 1);
    window->choose(u"Sound"_s, u"Submarine"_s);
    QCOMPARE(window->heard.last(), u"play Submarine"_s);
    window->preferences.set(preference::sound, u"Harp"_s); // elsewhere: nobody wants to hear it here
    QCOMPARE(window->heard.size(), 2);
    window->choose(u"Sound"_s, u"None"_s);
    QCOMPARE(sound(), u"None"_s);
    QCOMPARE(window->heard.last(), u"play None"_s); // which stops the one before
}

void tst_AppearanceView::noneNeedsNoControls()
{
    window->open();
    QVERIFY(window->button(u"Play sound"_s)->isEnabled());
    QVERIFY(window->button(u"Stop"_s)->isEnabled());
    QVERIFY(slider(u"Volume"_s));
    window->preferences.set(preference::sound, u"None"_s);
    QVERIFY(!window->button(u"Play sound"_s)->isEnabled());
    QVERIFY(!window->button(u"Stop"_s)->isEnabled());
    QVERIFY(!slider(u"Volume"_s));
    QVERIFY(window->button(u"Pause my music"_s)->isEnabled());
}

void tst_AppearanceView::asksForASoundFileWhereThereIsNone()
{
    window->open();
    QVERIFY(!window->button(u"Change file…"_s));
    window->choose(u"Sound"_s, u"Audio file…"_s);
    QVERIFY(window->dialog());
    QCOMPARE(window->dialog()->windowTitle(), u"Choose a sound for the meeting overlay"_s);
    QCOMPARE(window->dialog()->fileMode(), QFileDialog::ExistingFile);
    QVERIFY(window->dialog()->nameFilters().first().contains(u"*.mp3"_s));
    const QString file = window->makePicture(u"bell.ogg"_s);
    window->answer(file);
    QCOMPARE(window->adoptedSounds, QStringList{file});
    QCOMPARE(sound(), u"custom"_s);
    QCOMPARE(window->heard, QStringList{u"play custom"_s});
    QCOMPARE(withoutIsolates(window->control<QComboBox>(u"Sound"_s)->currentText()), u"File: bell"_s);
    QVERIFY(window->button(u"Change file…"_s));
}

void tst_AppearanceView::cancellingKeepsTheSoundBefore()
{
    window->open();
    window->choose(u"Sound"_s, u"Hero"_s);
    window->choose(u"Sound"_s, u"Audio file…"_s);
    window->answer({});
    QCOMPARE(sound(), u"Hero"_s);
    QCOMPARE(window->control<QComboBox>(u"Sound"_s)->currentText(), u"Hero"_s);
    QVERIFY(window->adoptedSounds.isEmpty());
    QCOMPARE(window->heard, QStringList{u"play Hero"_s});
}

void tst_AppearanceView::playsTheFileThatIsThere()
{
    window->preferences.set(preference::customSoundPath, u"/x/bell.ogg"_s);
    window->preferences.set(preference::customSoundName, u"bell"_s);
    window->open();
    window->choose(u"Sound"_s, u"File: bell"_s);
    QVERIFY(!window->dialog());
    QCOMPARE(sound(), u"custom"_s);
    QCOMPARE(window->heard, QStringList{u"play custom"_s});
    window->click(u"Change file…"_s);
    QVERIFY(window->dialog());
    window->answer({});
    QCOMPARE(sound(), u"custom"_s);
}

void tst_AppearanceView::tellsThatASoundCannotBeUsed()
{
    window->open();
    window->adoptionError = u"The file is broken."_s;
    window->choose(u"Sound"_s, u"Audio file…"_s);
    window->answer(window->makePicture(u"noise.mp3"_s));
    QVERIFY(window->reads(u"Couldn't use that sound: The file is broken."_s));
    QCOMPARE(sound(), u"Glass"_s);
    QCOMPARE(window->control<QComboBox>(u"Sound"_s)->currentText(), u"Glass"_s);
    QVERIFY(window->heard.isEmpty());
}

void tst_AppearanceView::choosingSpotifyOnlyStops()
{
    window->open();
    window->choose(u"Sound"_s, u"Spotify song"_s);
    QCOMPARE(sound(), u"spotify"_s);
    QCOMPARE(window->heard, QStringList{u"stop"_s});
    auto *link = window->control<QLineEdit>(u"Spotify link"_s);
    QVERIFY(link);
    QCOMPARE(link->placeholderText(), u"Paste a Spotify song or playlist link"_s);
    QTest::keyClicks(link, u"abc"_s);
    QCOMPARE(window->preferences.get(preference::spotifyLink), u"abc"_s);
    QVERIFY(slider(u"Volume"_s));
    window->choose(u"Sound"_s, u"Glass"_s);
    QVERIFY(!window->control<QLineEdit>(u"Spotify link"_s));
}

void tst_AppearanceView::explainsTheSpotifyLink_data()
{
    QTest::addColumn<bool>("installed");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("note");
    const QString absent = u"Spotify isn't installed, so Kelp will play Glass instead."_s;
    const QString wrong = u"That doesn't look like a Spotify link. In Spotify: Share → Copy link."_s;
    const QString plays = u"Plays in the Spotify app, and stops when you join, snooze or dismiss."_s;
    const QString song = u"https://open.spotify.com/track/4uLU6hMCjMI75M1A2tKUQC"_s;
    QTest::newRow("empty") << true << QString() << plays;
    QTest::newRow("song") << true << song << plays;
    QTest::newRow("no link") << true << u"my favourite song"_s << wrong;
    QTest::newRow("absent, empty") << false << QString() << absent;
    QTest::newRow("absent, song") << false << song << absent;
    QTest::newRow("absent, no link") << false << u"x"_s << absent;
}

void tst_AppearanceView::explainsTheSpotifyLink()
{
    QFETCH(bool, installed);
    QFETCH(QString, link);
    QFETCH(QString, note);
    window->hasSpotify = installed;
    window->preferences.set(preference::sound, u"spotify"_s);
    window->preferences.set(preference::spotifyLink, link);
    window->open();
    QVERIFY2(window->reads(note), qPrintable(window->texts().join(u'\n')));
    window->hasSpotify = true; // it has been installed meanwhile
    window->clock.advance(2.5);
    QVERIFY(!window->reads(u"Spotify isn't installed, so Kelp will play Glass instead."_s));
}

void tst_AppearanceView::playsAndStopsOnDemand()
{
    window->preferences.set(preference::sound, u"Purr"_s);
    window->open();
    window->click(u"Play sound"_s);
    window->click(u"Stop"_s);
    QCOMPARE(window->heard, (QStringList{u"play Purr"_s, u"stop"_s}));
    QCOMPARE(window->button(u"Play sound"_s)->toolTip(), u"Play sound"_s);
    QCOMPARE(window->button(u"Stop"_s)->toolTip(), u"Stop"_s);
}

void tst_AppearanceView::previewsFullScreen()
{
    window->open();
    window->click(u"Preview full screen"_s);
    QCOMPARE(window->previews, 1);
    QVERIFY(window->view->isVisible());
}

void tst_AppearanceView::showsWhatIsChangedElsewhere()
{
    window->open();
    window->preferences.set(preference::theme, u"paper"_s);
    QCOMPARE(selected(), QStringList{u"paper"_s});
    window->preferences.set(preference::countdownStyle, u"ring"_s);
    QVERIFY(static_cast<QRadioButton *>(window->button(u"Big ring"_s))->isChecked());
    window->preferences.set(preference::snoozeMinutes, 5);
    QCOMPARE(window->control<QComboBox>(u"Snooze for"_s)->currentText(), u"5 min"_s);
    window->preferences.set(preference::soundVolume, 0.3);
    QCOMPARE(slider(u"Volume"_s)->value(), 30);
    window->preferences.set(preference::showCalendar, false);
    QVERIFY(!static_cast<QCheckBox *>(window->button(u"Calendar name"_s))->isChecked());
    window->preferences.set(preference::pauseMusic, true);
    QVERIFY(static_cast<QCheckBox *>(window->button(u"Pause my music"_s))->isChecked());
}

void tst_AppearanceView::countsDownWhileItIsShown()
{
    window->open();
    const auto preview = [this] {
        window->settle();
        return window->view->findChild<OverlayPreview *>()->grab().toImage();
    };
    const QImage before = preview();
    QCOMPARE(preview(), before);
    window->clock.advance(2);
    const QImage later = preview();
    QVERIFY(later != before);
    window->click(u"Big ring"_s);
    QVERIFY(preview() != later);
}

void tst_AppearanceView::controlsHaveNamesAndRoles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QAccessible::Role>("role");
    QTest::newRow("theme") << u"Deep Space"_s << QAccessible::RadioButton;
    QTest::newRow("random") << u"Surprise me"_s << QAccessible::RadioButton;
    QTest::newRow("picture") << u"Choose image…"_s << QAccessible::RadioButton;
    QTest::newRow("countdown") << u"Big ring"_s << QAccessible::RadioButton;
    QTest::newRow("switch") << u"Number of people"_s << QAccessible::CheckBox;
    QTest::newRow("play") << u"Play sound"_s << QAccessible::Button;
    QTest::newRow("stop") << u"Stop"_s << QAccessible::Button;
    QTest::newRow("preview") << u"Preview full screen"_s << QAccessible::Button;
    QTest::newRow("sound") << u"Glass"_s << QAccessible::ComboBox;
    QTest::newRow("snooze") << u"1 min"_s << QAccessible::ComboBox;
    QTest::newRow("cover") << u"All displays"_s << QAccessible::ComboBox;
    QTest::newRow("volume") << u"Volume"_s << QAccessible::Slider;
}

void tst_AppearanceView::controlsHaveNamesAndRoles()
{
    QFETCH(QString, name);
    QFETCH(QAccessible::Role, role);
    window->open();
    bool isThere = false;
    for (QWidget *each : window->view->findChildren<QWidget *>()) {
        const QAccessibleInterface *spoken = QAccessible::queryAccessibleInterface(each);
        isThere = isThere ||
                  (spoken && each->isVisible() && spoken->text(QAccessible::Name) == name && spoken->role() == role);
    }
    QVERIFY(isThere);
}

void tst_AppearanceView::choicesAreNamedAfterTheirGroups()
{
    window->open();
    for (const QString &name : {u"Snooze for"_s, u"Sound"_s, u"Cover"_s}) {
        const auto *spoken = QAccessible::queryAccessibleInterface(window->control<QComboBox>(name));
        const auto labels = spoken->relations(QAccessible::Label);
        QCOMPARE(labels.size(), 1);
        QCOMPARE(labels.first().first->text(QAccessible::Name), name);
    }
}

void tst_AppearanceView::fitsOnASmallScreen()
{
    window->view->fit({0, 0, 1920, 1080});
    QCOMPARE(window->view->size(), QSize(960, 680));
    QCOMPARE(window->view->geometry().center(), QPoint(959, 539));
    window->view->fit({0, 0, 1280, 680});
    QCOMPARE(window->view->size(), QSize(960, 640));
    window->view->resize(window->view->minimumSize());
    window->open();
    const auto *preview = window->view->findChild<OverlayPreview *>();
    const auto *grid = window->view->findChild<ThemeGrid *>();
    QVERIFY(preview->width() >= 360);
    QVERIFY(grid->mapTo(window->view.get(), QPoint()).y() + 150 <= window->view->height()); // a whole row is seen
    QVERIFY(std::abs(preview->width() / static_cast<double>(preview->height()) - 1.6) < 0.01);
}

QTEST_MAIN(tst_AppearanceView)
#include "tst_AppearanceView.moc"
