// Runs one piece of Kelp from the command line, for debugging and for checks from outside. It never touches the user's
// settings.

#include "Commands.h"

#include <QCoreApplication>
#include <QHash>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace kelp::probe;

namespace {

constexpr auto usage = R"(Usage: kelp-probe COMMAND [ARGUMENTS]

  meetings [NAME ID]       an events-list body on standard input -> a JSON array with the meeting of each event, or null
  decode events|calendars  a body on standard input -> {"ok":true,"count":N} or {"ok":false,"error":"..."}
  chime NAME|--list        the chime as a WAV file on standard output | the names, one per line
  hotkey                   lines {"t":1.0,"key":"/","ctrl":false,"alt":false,"meta":false,"shift":false,"repeat":false}
                           -> a line {"trigger":t} for each time that "/" was pressed twice
  loopback STATE           prints the redirect URI, then {"code":"..."} or {"error":"..."}; ends with standard input
  schedule                 a scenario on standard input -> a JSON line for each happening (see tools/kelp-probe/README.md)
  spotify-uri              a text per line -> the Spotify URI of each, or an empty line
  text                     lines {"fn":"card.countdown","args":{"seconds":59.5}} -> lines {"text":"..."}

Exit status: 0 when it ran, 1 on bad input, 2 on bad usage.
)";

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments == QStringList{u"--help"_s}) {
        std::fputs(usage, stdout);
        return ran;
    }
    const QHash<QString, int (*)(const QStringList &)> commands{
        {u"chime"_s, chimeCommand},
        {u"meetings"_s, meetingsCommand},
        {u"decode"_s, decodeCommand},
        {u"hotkey"_s, hotkeyCommand},
        {u"loopback"_s, loopbackCommand},
        {u"schedule"_s, scheduleCommand},
        {u"spotify-uri"_s, spotifyUriCommand},
        {u"text"_s, textCommand},
    };
    const auto command = commands.constFind(arguments.value(0));
    const int status = command == commands.constEnd() ? badUsage : (*command)(arguments.mid(1));
    if (status == badUsage)
        std::fputs(usage, stderr);
    return status;
}
