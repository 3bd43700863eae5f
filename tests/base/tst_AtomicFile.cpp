#include "base/AtomicFile.h"
#include "support/FaultyFileOperations.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace kelp;
using namespace Qt::StringLiterals;
using kelp::test::FaultyFileOperations;
using Call = FaultyFileOperations::Call;

namespace {

constexpr qint64 largestReadable = 64 * 1024 * 1024;

/// The permission bits of what `path` names itself; a link is not followed.
int modeOf(const QString &path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? static_cast<int>(status.st_mode & 07777) : -1;
}

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

/// Enters a namespace in which file systems can be mounted; false where the machine forbids that.
bool enterMountNamespace()
{
    const QByteArray user = "0 " + QByteArray::number(::getuid()) + " 1";
    const QByteArray group = "0 " + QByteArray::number(::getgid()) + " 1";
    if (::unshare(CLONE_NEWNS) == 0)
        return true;
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    put(u"/proc/self/setgroups"_s, "deny");
    put(u"/proc/self/uid_map"_s, user);
    put(u"/proc/self/gid_map"_s, group);
    return true;
}

/// The exit status of `work` in a process of its own.
int inChild(const std::function<int()> &work)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work());
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

class tst_AtomicFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void aMissingFileReadsAsNothingAndCreatesNothing();
    void whatWasWrittenReadsBack_data();
    void whatWasWrittenReadsBack();
    void fileAndFoldersArePrivateFromTheFirstInstant_data();
    void fileAndFoldersArePrivateFromTheFirstInstant();
    void aFolderThatExistsKeepsItsPermissions();
    void replacesTheFileAsAWhole();
    void aFailureKeepsTheOldBytes_data();
    void aFailureKeepsTheOldBytes();
    void aFolderThatCannotBeMadeIsAnError();
    void aFolderThatIsAFileIsAnError();
    void aFolderThatCannotBeFlushedIsAnErrorUnlessItsFileSystemNeverCan_data();
    void aFolderThatCannotBeFlushedIsAnErrorUnlessItsFileSystemNeverCan();
    void shortWritesAndInterruptionsAreNoErrors();
    void aDiskThatRefusesKeepsTheOldBytes();
    void aFullFileSystemKeepsTheOldBytes();
    void aLinkInPlaceOfTheFileIsReplacedNotFollowed_data();
    void aLinkInPlaceOfTheFileIsReplacedNotFollowed();
    void aLinkedFolderIsFollowed();
    void onlyPlainFilesAreRead_data();
    void onlyPlainFilesAreRead();
    void readsUpTo64MebibytesAndNoMore();
    void removingAMissingFileIsNoError();
    void removingReportsWhatTheSystemRefuses();
    void putsAFileAside();
    void sweepsOnlyWhatUnfinishedWritesLeft();
    void errorsNameTheFileAndTheReason();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }
    [[nodiscard]] QStringList namesInFolder() const
    {
        return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    mode_t m_umask = 0;
};

void tst_AtomicFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_umask = ::umask(022);
}

void tst_AtomicFile::cleanup()
{
    ::umask(m_umask);
}

void tst_AtomicFile::aMissingFileReadsAsNothingAndCreatesNothing()
{
    for (const QString &name : {u"missing.json"_s, u"no/such/folder/missing.json"_s}) {
        const auto content = AtomicFile(path(name)).read();
        QVERIFY(content);
        QVERIFY(!content->has_value());
    }
    put(path(u"file"_s), "x");
    const auto belowAFile = AtomicFile(path(u"file/missing.json"_s)).read();
    QVERIFY(belowAFile);
    QVERIFY(!belowAFile->has_value());
    QCOMPARE(namesInFolder(), QStringList{u"file"_s});
}

void tst_AtomicFile::whatWasWrittenReadsBack_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("text") << QByteArray("{\"a\": 1}\n");
    QTest::newRow("bytes of all values") << QByteArray("\0\xff\r\n\x1a", 5);
    QTest::newRow("more than one buffer") << QByteArray(200'001, 'k');
}

