#include "platform/linux/MprisSurvey.h"

#include "platform/linux/DBusCall.h"

#include <QDBusMessage>
#include <QDBusVariant>

#include <memory>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// The text that a property holds; nothing for an error and for what is no text.
QString textOf(const QDBusMessage &answer)
{
    if (answer.type() != QDBusMessage::ReplyMessage)
        return {};
    const QVariant value = answer.arguments().value(0);
    if (value.metaType() != QMetaType::fromType<QDBusVariant>())
        return {};
    const QVariant content = value.value<QDBusVariant>().variant();
    return content.metaType() == QMetaType::fromType<QString>() ? content.toString() : QString();
}

} // namespace

MprisSurvey::MprisSurvey(const QDBusConnection &bus, QObject *parent) : QObject(parent), m_bus(bus) {}

void MprisSurvey::start()
{
    callAsync(m_bus, busCall(u"ListNames"_s), this, [this](const QDBusMessage &answer) {
        if (answer.type() == QDBusMessage::ReplyMessage)
            take(answer.arguments().value(0).toStringList());
        else
            end(false);
    });
}

void MprisSurvey::take(const QStringList &names)
{
    for (const QString &name : names) {
        if (m_unowned < mostNames && name.startsWith(MprisPlayer::namePrefix)) {
            ++m_unowned;
            later([this, name] { findOwner(name); });
        }
    }
    if (m_unowned == 0)
        end(true);
}

void MprisSurvey::findOwner(const QString &name)
{
    callAsync(m_bus, busCall(u"GetNameOwner"_s) << name, this, [this, name](const QDBusMessage &answer) {
        if (answer.type() == QDBusMessage::ReplyMessage)
            takeOwner(name, answer.arguments().value(0).toString());
        if (--m_unowned == 0)
            askPlayers();
    });
}

void MprisSurvey::takeOwner(const QString &name, const QString &owner)
{
    MprisPlayer &player = m_players[owner];
    player.owner = owner;
    player.names.append(name.mid(MprisPlayer::namePrefix.size()));
}

void MprisSurvey::askPlayers()
{
    m_unfinished = m_players.size();
    if (m_unfinished == 0) {
        end(true);
        return;
    }
    const QStringList owners = m_players.keys();
    for (const QString &owner : owners)
        later([this, owner] { ask(owner); });
}

void MprisSurvey::ask(const QString &owner)
{
    const MprisPlayer &player = m_players[owner];
    auto missing = std::make_shared<int>(player.isNamedSpotify() ? 1 : 2);
    if (player.isNamedSpotify()) {
        answered(owner, *missing);
        return;
    }
    callAsync(m_bus, player.propertyCall(MprisPlayer::playerInterface, u"PlaybackStatus"_s), this,
              [this, owner, missing](const QDBusMessage &answer) {
                  m_players[owner].isPlaying = textOf(answer) == "Playing"_L1;
                  answered(owner, *missing);
              });
    callAsync(m_bus, player.propertyCall(MprisPlayer::rootInterface, u"DesktopEntry"_s), this,
              [this, owner, missing](const QDBusMessage &answer) {
                  m_players[owner].desktopEntry = textOf(answer);
                  answered(owner, *missing);
              });
}

void MprisSurvey::answered(const QString &owner, int &missing)
{
    if (--missing > 0)
        return;
    Q_EMIT found(m_players[owner]);
    if (--m_unfinished == 0)
        end(true);
}

void MprisSurvey::later(std::function<void()> step)
{
    m_steps.push(std::move(step));
    if (!m_turn.isActive())
        m_turn.start(0, this);
}

void MprisSurvey::timerEvent(QTimerEvent *)
{
    for (int i = 0; i < callsPerTurn && !m_steps.empty(); ++i) {
        const std::function<void()> step = std::move(m_steps.front());
        m_steps.pop();
        step();
    }
    if (m_steps.empty())
        m_turn.stop();
}

void MprisSurvey::end(bool isKnown)
{
    Q_EMIT finished(isKnown);
    deleteLater();
}

} // namespace kelp
