#include "Commands.h"
#include "Streams.h"

#include "sound/ChimeSynth.h"

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace kelp::probe {

int chimeCommand(const QStringList &arguments)
{
    if (arguments.size() != 1)
        return badUsage;
    const QList<ChimeSynth::Preset> &presets = ChimeSynth::presets();
    if (arguments.first() == u"--list") {
        for (const ChimeSynth::Preset &each : presets)
            writeLine(each.name.toUtf8());
        return ran;
    }
    const auto preset = std::find_if(presets.begin(), presets.end(),
                                     [&](const ChimeSynth::Preset &each) { return each.name == arguments.first(); });
    if (preset == presets.end())
        return complain(u"there is no chime of this name: %1"_s.arg(arguments.first()));
    const QByteArray bytes = ChimeSynth::wav(*preset);
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
        return complain(u"standard output does not take the sound"_s);
    return ran;
}

} // namespace kelp::probe
