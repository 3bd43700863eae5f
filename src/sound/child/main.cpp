// Plays one sound for Kelp, in a process of its own: what decoding takes of memory is given back with it, and a file
// that was made to crash a decoder takes no reminder along.

#include "sound/child/AllowedPlugins.h"
#include "sound/child/Commands.h"
#include "sound/child/Surroundings.h"

#include <gst/gst.h>

using namespace kelp;

int main(int argc, char **argv)
{
    const std::optional<ChildOptions> options = ChildOptions::parse(argc, argv);
    if (!options)
        return static_cast<int>(ChildStatus::badUsage);
    if (!endWithParent(options->parent))
        return static_cast<int>(ChildStatus::done);
    // How the desktop's mixer lists it.
    g_set_application_name("Kelp");
    g_setenv("PULSE_PROP_application.icon_name", "app.kelp.Kelp", FALSE);
    gst_init(nullptr, nullptr);
    keepAllowedPlugins();
    if (options->command == "import")
        return static_cast<int>(import(*options));
    return static_cast<int>(options->command == "play" ? play(*options) : warm());
}
