#include "platform/linux/AutostartEntry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_AutostartEntry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { qunsetenv("XDG_CURRENT_DESKTOP"); }
    void isWrittenAndTakenAway();
    void startsTheProgramWhateverItsPath_data();
    void startsTheProgramWhateverItsPath();
    void tellsWhatOtherToolsHaveMadeOfIt_data();
    void tellsWhatOtherToolsHaveMadeOfIt();
    void hidesTheOneOfTheSystem();
    void tellsWhyItCannotBeWritten();
    void survivesWhatIsNoFile();
    void belongsToTheUsersConfiguration();

private:
    [[nodiscard]] AutostartEntry entry(const QString &program = u"/bin/sh"_s) const
    {
        return {program, {users, systems}};
    }
    [[nodiscard]] QString file() const { return users + u"/app.kelp.Kelp.desktop"_s; }
    static void write(const QString &path, const QByteArray &content)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile target(path);
        QVERIFY(target.open(QIODevice::WriteOnly));
        target.write(content);
    }
    [[nodiscard]] static QByteArray read(const QString &path)
    {
        QFile source(path);
        return source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString users;
    QString systems;
};

void tst_AutostartEntry::init()
{
    folder = std::make_unique<QTemporaryDir>();
    users = folder->filePath(u"config/autostart"_s);
    systems = folder->filePath(u"xdg/autostart"_s);
}

void tst_AutostartEntry::isWrittenAndTakenAway()
{
    AutostartEntry item = entry();
    QVERIFY(!item.isEnabled());
    QVERIFY(item.setEnabled(false));
    QVERIFY(item.setEnabled(true));
    QVERIFY(item.isEnabled());
    QCOMPARE(item.path(), file());
    const QByteArray content = read(file());
    QVERIFY(content.startsWith("[Desktop Entry]\nType=Application\nName=Kelp\n"));
    QVERIFY(content.endsWith("\nExec=\"/bin/sh\"\n"));
    write(users + u"/.kelp-save-x.tmp"_s, "a save that was cut short");
    QVERIFY(item.setEnabled(true));
    QVERIFY(item.setEnabled(false));
    QVERIFY(!item.isEnabled());
    QVERIFY(!QFileInfo::exists(file()));
    QCOMPARE(QDir(users).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
}

void tst_AutostartEntry::startsTheProgramWhateverItsPath_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QByteArray>("exec");
    QTest::newRow("plain") << u"/usr/bin/kelp"_s << R"("/usr/bin/kelp")"_ba;
    QTest::newRow("space") << u"/opt/my apps/kelp"_s << R"("/opt/my apps/kelp")"_ba;
    QTest::newRow("percent") << u"/opt/100%u/kelp"_s << R"("/opt/100%%u/kelp")"_ba;
    QTest::newRow("quote") << u"/opt/a\"b/kelp"_s << R"("/opt/a\\"b/kelp")"_ba;
    QTest::newRow("dollar") << u"/opt/$HOME`x`/kelp"_s << R"("/opt/\\$HOME\\`x\\`/kelp")"_ba;
    QTest::newRow("backslash") << u"/opt/a\\b/kelp"_s << R"("/opt/a\\\\b/kelp")"_ba;
    QTest::newRow("umlaut") << u"/opt/Büro/kelp"_s << "\"/opt/Büro/kelp\""_ba;
}

void tst_AutostartEntry::startsTheProgramWhateverItsPath()
{
    QFETCH(QString, program);
    QFETCH(QByteArray, exec);
    const QString path = folder->path() + program;
    QVERIFY(entry(path).setEnabled(true));
    const QByteArray whole = '"' + folder->path().toUtf8() + exec.mid(1);
    QVERIFY2(read(file()).contains("\nExec=" + whole + '\n'), read(file()).constData());
    QVERIFY(!entry(path).isEnabled()); // it is not there
    write(path, "#!/bin/sh\n");
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner));
    QVERIFY(entry(path).isEnabled());
    // The standard's own checker agrees.
    QCOMPARE(QProcess::execute(u"desktop-file-validate"_s, {file()}), 0);
}

