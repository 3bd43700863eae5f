#include "Commands.h"
#include "Streams.h"

#include "base/Json.h"
#include "preferences/Preferences.h"
#include "shell/DoubleSlashHotkey.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kelp::probe {

int hotkeyCommand(const QStringList &arguments)
{
    if (!arguments.isEmpty())
        return badUsage;
    const Preferences preferences;
    DoubleSlashHotkey hotkey(preferences);
    QJsonValue time;
    QObject::connect(&hotkey, &DoubleSlashHotkey::triggered, &hotkey, [&] {
        writeLine(QJsonDocument(QJsonObject{{u"trigger"_s, time}}).toJson(QJsonDocument::Compact));
    });
    int status = ran;
    readLines([&](const QByteArray &line) {
        if (line.isEmpty())
            return true;
        const auto json = parseJson(line);
        const QJsonObject key = json ? json->toObject() : QJsonObject();
        time = key.value("t"_L1);
        if (!time.isDouble() || !key.value("key"_L1).isString()) {
            status = complain(u"each line has to be {\"t\": seconds, \"key\": \"/\", …}"_s);
            return false;
        }
        hotkey.handle({.time = time.toDouble(),
                       .text = key.value("key"_L1).toString(),
                       .control = key.value("ctrl"_L1).toBool(),
                       .alt = key.value("alt"_L1).toBool(),
                       .meta = key.value("meta"_L1).toBool(),
                       .isRepeat = key.value("repeat"_L1).toBool()});
        return true;
    });
    return status;
}

} // namespace kelp::probe
