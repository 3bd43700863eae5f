#include "platform/linux/MprisRegistry.h"

#include "platform/linux/MprisSurvey.h"
#include "platform/mac/BundleIdentifiers.h"

#include <memory>
#include <utility>

namespace kelp {

namespace {

bool isMeant(const QString &bundle, const MprisPlayer &player)
{
    if (player.isSpotify())
        return bundle == bundle::spotify;
    return bundle == bundle::appleMusic && player.isPlaying && !player.isWebBrowser();
}

} // namespace

MprisRegistry::MprisRegistry(const QString &connection) : m_connection(connection), m_spotify(connection) {}

void MprisRegistry::ifRunning(const QString &bundle, QObject *context, std::function<void()> action)
{
    const QDBusConnection bus(m_connection);
    if (!bus.isConnected())
        return;
    auto *survey = new MprisSurvey(bus, context);
    auto once = std::make_shared<std::function<void()>>(std::move(action));
    QObject::connect(survey, &MprisSurvey::found, context, [bundle, once](const MprisPlayer &player) {
        if (!*once || !isMeant(bundle, player))
            return;
        std::exchange(*once, nullptr)();
    });
    survey->start();
}

bool MprisRegistry::isInstalled(const QString &bundle) const
{
    return bundle == bundle::spotify && m_spotify.isInstalled();
}

} // namespace kelp