void tst_AutostartEntry::tellsWhatOtherToolsHaveMadeOfIt_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("enabled");
    const QByteArray usual = "[Desktop Entry]\nType=Application\nName=Kelp\nExec=sh\n";
    QTest::newRow("usual") << usual << true;
    QTest::newRow("hidden") << usual + "Hidden=true\n" << false;
    QTest::newRow("not hidden") << usual + "Hidden=false\n" << true;
    QTest::newRow("switched off by GNOME") << usual + "X-GNOME-Autostart-enabled=false\n" << false;
    QTest::newRow("switched on by GNOME") << usual + "X-GNOME-Autostart-enabled=true\n" << true;
    QTest::newRow("with spaces") << "[Desktop Entry]\r\n Exec = kelp \r\n Hidden = true \r\n"_ba << false;
    QTest::newRow("only elsewhere") << usual + "OnlyShowIn=KDE;XFCE;\n" << false;
    QTest::newRow("only here") << usual + "OnlyShowIn=KDE;GNOME;\n" << true;
    QTest::newRow("not here") << usual + "NotShowIn=GNOME\n" << false;
    QTest::newRow("not elsewhere") << usual + "NotShowIn=KDE;\n" << true;
    QTest::newRow("another group") << usual + "[Desktop Action x]\nHidden=true\n" << true;
    QTest::newRow("a comment") << usual + "#Hidden=true\n" << true;
    QTest::newRow("a program that is gone")
        << "[Desktop Entry]\nType=Application\nName=Kelp\nExec=\"/nonexistent/kelp\"\n"_ba << false;
    QTest::newRow("nothing to start") << "[Desktop Entry]\nName=Kelp\n"_ba << false;
    QTest::newRow("empty") << ""_ba << false;
    QTest::newRow("nonsense") << QByteArray("\0\xff\n=\n[\n", 7) << false;
    QTest::newRow("endless") << usual + QByteArray(70'000, 'x') << false;
}

void tst_AutostartEntry::tellsWhatOtherToolsHaveMadeOfIt()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, enabled);
    qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    AutostartEntry item = entry();
    QVERIFY(item.setEnabled(!enabled));
    write(file(), content);
    QCOMPARE(item.isEnabled(), enabled);
    QVERIFY(item.setEnabled(true));
    QVERIFY(item.isEnabled());
}

void tst_AutostartEntry::hidesTheOneOfTheSystem()
{
    write(systems + u"/app.kelp.Kelp.desktop"_s, "[Desktop Entry]\nType=Application\nName=Kelp\nExec=sh\n");
    AutostartEntry item = entry();
    QVERIFY(item.isEnabled());
    QVERIFY(item.setEnabled(false));
    QVERIFY(!item.isEnabled());
    QVERIFY(read(file()).contains("\nHidden=true\n"));
    QVERIFY(item.setEnabled(true));
    QVERIFY(item.isEnabled());
    QFile::remove(file());
    QVERIFY(item.isEnabled());
}

void tst_AutostartEntry::tellsWhyItCannotBeWritten()
{
    // The folder's name is taken: root may write to everything else.
    write(users, "a file");
    AutostartEntry item = entry();
    const auto done = item.setEnabled(true);
    QVERIFY(!done);
    QVERIFY2(done.error().contains(u"autostart"_s), qPrintable(done.error()));
    QVERIFY(!item.isEnabled());
    QCOMPARE(read(users), "a file"_ba);
}

void tst_AutostartEntry::survivesWhatIsNoFile()
{
    QDir().mkpath(file());
    AutostartEntry item = entry();
    QVERIFY(!item.isEnabled());
    QVERIFY(!item.setEnabled(true));
    QDir().rmdir(file());
    QCOMPARE(::mkfifo(QFile::encodeName(file()).constData(), 0600), 0);
    QVERIFY(!item.isEnabled()); // and does not wait for somebody to write
    QVERIFY(item.setEnabled(true));
    QVERIFY(item.isEnabled());
}

void tst_AutostartEntry::belongsToTheUsersConfiguration()
{
    QCOMPARE(AutostartEntry().path(), qEnvironmentVariable("XDG_CONFIG_HOME") + u"/autostart/app.kelp.Kelp.desktop"_s);
}

QTEST_GUILESS_MAIN(tst_AutostartEntry)
#include "tst_AutostartEntry.moc"
