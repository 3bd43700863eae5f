#include "app/CommandLine.h"

#include <QProcess>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;
using Mode = CommandLine::Mode;

class tst_CommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheArguments_data();
    void readsTheArguments();
    void theProgramAnswersWithoutADisplay_data();
    void theProgramAnswersWithoutADisplay();
};

void tst_CommandLine::readsTheArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QStringList>("clipNames");
    const auto row = [](const char *name, const char *arguments, Mode mode, const char *folder = "",
                        const QStringList &clipNames = {}) {
        QTest::newRow(name) << QString::fromLatin1(arguments).split(u' ') << static_cast<int>(mode)
                            << QString::fromLatin1(folder) << clipNames;
    };
    row("nothing", "kelp", Mode::application);
    row("snapshot", "kelp --snapshot out", Mode::snapshot, "out");
    row("snapshot is last", "kelp --snapshot", Mode::application);
    row("record", "kelp --record out", Mode::record, "out");
    row("record some", "kelp --record out hero og", Mode::record, "out", {u"hero"_s, u"og"_s});
    row("record is last", "kelp --record", Mode::application);
    row("snapshot goes first", "kelp --record a --snapshot b", Mode::snapshot, "b");
    row("snapshot last, so record", "kelp --record a --snapshot", Mode::record, "a", {u"--snapshot"_s});
    row("only the first counts", "kelp --snapshot --snapshot x", Mode::snapshot, "--snapshot");
    row("the program's path counts, too", "--snapshot out", Mode::snapshot, "out");
    row("help", "kelp --help", Mode::help);
    row("help, in short", "kelp -h", Mode::help);
    row("version", "kelp --version", Mode::version);
    row("help within a recording", "kelp --record out --help", Mode::record, "out", {u"--help"_s});
    row("something else", "kelp --verbose file", Mode::application);
}

void tst_CommandLine::readsTheArguments()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, mode);
    QFETCH(QString, folder);
    QFETCH(QStringList, clipNames);
    const CommandLine commandLine = CommandLine::parse(arguments);
    QCOMPARE(static_cast<int>(commandLine.mode), mode);
    QCOMPARE(commandLine.folder, folder);
    QCOMPARE(commandLine.clipNames, clipNames);
}

void tst_CommandLine::theProgramAnswersWithoutADisplay_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("error");
    QTest::newRow("help") << QStringList{u"--help"_s} << 0 << u"Usage: kelp"_s << QString();
    QTest::newRow("version") << QStringList{u"--version"_s} << 0 << u"Kelp 0."_s << QString();
}

void tst_CommandLine::theProgramAnswersWithoutADisplay()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QString, output);
    QFETCH(QString, error);
    QProcess kelp;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"DISPLAY"_s);
    environment.remove(u"QT_QPA_PLATFORM"_s);
    kelp.setProcessEnvironment(environment);
    kelp.start(qEnvironmentVariable("KELP_BINARY_DIR") + u"/kelp"_s, arguments);
    QVERIFY(kelp.waitForFinished());
    QCOMPARE(kelp.exitStatus(), QProcess::NormalExit);
    QCOMPARE(kelp.exitCode(), status);
    const QString printed = QString::fromUtf8(kelp.readAllStandardOutput());
    const QString complained = QString::fromUtf8(kelp.readAllStandardError());
    QVERIFY2(output.isEmpty() ? printed.isEmpty() : printed.contains(output), qPrintable(printed));
    QVERIFY2(error.isEmpty() ? complained.isEmpty() : complained.contains(error), qPrintable(complained));
}

QTEST_GUILESS_MAIN(tst_CommandLine)
#include "tst_CommandLine.moc"
