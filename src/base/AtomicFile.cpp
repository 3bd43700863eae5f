#include "base/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QScopeGuard>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr qint64 largestFile = 64 * 1024 * 1024;
constexpr auto temporaryPrefix = ".kelp-";
constexpr auto temporarySuffix = ".tmp";

QByteArray temporaryPath(const QString &path)
{
    const QString name = QLatin1String(temporaryPrefix) + QFileInfo(path).fileName() + u'-' +
                         QString::number(QRandomGenerator::system()->generate64(), 36) + QLatin1String(temporarySuffix);
    return QFile::encodeName(QFileInfo(path).path() + u'/' + name);
}

} // namespace

QString FileError::description() const
{
    return path + u": "_s + QString::fromLocal8Bit(std::strerror(code));
}

int FileOperations::open(const char *path, int flags, unsigned mode)
{
    return ::open(path, flags, mode);
}
long FileOperations::write(int descriptor, const char *bytes, unsigned long size)
{
    return ::write(descriptor, bytes, size);
}
int FileOperations::sync(int descriptor)
{
    return ::fsync(descriptor);
}
int FileOperations::close(int descriptor)
{
    return ::close(descriptor);
}
int FileOperations::rename(const char *from, const char *to)
{
    return std::rename(from, to);
}
int FileOperations::unlink(const char *path)
{
    return ::unlink(path);
}
int FileOperations::makeFolder(const char *path, unsigned mode)
{
    return ::mkdir(path, mode);
}

FileOperations &FileOperations::system()
{
    static FileOperations operations;
    return operations;
}

namespace {

Result<void, FileError> makeFolder(const QString &folder, unsigned mode, FileOperations &operations)
{
    const QByteArray path = QFile::encodeName(folder);
    struct stat status = {};
    if (::stat(path.constData(), &status) == 0) {
        if (S_ISDIR(status.st_mode))
            return {};
        return Failure(FileError{folder, ENOTDIR});
    }
    const QString parent = QFileInfo(folder).path();
    if (parent != folder) {
        if (auto made = makeFolder(parent, mode, operations); !made)
            return made;
    }
    if (operations.makeFolder(path.constData(), mode) != 0 && errno != EEXIST)
        return Failure(FileError{folder, errno});
    return {};
}

} // namespace

Result<void, FileError> makePrivateFolder(const QString &folder, FileOperations &operations)
{
    return makeFolder(folder, 0700, operations);
}

AtomicFile::AtomicFile(QString path, FileOperations &operations, Access access)
    : m_path(std::move(path)), m_operations(operations), m_access(access)
{
}

FileError AtomicFile::lastError() const
{
    return {m_path, errno};
}

Result<std::optional<QByteArray>, FileError> AtomicFile::read() const
{
    // O_NONBLOCK: a pipe put in the file's place must not hold us up.
    const int descriptor = ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return std::nullopt;
        return Failure(lastError());
    }
    const auto closing = qScopeGuard([descriptor] { ::close(descriptor); });

    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
        return Failure(lastError());
    if (!S_ISREG(status.st_mode))
        return Failure(FileError{m_path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL});
    if (status.st_size > largestFile)
        return Failure(FileError{m_path, EFBIG});

    QByteArray content;
    QByteArray chunk(64 * 1024, Qt::Uninitialized);
    for (;;) {
        const ssize_t count = ::read(descriptor, chunk.data(), static_cast<size_t>(chunk.size()));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return Failure(lastError());
        if (count == 0)
            return content;
        content.append(chunk.constData(), count);
        if (content.size() > largestFile)
            return Failure(FileError{m_path, EFBIG});
    }
}

Result<void, FileError> AtomicFile::write(const QByteArray &content)
{
    const bool isPrivate = m_access == Access::owner;
    if (auto made = makeFolder(QFileInfo(m_path).path(), isPrivate ? 0700 : 0777, m_operations); !made)
        return made;

    const QByteArray temporary = temporaryPath(m_path);
    const int descriptor = m_operations.open(
        temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, isPrivate ? 0600 : 0666);
    if (descriptor < 0)
        return Failure(lastError());

    const auto fail = [&](bool close) {
        const FileError error = lastError();
        if (close)
            m_operations.close(descriptor);
        m_operations.unlink(temporary.constData());
        return Failure(error);
    };

    for (qsizetype done = 0; done < content.size();) {
        const long count = m_operations.write(descriptor, content.constData() + done,
                                              static_cast<unsigned long>(content.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0)
            errno = ENOSPC;
        if (count <= 0)
            return fail(true);
        done += count;
    }
    if (m_operations.sync(descriptor) != 0)
        return fail(true);
    // Network file systems report a write that failed late here.
    if (m_operations.close(descriptor) != 0)
        return fail(false);
    if (m_operations.rename(temporary.constData(), QFile::encodeName(m_path).constData()) != 0)
        return fail(false);
    return syncFolder();
}

Result<void, FileError> AtomicFile::remove()
{
    if (m_operations.unlink(QFile::encodeName(m_path).constData()) != 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return {};
        return Failure(lastError());
    }
    return syncFolder();
}

Result<void, FileError> AtomicFile::putAside(const QString &suffix)
{
    if (m_operations.rename(QFile::encodeName(m_path).constData(), QFile::encodeName(m_path + suffix).constData()) != 0)
        return Failure(lastError());
    return syncFolder();
}

Result<void, FileError> AtomicFile::syncFolder()
{
    const QByteArray folder = QFile::encodeName(QFileInfo(m_path).path());
    const int descriptor = m_operations.open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (descriptor < 0)
        return Failure(lastError());
    const int synced = m_operations.sync(descriptor);
    const FileError error = lastError();
    m_operations.close(descriptor);
    // Some file systems cannot flush a folder; the rename itself has happened.
    if (synced != 0 && error.code != EINVAL && error.code != EROFS)
        return Failure(error);
    return {};
}

void AtomicFile::sweep(const QString &folder)
{
    // A pattern handed to QDir would cost half a megabyte for its regular expression, at every start.
    const QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : names) {
        if (name.startsWith(QLatin1String(temporaryPrefix)) && name.endsWith(QLatin1String(temporarySuffix)))
            ::unlink(QFile::encodeName(folder + u'/' + name).constData());
    }
}

} // namespace kelp
