#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QStringList>

#include <functional>

namespace kelp::test {

/// A watcher of tray items that notes who registers, on a connection of its own.
class FakeTray : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ answerHost)

public:
    /// `otherNames` are bus names that it has besides.
    explicit FakeTray(const QString &busAddress, const QStringList &otherNames = {}, bool isHosted = true)
        : hasHost(isHosted),
          m_name(QStringLiteral("tray %1").arg(++count)),
          m_bus(QDBusConnection::connectToBus(busAddress, m_name))
    {
        m_bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                             QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                                 QDBusConnection::ExportAllProperties);
        for (const QString &each : otherNames)
            m_bus.registerService(each);
        isThere = m_bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }
    /// It goes as one that has crashed: its connection breaks.
    ~FakeTray() override { QDBusConnection::disconnectFromBus(m_name); }

    [[nodiscard]] bool answerHost()
    {
        ++questions;
        return hasHost;
    }

    bool isThere = false;
    bool hasHost;
    int questions = 0; ///< how often it was asked for a host
    int refusals = 0;  ///< how many registrations are refused before one is taken
    QStringList items;
    std::function<void(const QString &item)> onRegistered;

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString &service)
    {
        if (refusals > 0) {
            --refusals;
            sendErrorReply(QDBusError::UnknownObject, QStringLiteral("not yet"));
            return;
        }
        items.append(service);
        if (onRegistered)
            onRegistered(service);
    }

Q_SIGNALS:
    void StatusNotifierHostRegistered();

private:
    static inline int count = 0;
    QString m_name;
    QDBusConnection m_bus;
};

} // namespace kelp::test
