#include "platform/linux/wayland/WaylandKeymap.h"

#include "platform/linux/KeyTranslator.h"
#include "support/ChildProcess.h"
#include "support/WaylandDesktop.h"

#include <QTest>

#include <linux/input-event-codes.h>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

class tst_WaylandKeymap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesTheKeymapOfTheCompositor();
    void survivesTheEndOfTheCompositor();
    void goesByTheEnvironmentWhereThereIsNoCompositor();
};

void tst_WaylandKeymap::takesTheKeymapOfTheCompositor()
{
    WaylandDesktop desktop;
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
    qputenv("WAYLAND_DISPLAY", desktop.environment().value(u"WAYLAND_DISPLAY"_s).toUtf8());
    int keymaps = 0;
    KeyTranslator keys;
    QObject context;
    WaylandKeymap keymap(
        [&](xkb_keymap *taken) {
            keys.setKeymap(taken);
            ++keymaps;
        },
        &context);
    QTRY_VERIFY(keymaps > 0);
    // A keyboard that types "/" has a keymap with it.
    const int before = keymaps;
    QProcess typist;
    QVERIFY(desktop.launch(typist, u"wtype"_s, {u"/"_s, u"-s"_s, u"600000"_s}));
    QTRY_VERIFY(keymaps > before);
    const auto hasSlash = [&] {
        for (quint32 code = 8; code < 256; ++code) {
            const std::optional<KeyPress> press = keys.keyDown(code);
            keys.keyUp(code);
            if (press && press->text == u"/"_s)
                return true;
        }
        return false;
    };
    QTRY_VERIFY(hasSlash());
    end(typist);
}

void tst_WaylandKeymap::survivesTheEndOfTheCompositor()
{
    auto desktop = std::make_unique<WaylandDesktop>();
    QVERIFY2(desktop->start(), qPrintable(desktop->problem()));
    qputenv("WAYLAND_DISPLAY", desktop->environment().value(u"WAYLAND_DISPLAY"_s).toUtf8());
    int keymaps = 0;
    KeyTranslator keys;
    QObject context;
    WaylandKeymap keymap(
        [&](xkb_keymap *taken) {
            keys.setKeymap(taken);
            ++keymaps;
        },
        &context);
    QTRY_VERIFY(keymaps > 0);
    desktop.reset();
    const int before = keymaps;
    QCoreApplication::processEvents();
    QCOMPARE(keymaps, before);
}

void tst_WaylandKeymap::goesByTheEnvironmentWhereThereIsNoCompositor()
{
    qputenv("WAYLAND_DISPLAY", "/nonexistent/wayland-7");
    qputenv("XKB_DEFAULT_LAYOUT", "de");
    KeyTranslator keys;
    keys.followModifiers();
    QObject context;
    WaylandKeymap keymap([&](xkb_keymap *taken) { keys.setKeymap(taken); }, &context);
    (void)keys.keyDown(KEY_LEFTSHIFT + 8);
    const std::optional<KeyPress> press = keys.keyDown(KEY_7 + 8);
    QVERIFY(press);
    QCOMPARE(press->text, u"/"_s);
}

QTEST_GUILESS_MAIN(tst_WaylandKeymap)

#include "tst_WaylandKeymap.moc"
