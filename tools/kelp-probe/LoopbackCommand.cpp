#include "Commands.h"
#include "Streams.h"

#include "auth/LoopbackServer.h"
#include "base/Clock.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp::probe {

int loopbackCommand(const QStringList &arguments)
{
    if (arguments.size() != 1)
        return badUsage;
    SystemClock clock;
    LoopbackServer server(clock, arguments.first());
    const auto redirectUri = server.start();
    if (!redirectUri)
        return complain(redirectUri.error().description());
    writeLine(redirectUri->toUtf8());
    server.waitForCode(&server, [](const LoopbackServer::Outcome &outcome) {
        const QJsonObject line =
            outcome ? QJsonObject{{u"code"_s, *outcome}} : QJsonObject{{u"error"_s, outcome.error().description()}};
        writeLine(QJsonDocument(line).toJson(QJsonDocument::Compact));
    });

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [] {
        char ignored[4096];
        if (::read(STDIN_FILENO, ignored, sizeof ignored) <= 0)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

} // namespace kelp::probe
