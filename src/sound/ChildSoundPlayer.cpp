#include "sound/ChildSoundPlayer.h"

#include "base/Folders.h"
#include "base/Logging.h"
#include "sound/SoundBytes.h"

#include <QFile>
#include <QPointer>

#include <array>
#include <charconv>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// The shortest form that reads back as the same number, in no locale.
QString numberText(float value)
{
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed).ptr;
    return QString::fromLatin1(text.data(), end - text.data());
}

Result<void, SoundError> outcomeOf(std::optional<ChildStatus> status)
{
    if (status == ChildStatus::done)
        return {};
    return Failure(
        SoundError{status == ChildStatus::notCopied ? SoundError::Kind::copy : SoundError::Kind::corruptFile});
}

} // namespace

QString ChildSoundPlayer::usualProgram()
{
    return folders::program(u"kelp-sound"_s);
}

ChildSoundPlayer::ChildSoundPlayer(Clock &clock, QString program, SoundChild::Patience playing,
                                   SoundChild::Patience importing)
    : m_clock(clock), m_program(std::move(program)), m_patienceToPlay(playing), m_patienceToImport(importing)
{
}

ChildSoundPlayer::~ChildSoundPlayer() = default;

void ChildSoundPlayer::play(const Sound &sound, float volume, std::function<void()> failed)
{
    QStringList arguments{u"play"_s, u"--volume"_s, numberText(volume)};
    if (!sound.file.isEmpty())
        arguments += u"--file="_s + sound.file;
    if (!sound.name.isEmpty())
        arguments += u"--name="_s + sound.name;
    if (sound.bytes)
        arguments += u"--bytes"_s;
    m_playing = std::make_unique<SoundChild>(m_clock, m_program, arguments,
                                             sound.bytes ? sound.bytes->path() : QString(), m_patienceToPlay);
    connect(m_playing.get(), &SoundChild::ready, this, &ChildSoundPlayer::started);
    connect(m_playing.get(), &SoundChild::ended, this,
            [this, failed = std::move(failed)](std::optional<ChildStatus> status) { endOfPlay(status, failed); });
}

void ChildSoundPlayer::endOfPlay(std::optional<ChildStatus> status, const std::function<void()> &failed)
{
    const bool wasHeard = m_playing->isReady();
    const std::function<void()> tell = failed; // goes with the connection otherwise
    m_playing.release()->deleteLater();
    if (status == ChildStatus::noOutput)
        qCWarning(logSound) << "there is nothing to play sounds on";
    else if (!wasHeard && status != ChildStatus::done) {
        qCInfo(logSound) << "a sound could not be played, status" << (status ? static_cast<int>(*status) : -1);
        if (tell)
            return tell();
    }
    Q_EMIT finished();
}

void ChildSoundPlayer::stop()
{
    m_playing.reset();
}

void ChildSoundPlayer::import(const QString &file, const QString &copy, QObject *context,
                              std::function<void(Result<void, SoundError>)> done)
{
    auto *child = new SoundChild(m_clock, m_program, {u"import"_s, u"--file="_s + file, u"--to="_s + copy}, {},
                                 m_patienceToImport, this);
    connect(child, &SoundChild::ended, this,
            [child, copy, context = QPointer(context), done = std::move(done)](std::optional<ChildStatus> status) {
                const Result<void, SoundError> outcome = outcomeOf(status);
                // One that was killed has left it half done.
                if (!outcome)
                    QFile::remove(copy);
                if (context)
                    done(outcome);
                child->deleteLater();
            });
}

void ChildSoundPlayer::warmUp()
{
    auto *child = new SoundChild(m_clock, m_program, {u"warm"_s}, {}, {60, 0}, this);
    connect(child, &SoundChild::ended, child, &QObject::deleteLater);
}

} // namespace kelp
