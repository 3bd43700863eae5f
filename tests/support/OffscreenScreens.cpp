#include "support/OffscreenScreens.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>

#include <qpa/qplatformnativeinterface.h>

using namespace Qt::StringLiterals;

namespace kelp {

void setOffscreenScreens(const QList<QRect> &geometries)
{
    QJsonArray screens;
    for (const QRect &each : geometries) {
        screens.append(QJsonObject{{u"name"_s, u"screen%1"_s.arg(screens.size())},
                                   {u"x"_s, each.x()},
                                   {u"y"_s, each.y()},
                                   {u"width"_s, each.width()},
                                   {u"height"_s, each.height()},
                                   {u"logicalDpi"_s, 96},
                                   {u"logicalBaseDpi"_s, 96},
                                   {u"dpr"_s, 1}});
    }
    using SetConfiguration = void (*)(const QJsonObject &, QPlatformNativeInterface *);
    QPlatformNativeInterface *native = QGuiApplication::platformNativeInterface();
    const auto set = reinterpret_cast<SetConfiguration>(native->nativeResourceForIntegration("setConfiguration"));
    Q_ASSERT(set);
    set(QJsonObject{{u"screens"_s, screens}}, native);
}

} // namespace kelp
