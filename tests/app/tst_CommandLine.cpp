#include "app/CommandLine.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
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
    void anInstalledKelpHandsCapturesOver();
    void saysWhichProgramIsMissing();
    void theCaptureProgramDoesNothingElse();

private:
    struct Outcome
    {
        int status;
        QString output;
        QString errors;
    };
    [[nodiscard]] static Outcome run(const QString &program, const QStringList &arguments);
    [[nodiscard]] static QString built(const QString &program);
};

QString tst_CommandLine::built(const QString &program)
{
    return qEnvironmentVariable("KELP_BINARY_DIR") + u'/' + program;
}

/// Without a display.
tst_CommandLine::Outcome tst_CommandLine::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"DISPLAY"_s);
    environment.remove(u"QT_QPA_PLATFORM"_s);
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    const bool ended = process.waitForFinished() && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

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
    QTest::addColumn<QString>("output");
    QTest::newRow("help") << QStringList{u"--help"_s} << u"Usage: kelp"_s;
    QTest::newRow("version") << QStringList{u"--version"_s} << u"Kelp 0."_s;
}

void tst_CommandLine::theProgramAnswersWithoutADisplay()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, output);
    const Outcome kelp = run(built(u"kelp"_s), arguments);
    QCOMPARE(kelp.status, 0);
    QVERIFY2(kelp.output.contains(output), qPrintable(kelp.output));
    QCOMPARE(kelp.errors, QString());
}

void tst_CommandLine::anInstalledKelpHandsCapturesOver()
{
    const QTemporaryDir place;
    QVERIFY(QDir(place.path()).mkpath(u"bin"_s) && QDir(place.path()).mkpath(u"libexec/kelp"_s));
    const QString kelp = place.filePath(u"bin/kelp"_s);
    QVERIFY(QFile::copy(built(u"kelp"_s), kelp));
    QFile other(place.filePath(u"libexec/kelp/kelp-capture"_s));
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.write("#!/bin/sh\nprintf '<%s>' \"$@\"\nexit 3\n");
    other.close();
    QVERIFY(other.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    const Outcome result = run(kelp, {u"--record"_s, u"a folder"_s, u"hero"_s, u"é"_s});
    QCOMPARE(result.output, u"<--record><a folder><hero><é>"_s);
    QCOMPARE(result.status, 3);
}

void tst_CommandLine::saysWhichProgramIsMissing()
{
    const QTemporaryDir place;
    const QString kelp = place.filePath(u"kelp"_s);
    QVERIFY(QFile::copy(built(u"kelp"_s), kelp));
    const Outcome result = run(kelp, {u"--snapshot"_s, place.filePath(u"out"_s)});
    QCOMPARE(result.status, 1);
    QVERIFY2(result.errors.contains(place.filePath(u"kelp-capture"_s)), qPrintable(result.errors));
}

void tst_CommandLine::theCaptureProgramDoesNothingElse()
{
    const Outcome result = run(built(u"kelp-capture"_s), {u"--help"_s});
    QCOMPARE(result.status, 2);
    QVERIFY2(result.errors.contains(u"kelp --record"_s), qPrintable(result.errors));
    QCOMPARE(result.output, QString());
}

QTEST_GUILESS_MAIN(tst_CommandLine)
#include "tst_CommandLine.moc"
