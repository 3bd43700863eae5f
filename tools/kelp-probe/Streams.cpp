#include "Streams.h"

#include "Commands.h"

#include <QFile>

#include <cstdio>

namespace kelp::probe {

QByteArray readInput()
{
    QFile input;
    return input.open(stdin, QIODevice::ReadOnly) ? input.readAll() : QByteArray();
}

void readLines(const std::function<bool(const QByteArray &line)> &take)
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return;
    while (!input.atEnd()) {
        QByteArray line = input.readLine();
        if (line.isEmpty()) // the end of a pipe, which shows only when there is nothing more to read
            return;
        while (line.endsWith('\n') || line.endsWith('\r'))
            line.chop(1);
        if (!take(line))
            return;
    }
}

void writeLine(const QByteArray &line)
{
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

int complain(const QString &problem)
{
    std::fprintf(stderr, "kelp-probe: %s\n", problem.simplified().toLocal8Bit().constData());
    return badInput;
}

} // namespace kelp::probe
