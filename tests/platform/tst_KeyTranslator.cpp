#include "platform/linux/KeyTranslator.h"

#include <QTest>

#include <linux/input-event-codes.h>
#include <xkbcommon/xkbcommon.h>

#include <memory>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

constexpr quint32 xkb(quint32 key)
{
    return key + 8;
}

/// Holds `modifiers` while `key` is pressed.
std::optional<KeyPress> press(KeyTranslator &keys, quint32 key, const QList<quint32> &modifiers = {})
{
    for (const quint32 each : modifiers)
        (void)keys.keyDown(xkb(each));
    const std::optional<KeyPress> result = keys.keyDown(xkb(key));
    keys.keyUp(xkb(key));
    for (const quint32 each : modifiers)
        keys.keyUp(xkb(each));
    return result;
}

} // namespace

class tst_KeyTranslator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void findsTheSlashOfEachLayout_data();
    void findsTheSlashOfEachLayout();
    void ignoresAllModifiersButShift_data();
    void ignoresAllModifiersButShift();
    void takesNoNoticeOfKeysThatOnlyModify_data();
    void takesNoNoticeOfKeysThatOnlyModify();
    void callsAKeyRepeatedThatHasNotComeUp();
    void keepsHeldKeysThroughAChangeOfTheKeymap();
    void goesByTheLayoutThatIsInForce();
    void letsGoOfModifiers();
    void meansNothingWithoutAKeymap();
    void survivesCodesThatNoKeyboardHas();

private:
    void use(const char *layout, const char *variant = "");

    std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context{xkb_context_new(XKB_CONTEXT_NO_FLAGS),
                                                                       &xkb_context_unref};
    KeyTranslator keys;
};

void tst_KeyTranslator::init()
{
    keys = KeyTranslator();
    keys.followModifiers();
}

void tst_KeyTranslator::use(const char *layout, const char *variant)
{
    const xkb_rule_names names{"evdev", "pc105", layout, variant, nullptr};
    xkb_keymap *keymap = xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    QVERIFY(keymap);
    keys.setKeymap(keymap);
}

void tst_KeyTranslator::findsTheSlashOfEachLayout_data()
{
    QTest::addColumn<QByteArray>("layout");
    QTest::addColumn<quint32>("key");
    QTest::addColumn<bool>("withShift");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *layout, quint32 key, bool withShift, const QString &text) {
        QTest::addRow("%s %u %d", layout, key, withShift) << QByteArray(layout) << key << withShift << text;
    };
    row("us", KEY_SLASH, false, u"/"_s);
    row("us", KEY_SLASH, true, u"?"_s);
    row("us", KEY_7, true, u"&"_s);
    row("us", KEY_KPSLASH, false, u"/"_s);
    row("us", KEY_KPSLASH, true, u"/"_s);
    row("us", KEY_A, false, u"a"_s);
    row("de", KEY_7, true, u"/"_s);
    row("de", KEY_7, false, u"7"_s);
    row("de", KEY_SLASH, false, u"-"_s);
    row("es", KEY_7, true, u"/"_s);
    row("se", KEY_7, true, u"/"_s);
    row("fr", KEY_DOT, true, u"/"_s);
    row("it", KEY_7, true, u"/"_s);
    row("br", KEY_RO, false, u"/"_s);
    row("ru", KEY_BACKSLASH, true, u"/"_s);
}

void tst_KeyTranslator::findsTheSlashOfEachLayout()
{
    QFETCH(QByteArray, layout);
    QFETCH(quint32, key);
    QFETCH(bool, withShift);
    QFETCH(QString, text);
    use(layout.constData());
    const QList<quint32> modifiers = withShift ? QList<quint32>{KEY_LEFTSHIFT} : QList<quint32>{};
    QCOMPARE(press(keys, key, modifiers), (KeyPress{.text = text}));
}

