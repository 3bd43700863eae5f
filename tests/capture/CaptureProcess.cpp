#include "capture/CaptureProcess.h"

#include <QFile>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace kelp {

QProcessEnvironment bareEnvironment(const QString &home)
{
    QProcessEnvironment environment;
    for (const char *name : {"PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (qEnvironmentVariableIsSet(name))
            environment.insert(QString::fromLatin1(name), qEnvironmentVariable(name));
    }
    environment.insert(u"HOME"_s, home);
    environment.insert(u"XDG_RUNTIME_DIR"_s, home);
    environment.insert(u"TZ"_s, u"UTC"_s);
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    environment.insert(u"KELP_CAPTURE_TIME"_s, u"2026-01-05T09:59:13Z"_s);
    environment.insert(u"DISPLAY"_s, u":4711"_s);
    environment.insert(u"WAYLAND_DISPLAY"_s, u"nowhere"_s);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.insert(u"QT_QPA_PLATFORMTHEME"_s, u"gtk3"_s);
    environment.insert(u"QT_SCALE_FACTOR"_s, u"2"_s);
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    return environment;
}

CaptureResult runKelp(const QStringList &arguments, const QProcessEnvironment &environment)
{
    QProcess kelp;
    kelp.setProcessEnvironment(environment);
    kelp.start(qEnvironmentVariable("KELP_BINARY_DIR") + u"/kelp"_s, arguments);
    if (!kelp.waitForFinished(-1) || kelp.exitStatus() != QProcess::NormalExit)
        return {};
    return {kelp.exitCode(), QString::fromUtf8(kelp.readAllStandardOutput()),
            QString::fromUtf8(kelp.readAllStandardError())};
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace kelp
