#include "sound/OverlaySounds.h"

#include "base/AtomicFile.h"
#include "base/Clock.h"
#include "preferences/Preferences.h"
#include "sound/ChimeSynth.h"
#include "sound/OverlayMusic.h"
#include "sound/SoundBytes.h"
#include "sound/SoundFileName.h"
#include "sound/SoundPlayer.h"
#include "sound/SystemSynth.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString standIn = u"Glass"_s;
const QString copyPrefix = u"sound-"_s;

template<typename T>
QJsonValue storedValue(const Preferences &preferences, const PreferenceKey<T> &key)
{
    return preferences.values().value(QLatin1StringView(key.name));
}

} // namespace

const QStringList &OverlaySounds::system()
{
    return SystemSynth::names();
}

const QStringList &OverlaySounds::chimes()
{
    static const QStringList list = [] {
        QStringList names;
        for (const ChimeSynth::Preset &each : ChimeSynth::presets())
            names.append(each.name);
        return names;
    }();
    return list;
}

OverlaySounds::OverlaySounds(Preferences &preferences, Clock &clock, SoundPlayer &player, OverlayMusic &music,
                             QString folder)
    : m_preferences(preferences), m_clock(clock), m_player(player), m_music(music), m_folder(std::move(folder))
{
}

OverlaySounds::~OverlaySounds() = default;

void OverlaySounds::playForOverlay()
{
    m_music.pauseForOverlay();
    const QJsonValue stored = storedValue(m_preferences, preference::sound);
    play(stored.isString() ? stored.toString() : preference::sound.fallback);
}

quint64 OverlaySounds::play(const std::optional<QString> &name)
{
    stop();
    const quint64 turn = ++m_turn;
    if (name && *name != u"None")
        start(*name);
    return turn;
}

void OverlaySounds::stop()
{
    m_player.stop();
    m_music.stop();
}

void OverlaySounds::stopTurn(quint64 turn)
{
    if (turn == m_turn)
        stop();
}

void OverlaySounds::start(const QString &name)
{
    if (name == u"spotify") {
        if (!m_music.playSpotify())
            start(standIn);
    } else if (name == u"custom") {
        startCustom();
    } else if (const auto bytes = chime(name)) {
        start(Sound{.bytes = bytes});
    } else {
        startNamed(name);
    }
}

void OverlaySounds::startCustom()
{
    const QString path = m_preferences.get(preference::customSoundPath);
    if (path.isEmpty())
        start(standIn);
    else
        start(Sound{.file = path}, [this] { start(standIn); });
}

/// Nothing is heard where neither the desktop nor Kelp has a sound of that name.
void OverlaySounds::startNamed(const QString &name)
{
    if (name.isEmpty())
        return;
    const auto own = ownSystemSound(name);
    // The desktop's sound may be one that cannot be played.
    start(Sound{.bytes = own, .name = name}, [this, own] {
        if (own)
            start(Sound{.bytes = own});
    });
}

void OverlaySounds::start(const Sound &sound, std::function<void()> failed)
{
    m_player.play(sound, volume(), std::move(failed));
}

std::shared_ptr<const SoundBytes> OverlaySounds::chime(const QString &name)
{
    const QList<ChimeSynth::Preset> &presets = ChimeSynth::presets();
    const auto preset =
        std::find_if(presets.begin(), presets.end(), [&](const ChimeSynth::Preset &each) { return each.name == name; });
    if (preset == presets.end())
        return nullptr;
    if (const auto cached = m_cache.value(name))
        return cached;
    const auto bytes = std::make_shared<const SoundBytes>(ChimeSynth::wav(*preset));
    if (!bytes->isValid())
        return nullptr;
    m_cache.insert(name, bytes);
    return bytes;
}

std::shared_ptr<const SoundBytes> OverlaySounds::ownSystemSound(const QString &name)
{
    // Apart from the chimes, whatever those are called.
    const QString key = u"system/"_s + name;
    if (const auto cached = m_cache.value(key))
        return cached;
    const std::optional<QByteArray> wav = SystemSynth::wav(name);
    const auto bytes = wav ? std::make_shared<const SoundBytes>(*wav) : nullptr;
    if (!bytes || !bytes->isValid())
        return nullptr;
    m_cache.insert(key, bytes);
    return bytes;
}

float OverlaySounds::volume() const
{
    const double stored =
        storedValue(m_preferences, preference::soundVolume).toDouble(preference::soundVolume.fallback);
    return static_cast<float>(std::clamp(stored, 0.0, 1.0));
}

void OverlaySounds::setCustom(const QUrl &url, QObject *context, Done done)
{
    const auto tell = [context = QPointer(context), done = std::move(done)](const Result<void, SoundError> &outcome) {
        if (context)
            done(outcome);
    };
    const quint64 adoption = ++m_adoption;
    const QString original = url.toLocalFile();
    const auto folder = makePrivateFolder(m_folder);
    if (!folder || original.isEmpty()) {
        const auto kind = folder ? SoundError::Kind::corruptFile : SoundError::Kind::folder;
        m_clock.after(0, this, [tell, kind] { tell(Failure(SoundError{kind})); });
        return;
    }
    // A name that is swept at the next start, should Kelp end before it is renamed.
    const QString copy =
        m_folder + u"/.kelp-sound-%1.tmp"_s.arg(QString::number(QRandomGenerator::system()->generate64(), 36));
    const auto imported = [this, tell, copy, original, adoption](const Result<void, SoundError> &outcome) {
        if (adoption == m_adoption)
            tell(outcome ? replaceCustom(copy, original) : outcome);
        else
            QFile::remove(copy);
    };
    m_player.import(original, copy, this, imported);
}

Result<void, SoundError> OverlaySounds::replaceCustom(const QString &copy, const QString &original)
{
    const SoundFileName name = SoundFileName::of(original);
    const QString extension = name.extension.isEmpty() ? u"audio"_s : name.extension;
    const QString path =
        u"%1/%2%3.%4"_s.arg(m_folder, copyPrefix, QString::number(m_clock.now().wholeSeconds()), extension);
    const QString previous = m_preferences.get(preference::customSoundPath);
    if (std::rename(QFile::encodeName(copy).constData(), QFile::encodeName(path).constData()) != 0) {
        QFile::remove(copy);
        return Failure(SoundError{SoundError::Kind::copy});
    }
    m_preferences.update([&] {
        m_preferences.set(preference::customSoundPath, path);
        m_preferences.set(preference::customSoundName, name.base);
    });
    // Whatever the preferences say, nothing is deleted but a copy of ours.
    const QFileInfo old(previous);
    if (previous != path && old.path() == m_folder && old.fileName().startsWith(copyPrefix))
        QFile::remove(previous);
    return {};
}

} // namespace kelp