void tst_AtomicFile::whatWasWrittenReadsBack()
{
    QFETCH(QByteArray, content);
    AtomicFile file(path(u"a.json"_s));
    QVERIFY(file.write("what was there before, and is longer than some of the rows"));
    QVERIFY(file.write(content));
    const auto read = file.read();
    QVERIFY(read && *read);
    QCOMPARE(**read, content);
    QCOMPARE(namesInFolder(), QStringList{u"a.json"_s});
}

void tst_AtomicFile::fileAndFoldersArePrivateFromTheFirstInstant_data()
{
    QTest::addColumn<int>("mask");
    QTest::newRow("no umask") << 0;
    QTest::newRow("usual umask") << 022;
    QTest::newRow("strict umask") << 077;
}

void tst_AtomicFile::fileAndFoldersArePrivateFromTheFirstInstant()
{
    QFETCH(int, mask);
    ::umask(static_cast<mode_t>(mask));

    FaultyFileOperations operations;
    QList<int> fileModes;
    QList<int> folderModes;
    bool exclusive = false;
    const auto look = [&](int descriptor) {
        struct stat status = {};
        QCOMPARE(::fstat(descriptor, &status), 0);
        fileModes << static_cast<int>(status.st_mode & 07777);
    };
    operations.opened = [&](const char *, int flags, int descriptor) {
        if ((flags & O_CREAT) == 0)
            return;
        exclusive = (flags & O_EXCL) && (flags & O_NOFOLLOW) && (flags & O_CLOEXEC);
        look(descriptor);
    };
    operations.writing = look;
    operations.folderMade = [&](const char *made) { folderModes << modeOf(QFile::decodeName(made)); };

    const QString target = path(u"share/Kelp/accounts.json"_s);
    QVERIFY(AtomicFile(target, operations).write("[]"));
    QVERIFY(exclusive);
    QCOMPARE(fileModes, (QList<int>{0600, 0600}));
    QCOMPARE(folderModes, (QList<int>{0700, 0700}));
    QCOMPARE(modeOf(target), 0600);
    QCOMPARE(modeOf(path(u"share/Kelp"_s)), 0700);
    QCOMPARE(modeOf(path(u"share"_s)), 0700);
}

void tst_AtomicFile::aFolderThatExistsKeepsItsPermissions()
{
    QVERIFY(QDir(m_folder->path()).mkdir(u"share"_s));
    QCOMPARE(modeOf(path(u"share"_s)), 0755);
    QVERIFY(AtomicFile(path(u"share/a.json"_s)).write("[]"));
    QCOMPARE(modeOf(path(u"share"_s)), 0755);
}

void tst_AtomicFile::replacesTheFileAsAWhole()
{
    AtomicFile file(path(u"a.json"_s));
    QVERIFY(file.write("old"));
    ::chmod(QFile::encodeName(file.path()).constData(), 0644);

    QFile reader(file.path());
    QVERIFY(reader.open(QIODevice::ReadOnly));
    QVERIFY(file.write("new and longer"));
    // Whoever has the old file open still reads the old bytes: nothing was written into it.
    QCOMPARE(reader.readAll(), "old");
    QCOMPARE(contentOf(file.path()), "new and longer");
    QCOMPARE(modeOf(file.path()), 0600);
}

void tst_AtomicFile::aFailureKeepsTheOldBytes_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("reported");

    const auto row = [](const char *name, Call call, int number, int error) {
        QTest::newRow(name) << call << number << error << (error == 0 ? ENOSPC : error);
    };
    row("no room for a new file", Call::Open, 1, ENOSPC);
    row("folder not writable", Call::Open, 1, EACCES);
    row("too many open files", Call::Open, 1, EMFILE);
    row("name taken", Call::Open, 1, EEXIST);
    row("disk full at once", Call::Write, 1, ENOSPC);
    row("disk full in the middle", Call::Write, 3, ENOSPC);
    row("quota reached in the middle", Call::Write, 2, EDQUOT);
    row("disk broken in the middle", Call::Write, 2, EIO);
    row("nothing taken any more", Call::Write, 2, 0);
    row("not flushed", Call::Sync, 1, EIO);
    row("flushing finds the disk full", Call::Sync, 1, ENOSPC);
    row("late error at closing", Call::Close, 1, EDQUOT);
    row("not renamed", Call::Rename, 1, EIO);
    row("renaming not allowed", Call::Rename, 1, EACCES);
}

