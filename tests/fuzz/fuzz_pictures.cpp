#include "base/AtomicFile.h"
#include "fuzz/FuzzTarget.h"
#include "preferences/Preferences.h"
#include "themes/ThemeImages.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QTemporaryDir>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

/// Where Kelp keeps its data for as long as the target runs; in memory where there is such a folder, because every copy
/// is written through.
const QTemporaryDir &home()
{
    static const QTemporaryDir folder(QFileInfo(u"/dev/shm"_s).isWritable() ? u"/dev/shm/fuzz-pictures"_s
                                                                            : QDir::tempPath() + u"/fuzz-pictures"_s);
    return folder;
}

/// A few bytes can stand for millions of pixels, which take as long to decode as a thousand small pictures. Of those,
/// one in 64 is: which one follows from its bytes, so that an input does the same every time.
bool isWorthItsTime(const QString &path, const QByteArray &bytes)
{
    constexpr qint64 large = 64 * 1024; // pixels
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    return static_cast<qint64>(size.width()) * size.height() <= large || qHash(bytes) % 64 == 0;
}

} // namespace

/// A picture that somebody was sent, and chooses for the overlay.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qputenv("XDG_DATA_HOME", QFile::encodeName(home().path()));
    const QString chosen = home().filePath(u"chosen.jpg"_s);
    QFile file(chosen);
    FUZZ_EXPECT(file.open(QIODevice::WriteOnly));
    const QByteArray bytes = test::inputBytes(data, size);
    file.write(bytes);
    file.close();

    Preferences preferences;
    FUZZ_EXPECT(ThemeImages::setCustom(chosen, preferences, Instant{1767261600}).has_value());
    if (!isWorthItsTime(chosen, bytes))
        return 0;
    const QImage image = ThemeImages::custom(preferences);
    FUZZ_EXPECT(image.isNull() || image.format() == QImage::Format_RGB32);
    FUZZ_EXPECT(image.width() <= 4096 && image.height() <= 4096);
    ThemeImages::forgetDecoded();
    return 0;
}
