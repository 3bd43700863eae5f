#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace kelp::probe {

[[nodiscard]] QByteArray readInput();
/// Calls `take` with each line of standard input, without its end, until it returns false.
void readLines(const std::function<bool(const QByteArray &line)> &take);
/// Writes a line to standard output at once.
void writeLine(const QByteArray &line);
/// Writes a line to standard error and returns the status for bad input.
int complain(const QString &problem);

} // namespace kelp::probe
