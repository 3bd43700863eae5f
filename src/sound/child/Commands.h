#pragma once

#include "sound/ChildProtocol.h"

#include <optional>
#include <string>

namespace kelp {

/// The command line of kelp-sound.
struct ChildOptions
{
    std::string command;
    double volume = 1;
    bool bytes = false;
    std::optional<std::string> file;
    std::optional<std::string> to;
    std::optional<std::string> name;
    int parent = 0;

    /// Nothing where it is none, with a line on standard error.
    [[nodiscard]] static std::optional<ChildOptions> parse(int argc, char **argv);
};

// The commands, as ChildProtocol.h describes them. GStreamer is initialised.
[[nodiscard]] ChildStatus play(const ChildOptions &options);
[[nodiscard]] ChildStatus import(const ChildOptions &options);
[[nodiscard]] ChildStatus warm();

} // namespace kelp
