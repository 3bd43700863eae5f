#include "platform/linux/GioUrlOpener.h"

#include "base/Logging.h"

#include <QThreadPool>
#include <QUrl>

// GLib has members that are named as Qt's keywords are.
#undef signals
#include <gio/gio.h>

#include <memory>

namespace kelp {

namespace {

struct Unref
{
    void operator()(GAppInfo *info) const { g_object_unref(info); }
};
using AppInfo = std::unique_ptr<GAppInfo, Unref>;

} // namespace

bool GioUrlOpener::hasHandler(const QUrl &url) const
{
    return AppInfo(g_app_info_get_default_for_uri_scheme(url.scheme().toUtf8().constData())) != nullptr;
}

void GioUrlOpener::open(const QUrl &url)
{
    if (!isOpenable(url)) {
        qCWarning(logPlatform) << "a link with the scheme" << url.scheme() << "is not opened";
        return;
    }
    // Finding and starting the handler reads the disk and may talk to the bus.
    QThreadPool::globalInstance()->start([link = url.toEncoded(), scheme = url.scheme()] {
        GError *error = nullptr;
        if (g_app_info_launch_default_for_uri(link.constData(), nullptr, &error))
            return;
        qCWarning(logPlatform) << "no application opened a link with the scheme" << scheme << error->message;
        g_error_free(error);
    });
}

} // namespace kelp
