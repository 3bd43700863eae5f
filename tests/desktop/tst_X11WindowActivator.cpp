#include "platform/linux/x11/X11WindowActivator.h"

#include "support/XServer.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

XServer *server = nullptr;

} // namespace

class tst_X11WindowActivator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhenTheWindowLosesTheKeyboard();
    void doesNotMindGrabs();
    void keepsAWindowOutOfLists();
};

void tst_X11WindowActivator::tellsWhenTheWindowLosesTheKeyboard()
{
    X11WindowActivator activator;
    QWidget window;
    QWidget other;
    int left = 0;
    activator.whenLeft(window, [&] { ++left; });
    activator.activate(window, {});
    QTRY_VERIFY(activator.isActive(window));
    QCOMPARE(left, 0);
    activator.activate(other, {});
    QTRY_VERIFY(activator.isActive(other));
    QTRY_VERIFY(left > 0);
    activator.activate(window, {});
    QTRY_VERIFY(activator.isActive(window));
    const int before = left;
    window.hide();
    QTRY_VERIFY(left > before);
}

void tst_X11WindowActivator::doesNotMindGrabs()
{
    X11WindowActivator activator;
    QWidget window;
    int left = 0;
    activator.whenLeft(window, [&] { ++left; });
    activator.activate(window, {});
    QTRY_VERIFY(activator.isActive(window));
    // Another client takes all keys for a moment, as a window manager does for its own shortcuts.
    xcb_connection_t *client = xcb_connect(server->display().toLatin1().constData(), nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(client)).data->root;
    const auto cookie = xcb_grab_keyboard(client, 0, root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const std::unique_ptr<xcb_grab_keyboard_reply_t, decltype(&std::free)> reply(
        xcb_grab_keyboard_reply(client, cookie, nullptr), &std::free);
    QVERIFY(reply && reply->status == XCB_GRAB_STATUS_SUCCESS);
    xcb_ungrab_keyboard(client, XCB_CURRENT_TIME);
    xcb_disconnect(client);
    // What the server has sent for it comes before the answer to this.
    QTRY_VERIFY(activator.isActive(window));
    QTest::qWait(0);
    QCOMPARE(left, 0);
}

void tst_X11WindowActivator::keepsAWindowOutOfLists()
{
    const auto state = [](const QWidget &window) {
        return server->run(u"xprop"_s, {u"-id"_s, QString::number(window.winId()), u"_NET_WM_STATE"_s});
    };
    X11WindowActivator activator;
    QWidget unlisted;
    QWidget other;
    activator.keepOutOfLists(unlisted);
    activator.activate(other, {});
    QTRY_VERIFY(activator.isActive(other));
    QVERIFY(!state(other).contains(u"SKIP"_s));
    for (int round = 0; round < 2; ++round) {
        activator.activate(unlisted, {});
        QTRY_VERIFY(activator.isActive(unlisted));
        QVERIFY2(state(unlisted).contains(u"_NET_WM_STATE_SKIP_TASKBAR"_s), qPrintable(state(unlisted)));
        QVERIFY(state(unlisted).contains(u"_NET_WM_STATE_SKIP_PAGER"_s));
        // Behind another one it can be fetched, too.
        activator.activate(other, {});
        QTRY_VERIFY(activator.isActive(other));
        activator.activate(unlisted, {});
        QTRY_VERIFY(activator.isActive(unlisted));
        unlisted.hide();
        QTRY_VERIFY(activator.isActive(other));
    }
}

int main(int argc, char **argv)
{
    XServer x({{1280, 720}});
    if (!x.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(x.problem()));
        return 1;
    }
    server = &x;
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    tst_X11WindowActivator test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_X11WindowActivator.moc"
