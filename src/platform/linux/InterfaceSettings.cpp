#include "platform/linux/InterfaceSettings.h"

#include "platform/linux/DetachedTask.h"

// GLib has members that are named as Qt's keywords are.
#undef signals
#include <gio/gio.h>

#include <utility>

namespace kelp {

namespace {

// https://gitlab.gnome.org/GNOME/gsettings-desktop-schemas, org.gnome.desktop.interface.gschema.xml
constexpr auto schemaName = "org.gnome.desktop.interface";
constexpr auto animationsKey = "enable-animations";
constexpr auto schemeKey = "color-scheme";
constexpr int preferDark = 1; ///< of the enumeration of color-scheme

/// Null where the desktop has no such settings: asking for a schema that is not installed ends the program.
std::shared_ptr<GSettings> openSettings()
{
    GSettingsSchemaSource *source = g_settings_schema_source_get_default();
    GSettingsSchema *schema = source ? g_settings_schema_source_lookup(source, schemaName, TRUE) : nullptr;
    if (!schema)
        return nullptr;
    std::shared_ptr<GSettings> settings(g_settings_new_full(schema, nullptr, nullptr), g_object_unref);
    g_settings_schema_unref(schema);
    return settings;
}

} // namespace

InterfaceSettings::InterfaceSettings(QObject *parent) : QObject(parent) {}

InterfaceSettings::~InterfaceSettings()
{
    if (m_settings)
        g_signal_handlers_disconnect_by_data(m_settings.get(), this);
}

void InterfaceSettings::open()
{
    // The settings tell of changes in the default context of GLib, which Qt's event loop serves on the main thread.
    runDetached<std::shared_ptr<GSettings>>(
        this, openSettings, [this](std::shared_ptr<GSettings> settings) { adopt(std::move(settings)); });
}

void InterfaceSettings::adopt(std::shared_ptr<GSettings> settings)
{
    if (!settings)
        return;
    m_settings = std::move(settings);
    const auto notify = +[](GSettings *, const char *, InterfaceSettings *self) { Q_EMIT self->changed(); };
    g_signal_connect(m_settings.get(), "changed", G_CALLBACK(notify), this);
    Q_EMIT changed();
}

bool InterfaceSettings::reducesMotion() const
{
    return has(animationsKey) && !g_settings_get_boolean(m_settings.get(), animationsKey);
}

bool InterfaceSettings::prefersDark() const
{
    return has(schemeKey) && g_settings_get_enum(m_settings.get(), schemeKey) == preferDark;
}

/// Older desktops lack some keys, and asking for one that is not there ends the program.
bool InterfaceSettings::has(const char *key) const
{
    if (!m_settings)
        return false;
    GSettingsSchema *schema = nullptr;
    g_object_get(m_settings.get(), "settings-schema", &schema, nullptr);
    const bool found = g_settings_schema_has_key(schema, key);
    g_settings_schema_unref(schema);
    return found;
}

} // namespace kelp
