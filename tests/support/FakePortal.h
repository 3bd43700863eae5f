#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QObject>

namespace kelp::test {

struct PortalColour
{
    double red = 0;
    double green = 0;
    double blue = 0;
};

inline QDBusArgument &operator<<(QDBusArgument &argument, const PortalColour &colour)
{
    argument.beginStructure();
    argument << colour.red << colour.green << colour.blue;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument &operator>>(const QDBusArgument &argument, PortalColour &colour)
{
    argument.beginStructure();
    argument >> colour.red >> colour.green >> colour.blue;
    argument.endStructure();
    return argument;
}

using PortalSettings = QMap<QString, QVariantMap>;

/// The settings portal of a desktop that a test changes at will. It answers on the bus of `connection`.
class FakePortal final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    explicit FakePortal(QDBusConnection connection) : m_connection(std::move(connection))
    {
        qDBusRegisterMetaType<PortalColour>();
        qDBusRegisterMetaType<PortalSettings>();
        m_connection.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                                    QDBusConnection::ExportAllContents);
        m_connection.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~FakePortal() override
    {
        m_connection.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
        m_connection.unregisterObject(QStringLiteral("/org/freedesktop/portal/desktop"));
    }

    /// Changes a setting and tells everyone.
    void change(const QString &key, const QVariant &value)
    {
        values.insert(key, value);
        QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                         QStringLiteral("org.freedesktop.portal.Settings"),
                                                         QStringLiteral("SettingChanged"));
        signal.setArguments(
            {QStringLiteral("org.freedesktop.appearance"), key, QVariant::fromValue(QDBusVariant(value))});
        m_connection.send(signal);
    }

    QVariantMap values;

public Q_SLOTS:
    PortalSettings ReadAll(const QStringList &) { return {{QStringLiteral("org.freedesktop.appearance"), values}}; }

private:
    QDBusConnection m_connection;
};

} // namespace kelp::test

Q_DECLARE_METATYPE(kelp::test::PortalColour)
