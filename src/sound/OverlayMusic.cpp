#include "sound/OverlayMusic.h"

#include "preferences/Preferences.h"
#include "sound/MusicControl.h"

#include <utility>

namespace kelp {

void OverlayMusic::pauseForOverlay()
{
    if (m_preferences.get(preference::pauseMusic))
        m_control.pauseAll(m_preferences.get(preference::sound) == u"spotify");
}

bool OverlayMusic::playSpotify()
{
    const std::optional<QString> uri = MusicControl::spotifyURI(m_preferences.get(preference::spotifyLink));
    if (!uri || !m_control.spotifyInstalled())
        return false;
    m_control.playSpotify(*uri);
    m_startedSpotify = true;
    return true;
}

void OverlayMusic::stop()
{
    if (std::exchange(m_startedSpotify, false))
        m_control.pauseSpotify();
}

} // namespace kelp
