#include "platform/OwnWindowKeys.h"

#include "platform/EventTime.h"

#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_OwnWindowKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void tellsOfEachKeyOnceAndTakesNothing();
    void tellsOfModifiers();
    void takesNoNoticeOfKeysThatOnlyModify();
    void tellsOfRepetition();
    void timesKeys();
    void timesKeysThatHaveNone();

private:
    void send(int key, const QString &text, Qt::KeyboardModifiers modifiers = {}, bool isRepeat = false);

    std::unique_ptr<QWidget> window;
    QLineEdit *field = nullptr;
    std::unique_ptr<OwnWindowKeys> source;
    QList<KeyPress> pressed;
};

void tst_OwnWindowKeys::init()
{
    pressed.clear();
    window = std::make_unique<QWidget>();
    auto *layout = new QVBoxLayout(window.get());
    field = new QLineEdit;
    layout->addWidget(field);
    window->show();
    window->activateWindow();
    field->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    source = std::make_unique<OwnWindowKeys>();
    connect(source.get(), &KeySource::pressed, this, [this](const KeyPress &key) { pressed.append(key); });
    source->start();
    QVERIFY(!source->seesAll());
}

void tst_OwnWindowKeys::cleanup()
{
    source.reset();
    window.reset();
}

void tst_OwnWindowKeys::send(int key, const QString &text, Qt::KeyboardModifiers modifiers, bool isRepeat)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers, text, isRepeat);
    QCoreApplication::sendEvent(window->windowHandle(), &event);
}

void tst_OwnWindowKeys::tellsOfEachKeyOnceAndTakesNothing()
{
    QTest::keyClick(window->windowHandle(), Qt::Key_A);
    QTest::keyClick(window->windowHandle(), Qt::Key_Slash);
    QCOMPARE(pressed.size(), 2);
    QCOMPARE(pressed.at(0).text, u"a"_s);
    QCOMPARE(pressed.at(1).text, u"/"_s);
    QCOMPARE(field->text(), u"a/"_s);
    // Keys that no widget wants go up to the window's widget: still once.
    QTest::keyClick(window->windowHandle(), Qt::Key_F5);
    QCOMPARE(pressed.size(), 3);
}

void tst_OwnWindowKeys::tellsOfModifiers()
{
    send(Qt::Key_Slash, u"/"_s, Qt::ControlModifier);
    send(Qt::Key_Slash, u"/"_s, Qt::AltModifier);
    send(Qt::Key_Slash, u"/"_s, Qt::GroupSwitchModifier);
    send(Qt::Key_Slash, u"/"_s, Qt::MetaModifier);
    send(Qt::Key_Slash, u"/"_s, Qt::ShiftModifier | Qt::KeypadModifier);
    QCOMPARE(pressed.size(), 5);
    QVERIFY(pressed.at(0).control && !pressed.at(0).alt && !pressed.at(0).meta);
    QVERIFY(pressed.at(1).alt && !pressed.at(1).control);
    QVERIFY(pressed.at(2).alt);
    QVERIFY(pressed.at(3).meta && !pressed.at(3).alt);
    QVERIFY(!pressed.at(4).control && !pressed.at(4).alt && !pressed.at(4).meta);
}

void tst_OwnWindowKeys::takesNoNoticeOfKeysThatOnlyModify()
{
    for (const Qt::Key key : {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_Meta, Qt::Key_AltGr,
                              Qt::Key_CapsLock, Qt::Key_NumLock, Qt::Key_Super_L, Qt::Key_Super_R, Qt::Key_Mode_switch})
        send(key, {});
    QCOMPARE(pressed.size(), 0);
}

void tst_OwnWindowKeys::tellsOfRepetition()
{
    send(Qt::Key_Slash, u"/"_s);
    send(Qt::Key_Slash, u"/"_s, {}, true);
    QCOMPARE(pressed.size(), 2);
    QVERIFY(!pressed.at(0).isRepeat);
    QVERIFY(pressed.at(1).isRepeat);
}

void tst_OwnWindowKeys::timesKeysThatHaveNone()
{
    const double before = monotonicTime();
    send(Qt::Key_Slash, u"/"_s);
    QCOMPARE(pressed.size(), 1);
    QVERIFY(pressed.first().time >= before - 0.001 && pressed.first().time <= monotonicTime() + 0.001);
}

void tst_OwnWindowKeys::timesKeys()
{
    for (const quint64 time : {1'000'000U, 1'000'400U}) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_Slash, {}, u"/"_s);
        event.setTimestamp(time);
        QCoreApplication::sendEvent(window->windowHandle(), &event);
    }
    QCOMPARE(pressed.size(), 2);
    QVERIFY(qAbs(pressed.at(1).time - pressed.at(0).time - 0.4) < 1e-6);
}

QTEST_MAIN(tst_OwnWindowKeys)
#include "tst_OwnWindowKeys.moc"