void tst_AtomicFile::aFailureKeepsTheOldBytes()
{
    QFETCH(Call, call);
    QFETCH(int, number);
    QFETCH(int, error);
    QFETCH(int, reported);

    FaultyFileOperations operations;
    operations.writeLimit = [](unsigned long) { return 4; };
    AtomicFile file(path(u"a.json"_s), operations);
    QVERIFY(file.write("the old bytes"));

    operations.failOn(call, error, number);
    const auto written = file.write("something new that never arrives");
    QVERIFY(operations.hasFailed());
    QVERIFY(!written);
    QCOMPARE(written.error(), (FileError{file.path(), reported}));
    QCOMPARE(contentOf(file.path()), "the old bytes");
    QCOMPARE(namesInFolder(), QStringList{u"a.json"_s});

    QVERIFY(file.write("the next attempt"));
    QCOMPARE(contentOf(file.path()), "the next attempt");
}

void tst_AtomicFile::aFolderThatCannotBeMadeIsAnError()
{
    FaultyFileOperations operations;
    for (const int number : {1, 2}) {
        AtomicFile file(path(u"first%1/second/a.json"_s.arg(number)), operations);
        operations.failOn(Call::MakeFolder, EROFS, number);
        const auto written = file.write("[]");
        QVERIFY(operations.hasFailed());
        QVERIFY(!written);
        QCOMPARE(written.error().code, EROFS);
        QVERIFY(!QFile::exists(file.path()));
    }
    // Somebody else made it in between.
    QVERIFY(QDir(m_folder->path()).mkpath(u"third"_s));
    QVERIFY(AtomicFile(path(u"third/a.json"_s), operations).write("[]"));
}

void tst_AtomicFile::aFolderThatIsAFileIsAnError()
{
    put(path(u"share"_s), "the user's own file");
    const auto written = AtomicFile(path(u"share/a.json"_s)).write("[]");
    QVERIFY(!written);
    QCOMPARE(written.error().code, ENOTDIR);
    QCOMPARE(contentOf(path(u"share"_s)), "the user's own file");
}

void tst_AtomicFile::aFolderThatCannotBeFlushedIsAnErrorUnlessItsFileSystemNeverCan_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<bool>("succeeds");
    QTest::newRow("disk broken") << EIO << false;
    QTest::newRow("file system cannot flush folders") << EINVAL << true;
}

void tst_AtomicFile::aFolderThatCannotBeFlushedIsAnErrorUnlessItsFileSystemNeverCan()
{
    QFETCH(int, error);
    QFETCH(bool, succeeds);
    FaultyFileOperations operations;
    AtomicFile file(path(u"a.json"_s), operations);
    operations.failOn(Call::Sync, error, 2);
    QCOMPARE(file.write("new").has_value(), succeeds);
    QVERIFY(operations.hasFailed());
    // The rename has happened by then: the file is whole either way.
    QCOMPARE(contentOf(file.path()), "new");
    QCOMPARE(namesInFolder(), QStringList{u"a.json"_s});
}

void tst_AtomicFile::shortWritesAndInterruptionsAreNoErrors()
{
    FaultyFileOperations operations;
    int calls = 0;
    operations.writeLimit = [&calls](unsigned long) -> long {
        if (++calls % 2 == 0)
            return 1;
        errno = EINTR;
        return -1;
    };
    AtomicFile file(path(u"a.json"_s), operations);
    QVERIFY(file.write("one byte at a time"));
    QCOMPARE(contentOf(file.path()), "one byte at a time");
    QCOMPARE(calls, 2 * 18);
}

