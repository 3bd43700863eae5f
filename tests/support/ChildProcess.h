#pragma once

#include <QProcess>

namespace kelp::test {

/// Whose rights a process has.
enum class Rights {
    Ours,
    NotRoots, ///< those of "nobody" where the test is run by root, else ours
};

/// Lets `process` end when the test does, however that ends. Before it is started.
void endWithTest(QProcess &process, Rights rights = Rights::Ours);

/// Gives `path` to whom a process with `Rights::NotRoots` belongs to.
[[nodiscard]] bool giveAway(const QString &path);

/// Asks `process` to end, and makes it end after 5 s.
void end(QProcess &process);

/// What `process` writes up to the end of a line; empty where it ends or is silent for 20 s.
[[nodiscard]] QByteArray nextLine(QProcess &process);

} // namespace kelp::test
