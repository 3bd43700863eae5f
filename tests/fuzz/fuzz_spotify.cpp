#include "fuzz/FuzzTarget.h"
#include "platform/MusicPlayers.h"
#include "sound/MusicControl.h"

#include <QStringList>

#include <algorithm>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

bool isPlayable(QStringView uri)
{
    return std::none_of(uri.begin(), uri.end(), [](QChar c) {
        return c.isSpace() || c == u'"' || c == u'\\' || c.category() == QChar::Other_Control || c == u'/';
    });
}

/// Of what a preference may hold, nothing but letters, numbers and colons reaches a player.
void checkPlaying(const QString &text)
{
    const QString played = MusicPlayers::playableUri(text);
    FUZZ_EXPECT(isPlayable(played) && played.size() <= text.size());
    FUZZ_EXPECT(played.isValidUtf16());
    FUZZ_EXPECT(MusicPlayers::playableUri(played) == played);
}

void checkReading(const QString &text)
{
    static const QStringList kinds{u"track"_s, u"album"_s, u"playlist"_s, u"artist"_s, u"episode"_s, u"show"_s};
    const std::optional<QString> uri = MusicControl::spotifyURI(text);
    FUZZ_EXPECT(MusicControl::spotifyURI(u" \n"_s + text + u'\t') == uri);
    if (!uri)
        return;
    FUZZ_EXPECT(uri->startsWith("spotify:"_L1));
    FUZZ_EXPECT(kinds.contains(uri->split(u':', Qt::SkipEmptyParts).value(1)));
    if (text.trimmed().startsWith("spotify:"_L1))
        FUZZ_EXPECT(*uri == text.trimmed() && MusicControl::spotifyURI(*uri) == uri);
    else
        FUZZ_EXPECT(text.contains("spotify.com"_L1, Qt::CaseInsensitive) && text.contains("//"_L1));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(test::inputBytes(data, size));
    checkReading(text);
    checkPlaying(text);
    return 0;
}
