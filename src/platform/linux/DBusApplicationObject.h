#pragma once

#include "platform/SingleInstance.h"

#include <QPointer>
#include <QStringList>
#include <QVariantMap>

namespace kelp {

/// What other processes see of a running Kelp on the session bus: the D-Bus activation interface of the Desktop Entry
/// standard. Whatever it is asked for, it says that Kelp was started once more.
class DBusApplicationObject : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit DBusApplicationObject(SingleInstance &owner) : m_owner(&owner) {}

public Q_SLOTS:
    void Activate(const QVariantMap &data)
    {
        const QVariant older = data.value(QStringLiteral("desktop-startup-id"));
        if (m_owner)
            Q_EMIT m_owner->activated(data.value(QStringLiteral("activation-token"), older).toString());
    }
    void Open(const QStringList &, const QVariantMap &data) { Activate(data); }
    void ActivateAction(const QString &, const QVariantList &, const QVariantMap &data) { Activate(data); }

private:
    QPointer<SingleInstance> m_owner;
};

} // namespace kelp
