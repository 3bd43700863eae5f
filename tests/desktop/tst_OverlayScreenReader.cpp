#include "desktop/OverlayRig.h"
#include "support/ChildProcess.h"
#include "support/PrivateDesktop.h"
#include "support/ScreenReader.h"
#include "support/StillPicture.h"

#include <QTest>

#include <cstdio>
#include <cstring>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

constexpr auto overlayArgument = "--overlay";

/// A process that shows the overlay on one screen, writes how it was answered, a line each, and ends with it.
int runOverlay(int argc, char **argv)
{
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    OverlayRig rig;
    rig.preferences.set(preference::displays, u"primary"_s);
    QObject::connect(rig.controller.get(), &OverlayController::snoozed, &application, [] { std::puts("snoozed"); });
    QObject::connect(rig.controller.get(), &OverlayController::hidden, &application, [&rig] {
        for (const QString &link : rig.opener.opened)
            std::puts(qPrintable(link));
        std::puts("hidden");
        std::fflush(stdout);
        QCoreApplication::quit();
    });
    rig.show();
    return QApplication::exec();
}

} // namespace

/// The overlay as assistive technology meets it: from another process, over the accessibility bus.
class tst_OverlayScreenReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void readsTheWholeCard();
    void pressesButtons_data();
    void pressesButtons();
    void tellsWhichButtonHasTheFocus();
    void theFocusIsToBeSeen();

private:
    [[nodiscard]] QStringList answers();
    void key(const QString &name) { desktop.display().run(u"xdotool"_s, {u"key"_s, name}); }

    PrivateDesktop desktop;
    std::unique_ptr<ScreenReader> reader;
    QProcess overlay;
};

void tst_OverlayScreenReader::initTestCase()
{
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
    reader = std::make_unique<ScreenReader>(desktop.sessionBus());
    QVERIFY(reader->isReady());
}

void tst_OverlayScreenReader::init()
{
    QProcessEnvironment environment = desktop.environment();
    environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    endWithTest(overlay);
    overlay.setProcessEnvironment(environment);
    overlay.setStandardErrorFile(QProcess::nullDevice());
    overlay.start(QCoreApplication::applicationFilePath(), {QLatin1String(overlayArgument)});
    QVERIFY(overlay.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(reader->button(u"Dismiss"_s), 20'000);
    QTRY_COMPARE(reader->focused(), u"Meeting reminder"_s);
}

void tst_OverlayScreenReader::cleanup()
{
    end(overlay);
}

/// How the overlay was answered, once it has ended.
QStringList tst_OverlayScreenReader::answers()
{
    overlay.waitForFinished(20'000);
    return QString::fromUtf8(overlay.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

void tst_OverlayScreenReader::readsTheWholeCard()
{
    const QStringList texts = reader->texts();
    QCOMPARE(texts.size(), 4);
    QVERIFY2(texts.at(0).startsWith("Starts in 0:"_L1) || texts.at(0) == u"Starts in 1:00", qPrintable(texts.at(0)));
    QCOMPARE(texts.at(1), u"Weekly design review"_s);
    QVERIFY2(texts.at(2).contains("5 people"_L1), qPrintable(texts.at(2)));
    QCOMPARE(texts.at(3), u"Return to join · Esc to dismiss"_s);
    QCOMPARE(reader->buttons(), (QStringList{u"Join Google Meet"_s, u"Snooze 1 min"_s, u"Dismiss"_s}));
}

void tst_OverlayScreenReader::pressesButtons_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("join") << u"Join Google Meet"_s
                          << QStringList{u"https://meet.google.com/abc-defg-hij"_s, u"hidden"_s};
    QTest::newRow("snooze") << u"Snooze 1 min"_s << QStringList{u"snoozed"_s, u"hidden"_s};
    QTest::newRow("dismiss") << u"Dismiss"_s << QStringList{u"hidden"_s};
}

void tst_OverlayScreenReader::pressesButtons()
{
    QFETCH(QString, button);
    QFETCH(QStringList, expected);
    QVERIFY(reader->press(button));
    QCOMPARE(answers(), expected);
}

void tst_OverlayScreenReader::tellsWhichButtonHasTheFocus()
{
    for (const QString &name : {u"Join Google Meet"_s, u"Snooze 1 min"_s, u"Dismiss"_s}) {
        key(u"Tab"_s);
        QTRY_COMPARE(reader->focused(), name);
    }
    key(u"shift+Tab"_s);
    QTRY_COMPARE(reader->focused(), u"Snooze 1 min"_s);
    key(u"space"_s);
    QCOMPARE(answers(), (QStringList{u"snoozed"_s, u"hidden"_s}));
}

void tst_OverlayScreenReader::theFocusIsToBeSeen()
{
    const QRect button = reader->button(u"Snooze 1 min"_s).value_or(QRect()).adjusted(-8, -8, 8, 8);
    const auto looks = [&] { return desktop.display().picture().copy(button); };
    // The card comes up first; a busy machine may show the same picture of it twice on the way.
    const QImage before = stillPicture(looks);
    QVERIFY(!before.isNull());
    key(u"Tab"_s);
    key(u"Tab"_s);
    QTRY_COMPARE(reader->focused(), u"Snooze 1 min"_s);
    QTRY_VERIFY(looks() != before);
    key(u"Tab"_s);
    QTRY_VERIFY(looks() == before);
}

int main(int argc, char **argv)
{
    if (argc == 2 && std::strcmp(argv[1], overlayArgument) == 0)
        return runOverlay(argc, argv);
    QCoreApplication application(argc, argv);
    tst_OverlayScreenReader test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_OverlayScreenReader.moc"
