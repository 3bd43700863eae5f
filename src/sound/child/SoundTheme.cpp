#include "sound/child/SoundTheme.h"

#include "sound/child/GObjectPointer.h"

#include <gio/gio.h>

#include <algorithm>
#include <vector>

namespace kelp {

namespace {

constexpr const char *lastTheme = "freedesktop";
/// So many themes are looked into at most, however they inherit from each other.
constexpr std::size_t mostThemes = 16;
constexpr const char *suffixes[]{".oga", ".ogg", ".wav"};

bool isName(std::string_view text)
{
    return !text.empty() && text.front() != '.' && text.find('/') == text.npos && text.find('\0') == text.npos;
}

std::string joined(const std::string &folder, std::string_view name)
{
    return folder + "/" + std::string(name);
}

bool isFile(const std::string &path)
{
    return g_file_test(path.c_str(), G_FILE_TEST_IS_REGULAR);
}

/// Folders of themes, the user's own first.
std::vector<std::string> roots()
{
    std::vector<std::string> result{joined(g_get_user_data_dir(), "sounds")};
    for (const char *const *each = g_get_system_data_dirs(); *each; ++each)
        result.push_back(joined(*each, "sounds"));
    return result;
}

/// What GNOME, Xfce and their relatives were told.
std::optional<std::string> themeOfSettings()
{
    constexpr const char *schemaName = "org.gnome.desktop.sound";
    GSettingsSchemaSource *source = g_settings_schema_source_get_default();
    GSettingsSchema *schema = source ? g_settings_schema_source_lookup(source, schemaName, TRUE) : nullptr;
    if (!schema)
        return {};
    const bool hasKey = g_settings_schema_has_key(schema, "theme-name");
    g_settings_schema_unref(schema);
    if (!hasKey)
        return {};
    const GObjectPointer<GSettings> settings(g_settings_new(schemaName));
    const GText theme(g_settings_get_string(settings.get(), "theme-name"));
    return std::string(theme.get());
}

struct FreeKeyFile
{
    void operator()(GKeyFile *file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

KeyFile readKeyFile(const std::string &path)
{
    KeyFile file(g_key_file_new());
    g_key_file_set_list_separator(file.get(), ',');
    if (!isFile(path) || !g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr))
        file.reset();
    return file;
}

std::optional<std::string> themeOfPlasma()
{
    const KeyFile settings = readKeyFile(joined(g_get_user_config_dir(), "kdeglobals"));
    const GText theme(settings ? g_key_file_get_string(settings.get(), "Sounds", "Theme", nullptr) : nullptr);
    return theme ? std::optional(std::string(theme.get())) : std::nullopt;
}

std::string chosenTheme()
{
    const char *desktop = g_getenv("XDG_CURRENT_DESKTOP");
    const bool isPlasma = desktop && std::string_view(desktop).find("KDE") != std::string_view::npos;
    const std::optional<std::string> theme = isPlasma ? themeOfPlasma() : themeOfSettings();
    return theme && isName(*theme) ? *theme : lastTheme;
}

std::vector<std::string> listOf(GKeyFile *file, const char *group, const char *key)
{
    std::vector<std::string> result;
    gchar **list = g_key_file_get_string_list(file, group, key, nullptr, nullptr);
    for (gchar **each = list; each && *each; ++each)
        result.emplace_back(g_strstrip(*each));
    g_strfreev(list);
    return result;
}

/// A name under which a theme keeps sounds, such as "stereo"; "." is the theme's own folder.
bool isFolderOfTheme(const std::string &folder)
{
    return folder == "." || (!folder.empty() && folder.front() != '/' && folder.find("..") == folder.npos);
}

/// A theme's folders on the disk, and the themes that it inherits from.
struct Theme
{
    explicit Theme(const std::string &name)
    {
        for (const std::string &root : roots()) {
            const std::string folder = joined(root, name);
            const KeyFile index = readKeyFile(joined(folder, "index.theme"));
            if (!index) {
                folders.push_back(folder);
                continue;
            }
            for (const std::string &each : listOf(index.get(), "Sound Theme", "Directories")) {
                if (isFolderOfTheme(each))
                    folders.push_back(joined(folder, each));
            }
            if (parents.empty())
                parents = listOf(index.get(), "Sound Theme", "Inherits");
        }
    }

    [[nodiscard]] std::optional<std::string> find(const std::vector<std::string> &names) const
    {
        for (const std::string &folder : folders) {
            for (const std::string &name : names) {
                for (const char *suffix : suffixes) {
                    if (const std::string path = joined(folder, name + suffix); isFile(path))
                        return path;
                }
            }
        }
        return {};
    }

    std::vector<std::string> folders;
    std::vector<std::string> parents;
};

} // namespace

std::optional<std::string> themeSound(std::string_view name)
{
    if (!isName(name))
        return {};
    const GText lower(g_ascii_strdown(name.data(), static_cast<gssize>(name.size())));
    const std::vector<std::string> names{std::string(name), lower.get()};
    std::vector<std::string> themes{chosenTheme()};
    const auto add = [&](const std::string &theme) {
        if (isName(theme) && themes.size() < mostThemes &&
            std::find(themes.begin(), themes.end(), theme) == themes.end())
            themes.push_back(theme);
    };
    for (std::size_t i = 0; i < themes.size(); ++i) {
        const Theme theme(themes[i]);
        if (const auto found = theme.find(names))
            return found;
        std::for_each(theme.parents.begin(), theme.parents.end(), add);
        if (i + 1 == themes.size())
            add(lastTheme);
    }
    return {};
}

} // namespace kelp
