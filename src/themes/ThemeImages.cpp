#include "themes/ThemeImages.h"

#include "base/Background.h"
#include "base/Folders.h"
#include "preferences/Preferences.h"
#include "themes/PictureLayer.h"
#include "themes/Theme.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QImageReader>
#include <QPainter>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>
#include <variant>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr qint64 mostBytes = 50 * 1024 * 1024;
constexpr qint64 mostPixels = 64'000'000;
constexpr int mostMegabytes = 256; // of memory for one decoded picture
constexpr QSize largest(4096, 4096);

const auto copyPrefix = u"background-"_s;

/// By resource name or file path.
QHash<QString, QImage> &cache()
{
    static QHash<QString, QImage> images;
    return images;
}

/// Formats that describe pixels. Others are programs of a kind: they may be slow without end or fetch something.
bool isRaster(const QByteArray &format)
{
    static constexpr std::array<QByteArrayView, 11> formats{"png",  "jpeg", "jpg",  "webp", "gif", "bmp",
                                                            "tiff", "tif",  "heic", "heif", "avif"};
    return std::find(formats.begin(), formats.end(), QByteArrayView(format)) != formats.end();
}

/// Without transparency: what shines through is black.
QImage flattened(const QImage &image)
{
    if (image.isNull() || !image.hasAlphaChannel())
        return image.convertToFormat(QImage::Format_RGB32);
    QImage flat(image.size(), QImage::Format_RGB32);
    flat.fill(Qt::black);
    QPainter(&flat).drawImage(0, 0, image);
    return flat;
}

/// Whether no part of a PNG file claims to be longer than the file: the decoder would believe it and fill as much
/// memory before it reads on.
bool claimsNoMoreThanItHas(QFile &file)
{
    constexpr qint64 signatureLength = 8;
    constexpr qint64 lengthAndType = 8;
    constexpr qint64 checksum = 4;
    for (qint64 at = signatureLength; at + lengthAndType <= file.size();) {
        QByteArray head(lengthAndType, '\0');
        if (!file.seek(at) || file.read(head.data(), lengthAndType) != lengthAndType)
            return false;
        at += lengthAndType + qint64{qFromBigEndian<quint32>(head.constData())} + checksum;
        if (at > file.size())
            return false;
        if (head.endsWith("IEND"))
            break;
    }
    return file.seek(0);
}

/// Where a picture is read from, and the name it is kept under.
struct Source
{
    QString key{};
    QString path{};
};

Source bundledSource(const QString &name)
{
    return {name, u":/Themes/"_s + name + u".jpg"_s};
}

Source customSource(const Preferences &preferences)
{
    const QString path = preferences.get(preference::customImagePath);
    return {path, path};
}

/// Without a path for a theme without a picture.
Source sourceOf(const OverlayTheme &theme, const Preferences &preferences)
{
    if (const auto *image = std::get_if<ImageBackground>(&theme.background))
        return bundledSource(image->name);
    return std::holds_alternative<CustomBackground>(theme.background) ? customSource(preferences) : Source();
}

QImage cached(const Source &source)
{
    const auto &[key, path] = source;
    if (const auto found = cache().constFind(key); found != cache().constEnd())
        return *found;
    const QImage image = ThemeImages::decoded(path);
    if (!image.isNull())
        cache().insert(key, image);
    return image;
}

/// "img" for a name without one; the dot of a hidden file begins none.
QString extension(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const auto dot = name.lastIndexOf(u'.');
    return dot <= 0 || dot == name.size() - 1 ? u"img"_s : name.sliced(dot + 1);
}

/// Only what setCustom made is ever removed: the preferences may name any file.
bool isOwnCopy(const QString &path)
{
    const QFileInfo info(path);
    return info.fileName().startsWith(copyPrefix) && !info.canonicalPath().isEmpty() &&
           info.canonicalPath() == QFileInfo(folders::data()).canonicalFilePath();
}

} // namespace

QImage ThemeImages::decoded(const QString &path)
{
    const QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || info.size() > mostBytes || !file.open(QIODevice::ReadOnly))
        return {};
    QImageReader::setAllocationLimit(mostMegabytes);
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (!reader.canRead() || !isRaster(reader.format()))
        return {};
    if (reader.format() == "png") {
        if (!claimsNoMoreThanItHas(file))
            return {};
        reader.setDevice(&file);
    }
    const QSize size = reader.size();
    if (qint64{size.width()} * size.height() > mostPixels)
        return {};
    if (size.width() > largest.width() || size.height() > largest.height())
        reader.setScaledSize(size.scaled(largest, Qt::KeepAspectRatio).expandedTo({1, 1}));
    const QImage image = reader.read();
    // Some formats do not tell their size before.
    if (image.width() > largest.width() || image.height() > largest.height())
        return flattened(image.scaled(image.size().scaled(largest, Qt::KeepAspectRatio).expandedTo({1, 1})));
    return flattened(image);
}

QStringList ThemeImages::formats()
{
    QStringList result;
    for (const QByteArray &format : QImageReader::supportedImageFormats()) {
        if (isRaster(format))
            result.append(QString::fromLatin1(format));
    }
    return result;
}

QImage ThemeImages::bundled(const QString &name)
{
    return cached(bundledSource(name));
}

QImage ThemeImages::custom(const Preferences &preferences)
{
    const Source source = customSource(preferences);
    return source.path.isEmpty() ? QImage() : cached(source);
}

bool ThemeImages::isReady(const OverlayTheme &theme, const Preferences &preferences)
{
    const Source source = sourceOf(theme, preferences);
    return source.path.isEmpty() || cache().contains(source.key);
}

void ThemeImages::load(const OverlayTheme &theme, const Preferences &preferences, const QSize &view, QObject *context,
                       std::function<void(const QImage &)> done)
{
    const Source source = sourceOf(theme, preferences);
    runInBackground<QImage>(
        context,
        [path = source.path, view] { return path.isEmpty() ? QImage() : PictureLayer::reduced(decoded(path), view); },
        [key = source.key, done = std::move(done)](const QImage &image) {
            if (!image.isNull())
                cache().insert(key, image);
            done(image);
        });
}

Result<void, FileError> ThemeImages::setCustom(const QString &path, Preferences &preferences, Instant now)
{
    const QString copy =
        folders::data() + u'/' + copyPrefix + QString::number(now.wholeSeconds()) + u'.' + extension(path);
    // Read whole before anything is written: the chosen file may be the copy that is replaced.
    const auto content = AtomicFile(path).read();
    if (!content)
        return Failure(content.error());
    if (!*content)
        return Failure(FileError{path, ENOENT});
    if ((*content)->size() > mostBytes)
        return Failure(FileError{path, EFBIG});
    if (auto written = AtomicFile(copy).write(**content); !written)
        return written;
    const QString previous = preferences.get(preference::customImagePath);
    if (previous != copy && isOwnCopy(previous))
        QFile::remove(previous);
    cache().remove(previous);
    cache().remove(copy);
    preferences.set(preference::customImagePath, copy);
    return {};
}

void ThemeImages::forgetDecoded()
{
    cache() = {};
}

void ThemeImages::forgetDecodedBut(const OverlayTheme &theme, const Preferences &preferences)
{
    const QString kept = sourceOf(theme, preferences).key;
    cache().removeIf([&](const QHash<QString, QImage>::iterator &each) { return each.key() != kept; });
}

} // namespace kelp
