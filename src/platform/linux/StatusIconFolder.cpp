#include "platform/linux/StatusIconFolder.h"

#include "platform/StatusItem.h"

#include <QFileInfo>

#include <cerrno>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

Result<QString, FileError> writeStatusIcons(const StatusPictures &pictures)
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    // A folder that all users share is no place for files whose name others would know.
    if (!QFileInfo(runtime).isDir())
        return Failure(FileError{runtime, ENOENT});
    const QString folder = runtime + u"/app.kelp.Kelp/icons"_s;
    for (const QString &name : pictures.names()) {
        for (const auto &[fileName, content] :
             {std::pair(name, pictures.svg(name)), std::pair(name + symbolicSuffix, pictures.symbolicSvg(name))}) {
            AtomicFile file(folder + u'/' + fileName + u".svg"_s);
            if (const auto there = file.read(); there && *there == content)
                continue;
            if (const auto written = file.write(content); !written)
                return Failure(written.error());
        }
    }
    return folder;
}

} // namespace kelp
