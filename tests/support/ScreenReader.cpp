#include "support/ScreenReader.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

const QString rootPath = u"/org/a11y/atspi/accessible/root"_s;
const QString accessible = u"org.a11y.atspi.Accessible"_s;

// Of the enumerations Atspi.Role and Atspi.StateType: https://docs.gtk.org/atspi2/
constexpr uint roleLabel = 29;
constexpr uint rolePushButton = 43;
constexpr int stateEnabled = 8;
constexpr int stateShowing = 25;

bool has(quint64 states, int state)
{
    return (states >> state & 1) != 0;
}

/// The elements of an "a(so)".
QList<std::pair<QString, QString>> references(const QVariant &value)
{
    QList<std::pair<QString, QString>> list;
    const auto argument = value.value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd()) {
        QString service;
        QDBusObjectPath path;
        argument.beginStructure();
        argument >> service >> path;
        argument.endStructure();
        list.emplaceBack(service, path.path());
    }
    argument.endArray();
    return list;
}

} // namespace

ScreenReader::ScreenReader(PrivateBus &sessionBus) : m_bus(u"none"_s)
{
    const QDBusMessage ask =
        QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s);
    const QVariantList answer = sessionBus.connection().call(ask).arguments();
    if (!answer.isEmpty())
        m_bus = QDBusConnection::connectToBus(answer.first().toString(), u"accessibility of "_s + sessionBus.address());
}

ScreenReader::~ScreenReader()
{
    QDBusConnection::disconnectFromBus(m_bus.name());
}

QStringList ScreenReader::texts()
{
    QStringList result;
    for (const Element &each : elements()) {
        if (each.role == roleLabel && has(each.states, stateShowing) && !each.name.isEmpty())
            result.append(each.name);
    }
    return result;
}

std::optional<QRect> ScreenReader::button(const QString &text)
{
    for (const Element &each : elements()) {
        if (each.role != rolePushButton || each.name != text || !has(each.states, stateShowing) ||
            !has(each.states, stateEnabled))
            continue;
        constexpr uint onScreen = 0;
        const QVariantList answer =
            call(each.service, each.path, u"org.a11y.atspi.Component"_s, u"GetExtents"_s, {onScreen});
        QRect rect;
        if (!answer.isEmpty())
            answer.first().value<QDBusArgument>() >> rect;
        return rect;
    }
    return {};
}

QList<ScreenReader::Element> ScreenReader::elements()
{
    QList<Element> found;
    const QVariantList applications = call(u"org.a11y.atspi.Registry"_s, rootPath, accessible, u"GetChildren"_s);
    if (applications.isEmpty())
        return {};
    for (const auto &[service, path] : references(applications.first()))
        collect(service, path, found);
    return found;
}

void ScreenReader::collect(const QString &service, const QString &path, QList<Element> &found)
{
    Element element{service, path, {}, 0, 0};
    const QVariantList name =
        call(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {accessible, u"Name"_s});
    const QVariantList role = call(service, path, accessible, u"GetRole"_s);
    const QVariantList states = call(service, path, accessible, u"GetState"_s);
    const QVariantList children = call(service, path, accessible, u"GetChildren"_s);
    // It may have gone in the meantime.
    if (name.isEmpty() || role.isEmpty() || states.isEmpty() || children.isEmpty())
        return;
    element.name = name.first().value<QDBusVariant>().variant().toString();
    element.role = role.first().toUInt();
    QList<uint> words;
    states.first().value<QDBusArgument>() >> words;
    for (qsizetype i = 0; i < words.size(); ++i)
        element.states |= static_cast<quint64>(words[i]) << (32 * i);
    found.append(element);
    for (const auto &[childService, childPath] : references(children.first()))
        collect(childService, childPath, found);
}

QVariantList ScreenReader::call(const QString &service, const QString &path, const QString &interface,
                                const QString &method, const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage answer = m_bus.call(message, QDBus::Block, 2000);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments() : QVariantList();
}

} // namespace kelp::test
