#include "support/FakePlayer.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QMutexLocker>
#include <QTimer>

#include <algorithm>
#include <atomic>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

const QString objectPath = u"/org/mpris/MediaPlayer2"_s;
const QString syncMethod = u"Sync"_s; // our own
const QString namePrefix = u"org.mpris.MediaPlayer2."_s;

} // namespace

FakePlayer::FakePlayer(const QString &address, const QStringList &names, const Character &character)
    : m_character(character)
{
    static std::atomic<int> count = 0;
    m_connection = u"player %1"_s.arg(++count);
    QDBusConnection bus = QDBusConnection::connectToBus(address, m_connection);
    m_isThere = bus.registerVirtualObject(objectPath, this) &&
                std::all_of(names.begin(), names.end(),
                            [&](const QString &name) { return bus.registerService(namePrefix + name); });
}

FakePlayer::~FakePlayer()
{
    QDBusConnection(m_connection).unregisterObject(objectPath);
    QDBusConnection::disconnectFromBus(m_connection);
}

QStringList FakePlayer::told() const
{
    const QMutexLocker lock(&m_mutex);
    return m_told;
}

int FakePlayer::asked() const
{
    const QMutexLocker lock(&m_mutex);
    return m_asked;
}

bool FakePlayer::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (message.member() == syncMethod) {
        QDBusConnection(m_connection).send(message.createReply());
        return true;
    }
    {
        const QMutexLocker lock(&m_mutex);
        if (message.interface() == "org.freedesktop.DBus.Properties"_L1) {
            m_asked += message.member() == "Get"_L1 ? 1 : 0;
        } else {
            QStringList words{message.member()};
            for (const QVariant &argument : message.arguments())
                words.append(argument.toString());
            m_told.append(words.join(u' '));
        }
    }
    if (m_character.answers == Answers::Late)
        QTimer::singleShot(m_character.delay, this, [this, message] { answerNow(message); });
    else if (m_character.answers != Answers::Never)
        answerNow(message);
    return true;
}

void FakePlayer::answerNow(const QDBusMessage &message) const
{
    const QDBusConnection bus(m_connection);
    if (m_character.answers == Answers::WithErrors) {
        bus.send(message.createErrorReply(QDBusError::Failed, u"no"_s));
        return;
    }
    QDBusMessage reply = message.createReply();
    if (message.member() == "Get"_L1 && m_character.answers != Answers::WithNothing) {
        const QVariant value = property(message.arguments().value(1).toString());
        if (!value.isValid()) {
            bus.send(message.createErrorReply(QDBusError::InvalidArgs, u"there is no such property"_s));
            return;
        }
        reply << QVariant::fromValue(QDBusVariant(value));
        if (m_character.answers == Answers::WithMuch)
            reply << u"and"_s << 1 << QVariant::fromValue(QDBusVariant(u"Stopped"_s));
    }
    bus.send(reply);
}

QVariant FakePlayer::property(const QString &name) const
{
    if (name == "PlaybackStatus"_L1)
        return m_character.status;
    return name == "DesktopEntry"_L1 ? m_character.desktopEntry : QVariant();
}

FakePlayers::FakePlayers(const QString &address) : m_address(address)
{
    m_thread.start();
}

FakePlayers::~FakePlayers()
{
    m_thread.quit();
    m_thread.wait();
}

FakePlayer &FakePlayers::add(const QStringList &names, const FakePlayer::Character &character)
{
    auto player = std::make_unique<FakePlayer>(m_address, names, character);
    player->moveToThread(&m_thread);
    return *m_players.emplace_back(std::move(player));
}

void FakePlayers::sync(const QDBusConnection &bus) const
{
    for (const auto &player : m_players)
        bus.call(QDBusMessage::createMethodCall(player->owner(), objectPath, {}, syncMethod));
}

void FakePlayers::remove(FakePlayer &player)
{
    const auto found =
        std::find_if(m_players.begin(), m_players.end(), [&](const auto &each) { return each.get() == &player; });
    found->release()->deleteLater();
    m_players.erase(found);
}

} // namespace kelp::test
