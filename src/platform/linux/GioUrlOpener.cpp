#include "platform/linux/GioUrlOpener.h"

#include "base/Logging.h"
#include "platform/linux/OwnEnvironment.h"

#include <QThreadPool>

// GLib has members that are named as Qt's keywords are.
#undef signals
#include <gio/gio.h>

#include <memory>

namespace kelp {

namespace {

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
using AppInfo = std::unique_ptr<GAppInfo, Unref>;

/// All of a link that a log may have.
QString schemeOf(const QString &link)
{
    return link.section(u':', 0, 0);
}

} // namespace

bool GioUrlOpener::hasHandler(const QString &scheme) const
{
    return AppInfo(g_app_info_get_default_for_uri_scheme(scheme.toLower().toUtf8().constData())) != nullptr;
}

void GioUrlOpener::open(const QString &link)
{
    if (!isOpenable(link)) {
        qCWarning(logPlatform) << "a link with the scheme" << schemeOf(link) << "is not opened";
        return;
    }
    // Finding and starting the handler reads the disk and may talk to the bus.
    QThreadPool::globalInstance()->start([link] {
        GError *error = nullptr;
        if (g_app_info_launch_default_for_uri(link.toUtf8().constData(), ownEnvironment::launchContext().get(), &error))
            return;
        qCWarning(logPlatform) << "no application opened a link with the scheme" << schemeOf(link) << error->message;
        g_error_free(error);
    });
}

} // namespace kelp
