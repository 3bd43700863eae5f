#include "settings/CustomPicture.h"

#include "base/Background.h"
#include "themes/ThemeImages.h"

#include <utility>

namespace kelp {

namespace {

QImage readEnough(const QString &path)
{
    const QImage image = ThemeImages::decoded(path);
    const QSize size = image.size().scaled(CustomPicture::enough, Qt::KeepAspectRatioByExpanding);
    return size.width() < image.width() ? image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation) : image;
}

} // namespace

void CustomPicture::read(const QString &path, QObject *context, std::function<void(const QImage &)> done)
{
    runInBackground<QImage>(
        context, [path] { return readEnough(path); }, std::move(done));
}

void CustomPicture::load(const QString &path)
{
    if (path == m_path)
        return;
    const bool existed = exists();
    m_path = path;
    m_image = {};
    m_isReading = !path.isEmpty();
    m_reading = std::make_unique<QObject>();
    if (existed != m_isReading)
        Q_EMIT changed();
    if (!m_isReading)
        return;
    read(path, m_reading.get(), [this](const QImage &image) {
        m_isReading = false;
        m_image = image;
        Q_EMIT changed();
    });
}

void CustomPicture::drop()
{
    m_reading.reset();
    m_isReading = false;
    m_image = {};
    m_path.clear();
}

} // namespace kelp
