#include "settings/AppearanceFixture.h"
#include "settings/PanelLabel.h"
#include "settings/WidgetPicture.h"
#include "ui/DesktopColours.h"
#include "ui/DesktopPalette.h"
#include "ui/PlainText.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QTest>

#include <algorithm>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// The group "Sound" of the appearance window: what its choices start and stop, and when.
class tst_SoundOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void keysStepOverWhatAsksForAFile();
    void lettersDoNotAskForAFile();
    void keysReachTheFileThatIsThere();
    void aClickInTheListAsksForAFile();

    void stopsWhatItPlayedWhenHidden();
    void leavesTheSoundOfAReminderAlone();

    void changesTheFile();
    void aLateFileDoesNotReplaceANewerChoice();
    void aLateFileDoesNotReplaceTheSameChoiceMadeAgain();
    void aLateFileDoesNotReplaceANewerFile();
    void aLateFileIsNotHeardFromAClosedWindow();
    void aLateFileChangesNothingAfterAChoiceBeforeClosing();

    void theSpotifyLineWarnsInOrange_data();
    void theSpotifyLineWarnsInOrange();
    void theSpotifyLineFollowsTyping();

private:
    [[nodiscard]] QComboBox *picker() const { return window->control<QComboBox>(u"Sound"_s); }
    [[nodiscard]] QString sound() const { return window->preferences.get(preference::sound); }
    void press(Qt::Key key);
    void pickAFile(const QString &name);
    std::unique_ptr<AppearanceFixture> window;
};

namespace {

const QString wrongLink = u"That doesn't look like a Spotify link. In Spotify: Share → Copy link."_s;
const QString playsInSpotify = u"Plays in the Spotify app, and stops when you join, snooze or dismiss."_s;
const QString noSpotify = u"Spotify isn't installed, so Kelp will play Glass instead."_s;

} // namespace

void tst_SoundOptions::init()
{
    QApplication::setPalette(ownPalette(false, {}));
    window = std::make_unique<AppearanceFixture>();
}

void tst_SoundOptions::cleanup()
{
    window.reset();
    QApplication::setPalette(QPalette());
}

void tst_SoundOptions::press(Qt::Key key)
{
    QTest::keyClick(picker(), key);
    window->settle();
}

void tst_SoundOptions::pickAFile(const QString &name)
{
    if (window->button(u"Change file…"_s))
        window->click(u"Change file…"_s);
    else
        window->choose(u"Sound"_s, u"Audio file…"_s);
    window->answer(window->makePicture(name)); // nobody listens to it
}

void tst_SoundOptions::keysStepOverWhatAsksForAFile()
{
    window->preferences.set(preference::sound, u"Tink"_s); // the last before the user's own
    window->open();
    picker()->setFocus();
    press(Qt::Key_Down);
    QVERIFY(!window->dialog());
    QCOMPARE(sound(), u"spotify"_s);
    press(Qt::Key_Up);
    QVERIFY(!window->dialog());
    QCOMPARE(sound(), u"Tink"_s);
    press(Qt::Key_End);
    QCOMPARE(sound(), u"spotify"_s);
    press(Qt::Key_Home);
    QCOMPARE(sound(), u"None"_s);
    for (int i = 0; i < picker()->count(); ++i)
        press(Qt::Key_PageDown);
    QCOMPARE(sound(), u"spotify"_s);
    QVERIFY(!window->dialog());
    window->choose(u"Sound"_s, u"Audio file…"_s); // it is still there to be chosen
    QVERIFY(window->dialog());
}

void tst_SoundOptions::lettersDoNotAskForAFile()
{
    window->preferences.set(preference::sound, u"None"_s);
    window->open();
    picker()->setFocus();
    QTest::keyClicks(picker(), u"audio"_s);
    window->settle();
    QVERIFY(!window->dialog());
    QVERIFY(sound() != u"custom"_s);
}

void tst_SoundOptions::keysReachTheFileThatIsThere()
{
    window->preferences.set(preference::sound, u"Tink"_s);
    window->preferences.set(preference::customSoundPath, u"/x/bell.ogg"_s);
    window->open();
    picker()->setFocus();
    press(Qt::Key_Down);
    QCOMPARE(sound(), u"custom"_s);
    QCOMPARE(window->heard, QStringList{u"play custom"_s});
    press(Qt::Key_Down);
    QCOMPARE(sound(), u"spotify"_s);
    press(Qt::Key_Up);
    QCOMPARE(sound(), u"custom"_s);
    QVERIFY(!window->dialog());
}

void tst_SoundOptions::aClickInTheListAsksForAFile()
{
    window->open();
    picker()->showPopup();
    QAbstractItemView *list = picker()->view();
    const QModelIndex file = list->model()->index(picker()->findText(u"Audio file…"_s), 0);
    list->scrollTo(file);
    const QPoint at = list->visualRect(file).center();
    QTest::mouseMove(list->viewport(), at);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
    window->settle();
    QVERIFY(window->dialog());
    window->answer({});
    QCOMPARE(picker()->currentText(), u"Glass"_s);
}

void tst_SoundOptions::stopsWhatItPlayedWhenHidden()
{
    window->open();
    window->click(u"Play sound"_s);
    window->view->close();
    QCOMPARE(window->heard, (QStringList{u"play Glass"_s, u"stop"_s}));
}

void tst_SoundOptions::leavesTheSoundOfAReminderAlone()
{
    window->open();
    window->view->close();
    QCOMPARE(window->heard, QStringList());
    window->open();
    window->click(u"Play sound"_s);
    ++window->turns; // a reminder has come, with its own sound
    window->view->close();
    QCOMPARE(window->heard, QStringList{u"play Glass"_s});
}

