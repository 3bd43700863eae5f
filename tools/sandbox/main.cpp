// kelp-sandbox: a local stand-in for Google's sign-in and calendar, for the demo, for tests and for trying things out.
// README.md beside this file says what it can do.

#include "Sandbox.h"
#include "Server.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>

#include <csignal>
#include <cstdio>

using namespace kelp;
using namespace kelp::sandbox;
using namespace Qt::StringLiterals;

namespace {

struct Arguments
{
    int port = 0;
    QString seed;
    QString log;
    QString faults;
};

Result<Arguments, QString> readArguments(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(u"A local stand-in for Google's sign-in and calendar."_s);
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions(
        {{u"port"_s, u"Listen at this port of 127.0.0.1; 0, the default, is a free one."_s, u"N"_s, u"0"_s},
         {u"seed"_s, u"Accounts, calendars and events; an example is built in."_s, u"FILE"_s},
         {u"log"_s, u"Append each request as a line of JSON."_s, u"FILE"_s},
         {u"faults"_s, u"A JSON array of faults, besides those of the seed."_s, u"FILE"_s}});
    if (!parser.parse(application.arguments()))
        return Failure(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (!parser.positionalArguments().isEmpty())
        return Failure(u"Unexpected argument: "_s + parser.positionalArguments().first());
    bool isNumber = false;
    const Arguments arguments{parser.value(u"port"_s).toInt(&isNumber), parser.value(u"seed"_s), parser.value(u"log"_s),
                              parser.value(u"faults"_s)};
    if (!isNumber || arguments.port < 0 || arguments.port > 65535)
        return Failure(u"--port is a number from 0 to 65535"_s);
    return arguments;
}

Result<QByteArray, QString> readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Failure(path + u": "_s + file.errorString());
    return file.readAll();
}

Result<Seed, QString> readSeed(const Arguments &arguments, Instant now)
{
    const Result<QByteArray, QString> text = arguments.seed.isEmpty() ? Seed::builtIn() : readFile(arguments.seed);
    if (!text)
        return Failure(text.error());
    auto seed = Seed::parse(*text, now);
    if (!seed || arguments.faults.isEmpty())
        return seed;
    const auto more = readFile(arguments.faults);
    if (!more)
        return Failure(more.error());
    const QJsonDocument document = QJsonDocument::fromJson(*more);
    const auto faults = document.isArray() ? parseFaults(document.array()) : Failure(u"the faults are no JSON array"_s);
    if (!faults)
        return Failure(faults.error());
    seed->faults += *faults;
    return seed;
}

int fail(int status, const QString &message)
{
    std::fprintf(stderr, "kelp-sandbox: %s\n", qUtf8Printable(message));
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
    // Taken by sigwait() below instead; the server's threads inherit the mask.
    sigset_t endings;
    sigemptyset(&endings);
    sigaddset(&endings, SIGTERM);
    sigaddset(&endings, SIGINT);
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    const QCoreApplication application(argc, argv);
    const auto arguments = readArguments(application);
    if (!arguments)
        return fail(2, arguments.error());
    const SystemClock clock;
    const auto seed = readSeed(*arguments, clock.now());
    if (!seed)
        return fail(1, seed.error());
    Sandbox sandbox(*seed, clock);
    if (!arguments->log.isEmpty() && !sandbox.log().openFile(arguments->log))
        return fail(1, arguments->log + u" cannot be written"_s);
    Server server(sandbox);
    const std::optional<int> port = server.start(arguments->port);
    if (!port)
        return fail(1, u"cannot listen at port %1 of 127.0.0.1"_s.arg(arguments->port));
    std::printf("http://127.0.0.1:%d\n", *port);
    std::fflush(stdout);

    int signal = 0;
    sigwait(&endings, &signal);
    server.stop();
    return 0;
}
