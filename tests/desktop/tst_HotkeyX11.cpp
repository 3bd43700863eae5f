#include "desktop/OneAccount.h"
#include "support/KelpProcess.h"

#include <QFile>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Two slashes that are pressed in another client's window.
class tst_HotkeyX11 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void opensAndClosesThePanel();
    void takesNothingFromTheOtherWindow();
    void staysSilentWhile_data();
    void staysSilentWhile();
    void worksOnEveryLayout_data();
    void worksOnEveryLayout();
    void followsTheLayoutWhileItRuns();
    void staysSilentWhileSwitchedOff();

private:
    void xdotool(const QStringList &arguments) { desktop.display().run(u"xdotool"_s, arguments); }
    /// After the quiet that a deliberate press has before it.
    void pressTwice(const QString &key);
    void useLayout(const QString &layout) { desktop.display().run(u"setxkbmap"_s, {layout}); }
    void focusTerminal();
    [[nodiscard]] QByteArray typed() const;

    PrivateDesktop desktop;
    std::unique_ptr<KelpProcess> kelp;
    QProcess terminal;
};

void tst_HotkeyX11::initTestCase()
{
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
}

void tst_HotkeyX11::init()
{
    desktop.forget();
    useLayout(u"us"_s);
    oneAccount::signIn(desktop); // so that the panel does not open by itself
    QFile::remove(desktop.folder(u"typed"_s));
    kelp = std::make_unique<KelpProcess>(desktop);
    QVERIFY(kelp->start());
    // Every key goes into the file as it comes.
    const QString script = u"stty -icanon -echo; exec cat >'%1'"_s.arg(desktop.folder(u"typed"_s));
    QVERIFY(desktop.display().launch(terminal, u"xterm"_s, {u"-e"_s, u"sh"_s, u"-c"_s, script}));
    QTRY_VERIFY(QFile::exists(desktop.folder(u"typed"_s)));
    focusTerminal();
    QTRY_VERIFY_WITH_TIMEOUT(kelp->output().contains("the keys of all applications are heard"), 12'000);
}

void tst_HotkeyX11::cleanup()
{
    if (QTest::currentTestFailed() && kelp)
        qInfo().noquote() << kelp->output();
    kelp.reset();
    terminal.terminate();
    QVERIFY(terminal.waitForFinished());
}

void tst_HotkeyX11::pressTwice(const QString &key)
{
    xdotool({u"sleep"_s, u"0.7"_s, u"key"_s, key, u"key"_s, key});
}

void tst_HotkeyX11::focusTerminal()
{
    const auto isFocused = [&] {
        xdotool({u"search"_s, u"--onlyvisible"_s, u"--class"_s, u"xterm"_s, u"windowactivate"_s});
        return desktop.display().run(u"xdotool"_s, {u"getwindowfocus"_s, u"getwindowpid"_s}).trimmed() ==
               QString::number(terminal.processId());
    };
    QTRY_VERIFY(isFocused());
}

QByteArray tst_HotkeyX11::typed() const
{
    QFile file(desktop.folder(u"typed"_s));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_HotkeyX11::opensAndClosesThePanel()
{
    for (int round = 0; round < 2; ++round) {
        pressTwice(u"slash"_s);
        QTRY_VERIFY(kelp->panelIsActive());
        // Now they go to the panel itself, and must not count twice.
        pressTwice(u"slash"_s);
        QTRY_VERIFY(kelp->windows().isEmpty());
        focusTerminal();
    }
    pressTwice(u"slash"_s);
    QTRY_VERIFY(kelp->panelIsActive());
    // From a window in front of the panel they bring it forward.
    focusTerminal();
    pressTwice(u"slash"_s);
    QTRY_VERIFY(kelp->panelIsActive());
}

void tst_HotkeyX11::takesNothingFromTheOtherWindow()
{
    pressTwice(u"slash"_s);
    QTRY_VERIFY(kelp->panelIsActive());
    QCOMPARE(typed(), "//");
}

void tst_HotkeyX11::staysSilentWhile_data()
{
    QTest::addColumn<QStringList>("actions");
    QTest::addColumn<QByteArray>("text");
    const QString slash = u"slash"_s;
    const QString quiet = u"0.7"_s;
    QTest::newRow("an address is typed") << QStringList{u"sleep"_s, quiet, u"type"_s, u"https://kelp.app//a"_s}
                                         << QByteArray("https://kelp.app//a");
    QTest::newRow("an address is typed slowly")
        << QStringList{u"sleep"_s, quiet, u"type"_s, u"--delay"_s, u"150"_s, u"https://"_s} << QByteArray("https://");
    QTest::newRow("the key is held") << QStringList{u"sleep"_s, quiet,    u"keydown"_s, slash,
                                                    u"sleep"_s, u"0.9"_s, u"keyup"_s,   slash}
                                     << QByteArray();
    QTest::newRow("control is held") << QStringList{u"sleep"_s,      quiet,    u"key"_s,
                                                    u"ctrl+slash"_s, u"key"_s, u"ctrl+slash"_s}
                                     << QByteArray();
    QTest::newRow("a letter comes between")
        << QStringList{u"sleep"_s, quiet, u"key"_s, slash, u"key"_s, u"a"_s, u"key"_s, slash} << QByteArray("/a/");
    QTest::newRow("the slashes are far apart")
        << QStringList{u"sleep"_s, quiet, u"key"_s, slash, u"sleep"_s, u"0.6"_s, u"key"_s, slash, u"key"_s, u"a"_s}
        << QByteArray("//a");
}

void tst_HotkeyX11::staysSilentWhile()
{
    QFETCH(QStringList, actions);
    QFETCH(QByteArray, text);
    xdotool(actions);
    if (!text.isEmpty())
        QTRY_COMPARE(typed(), text);
    QVERIFY(kelp->windows().isEmpty());
    // Had it been heard late, this would close the panel again.
    pressTwice(u"slash"_s);
    QTRY_VERIFY(kelp->panelIsActive());
}

void tst_HotkeyX11::worksOnEveryLayout_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QString>("key");
    QTest::newRow("us") << u"us"_s << u"slash"_s;
    QTest::newRow("us, keypad") << u"us"_s << u"KP_Divide"_s;
    QTest::newRow("German, Shift+7") << u"de"_s << u"shift+7"_s;
    QTest::newRow("French, Shift and the colon's key") << u"fr"_s << u"shift+colon"_s;
    QTest::newRow("Swedish, Shift+7") << u"se"_s << u"shift+7"_s;
}

void tst_HotkeyX11::worksOnEveryLayout()
{
    QFETCH(QString, layout);
    QFETCH(QString, key);
    useLayout(layout);
    pressTwice(key);
    QTRY_VERIFY(kelp->panelIsActive());
    QTRY_COMPARE(typed(), "//");
}

void tst_HotkeyX11::followsTheLayoutWhileItRuns()
{
    useLayout(u"de"_s);
    pressTwice(u"shift+7"_s);
    QTRY_VERIFY(kelp->panelIsActive());
    useLayout(u"us"_s);
    pressTwice(u"shift+7"_s); // "&" here
    QVERIFY(kelp->panelIsActive());
    pressTwice(u"slash"_s);
    QTRY_VERIFY(kelp->windows().isEmpty());
}

void tst_HotkeyX11::staysSilentWhileSwitchedOff()
{
    kelp->terminate();
    QJsonObject preferences = oneAccount::preferences();
    preferences.insert(u"doubleSlash"_s, false);
    desktop.writePreferences(preferences);
    KelpProcess silent(desktop);
    QVERIFY(silent.start());
    QTRY_VERIFY(silent.output().contains("the keys of all applications are heard"));
    focusTerminal();
    pressTwice(u"slash"_s);
    pressTwice(u"slash"_s);
    QTRY_COMPARE(typed(), "////");
    QVERIFY(silent.windows().isEmpty());
    // It is alive: started again, it opens.
    KelpProcess again(desktop);
    QVERIFY(again.start());
    QTRY_VERIFY(silent.panelIsActive());
}

QTEST_GUILESS_MAIN(tst_HotkeyX11)

#include "tst_HotkeyX11.moc"