void tst_SoundOptions::changesTheFile()
{
    window->preferences.set(preference::sound, u"custom"_s);
    window->preferences.set(preference::customSoundPath, u"/x/bell.ogg"_s);
    window->preferences.set(preference::customSoundName, u"bell"_s);
    window->open();
    pickAFile(u"horn.mp3"_s);
    QCOMPARE(window->adoptedSounds, QStringList{window->path(u"horn.mp3"_s)});
    QCOMPARE(sound(), u"custom"_s);
    QCOMPARE(window->heard, QStringList{u"play custom"_s});
    QCOMPARE(withoutIsolates(picker()->currentText()), u"File: horn"_s);
}

void tst_SoundOptions::aLateFileDoesNotReplaceANewerChoice()
{
    window->open();
    window->adoptionTakesTime = true;
    pickAFile(u"long.ogg"_s);
    window->choose(u"Sound"_s, u"Bells"_s);
    window->finishAdoption();
    QCOMPARE(sound(), u"Bells"_s);
    QCOMPARE(picker()->currentText(), u"Bells"_s);
    QCOMPARE(window->heard, QStringList{u"play Bells"_s});
}

void tst_SoundOptions::aLateFileDoesNotReplaceTheSameChoiceMadeAgain()
{
    window->open();
    window->adoptionTakesTime = true;
    pickAFile(u"long.ogg"_s);
    window->choose(u"Sound"_s, u"Glass"_s); // as before
    window->finishAdoption();
    QCOMPARE(sound(), u"Glass"_s);
    QCOMPARE(picker()->currentText(), u"Glass"_s);
    QCOMPARE(window->heard, QStringList());
}

void tst_SoundOptions::aLateFileDoesNotReplaceANewerFile()
{
    window->open();
    window->adoptionTakesTime = true;
    pickAFile(u"long.ogg"_s);
    pickAFile(u"short.ogg"_s);
    window->finishAdoption(); // the first of the two
    QCOMPARE(sound(), u"Glass"_s);
    QCOMPARE(window->heard, QStringList());
    window->finishAdoption();
    QCOMPARE(sound(), u"custom"_s);
    QCOMPARE(window->heard, QStringList{u"play custom"_s});
}

void tst_SoundOptions::aLateFileIsNotHeardFromAClosedWindow()
{
    window->open();
    window->adoptionTakesTime = true;
    pickAFile(u"long.ogg"_s);
    window->view->close();
    window->finishAdoption();
    QCOMPARE(sound(), u"custom"_s);
    QCOMPARE(window->heard, QStringList());
}

void tst_SoundOptions::aLateFileChangesNothingAfterAChoiceBeforeClosing()
{
    window->open();
    window->adoptionTakesTime = true;
    pickAFile(u"long.ogg"_s);
    window->choose(u"Sound"_s, u"None"_s);
    window->view->close();
    window->heard.clear();
    window->finishAdoption();
    QCOMPARE(sound(), u"None"_s);
    QCOMPARE(window->heard, QStringList());
}

void tst_SoundOptions::theSpotifyLineWarnsInOrange_data()
{
    QTest::addColumn<bool>("installed");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("note");
    QTest::addColumn<bool>("warns");
    QTest::newRow("absent") << false << QString() << noSpotify << true;
    QTest::newRow("no link") << true << u"my favourite song"_s << wrongLink << true;
    QTest::newRow("fine") << true << QString() << playsInSpotify << false;
}

void tst_SoundOptions::theSpotifyLineWarnsInOrange()
{
    QFETCH(bool, installed);
    QFETCH(QString, link);
    QFETCH(QString, note);
    QFETCH(bool, warns);
    window->hasSpotify = installed;
    window->preferences.set(preference::sound, u"spotify"_s);
    window->preferences.set(preference::spotifyLink, link);
    window->open();
    const auto labels = window->view->findChildren<PanelLabel *>();
    const auto line =
        std::find_if(labels.begin(), labels.end(), [&](PanelLabel *each) { return each->text() == note; });
    QVERIFY(line != labels.end());
    const DesktopColours colours = DesktopColours::of((*line)->palette());
    const QImage shown = picture(**line, 3); // fine enough for strokes of whole pixels
    QCOMPARE(pixelsLike(shown, colours.warningInk) > 0, warns);
    QCOMPARE(pixelsLike(shown, colours.secondary) > 0, !warns);
    QCOMPARE(pixelsLike(shown, colours.primary), 0);
    QVERIFY(colours.warningInk.hsvHue() >= 15 && colours.warningInk.hsvHue() <= 45); // orange
}

void tst_SoundOptions::theSpotifyLineFollowsTyping()
{
    window->preferences.set(preference::sound, u"spotify"_s);
    window->open();
    auto *link = window->control<QLineEdit>(u"Spotify link"_s);
    QVERIFY(window->reads(playsInSpotify));
    QTest::keyClicks(link, u"x"_s);
    QVERIFY(window->reads(wrongLink));
    QTest::keyClick(link, Qt::Key_Backspace);
    QVERIFY(window->reads(playsInSpotify));
    QTest::keyClicks(link, u"spotify:track:4uLU6hMCjMI75M1A2tKUQC"_s);
    QVERIFY(window->reads(playsInSpotify));
    QVERIFY(!window->reads(wrongLink));
}

QTEST_MAIN(tst_SoundOptions)
#include "tst_SoundOptions.moc"
