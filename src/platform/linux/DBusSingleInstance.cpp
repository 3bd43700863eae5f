#include "platform/linux/DBusSingleInstance.h"

#include "base/AtomicFile.h"
#include "base/Clock.h"
#include "base/Folders.h"
#include "base/Logging.h"
#include "platform/linux/DBusApplicationObject.h"
#include "platform/linux/DetachedTask.h"
#include "platform/linux/SessionBus.h"

#include <QCryptographicHash>
#include <QDBusMessage>
#include <QDir>
#include <QVariantMap>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString objectPath = u"/app/kelp/Kelp"_s;
const QString interfaceName = u"org.freedesktop.Application"_s;
constexpr int answerTimeOut = 2000; ///< milliseconds

/// The right to raise a window that our starter handed us, in the form of
/// the Desktop Entry standard, "D-Bus Activation".
QVariantMap platformData()
{
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN", qEnvironmentVariable("DESKTOP_STARTUP_ID"));
    return token.isEmpty() ? QVariantMap() : QVariantMap{{u"activation-token"_s, token}};
}

} // namespace

DBusSingleInstance::DBusSingleInstance(Clock &clock, QObject *parent)
    : SingleInstance(parent), m_clock(clock), m_object(std::make_shared<DBusApplicationObject>(*this))
{
}

DBusSingleInstance::~DBusSingleInstance()
{
    if (m_lock >= 0)
        ::close(m_lock);
}

QString DBusSingleInstance::busName()
{
    QString name = u"app.kelp.Kelp"_s;
    if (folders::isUsualConfiguration())
        return name;
    const QByteArray place = QDir::cleanPath(folders::configuration()).toUtf8();
    const QByteArray hash = QCryptographicHash::hash(place, QCryptographicHash::Sha256).toHex().left(16);
    return name + u".at"_s + QString::fromLatin1(hash);
}

void DBusSingleInstance::claim()
{
    const auto work = [object = m_object] {
        QDBusConnection bus = connectToSessionBus();
        if (!bus.isConnected())
            return Claim::noBus;
        // Before the name, so that whoever finds the name finds the object.
        bus.registerObject(objectPath, object.get(), QDBusConnection::ExportAllSlots);
        if (bus.registerService(busName()))
            return Claim::owned;
        QDBusMessage call = QDBusMessage::createMethodCall(busName(), objectPath, interfaceName, u"Activate"_s);
        call << platformData();
        const QDBusMessage answer = bus.call(call, QDBus::Block, answerTimeOut);
        if (answer.type() == QDBusMessage::ErrorMessage)
            qCWarning(logPlatform) << "the running Kelp did not answer:" << answer.errorMessage();
        return Claim::taken;
    };
    runDetached<Claim>(this, work, [this](Claim claim) { decide(claim); });
    m_clock.after(patience + answerTimeOut / 1000.0, this, [this] { decide(Claim::noBus); });
}

void DBusSingleInstance::decide(Claim claim)
{
    if (std::exchange(m_decided, true))
        return;
    switch (claim) {
    case Claim::owned:
        static_cast<void>(takeLock()); // for who comes without a bus; who owns the name is the one
        Q_EMIT first();
        break;
    case Claim::taken:
        Q_EMIT second();
        break;
    case Claim::noBus:
        if (takeLock())
            Q_EMIT first();
        else
            Q_EMIT second();
        break;
    }
}

bool DBusSingleInstance::takeLock()
{
    // Where the folder cannot be made, opening the file fails, too.
    (void)makePrivateFolder(folders::configuration());
    const QByteArray path = QFile::encodeName(folders::configuration() + u"/lock"_s);
    m_lock = ::open(path.constData(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600);
    return m_lock < 0 || ::flock(m_lock, LOCK_EX | LOCK_NB) == 0;
}

} // namespace kelp
