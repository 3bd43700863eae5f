#include "platform/linux/DBusStatusItem.h"

#include "base/Clock.h"
#include "base/Logging.h"
#include "platform/linux/DBusStatusObject.h"
#include "platform/linux/DetachedTask.h"
#include "platform/linux/SessionBus.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString watcherName = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;
const QString itemPath = u"/StatusNotifierItem"_s;
const QString busName = u"org.freedesktop.DBus"_s;
const QString propertiesName = u"org.freedesktop.DBus.Properties"_s;

constexpr int answerTimeOut = 5000; ///< milliseconds
constexpr int mostAttempts = 5;
constexpr double hostPatience = 3; ///< seconds that a watcher without a host is given until it has one

/// What is known of the hosts that do more than show a picture as it is.
struct HostKind
{
    QString name;   ///< on the bus, as long as the host is there
    bool isWatcher; ///< whether it is the watcher, too; if not, its being there is enough
    bool showsTitle = false;
};
const HostKind tintingHosts[] = {
    {u"org.gnome.Shell"_s, true, true}, // with the extension for tray items
    {u"org.ayatana.indicator.application"_s, true, true},
    {u"com.canonical.indicator.application"_s, true, true},
    {u"org.xfce.Panel"_s, false},
    {u"org.kde.plasmashell"_s, false},
    {u"org.Cinnamon"_s, false},
};

/// The protocol asks for a name of this form.
QString serviceName()
{
    return u"org.kde.StatusNotifierItem-%1-1"_s.arg(QCoreApplication::applicationPid());
}

QDBusPendingCall ownerOf(const QString &name)
{
    QDBusMessage call = QDBusMessage::createMethodCall(busName, u"/org/freedesktop/DBus"_s, busName, u"GetNameOwner"_s);
    call << name;
    return connectToSessionBus().asyncCall(call, answerTimeOut);
}

QDBusPendingCall askForHost()
{
    QDBusMessage call = QDBusMessage::createMethodCall(watcherName, watcherPath, propertiesName, u"Get"_s);
    call.setAutoStartService(false);
    call << watcherName << u"IsStatusNotifierHostRegistered"_s;
    return connectToSessionBus().asyncCall(call, answerTimeOut);
}

} // namespace

DBusStatusItem::DBusStatusItem(Clock &clock, std::shared_ptr<const StatusPictures> pictures, QObject *parent)
    : StatusItem(parent), m_clock(clock), m_object(std::make_unique<DBusStatusObject>(std::move(pictures)))
{
    m_object->onActivated = [this](const QString &token) { Q_EMIT activated(token); };
}

DBusStatusItem::~DBusStatusItem() = default;

void DBusStatusItem::show(const StatusLook &look)
{
    m_object->setLook(look);
    if (!std::exchange(m_isStarted, true))
        start();
}

void DBusStatusItem::start()
{
    const auto work = [] {
        QDBusConnection bus = connectToSessionBus();
        if (bus.isConnected() && !bus.registerService(serviceName()))
            qCWarning(logPlatform) << "the name of the tray item is taken";
        return bus.isConnected();
    };
    runDetached<bool>(this, work, [this](bool isConnected) {
        if (isConnected)
            publish();
        else
            qCInfo(logPlatform) << "no session bus: no tray item";
    });
}

void DBusStatusItem::publish()
{
    QDBusConnection bus = connectToSessionBus();
    bus.registerObject(itemPath, m_object.get(),
                       QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                           QDBusConnection::ExportAllProperties);
    // Signals of the bus itself and of whoever is the watcher; no owner is asked for, because that would block. A
    // forged one causes no more than a registration.
    bus.connect(busName, u"/org/freedesktop/DBus"_s, busName, u"NameOwnerChanged"_s, {watcherName}, {}, this,
                SLOT(onWatcherOwner(QString, QString, QString)));
    bus.connect({}, watcherPath, watcherName, u"StatusNotifierHostRegistered"_s, this, SLOT(onHostRegistered()));
    whenAnswered(ownerOf(watcherName), [this](const QDBusPendingReply<QString> &owner) {
        if (owner.isError())
            qCInfo(logPlatform) << "no tray yet";
        else if (m_generation == 0) // what was told of meanwhile is newer
            onWatcherOwner(watcherName, {}, owner.value());
    });
}

void DBusStatusItem::onWatcherOwner(const QString &name, const QString &, const QString &newOwner)
{
    if (name != watcherName)
        return;
    ++m_generation;
    m_isTaken = false;
    if (newOwner.isEmpty())
        return;
    learnAboutHost(newOwner);
}

void DBusStatusItem::onHostRegistered()
{
    // The watcher remembers its items, but not every one does so through a crash of its own host.
    registerItem(mostAttempts);
}

/// A watcher that has just come may have its name before it has its object.
void DBusStatusItem::registerItem(int attempt)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName, u"RegisterStatusNotifierItem"_s);
    call.setAutoStartService(false);
    call << serviceName();
    const int generation = m_generation;
    whenAnswered(connectToSessionBus().asyncCall(call, answerTimeOut), [=, this](const QDBusPendingReply<> &answer) {
        if (generation != m_generation)
            return;
        m_isTaken = m_isTaken || !answer.isError();
        if (!answer.isError() || attempt >= mostAttempts)
            return;
        qCInfo(logPlatform) << "the tray did not take the item:" << answer.error().name();
        m_clock.after(1 << attempt, this, [=, this] {
            if (generation == m_generation)
                registerItem(attempt + 1);
        });
    });
}

/// Registers when all have answered, so that the host asks for the right picture at once.
void DBusStatusItem::learnAboutHost(const QString &watcher)
{
    struct Knowledge
    {
        std::size_t answers = 0;
        bool tints = false;
        bool showsTitle = false;
    };
    const auto known = std::make_shared<Knowledge>();
    const int generation = m_generation;
    for (const HostKind &kind : tintingHosts) {
        whenAnswered(ownerOf(kind.name), [=, this](const QDBusPendingReply<QString> &owner) {
            if (!owner.isError() && (!kind.isWatcher || owner.value() == watcher)) {
                known->tints = true;
                known->showsTitle = known->showsTitle || kind.showsTitle;
            }
            if (++known->answers < std::size(tintingHosts) || generation != m_generation)
                return;
            m_object->setHost(known->tints, known->showsTitle);
            registerOnceHosted();
        });
    }
}

/// A bar that is both watcher and host overlooks what registers while its host half is still starting.
void DBusStatusItem::registerOnceHosted()
{
    const int generation = m_generation;
    whenAnswered(askForHost(), [=, this](const QDBusPendingReply<QDBusVariant> &isHosted) {
        if (generation != m_generation)
            return;
        if (isHosted.isError() || isHosted.value().variant().toBool()) {
            registerItem(0);
            return;
        }
        // Not every watcher tells when its host comes.
        m_clock.after(hostPatience, this, [=, this] {
            if (generation == m_generation && !m_isTaken)
                registerItem(0);
        });
    });
}

template<typename Done>
void DBusStatusItem::whenAnswered(const QDBusPendingCall &call, Done done)
{
    auto *watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, done] {
        watcher->deleteLater();
        done(*watcher);
    });
}

} // namespace kelp
