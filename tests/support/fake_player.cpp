// fake-player NAME FILE: a music player of its own process, named NAME on the session bus, that appends a line to FILE
// for all that it is told. It comes up silent and ends with the
// bus.

#include "support/FakePlayer.h"

#include <QCoreApplication>
#include <QFile>
#include <QTimer>

#include <cstdio>

using namespace kelp::test;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3)
        return 2;
    const FakePlayer player(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), {arguments[1]},
                            {.status = QStringLiteral("Stopped")});
    if (!player.isThere())
        return 1;
    QFile file(arguments[2]);
    if (!file.open(QIODevice::Append))
        return 1;
    qsizetype written = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        const QStringList told = player.told();
        for (; written < told.size(); ++written)
            file.write(told[written].toUtf8() + '\n');
        file.flush();
        if (!player.isConnected())
            QCoreApplication::quit();
    });
    timer.start(20);
    return QCoreApplication::exec();
}
