#include "support/ScreenReader.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

const QString rootPath = u"/org/a11y/atspi/accessible/root"_s;
const QString accessible = u"org.a11y.atspi.Accessible"_s;

// Of the enumerations Atspi.Role and Atspi.StateType: https://docs.gtk.org/atspi2/
constexpr uint roleCheckBox = 7;
constexpr uint roleCheckMenuItem = 8;
constexpr uint roleComboBox = 11;
constexpr uint roleLabel = 29;
constexpr uint roleList = 31;
constexpr uint roleListItem = 32;
constexpr uint roleMenu = 33;
constexpr uint roleMenuItem = 35;
constexpr uint rolePopupMenu = 41;
constexpr uint rolePushButton = 43;
constexpr uint roleRadioButton = 44;
constexpr uint roleSlider = 51;
constexpr int stateChecked = 4;
constexpr int stateEnabled = 8;
constexpr int stateFocused = 12;
constexpr int stateShowing = 25;
constexpr int stateVisible = 30;

constexpr int patience = 2000; // ms

bool has(quint64 states, int state)
{
    return (states >> state & 1) != 0;
}

bool isControl(uint role)
{
    return role == rolePushButton || role == roleCheckBox || role == roleComboBox || role == roleRadioButton ||
           role == roleSlider;
}

bool isItem(uint role)
{
    return role == roleMenuItem || role == roleCheckMenuItem || role == roleListItem;
}

bool isMenu(uint role)
{
    return role == roleMenu || role == rolePopupMenu;
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
        if (each.role == rolePushButton && each.name == text && has(each.states, stateShowing) &&
            has(each.states, stateEnabled))
            return extents(each);
    }
    return {};
}

QStringList ScreenReader::buttons()
{
    QStringList result;
    for (const Element &each : elements()) {
        if (each.role == rolePushButton && has(each.states, stateShowing) && has(each.states, stateEnabled))
            result.append(each.name);
    }
    return result;
}

bool ScreenReader::press(const QString &text)
{
    const QString interface = u"org.a11y.atspi.Action"_s;
    for (const Element &each : elements()) {
        if (each.role != rolePushButton || each.name != text || !has(each.states, stateShowing))
            continue;
        constexpr int mostActions = 8;
        for (int number = 0; number < mostActions; ++number) {
            const QVariantList name = call(each.service, each.path, interface, u"GetName"_s, {number});
            if (!name.isEmpty() && name.first().toString().compare("press"_L1, Qt::CaseInsensitive) == 0)
                return call(each.service, each.path, interface, u"DoAction"_s, {number}).value(0).toBool();
        }
    }
    return false;
}

std::optional<QRect> ScreenReader::control(const QString &name)
{
    for (const Element &each : elements()) {
        if (isControl(each.role) && each.name == name && has(each.states, stateShowing) &&
            has(each.states, stateEnabled))
            return extents(each);
    }
    return {};
}

std::optional<ScreenReader::Place> ScreenReader::place(const QString &name, Kind kind)
{
    const QList<Element> all = elements();
    for (qsizetype i = 0; i < all.size(); ++i) {
        const Element &each = all[i];
        // Items of a list count as hidden where they are scrolled away, and those of a hidden one are not among all.
        const bool isThere = has(each.states, stateVisible) || each.role == roleListItem;
        if (each.name == name && (kind == Kind::Control ? isControl(each.role) : isItem(each.role)) && isThere &&
            has(each.states, stateEnabled))
            return place(all, i);
    }
    return {};
}

std::optional<bool> ScreenReader::isChecked(const QString &name)
{
    for (const Element &each : elements()) {
        if ((each.role == roleCheckBox || each.role == roleRadioButton) && each.name == name &&
            has(each.states, stateShowing))
            return has(each.states, stateChecked);
    }
    return {};
}

QString ScreenReader::focused()
{
    const std::optional<Focus> found = focus();
    return found ? found->name : QString();
}

std::optional<ScreenReader::Focus> ScreenReader::focus()
{
    const QList<Element> all = elements();
    // The innermost: what a menu belongs to keeps the focus of its window.
    for (qsizetype i = all.size(); i-- > 0;) {
        if (has(all[i].states, stateFocused) && has(all[i].states, stateShowing) && !all[i].name.isEmpty())
            return Focus{all[i].name, place(all, i)};
    }
    return {};
}

