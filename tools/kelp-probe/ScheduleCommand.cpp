#include "Commands.h"
#include "ScheduleScenario.h"
#include "Streams.h"

#include "base/Json.h"

namespace kelp::probe {

int scheduleCommand(const QStringList &arguments)
{
    if (!arguments.isEmpty())
        return badUsage;
    const auto json = parseJson(readInput());
    if (!json)
        return complain(json.error().description());
    if (!json->isObject())
        return complain(QStringLiteral("a scenario is a JSON object"));
    const auto lines = runScheduleScenario(json->toObject());
    if (!lines)
        return complain(lines.error());
    for (const QByteArray &line : *lines)
        writeLine(line);
    return ran;
}

} // namespace kelp::probe
