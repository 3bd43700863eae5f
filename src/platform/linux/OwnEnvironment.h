#pragma once

#include <QByteArray>

#include <memory>

typedef struct _GAppLaunchContext GAppLaunchContext;

/// Variables of the environment that are meant for Kelp alone.
namespace kelp::ownEnvironment {

/// Sets a variable for this process; what it starts through `launchContext` gets the value from before. Main thread
/// only, while there is no other.
void set(const char *name, const QByteArray &value);

struct Unref
{
    void operator()(GAppLaunchContext *context) const;
};
using LaunchContext = std::unique_ptr<GAppLaunchContext, Unref>;

/// The environment that Kelp was started with, for applications that it starts. Any thread.
[[nodiscard]] LaunchContext launchContext();

} // namespace kelp::ownEnvironment
