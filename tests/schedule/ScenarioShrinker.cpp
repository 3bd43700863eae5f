#include "schedule/ScenarioShrinker.h"

#include <QJsonArray>

namespace kelp::test {

using namespace Qt::StringLiterals;

namespace {

using Fails = std::function<bool(const QJsonObject &)>;

bool replaceIfItStillFails(QJsonObject &scenario, const QJsonObject &smaller, const Fails &fails)
{
    if (!fails(smaller))
        return false;
    scenario = smaller;
    return true;
}

bool shrinkArray(QJsonObject &scenario, const QString &name, const Fails &fails)
{
    bool shrunk = false;
    for (qsizetype i = scenario[name].toArray().size() - 1; i >= 0; --i) {
        QJsonArray array = scenario[name].toArray();
        array.removeAt(i);
        QJsonObject smaller = scenario;
        smaller[name] = array;
        shrunk |= replaceIfItStillFails(scenario, smaller, fails);
    }
    return shrunk;
}

/// Leaves meetings out of the actions that replace the list.
bool shrinkActions(QJsonObject &scenario, const Fails &fails)
{
    bool shrunk = false;
    for (qsizetype i = 0; i < scenario[u"actions"_s].toArray().size(); ++i) {
        QJsonObject action = scenario[u"actions"_s].toArray().at(i).toObject();
        shrunk |= shrinkArray(action, u"meetings"_s, [&](const QJsonObject &smallerAction) {
            QJsonArray actions = scenario[u"actions"_s].toArray();
            actions[i] = smallerAction;
            QJsonObject smaller = scenario;
            smaller[u"actions"_s] = actions;
            return replaceIfItStillFails(scenario, smaller, fails);
        });
    }
    return shrunk;
}

bool shrinkPreferences(QJsonObject &scenario, const Fails &fails)
{
    bool shrunk = false;
    for (const QString &key : scenario[u"preferences"_s].toObject().keys()) {
        QJsonObject preferences = scenario[u"preferences"_s].toObject();
        preferences.remove(key);
        QJsonObject smaller = scenario;
        smaller[u"preferences"_s] = preferences;
        shrunk |= replaceIfItStillFails(scenario, smaller, fails);
    }
    return shrunk;
}

bool shrinkDuration(QJsonObject &scenario, const Fails &fails)
{
    const double from = scenario[u"from"_s].toDouble();
    const double duration = scenario[u"to"_s].toDouble() - from;
    QJsonObject smaller = scenario;
    smaller[u"to"_s] = from + duration * 3 / 4;
    return duration > scenario[u"step"_s].toDouble() && replaceIfItStillFails(scenario, smaller, fails);
}

} // namespace

QJsonObject shrunkScenario(QJsonObject scenario, const Fails &fails)
{
    bool shrunk = true;
    while (shrunk) {
        shrunk = shrinkArray(scenario, u"actions"_s, fails);
        shrunk |= shrinkActions(scenario, fails);
        shrunk |= shrinkArray(scenario, u"meetings"_s, fails);
        shrunk |= shrinkArray(scenario, u"calendars"_s, fails);
        shrunk |= shrinkPreferences(scenario, fails);
        shrunk |= shrinkDuration(scenario, fails);
    }
    return scenario;
}

} // namespace kelp::test
