#pragma once

#include "platform/StatusItem.h"

#include <memory>
#include <optional>

class QDBusPendingCall;

namespace kelp {

class Clock;
class DBusStatusObject;

/// StatusItem by the StatusNotifierItem protocol on the session bus.
///
///     show ──→ bus ready ──→ watcher known ──→ it has a host ──→ registered ──(another watcher)──→
///     registered again …
///
/// Where there is no bus, no watcher or no host, nothing is shown until there is one.
class DBusStatusItem final : public StatusItem
{
    Q_OBJECT

public:
    DBusStatusItem(Clock &clock, std::shared_ptr<const StatusPictures> pictures, QObject *parent = nullptr);
    ~DBusStatusItem() override;

    void show(const StatusLook &look) override;

private Q_SLOTS:
    void onWatcherOwner(const QString &name, const QString &oldOwner, const QString &newOwner);
    void onHostRegistered();

private:
    void start();
    void publish();
    void registerItem(int attempt);
    void learnAboutHost(const QString &watcher);
    void registerOnceHosted();
    template<typename Done>
    void whenAnswered(const QDBusPendingCall &call, Done done);

    Clock &m_clock;
    std::unique_ptr<DBusStatusObject> m_object;
    bool m_isStarted = false;
    int m_generation = 0;   ///< of the watcher; answers of an older one do not count
    bool m_isTaken = false; ///< whether the watcher of this generation has taken the item
};

} // namespace kelp
