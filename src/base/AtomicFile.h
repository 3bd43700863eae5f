#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace kelp {

/// Why a file could not be read or written.
struct FileError
{
    QString path;
    int code = 0; ///< errno

    [[nodiscard]] QString description() const;
    friend bool operator==(const FileError &, const FileError &) = default;
};

/// The system calls that a write is made of, one by one, so that a test can let any of them fail.
/// Each returns what the call returns and sets errno.
class FileOperations
{
public:
    virtual ~FileOperations() = default;

    virtual int open(const char *path, int flags, unsigned mode);
    virtual long write(int descriptor, const char *bytes, unsigned long size);
    virtual int sync(int descriptor);
    virtual int close(int descriptor);
    virtual int rename(const char *from, const char *to);
    virtual int unlink(const char *path);
    virtual int makeFolder(const char *path, unsigned mode);

    /// The real ones.
    [[nodiscard]] static FileOperations &system();
};

/// Makes the folder and its missing parents, for the user alone (0700). One that is there is left as it is.
[[nodiscard]] Result<void, FileError> makePrivateFolder(const QString &folder,
                                                        FileOperations &operations = FileOperations::system());

/// A file whose content is only ever replaced as a whole: at every moment, also after a crash or on a full disk, it
/// holds either the old bytes or the new ones.
///
/// A write goes to a new file beside it, which is flushed to the disk and then renamed over the old one.
class AtomicFile
{
public:
    enum class Access {
        owner, ///< a private file (0600) in a private folder (0700): everything that Kelp keeps
        usual, ///< what the user asked for: as the umask has it
    };

    /// Nothing is touched yet.
    explicit AtomicFile(QString path, FileOperations &operations = FileOperations::system(),
                        Access access = Access::owner);

    [[nodiscard]] const QString &path() const { return m_path; }

    /// The whole content; nothing when there is no such file. Anything but a plain file of at most 64 MiB is an error.
    [[nodiscard]] Result<std::optional<QByteArray>, FileError> read() const;
    /// Creates the folder where it is missing. Every failure leaves the old content.
    Result<void, FileError> write(const QByteArray &content);
    /// A missing file is no error.
    Result<void, FileError> remove();
    /// Gives the file another name in its folder; `suffix` is appended.
    Result<void, FileError> putAside(const QString &suffix);

    /// Removes what writes that never ended left behind in `folder`. Call it before the first write, in the one
    /// process that owns the folder.
    static void sweep(const QString &folder);

private:
    [[nodiscard]] Result<void, FileError> syncFolder();
    [[nodiscard]] FileError lastError() const;

    QString m_path;
    FileOperations &m_operations;
    Access m_access;
};

} // namespace kelp
