#pragma once

namespace kelp {

class MusicControl;
class Preferences;

/// The part that the user's music has in an overlay: it is paused where the user wants that, and an item of Spotify's
/// may be the overlay's sound. What was paused is never resumed.
class OverlayMusic
{
public:
    /// Both have to outlive this.
    OverlayMusic(Preferences &preferences, MusicControl &control) : m_preferences(preferences), m_control(control) {}

    /// An overlay appears: what it must not be drowned by falls silent, all but the Spotify that is to be its sound.
    void pauseForOverlay();
    /// Plays the item that the user chose. False where there is none, or no Spotify: something else has to be heard.
    [[nodiscard]] bool playSpotify();
    /// Pauses what `playSpotify` started, once.
    void stop();

private:
    Preferences &m_preferences;
    MusicControl &m_control;
    bool m_startedSpotify = false;
};

} // namespace kelp
