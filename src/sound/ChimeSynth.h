#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <span>

namespace kelp {

/// Turns a short musical figure into a sound, so that Kelp can chime without shipping audio files.
struct ChimeSynth
{
    /// One struck tone.
    struct Note
    {
        double freq = 0;  ///< Hz
        double at = 0;    ///< seconds from the start of the figure to the strike
        double decay = 0; ///< seconds until the fundamental has fallen to 1/e
        double amp = 1;   ///< linear gain

        friend bool operator==(const Note &, const Note &) = default;
    };

    enum class Voice { bell, marimba, harp, bowl, arcade, glass };

    /// What sounds along with a note.
    struct Overtone
    {
        double ratio = 1;        ///< of its frequency to the note's
        double weight = 1;       ///< peak amplitude
        double decayDivisor = 1; ///< how many times faster than the fundamental it dies

        friend bool operator==(const Overtone &, const Overtone &) = default;
    };

    struct Preset
    {
        QString name; ///< shown to the user, and the sound's key
        Voice voice = Voice::bell;
        QList<Note> notes;
    };

    /// The fundamental first.
    [[nodiscard]] static std::span<const Overtone> partials(Voice voice);
    /// In the order in which they are offered.
    [[nodiscard]] static const QList<Preset> &presets();

    /// The bytes of a WAV file: mono, 16 bits, 44100 Hz. The same preset gives the same bytes every time. Stops the
    /// program where the figure is longer than such a file can be, or begins before 0.
    [[nodiscard]] static QByteArray wav(const Preset &preset);

    ChimeSynth() = delete;
};

} // namespace kelp
