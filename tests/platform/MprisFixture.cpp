#include "platform/MprisFixture.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

QTemporaryDir &folder()
{
    static QTemporaryDir dir;
    return dir;
}

void write(const QString &path, const QString &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content.toUtf8()) < 0)
        qFatal("%s cannot be written", qPrintable(path));
}

QString applications()
{
    return folder().filePath(u"data/applications"_s);
}

QString services()
{
    return folder().filePath(u"data/dbus-1/services"_s);
}

} // namespace

bool MprisFixture::useOwnFolders()
{
    const QByteArray data = QFile::encodeName(folder().filePath(u"data"_s));
    return QDir().mkpath(applications()) && qputenv("XDG_DATA_HOME", data) && qputenv("XDG_DATA_DIRS", data);
}

void MprisFixture::installApplication(const QString &id, const QString &lines)
{
    write(applications() + u'/' + id + u".desktop"_s,
          u"[Desktop Entry]\nType=Application\nName=An application\n"_s + lines);
}

void MprisFixture::uninstallApplications()
{
    QDir(applications()).removeRecursively();
    QDir(services()).removeRecursively();
    QDir().mkpath(applications());
}

QString MprisFixture::installProgram(const QString &name)
{
    const QString program = folder().filePath(name);
    QFile::remove(program + u".starts"_s);
    write(program, u"#!/bin/sh\necho \"$@\" >>'%1.starts'\n"_s.arg(program));
    QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return program;
}

void MprisFixture::installService(const QString &name, const QString &program)
{
    write(services() + u'/' + name + u".service"_s, u"[D-BUS Service]\nName=%1\nExec=%2\n"_s.arg(name, program));
}

qsizetype MprisFixture::starts(const QString &name)
{
    QFile file(folder().filePath(name + u".starts"_s));
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : 0;
}

MprisFixture::MprisFixture()
{
    static int count = 0;
    connection = u"kelp %1"_s.arg(++count);
    if (!bus.start() || !QDBusConnection::connectToBus(bus.address(), connection).isConnected())
        return;
    fakes = std::make_unique<FakePlayers>(bus.address());
    players = std::make_unique<MprisPlayers>(connection, clock);
    m_isReady = true;
}

MprisFixture::~MprisFixture()
{
    players.reset();
    fakes.reset();
    QDBusConnection::disconnectFromBus(connection);
}

FakePlayer &MprisFixture::add(const QStringList &names, const FakePlayer::Character &character)
{
    FakePlayer &player = fakes->add(names, character);
    if (!player.isThere())
        qFatal("the bus refuses %s", qPrintable(names.join(u' ')));
    return player;
}

void MprisFixture::pauseSpotify()
{
    players->pauseSpotify();
    clock.advance(0);
}

void MprisFixture::pauseOthers()
{
    players->pauseOthers();
    clock.advance(0);
}

void MprisFixture::pauseAll()
{
    players->pauseSpotify();
    players->pauseOthers();
    clock.advance(0);
}

void MprisFixture::settle()
{
    const QDBusConnection ours(connection);
    ours.call(
        QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/"_s, u"org.freedesktop.DBus.Peer"_s, u"Ping"_s));
    fakes->sync(ours);
    // What was said to us meanwhile.
    QCoreApplication::processEvents();
}

} // namespace kelp::test
