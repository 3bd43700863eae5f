#include "Commands.h"
#include "Streams.h"

#include "base/Json.h"
#include "overlay/CountdownRing.h"
#include "overlay/MeetingCard.h"
#include "overlay/WelcomeCard.h"
#include "settings/PanelTexts.h"
#include "shell/StatusTitle.h"

#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>
#include <optional>

using namespace Qt::StringLiterals;

namespace kelp::probe {

namespace {

using Arguments = QJsonObject;

Instant instant(const Arguments &arguments, QLatin1StringView name)
{
    return {arguments.value(name).toDouble()};
}

QString cardCountdown(const Arguments &arguments)
{
    return MeetingCard::countdown(instant(arguments, "seconds"_L1), Instant{0});
}

QString cardDetails(const Arguments &arguments)
{
    MeetingCard card;
    card.meeting.start = instant(arguments, "start"_L1);
    card.meeting.end = instant(arguments, "end"_L1);
    card.meeting.attendeeCount = arguments.value("attendees"_L1).toInteger();
    card.meeting.calendarName = arguments.value("calendar"_L1).toString();
    card.options.showAttendees = arguments.value("showAttendees"_L1).toBool(true);
    card.options.showCalendar = arguments.value("showCalendar"_L1).toBool(true);
    return card.details();
}

double remaining(const Arguments &arguments)
{
    return arguments.value("remaining"_L1).toDouble();
}
QString ringLabel(const Arguments &arguments)
{
    return CountdownRing::label(remaining(arguments));
}
QString ringCaption(const Arguments &arguments)
{
    return CountdownRing::caption(remaining(arguments));
}

QString statusItemTitle(const Arguments &arguments)
{
    const QJsonValue seconds = arguments.value("seconds"_L1);
    return statusTitle(seconds.isDouble() ? std::optional(seconds.toDouble()) : std::nullopt,
                       arguments.value("paused"_L1).toBool());
}

QString panelCountdown(const Arguments &arguments)
{
    return panel::countdown(instant(arguments, "seconds"_L1), Instant{0});
}

QString panelAgo(const Arguments &arguments)
{
    return panel::ago(Instant{0}, instant(arguments, "seconds"_L1));
}

/// One of the panel's functions of a `date`, seen from `now`.
template<QString (*function)(Instant, Instant)>
QString panelDate(const Arguments &arguments)
{
    return function(instant(arguments, "date"_L1), instant(arguments, "now"_L1));
}

QString panelDisplayName(const Arguments &arguments)
{
    return panel::displayName(arguments.value("name"_L1).toString());
}

QString welcomeConnected(const Arguments &arguments)
{
    WelcomeCard card;
    if (arguments.value("email"_L1).isString())
        card.content.email = arguments.value("email"_L1).toString();
    card.content.calendarCount = arguments.value("calendars"_L1).toInteger();
    return card.connected();
}

QString welcomeNext(const Arguments &arguments)
{
    WelcomeCard card;
    if (arguments.value("start"_L1).isDouble()) {
        card.content.next =
            Meeting{.title = arguments.value("title"_L1).toString(), .start = instant(arguments, "start"_L1)};
    }
    return card.nextLine(instant(arguments, "now"_L1));
}

const QHash<QString, std::function<QString(const Arguments &)>> &functions()
{
    static const QHash<QString, std::function<QString(const Arguments &)>> table{
        {u"card.countdown"_s, cardCountdown},
        {u"card.details"_s, cardDetails},
        {u"ring.label"_s, ringLabel},
        {u"ring.caption"_s, ringCaption},
        {u"panel.countdown"_s, panelCountdown},
        {u"panel.ago"_s, panelAgo},
        {u"panel.shortTime"_s, panelDate<panel::shortTime>},
        {u"panel.day"_s, panelDate<panel::day>},
        {u"panel.pauseEnd"_s, panelDate<panel::pauseEnd>},
        {u"panel.displayName"_s, panelDisplayName},
        {u"status.title"_s, statusItemTitle},
        {u"welcome.connected"_s, welcomeConnected},
        {u"welcome.next"_s, welcomeNext},
    };
    return table;
}

} // namespace

int textCommand(const QStringList &arguments)
{
    if (!arguments.isEmpty())
        return badUsage;
    int status = ran;
    readLines([&](const QByteArray &line) {
        if (line.isEmpty())
            return true;
        const auto json = parseJson(line);
        const QJsonObject call = json ? json->toObject() : QJsonObject();
        const auto function = functions().constFind(call.value("fn"_L1).toString());
        if (function == functions().constEnd()) {
            status = complain(u"each line has to be {\"fn\": …, \"args\": {…}} with a function there is"_s);
            return false;
        }
        const QString text = (*function)(call.value("args"_L1).toObject());
        writeLine(QJsonDocument(QJsonObject{{u"text"_s, text}}).toJson(QJsonDocument::Compact));
        return true;
    });
    return status;
}

} // namespace kelp::probe
