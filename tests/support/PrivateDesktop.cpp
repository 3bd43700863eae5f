#include "support/PrivateDesktop.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRect>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

const QSize monitorSize(1280, 720);
const QString handlerFile = u"noted-links.desktop"_s;

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

PrivateDesktop::PrivateDesktop() : m_display({monitorSize, monitorSize}) {}

QList<QRect> PrivateDesktop::monitors()
{
    return {QRect(QPoint(0, 0), monitorSize), QRect(QPoint(monitorSize.width(), 0), monitorSize)};
}

bool PrivateDesktop::start()
{
    if (!m_display.start()) {
        m_problem = m_display.problem();
        return false;
    }
    makeFolders();
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(u"DISPLAY"_s, m_display.display());
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    m_environment.insert(u"HOME"_s, m_home.path());
    m_environment.insert(u"XDG_CONFIG_HOME"_s, folder(u".config"_s));
    m_environment.insert(u"XDG_DATA_HOME"_s, folder(u".local/share"_s));
    m_environment.insert(u"XDG_CACHE_HOME"_s, folder(u".cache"_s));
    m_environment.insert(u"XDG_STATE_HOME"_s, folder(u".local/state"_s));
    m_environment.insert(u"XDG_RUNTIME_DIR"_s, folder(u"run"_s));
    m_environment.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    m_environment.insert(u"QT_LOGGING_RULES"_s, u"kelp.*=true"_s);
    m_environment.remove(u"WAYLAND_DISPLAY"_s);
    m_environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
    if (!m_bus.start(m_environment)) {
        m_problem = u"dbus-daemon does not start"_s;
        return false;
    }
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_bus.address());
    installHandler();
    registerHandler(u"https"_s);
    registerHandler(u"http"_s);
    return true;
}

void PrivateDesktop::makeFolders()
{
    for (const QString &each : {u".config"_s, u".local/share/applications"_s, u".local/state"_s, u".cache"_s, u"run"_s})
        QDir().mkpath(folder(each));
    QFile::setPermissions(folder(u"run"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    // The machine may have a portal, which would come as soon as it is asked and keep the name from that of a test.
    if (!write(folder(u".local/share/dbus-1/services/org.freedesktop.portal.Desktop.service"_s),
               "[D-BUS Service]\nName=org.freedesktop.portal.Desktop\nExec=/bin/false\n"))
        m_problem = u"the portal cannot be kept away"_s;
}

void PrivateDesktop::installHandler()
{
    // One write per link, so that links opened at the same time stay apart.
    const QString program = folder(u"note-link"_s);
    const QString script =
        u"#!/bin/sh\nenv >'%1'\nprintf '%s\\n' \"$1\" >>'%2'\n"_s.arg(folder(u"openers"_s), folder(u"links"_s));
    if (!write(program, script.toUtf8(), true))
        m_problem = u"the handler of links cannot be written"_s;
}

void PrivateDesktop::registerHandler(const QString &scheme)
{
    m_schemes.append(scheme);
    writeHandlers();
}

void PrivateDesktop::unregisterHandler(const QString &scheme)
{
    m_schemes.removeAll(scheme);
    writeHandlers();
}

void PrivateDesktop::writeHandlers()
{
    QString types;
    QString defaults = u"[Default Applications]\n"_s;
    for (const QString &each : m_schemes) {
        types += u"x-scheme-handler/%1;"_s.arg(each);
        defaults += u"x-scheme-handler/%1=%2\n"_s.arg(each, handlerFile);
    }
    const QString entry =
        u"[Desktop Entry]\nType=Application\nName=Noted links\nExec=%1 %u\nNoDisplay=true\nMimeType=%2\n"_s.arg(
            folder(u"note-link"_s), types);
    const QString applications = folder(u".local/share/applications"_s);
    if (!write(applications + u'/' + handlerFile, entry.toUtf8()) ||
        !write(folder(u".config/mimeapps.list"_s), defaults.toUtf8()))
        m_problem = u"the handlers cannot be registered"_s;
    m_display.run(u"update-desktop-database"_s, {applications});
}

QList<QByteArray> PrivateDesktop::opened() const
{
    QList<QByteArray> lines = content(folder(u"links"_s)).split('\n');
    lines.removeLast(); // what follows the last line's end: nothing, or a line that is being written
    return lines;
}

QList<QByteArray> PrivateDesktop::environmentOfOpener() const
{
    return content(folder(u"openers"_s)).split('\n');
}

QJsonObject PrivateDesktop::preferences() const
{
    return QJsonDocument::fromJson(content(configuration() + u"/preferences.json"_s)).object();
}

void PrivateDesktop::writePreferences(const QJsonObject &preferences)
{
    if (!write(configuration() + u"/preferences.json"_s, QJsonDocument(preferences).toJson()))
        m_problem = u"the preferences cannot be written"_s;
}

QByteArray PrivateDesktop::accounts() const
{
    return content(data() + u"/accounts.json"_s);
}

void PrivateDesktop::writeAccount(const QString &email, const QString &refreshToken)
{
    const QJsonArray list{QJsonObject{{u"email"_s, email}, {u"refreshToken"_s, refreshToken}}};
    if (!write(data() + u"/accounts.json"_s, QJsonDocument(list).toJson(QJsonDocument::Compact)))
        m_problem = u"the account cannot be written"_s;
}

void PrivateDesktop::forget()
{
    QDir(configuration()).removeRecursively();
    QDir(data()).removeRecursively();
    QFile::remove(folder(u"links"_s));
}

bool PrivateDesktop::write(const QString &path, const QByteArray &content, bool isProgram)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    if (isProgram)
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return written;
}

} // namespace kelp::test
