#include "sound/child/Commands.h"
#include "sound/child/GObjectPointer.h"

#include <cmath>
#include <cstdio>

namespace kelp {

namespace {

std::optional<std::string> textOf(const GText &text)
{
    return text ? std::optional(std::string(text.get())) : std::nullopt;
}

bool isComplete(const ChildOptions &options)
{
    if (options.command == "play")
        return (options.bytes != options.file.has_value() || options.name) && !(options.bytes && options.file) &&
               options.volume >= 0 && options.volume <= 1;
    if (options.command == "import")
        return options.file && options.to;
    return options.command == "warm";
}

} // namespace

std::optional<ChildOptions> ChildOptions::parse(int argc, char **argv)
{
    ChildOptions options;
    gboolean bytes = FALSE;
    char *file = nullptr;
    char *to = nullptr;
    char *name = nullptr;
    const GOptionEntry entries[]{
        {"volume", 0, 0, G_OPTION_ARG_DOUBLE, &options.volume, "how loud, 0 to 1", "V"},
        {"file", 0, 0, G_OPTION_ARG_FILENAME, &file, "the sound", "PATH"},
        {"bytes", 0, 0, G_OPTION_ARG_NONE, &bytes, "the sound is a WAV file on standard input", nullptr},
        {"name", 0, 0, G_OPTION_ARG_STRING, &name, "a sound of this name in the desktop's themes, where there is one",
         "NAME"},
        {"to", 0, 0, G_OPTION_ARG_FILENAME, &to, "where the copy goes", "PATH"},
        {"parent", 0, 0, G_OPTION_ARG_INT, &options.parent, "end when this process does, my parent", "PID"},
        {}};
    GOptionContext *context = g_option_context_new("play|import|warm");
    g_option_context_set_summary(context, "Plays a sound for Kelp, or imports a file that can be played.");
    g_option_context_add_main_entries(context, entries, nullptr);
    GError *error = nullptr;
    const bool parsed = g_option_context_parse(context, &argc, &argv, &error);
    g_option_context_free(context);
    options.bytes = bytes;
    options.file = textOf(GText(file));
    options.to = textOf(GText(to));
    options.name = textOf(GText(name));
    if (parsed && argc == 2) {
        options.command = argv[1];
        if (isComplete(options))
            return options;
    }
    std::fprintf(stderr, "kelp-sound: %s\n", error ? error->message : "wrong usage; see kelp-sound --help");
    g_clear_error(&error);
    return {};
}

} // namespace kelp