void tst_KeyTranslator::ignoresAllModifiersButShift_data()
{
    QTest::addColumn<quint32>("modifier");
    QTest::addColumn<KeyPress>("expected");
    QTest::newRow("control") << quint32(KEY_LEFTCTRL) << KeyPress{.text = u"/"_s, .control = true};
    QTest::newRow("alt") << quint32(KEY_LEFTALT) << KeyPress{.text = u"/"_s, .alt = true};
    QTest::newRow("third level") << quint32(KEY_RIGHTALT) << KeyPress{.text = u"/"_s, .alt = true};
    QTest::newRow("super") << quint32(KEY_LEFTMETA) << KeyPress{.text = u"/"_s, .meta = true};
    QTest::newRow("caps lock") << quint32(KEY_CAPSLOCK) << KeyPress{.text = u"/"_s};
    QTest::newRow("num lock") << quint32(KEY_NUMLOCK) << KeyPress{.text = u"/"_s};
}

void tst_KeyTranslator::ignoresAllModifiersButShift()
{
    QFETCH(quint32, modifier);
    QFETCH(KeyPress, expected);
    use("de");
    QCOMPARE(press(keys, KEY_7, {modifier, KEY_RIGHTSHIFT}), expected);
}

void tst_KeyTranslator::takesNoNoticeOfKeysThatOnlyModify_data()
{
    QTest::addColumn<quint32>("key");
    for (const int key : {KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTALT, KEY_RIGHTALT,
                          KEY_LEFTMETA, KEY_RIGHTMETA, KEY_CAPSLOCK, KEY_NUMLOCK, KEY_SCROLLLOCK})
        QTest::addRow("%d", key) << quint32(key);
}

void tst_KeyTranslator::takesNoNoticeOfKeysThatOnlyModify()
{
    QFETCH(quint32, key);
    use("de");
    QVERIFY(!press(keys, key));
}

void tst_KeyTranslator::callsAKeyRepeatedThatHasNotComeUp()
{
    use("us");
    QVERIFY(!keys.keyDown(xkb(KEY_SLASH))->isRepeat);
    QVERIFY(keys.keyDown(xkb(KEY_SLASH))->isRepeat);
    QVERIFY(!keys.keyDown(xkb(KEY_A))->isRepeat);
    keys.keyUp(xkb(KEY_SLASH));
    QVERIFY(!keys.keyDown(xkb(KEY_SLASH))->isRepeat);
}

void tst_KeyTranslator::keepsHeldKeysThroughAChangeOfTheKeymap()
{
    use("us");
    QVERIFY(!keys.keyDown(xkb(KEY_SLASH))->isRepeat);
    use("us");
    QVERIFY(keys.keyDown(xkb(KEY_SLASH))->isRepeat);
}

void tst_KeyTranslator::goesByTheLayoutThatIsInForce()
{
    use("us,de");
    QCOMPARE(press(keys, KEY_SLASH)->text, u"/"_s);
    keys.setModifiers(0, 0, 0, 1);
    QCOMPARE(press(keys, KEY_SLASH)->text, u"-"_s);
    QCOMPARE(press(keys, KEY_7, {KEY_LEFTSHIFT})->text, u"/"_s);
}

void tst_KeyTranslator::letsGoOfModifiers()
{
    use("us");
    QVERIFY(press(keys, KEY_SLASH, {KEY_LEFTCTRL})->control);
    QVERIFY(!press(keys, KEY_SLASH)->control);
    QCOMPARE(press(keys, KEY_SLASH, {KEY_LEFTSHIFT})->text, u"?"_s);
    QCOMPARE(press(keys, KEY_SLASH)->text, u"/"_s);
}

void tst_KeyTranslator::meansNothingWithoutAKeymap()
{
    QVERIFY(!press(keys, KEY_SLASH));
    keys.setModifiers(1, 2, 3, 4);
    keys.setKeymap(nullptr);
    QVERIFY(!press(keys, KEY_SLASH));
}

void tst_KeyTranslator::survivesCodesThatNoKeyboardHas()
{
    use("us");
    for (const quint32 code : {0U, 7U, 255U, 256U, 0x7fffffffU, 0xffffffffU}) {
        const std::optional<KeyPress> result = keys.keyDown(code);
        QVERIFY(!result || result->text != u"/"_s);
        keys.keyUp(code);
    }
}

QTEST_GUILESS_MAIN(tst_KeyTranslator)
#include "tst_KeyTranslator.moc"
