#include "fuzz/FuzzTarget.h"
#include "preferences/Preferences.h"
#include "sound/SoundFileName.h"
#include "support/FakeClock.h"
#include "support/RecordedSounds.h"

#include <QDir>
#include <QFileInfo>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// One home for all inputs, in memory where the system has such a place.
struct Home
{
    Home() : preferences(), sounds(preferences, clock) { QDir().mkpath(inbox()); }
    [[nodiscard]] QString inbox() const { return sounds.folder.filePath(u"inbox"_s); }
    [[nodiscard]] QString kelp() const { return sounds.folder.filePath(u"Kelp"_s); }

    FakeClock clock;
    Preferences preferences;
    RecordedSounds sounds;
};

/// A name as a folder can have it, with as much of the input in it as possible.
QString fileName(QString text)
{
    text.remove(u'/').remove(QChar::Null);
    while (QFile::encodeName(text).size() > 200)
        text.chop(1);
    return text == u"." || text == u".." || text.isEmpty() ? u"empty"_s : text;
}

void checkName(const QString &path)
{
    const SoundFileName name = SoundFileName::of(path);
    FUZZ_EXPECT(!name.extension.contains(u'/') && !name.extension.contains(u'.') && !name.extension.contains(u' '));
    FUZZ_EXPECT(path.endsWith(name.extension.isEmpty() ? name.base : name.base + u'.' + name.extension));
}

void checkAdopted(const Home &home, const QString &source)
{
    const QString path = home.preferences.get(preference::customSoundPath);
    FUZZ_EXPECT(QFileInfo(path).path() == home.kelp());
    FUZZ_EXPECT(QFileInfo(path).fileName().startsWith("sound-1767258000."_L1));
    FUZZ_EXPECT(contentOf(path) == contentOf(source));
    FUZZ_EXPECT(QDir(home.kelp()).entryList(QDir::Files | QDir::Hidden).size() == 1);
}

} // namespace

/// The first line is a file's name, and a choice and a path as the preferences may have them; the whole is the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Home home;
    const QByteArray input = inputBytes(data, size);
    const QString line = QString::fromUtf8(input.left(input.indexOf('\n')));
    checkName(line);
    // Files are slow: they are for one input in eight, and always for the same ones.
    if (qHash(input, 0) % 8 != 0)
        return 0;

    const QString precious = home.sounds.folder.filePath(u"precious"_s);
    if (QFile file(precious); file.open(QIODevice::WriteOnly))
        file.write("precious");
    const QString source = home.inbox() + u'/' + fileName(line);
    if (QFile file(source); !file.open(QIODevice::WriteOnly) || file.write(input) != input.size())
        return 0; // no name that this file system takes

    std::optional<Result<void, SoundError>> outcome;
    home.sounds.sounds().setCustom(QUrl::fromLocalFile(source), &home.preferences,
                                   [&](const Result<void, SoundError> &result) { outcome = result; });
    home.sounds.player.finishImport();
    FUZZ_EXPECT(outcome && *outcome);
    checkAdopted(home, source);
    QFile::remove(source);

    // Whatever stands in the preferences: one sound at most, and nothing of the user's is deleted.
    home.preferences.set(preference::sound, line);
    home.preferences.set(preference::customSoundPath, home.kelp() + u"/../"_s + line);
    home.sounds.player.plays.clear();
    home.sounds.sounds().playForOverlay();
    FUZZ_EXPECT(home.sounds.player.plays.size() <= 1);
    // Where none can be played: the user's own, "Glass" as the desktop has it, and as Kelp has it.
    for (int fall = 0; fall < 4; ++fall)
        home.sounds.player.fail();
    FUZZ_EXPECT(home.sounds.player.plays.size() <= 3);
    home.sounds.sounds().stop();
    home.preferences.set(preference::customSoundPath, precious);
    for (const QString &left : QDir(home.kelp()).entryList(QDir::Files | QDir::Hidden))
        QFile::remove(home.kelp() + u'/' + left);
    FUZZ_EXPECT(QFile::exists(precious));
    home.sounds.player.imports.clear();
    return 0;
}
