#include "platform/linux/DesktopApplications.h"

#include "base/Logging.h"
#include "platform/linux/OwnEnvironment.h"

#include <QThreadPool>

// GLib has members that are named as Qt's keywords are.
#undef signals
#include <gio/gdesktopappinfo.h>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace kelp::desktopApplications {

namespace {

constexpr qsizetype longestId = 200; // file names end at 255 bytes

struct Unref
{
    void operator()(GDesktopAppInfo *info) const { g_object_unref(info); }
};
using Application = std::unique_ptr<GDesktopAppInfo, Unref>;

bool isPlausible(const QString &id)
{
    return !id.isEmpty() && id.size() <= longestId && std::all_of(id.begin(), id.end(), [](QChar c) {
        return (c.unicode() < 128 && c.isLetterOrNumber()) || c == u'-' || c == u'_' || c == u'.';
    });
}

/// Null for one whose program is missing, too.
Application find(const QString &id)
{
    return Application(isPlausible(id) ? g_desktop_app_info_new((id + u".desktop"_s).toUtf8().constData()) : nullptr);
}

} // namespace

bool isInstalled(const QString &id)
{
    return find(id) != nullptr;
}

bool isWebBrowser(const QString &id)
{
    const Application application = find(id);
    const char *categories = application ? g_desktop_app_info_get_categories(application.get()) : nullptr;
    return QByteArray(categories).split(';').contains("WebBrowser");
}

void launch(const QString &id)
{
    // Starting a program reads the disk and may talk to the bus.
    QThreadPool::globalInstance()->start([id] {
        const Application application = find(id);
        GError *error = nullptr;
        if (application &&
            g_app_info_launch(G_APP_INFO(application.get()), nullptr, ownEnvironment::launchContext().get(), &error))
            return;
        qCWarning(logPlatform) << "cannot start" << id << (error ? error->message : "");
        g_clear_error(&error);
    });
}

} // namespace kelp::desktopApplications
