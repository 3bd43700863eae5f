#pragma once

#include <QProcess>

namespace kelp::test {

/// Lets `process` end when the test does, however that ends. Before it is started.
void endWithTest(QProcess &process);

/// Asks `process` to end, and makes it end after 5 s.
void end(QProcess &process);

/// What `process` writes up to the end of a line; empty where it ends or is silent for 20 s.
[[nodiscard]] QByteArray nextLine(QProcess &process);

} // namespace kelp::test
