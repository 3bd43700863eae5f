#include "Commands.h"
#include "Streams.h"

#include "sound/MusicControl.h"

namespace kelp::probe {

int spotifyUriCommand(const QStringList &arguments)
{
    if (!arguments.isEmpty())
        return badUsage;
    readLines([](const QByteArray &line) {
        QByteArray uri = MusicControl::spotifyURI(QString::fromUtf8(line)).value_or(QString()).toUtf8();
        writeLine(uri.replace('\n', "%0A").replace('\r', "%0D"));
        return true;
    });
    return ran;
}

} // namespace kelp::probe
