#include "platform/MusicPlayers.h"

#include <QList>

namespace kelp {

QString MusicPlayers::playableUri(const QString &uri)
{
    QString playable;
    const QList<uint> characters = uri.toUcs4();
    for (const char32_t character : characters) {
        if (character == U':' || QChar::isLetterOrNumber(character))
            playable += QChar::fromUcs4(character);
    }
    return playable;
}

} // namespace kelp
