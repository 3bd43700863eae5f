#pragma once

#include <functional>

class QObject;
class QString;

namespace kelp {

/// Which applications there are, by bundle identifier.
class ApplicationRegistry
{
public:
    virtual ~ApplicationRegistry() = default;

    /// Calls `action` once where the application is running, unless `context` is destroyed before that is known.
    virtual void ifRunning(const QString &bundle, QObject *context, std::function<void()> action) = 0;
    /// Running or not.
    [[nodiscard]] virtual bool isInstalled(const QString &bundle) const = 0;
};

} // namespace kelp
