#include "capture/ImageFile.h"

#include "base/AtomicFile.h"
#include "base/Logging.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>

namespace kelp {

bool saveImage(const QImage &image, const QString &path, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!image.save(&buffer, QFileInfo(path).suffix().toLatin1().constData(), quality))
        return false;
    const auto written = AtomicFile(path, FileOperations::system(), AtomicFile::Access::usual).write(bytes);
    if (!written)
        qCDebug(logCapture).noquote() << "not written:" << written.error().description();
    return written.has_value();
}

} // namespace kelp
