#include "sound/MusicControl.h"

#include "base/Uri.h"
#include "platform/MusicPlayers.h"

#include <QStringTokenizer>
#include <QUrl>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr QLatin1StringView scheme("spotify:");
/// Of share links. Only a suffix, as links come from several hosts; nothing is ever sent there.
constexpr QLatin1StringView webDomain("spotify.com");
/// Begins the language of a localized share link.
constexpr QLatin1StringView languagePrefix("intl-");

constexpr std::array kinds{"track"_L1, "album"_L1, "playlist"_L1, "artist"_L1, "episode"_L1, "show"_L1};

bool isKind(QStringView text)
{
    return std::any_of(kinds.begin(), kinds.end(), [&](QLatin1StringView kind) { return text == kind; });
}

bool isAcceptedUri(const QString &text)
{
    qsizetype count = 0;
    bool hasKind = false;
    for (const QStringView piece : qTokenize(text, u':', Qt::SkipEmptyParts)) {
        if (++count > 3)
            return false;
        if (count == 2)
            hasKind = isKind(piece);
    }
    return count == 3 && hasKind;
}

std::optional<QString> uriOfLink(const QString &text)
{
    const std::optional<Uri> link = Uri::parse(text);
    if (!link || !link->host || !link->host->endsWith(webDomain, Qt::CaseInsensitive) ||
        !QUrl(text, QUrl::StrictMode).isValid())
        return {};
    QStringList components = link->pathComponents();
    components.removeIf([](const QString &each) { return each == "/"_L1 || each.startsWith(languagePrefix); });
    if (components.size() < 2 || !isKind(components[0]) || components[1].isEmpty())
        return {};
    return scheme + components[0] + u':' + components[1];
}

} // namespace

void MusicControl::pauseSpotify()
{
    m_players.pauseSpotify();
}

void MusicControl::pauseAll(bool skipSpotify)
{
    if (!skipSpotify)
        pauseSpotify();
    m_players.pauseOthers();
}

bool MusicControl::spotifyInstalled() const
{
    return m_players.spotifyInstalled();
}

void MusicControl::playSpotify(const QString &uri)
{
    m_players.playSpotify(uri);
}

std::optional<QString> MusicControl::spotifyURI(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.startsWith(scheme))
        return isAcceptedUri(trimmed) ? std::optional(trimmed) : std::nullopt;
    return uriOfLink(trimmed);
}

} // namespace kelp
