#pragma once

#include <QStringList>

namespace kelp {

/// What the command line asks for.
struct CommandLine
{
    enum class Mode { application, snapshot, record, help, version };

    Mode mode = Mode::application;
    QString folder;        ///< of `snapshot` and `record`
    QStringList clipNames; ///< of `record`; empty = all

    /// `arguments` include the program's path. The capture flags take a folder and are ignored as the last argument;
    /// "--snapshot" goes before "--record", and both before "--help" and "--version".
    [[nodiscard]] static CommandLine parse(const QStringList &arguments);
    /// The same for what `main` gets.
    [[nodiscard]] static CommandLine parse(int argc, char **argv);
    /// What "--help" prints.
    [[nodiscard]] static QString help();
};

} // namespace kelp
