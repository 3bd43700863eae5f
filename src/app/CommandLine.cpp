#include "app/CommandLine.h"

using namespace Qt::StringLiterals;

namespace kelp {

CommandLine CommandLine::parse(const QStringList &arguments)
{
    // Only the first occurrence counts, whether or not a folder follows it.
    const auto folderIndex = [&](const QString &flag) {
        const qsizetype index = arguments.indexOf(flag);
        return index >= 0 && index + 1 < arguments.size() ? index + 1 : -1;
    };
    if (const qsizetype index = folderIndex(u"--snapshot"_s); index > 0)
        return {Mode::snapshot, arguments[index], {}};
    if (const qsizetype index = folderIndex(u"--record"_s); index > 0)
        return {Mode::record, arguments[index], arguments.mid(index + 1)};
    if (arguments.contains(u"--help"_s) || arguments.contains(u"-h"_s))
        return {Mode::help, {}, {}};
    if (arguments.contains(u"--version"_s))
        return {Mode::version, {}, {}};
    return {};
}

CommandLine CommandLine::parse(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return parse(arguments);
}

QString CommandLine::help()
{
    return uR"(Usage: kelp [--snapshot FOLDER | --record FOLDER [CLIP...] | --help | --version]

Kelp reads your Google calendars and covers every display shortly before each meeting.
Started once more, it shows the panel of the Kelp that is running.

  --snapshot FOLDER          write stills of every theme and of the tray icon, and exit
  --record FOLDER [CLIP...]  write promotional clips and pictures, all or those named, and exit
  --help                     print this and exit
  --version                  print the version and exit

The first two need no display and no account, and replace what they find in FOLDER.

Environment:
  KELP_GOOGLE_AUTHORIZATION, KELP_GOOGLE_TOKEN, KELP_GOOGLE_API
              other addresses of Google's services; only on 127.0.0.1 or localhost
  KELP_CAPTURE_TIME="2026-01-01T09:00:00Z"
              the time that stills show instead of the present one
  QT_LOGGING_RULES="kelp.*=true"
              log what happens, without titles, codes and tokens
)"_s;
}

} // namespace kelp