ScreenReader::Place ScreenReader::place(const QList<Element> &all, qsizetype index) const
{
    QList<QRect> around;
    for (qsizetype i = all[index].parent; i >= 0 && all[i].parent >= 0; i = all[i].parent) {
        if (isMenu(all[i].role))
            break; // a window of its own, whatever its parent
        around.prepend(extents(all[i]));
        if (all[i].role == roleList)
            break;
    }
    const QRect whole = extents(all[index]);
    Place result{whole, whole, around.isEmpty() ? whole : around.first()};
    for (const QRect &each : around) {
        result.seen &= each;
        if (result.frame.intersects(each))
            result.frame &= each;
    }
    return result;
}

QRect ScreenReader::extents(const Element &element) const
{
    constexpr uint onScreen = 0;
    const QVariantList answer =
        call(element.service, element.path, u"org.a11y.atspi.Component"_s, u"GetExtents"_s, {onScreen});
    QRect rect;
    if (!answer.isEmpty())
        answer.first().value<QDBusArgument>() >> rect;
    return rect;
}

/// What is asked about one element, all at once.
struct ScreenReader::Question
{
    Element element;
    std::optional<std::size_t> parent;
    QDBusPendingCall name;
    QDBusPendingCall role;
    QDBusPendingCall states;
    QDBusPendingCall children;
};

struct ScreenReader::Node
{
    Element element;
    std::vector<std::size_t> children;
};

ScreenReader::Question ScreenReader::ask(const QString &service, const QString &path,
                                         std::optional<std::size_t> parent) const
{
    return {Element{service, path, {}, 0, 0, -1},
            parent,
            post(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {accessible, u"Name"_s}),
            post(service, path, accessible, u"GetRole"_s),
            post(service, path, accessible, u"GetState"_s),
            post(service, path, accessible, u"GetChildren"_s)};
}

QList<ScreenReader::Element> ScreenReader::elements()
{
    const QVariantList applications = call(u"org.a11y.atspi.Registry"_s, rootPath, accessible, u"GetChildren"_s);
    if (applications.isEmpty())
        return {};
    std::vector<Question> questions;
    for (const auto &[service, path] : references(applications.first()))
        questions.push_back(ask(service, path));
    // Level by level: one after the other would take many times as long.
    std::vector<Node> nodes;
    std::vector<std::size_t> roots;
    for (std::vector<Question> next; !questions.empty(); questions = std::exchange(next, {})) {
        for (Question &question : questions) {
            const auto children = answer(question);
            if (!children)
                continue; // it has gone in the meantime
            const std::size_t index = nodes.size();
            (question.parent ? nodes[*question.parent].children : roots).push_back(index);
            nodes.push_back({question.element, {}});
            if (question.parent && !has(question.element.states, stateVisible))
                continue;
            for (const auto &[service, path] : *children)
                next.push_back(ask(service, path, index));
        }
    }
    QList<Element> found;
    for (const std::size_t each : roots)
        list(nodes, each, -1, found);
    return found;
}

std::optional<QList<std::pair<QString, QString>>> ScreenReader::answer(Question &question)
{
    for (QDBusPendingCall *each : {&question.name, &question.role, &question.states, &question.children}) {
        each->waitForFinished();
        if (each->isError() || each->reply().arguments().isEmpty())
            return {};
    }
    const auto first = [](const QDBusPendingCall &call) { return call.reply().arguments().first(); };
    question.element.name = first(question.name).value<QDBusVariant>().variant().toString();
    question.element.role = first(question.role).toUInt();
    QList<uint> words;
    first(question.states).value<QDBusArgument>() >> words;
    for (qsizetype i = 0; i < words.size(); ++i)
        question.element.states |= static_cast<quint64>(words[i]) << (32 * i);
    return references(first(question.children));
}

/// In the order in which they are declared.
void ScreenReader::list(const std::vector<Node> &nodes, std::size_t index, qsizetype parent, QList<Element> &found)
{
    const qsizetype place = found.size();
    found.append(nodes[index].element);
    found.last().parent = parent;
    for (const std::size_t each : nodes[index].children)
        list(nodes, each, place, found);
}

QDBusPendingCall ScreenReader::post(const QString &service, const QString &path, const QString &interface,
                                    const QString &method, const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return m_bus.asyncCall(message, patience);
}

QVariantList ScreenReader::call(const QString &service, const QString &path, const QString &interface,
                                const QString &method, const QVariantList &arguments) const
{
    QDBusPendingCall call = post(service, path, interface, method, arguments);
    call.waitForFinished();
    return call.isError() ? QVariantList() : call.reply().arguments();
}

} // namespace kelp::test
