#include "settings/AppearanceFixture.h"
#include "ui/DesktopPalette.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QTest>

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

private:
    [[nodiscard]] QComboBox *picker() const { return window->control<QComboBox>(u"Sound"_s); }
    [[nodiscard]] QString sound() const { return window->preferences.get(preference::sound); }
    void press(Qt::Key key);
    std::unique_ptr<AppearanceFixture> window;
};

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

QTEST_MAIN(tst_SoundOptions)
#include "tst_SoundOptions.moc"
