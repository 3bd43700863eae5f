#include "base/Folders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_Folders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void findsWhatLiesBesideTheProgram();
    void findsWhatIsInstalled();
    void isFoundThroughALink();

private:
    [[nodiscard]] QString path(const QString &name) const { return place->filePath(name); }
    /// What `program` and `shared` say in a copy of this very program in bin.
    [[nodiscard]] static QStringList said(const QString &program);

    std::unique_ptr<QTemporaryDir> place;
};

void tst_Folders::init()
{
    place = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(place->path()).mkpath(u"bin"_s));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), path(u"bin/kelp"_s)));
}

QStringList tst_Folders::said(const QString &program)
{
    QProcess process;
    process.start(program, {u"--companions"_s});
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

void tst_Folders::findsWhatLiesBesideTheProgram()
{
    QCOMPARE(said(path(u"bin/kelp"_s)), QStringList({path(u"bin/helper"_s), path(u"bin/pictures"_s)}));
}

void tst_Folders::findsWhatIsInstalled()
{
    QVERIFY(QDir(place->path()).mkpath(u"libexec/kelp/helper"_s));
    QVERIFY(QDir(place->path()).mkpath(u"share/kelp/pictures"_s));
    QCOMPARE(said(path(u"bin/kelp"_s)), QStringList({path(u"libexec/kelp/helper"_s), path(u"share/kelp/pictures"_s)}));
}

void tst_Folders::isFoundThroughALink()
{
    const QTemporaryDir other;
    QVERIFY(QFile::link(path(u"bin/kelp"_s), other.filePath(u"kelp"_s)));
    QVERIFY(QDir(place->path()).mkpath(u"share/kelp/pictures"_s));
    QCOMPARE(said(other.filePath(u"kelp"_s)), QStringList({path(u"bin/helper"_s), path(u"share/kelp/pictures"_s)}));
}

int main(int argc, char **argv)
{
    if (argc == 2 && QByteArrayView(argv[1]) == "--companions") {
        for (const QString &found : {folders::program(u"helper"_s), folders::shared(u"pictures"_s)})
            std::puts(qUtf8Printable(found));
        return 0;
    }
    const QCoreApplication application(argc, argv);
    tst_Folders test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Folders.moc"
