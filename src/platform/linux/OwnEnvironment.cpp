#include "platform/linux/OwnEnvironment.h"

#include <map>
#include <optional>

// GLib has members that are named as Qt's keywords are.
#undef signals
#include <gio/gio.h>

namespace kelp {

namespace {

/// By name; nothing where the variable was not set.
std::map<QByteArray, std::optional<QByteArray>> &originals()
{
    static std::map<QByteArray, std::optional<QByteArray>> values;
    return values;
}

} // namespace

void ownEnvironment::set(const char *name, const QByteArray &value)
{
    originals().try_emplace(name, qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt);
    qputenv(name, value);
}

void ownEnvironment::Unref::operator()(GAppLaunchContext *context) const
{
    g_object_unref(context);
}

ownEnvironment::LaunchContext ownEnvironment::launchContext()
{
    LaunchContext context(g_app_launch_context_new());
    for (const auto &[name, value] : originals()) {
        if (value)
            g_app_launch_context_setenv(context.get(), name.constData(), value->constData());
        else
            g_app_launch_context_unsetenv(context.get(), name.constData());
    }
    return context;
}

} // namespace kelp