void tst_AtomicFile::aDiskThatRefusesKeepsTheOldBytes()
{
    AtomicFile file(path(u"a.json"_s));
    QVERIFY(file.write("the old bytes"));

    // The kernel itself cuts the write off, as a quota does: first short, then refused.
    struct rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto signalBefore = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit = before;
    limit.rlim_cur = 10'000;
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto written = file.write(QByteArray(20'000, 'n'));
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, signalBefore);

    QVERIFY(!written);
    QCOMPARE(written.error().code, EFBIG);
    QCOMPARE(contentOf(file.path()), "the old bytes");
    QCOMPARE(namesInFolder(), QStringList{u"a.json"_s});
}

void tst_AtomicFile::aFullFileSystemKeepsTheOldBytes()
{
    enum Outcome { Kept, NoMount, FirstWriteFailed, WriteSucceeded, WrongError, Damaged, LeftOver };
    const QByteArray mountPoint = QFile::encodeName(m_folder->path());
    const int outcome = inChild([&]() -> int {
        // A file system of 64 KiB that is gone with this process. Where the machine forbids it, the test above stands.
        if (!enterMountNamespace() || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", mountPoint.constData(), "tmpfs", 0, "size=64k") != 0)
            return NoMount;
        AtomicFile file(path(u"a.json"_s));
        if (!file.write("the old bytes"))
            return FirstWriteFailed;
        const auto written = file.write(QByteArray(200'000, 'n'));
        if (written)
            return WriteSucceeded;
        if (written.error().code != ENOSPC)
            return WrongError;
        if (contentOf(file.path()) != "the old bytes")
            return Damaged;
        return namesInFolder() == QStringList{u"a.json"_s} ? Kept : LeftOver;
    });
    if (outcome == NoMount)
        qInfo("no file system can be mounted here; only the refused write was tested");
    else
        QCOMPARE(outcome, static_cast<int>(Kept));
}

void tst_AtomicFile::aLinkInPlaceOfTheFileIsReplacedNotFollowed_data()
{
    QTest::addColumn<bool>("dangling");
    QTest::newRow("to a file") << false;
    QTest::newRow("to nothing") << true;
}

void tst_AtomicFile::aLinkInPlaceOfTheFileIsReplacedNotFollowed()
{
    QFETCH(bool, dangling);
    const QString target = path(u"elsewhere"_s);
    if (!dangling)
        put(target, "somebody else's");
    AtomicFile file(path(u"a.json"_s));
    QVERIFY(QFile::link(target, file.path()));

    QVERIFY(file.write("ours"));
    QVERIFY(!QFileInfo(file.path()).isSymLink());
    QCOMPARE(contentOf(file.path()), "ours");
    QCOMPARE(modeOf(file.path()), 0600);
    if (dangling)
        QVERIFY(!QFile::exists(target));
    else
        QCOMPARE(contentOf(target), "somebody else's");
}

void tst_AtomicFile::aLinkedFolderIsFollowed()
{
    QVERIFY(QDir(m_folder->path()).mkdir(u"real"_s));
    QVERIFY(QFile::link(path(u"real"_s), path(u"linked"_s)));
    QVERIFY(AtomicFile(path(u"linked/a.json"_s)).write("x"));
    QVERIFY(QFileInfo(path(u"linked"_s)).isSymLink());
    QCOMPARE(contentOf(path(u"real/a.json"_s)), "x");
}

void tst_AtomicFile::onlyPlainFilesAreRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("error");
    QTest::newRow("folder") << u"folder"_s << EISDIR;
    QTest::newRow("pipe that nobody writes to") << u"pipe"_s << EINVAL;
    QTest::newRow("device") << u"device"_s << EINVAL;
    QTest::newRow("link to itself") << u"loop"_s << ELOOP;
}

void tst_AtomicFile::onlyPlainFilesAreRead()
{
    QFETCH(QString, name);
    QFETCH(int, error);
    QVERIFY(QDir(m_folder->path()).mkdir(u"folder"_s));
    QCOMPARE(::mkfifo(QFile::encodeName(path(u"pipe"_s)).constData(), 0600), 0);
    QVERIFY(QFile::link(u"/dev/zero"_s, path(u"device"_s)));
    QVERIFY(QFile::link(path(u"loop"_s), path(u"loop"_s)));

    const auto content = AtomicFile(path(name)).read();
    QVERIFY(!content);
    QCOMPARE(content.error(), (FileError{path(name), error}));
}

void tst_AtomicFile::readsUpTo64MebibytesAndNoMore()
{
    AtomicFile file(path(u"a.json"_s));
    QVERIFY(file.write({}));
    QVERIFY(QFile::resize(file.path(), largestReadable));
    const auto most = file.read();
    QVERIFY(most && *most);
    QCOMPARE((*most)->size(), largestReadable);

    QVERIFY(QFile::resize(file.path(), largestReadable + 1));
    const auto tooMuch = file.read();
    QVERIFY(!tooMuch);
    QCOMPARE(tooMuch.error().code, EFBIG);
}

void tst_AtomicFile::removingAMissingFileIsNoError()
{
    AtomicFile file(path(u"a.json"_s));
    QVERIFY(file.remove());
    QVERIFY(file.write("x"));
    QVERIFY(file.remove());
    QVERIFY(namesInFolder().isEmpty());
    QVERIFY(AtomicFile(path(u"no/such/folder/a.json"_s)).remove());
}

void tst_AtomicFile::removingReportsWhatTheSystemRefuses()
{
    FaultyFileOperations operations;
    AtomicFile file(path(u"a.json"_s), operations);
    QVERIFY(file.write("x"));
    operations.failOn(Call::Unlink, EPERM);
    const auto removed = file.remove();
    QVERIFY(!removed);
    QCOMPARE(removed.error().code, EPERM);
    QCOMPARE(contentOf(file.path()), "x");
}

void tst_AtomicFile::putsAFileAside()
{
    FaultyFileOperations operations;
    AtomicFile file(path(u"a.json"_s), operations);
    QVERIFY(!file.putAside(u".damaged"_s));
    QVERIFY(file.write("not JSON"));
    operations.failOn(Call::Rename, EACCES);
    QVERIFY(!file.putAside(u".damaged"_s));
    QCOMPARE(contentOf(file.path()), "not JSON");
    QVERIFY(file.putAside(u".damaged"_s));
    QCOMPARE(namesInFolder(), QStringList{u"a.json.damaged"_s});
    QCOMPARE(contentOf(path(u"a.json.damaged"_s)), "not JSON");
}

void tst_AtomicFile::sweepsOnlyWhatUnfinishedWritesLeft()
{
    FaultyFileOperations operations;
    AtomicFile file(path(u"a.json"_s), operations);
    QVERIFY(file.write("kept"));
    // A write that is cut off before its rename and cannot even tidy up.
    QString temporary;
    operations.opened = [&](const char *opened, int flags, int) {
        if (flags & O_CREAT)
            temporary = QFile::decodeName(opened);
    };
    operations.failOn(Call::Unlink, EIO);
    operations.writeLimit = [](unsigned long) -> long {
        errno = ENOSPC;
        return -1;
    };
    QVERIFY(!file.write("never arrives"));
    QVERIFY(QFile::exists(temporary));

    for (const QString &name : {u"b.tmp"_s, u".kelp-notes"_s, u".kelp.json"_s, u"kelp-c.tmp"_s})
        put(path(name), "kept");
    QVERIFY(QDir(m_folder->path()).mkdir(u".kelp-folder.tmp"_s));
    QVERIFY(QFile::link(file.path(), path(u".kelp-link-1.tmp"_s)));

    AtomicFile::sweep(m_folder->path());
    QStringList left = namesInFolder();
    left.sort();
    QCOMPARE(left, (QStringList{u".kelp-folder.tmp"_s, u".kelp-notes"_s, u".kelp.json"_s, u"a.json"_s, u"b.tmp"_s,
                                u"kelp-c.tmp"_s}));
    QCOMPARE(contentOf(file.path()), "kept");
    AtomicFile::sweep(path(u"no/such/folder"_s));
}

void tst_AtomicFile::errorsNameTheFileAndTheReason()
{
    QCOMPARE((FileError{u"/home/k/a.json"_s, ENOSPC}).description(), u"/home/k/a.json: No space left on device");
}

QTEST_GUILESS_MAIN(tst_AtomicFile)
#include "tst_AtomicFile.moc"
