// A tray for measuring: writes a line with the name of each item that registers, as it does.

#include "support/FakeTray.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    kelp::test::FakeTray tray(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
    if (!tray.isThere)
        return 1;
    tray.onRegistered = [](const QString &item) {
        std::puts(qPrintable(item));
        std::fflush(stdout);
    };
    return QCoreApplication::exec();
}
