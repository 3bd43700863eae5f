#include "ScenarioReader.h"
#include "ScheduleScenario.h"

#include "base/Json.h"
#include "fuzz/FuzzTarget.h"

#include <QJsonDocument>
#include <QSet>

#include <algorithm>
#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;
using probe::Scenario;

namespace {

constexpr double mostTicks = 200;

/// Whether the run ends soon, which a clock that jumps back or hardly moves keeps it from. All else may be extreme.
bool isShort(const Scenario &scenario)
{
    if (std::abs(scenario.from.secondsSince1970) > 1e12 || scenario.step < 0.5 || scenario.actions.size() > 16 ||
        scenario.to - scenario.from > mostTicks * scenario.step)
        return false;
    return std::all_of(scenario.actions.begin(), scenario.actions.end(), [&](const Scenario::Action &action) {
        return action.kind != Scenario::Action::Kind::jump ||
               scenario.from - action.instant <= mostTicks * scenario.step;
    });
}

QSet<QString> identifiers(const Scenario &scenario)
{
    QSet<QString> all;
    const auto add = [&](const QList<Meeting> &meetings) {
        for (const Meeting &meeting : meetings)
            all.insert(meeting.id);
    };
    add(scenario.meetings);
    for (const Scenario::Action &action : scenario.actions)
        add(action.meetings);
    return all;
}

/// Whether a reminder may ever be held back.
bool canPause(const Scenario &scenario)
{
    return scenario.preferences.contains("pausedUntil"_L1) ||
           std::any_of(scenario.actions.begin(), scenario.actions.end(),
                       [](const Scenario::Action &action) { return action.kind == Scenario::Action::Kind::pause; });
}

/// What one run says must make sense as a whole: only meetings there are, nothing hidden that is not on the screen.
void checkLines(const QList<QByteArray> &lines, const Scenario &scenario)
{
    const QSet<QString> known = identifiers(scenario);
    QString onScreen;
    for (const QByteArray &text : lines) {
        const QJsonObject line = QJsonDocument::fromJson(text).object();
        const QString event = line["event"_L1].toString();
        const QString id = line["id"_L1].toString();
        FUZZ_EXPECT(known.contains(id));
        FUZZ_EXPECT(line["at"_L1].isDouble() && line["at"_L1].toDouble() <= scenario.to.secondsSince1970);
        if (event == "shown"_L1) {
            FUZZ_EXPECT(line["previous"_L1].isNull() || line["previous"_L1].toString() == onScreen);
            onScreen = id;
        } else if (event == "hidden"_L1) {
            FUZZ_EXPECT(id == onScreen);
        } else {
            FUZZ_EXPECT(event == "refused"_L1 || (event == "swallowed"_L1 && canPause(scenario)));
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto json = parseJson(test::inputBytes(data, size));
    if (!json || !json->isObject())
        return 0;
    const auto scenario = probe::readScenario(json->toObject());
    if (!scenario) {
        FUZZ_EXPECT(!scenario.error().isEmpty());
        return 0;
    }
    if (!isShort(*scenario))
        return 0;
    const auto lines = probe::runScheduleScenario(json->toObject());
    FUZZ_EXPECT(lines);
    checkLines(*lines, *scenario);
    return 0;
}
